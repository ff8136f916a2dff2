// SPDX-License-Identifier: GPL-3.0-or-later
// Building request envelopes and sending them through the TCP client to a
// peer on 127.0.0.1; the target is at least 50,000 envelopes per second,
// counted when the peer has received them all.
#include "benchapp.h"
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include <QTcpServer>
#include <QTcpSocket>

using hfmplugin_nubix::NubixMessageHandler;

namespace {
constexpr int kBatch = 10000;

const QVariantMap &fileStatusArgs()
{
    static const QVariantMap args {{QStringLiteral("basedir"), QStringLiteral("/home/user/Kelo Drive/Documents")},
        {QStringLiteral("type"), QStringLiteral("dir")}};
    return args;
}

// A handler connected to a peer that counts the frames it receives.
struct Link
{
    Link()
    {
        server.listen(QHostAddress::LocalHost);
        QObject::connect(&server, &QTcpServer::newConnection, [this] {
            peer = server.nextPendingConnection();
            QObject::connect(peer, &QTcpSocket::readyRead, [this] { frames += peer->readAll().count('\x0c'); });
        });
        handler.client()->connectToServer(QStringLiteral("127.0.0.1"), server.serverPort());
        nubixbench::spinUntil([this] { return handler.isConnected() && peer; });
    }

    QTcpServer server;
    QTcpSocket *peer = nullptr;
    qint64 frames = 0;
    NubixMessageHandler handler;
};
}   // namespace

static void BM_BuildRequestEnvelope(benchmark::State &state)
{
    NubixMessageHandler handler;
    const QString key = NubixMessageHandler::createKey();
    for (auto _ : state) {
        const QString text = handler.buildReqeustMessage(QStringLiteral("getFileStatus"), fileStatusArgs(), key);
        benchmark::DoNotOptimize(text.constData());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BuildRequestEnvelope);

static void BM_RequestDeliveredToPeer(benchmark::State &state)
{
    static Link link;
    for (auto _ : state) {
        const qint64 target = link.frames + kBatch;
        for (int i = 0; i < kBatch; ++i)
            link.handler.request(QStringLiteral("getFileStatus"), fileStatusArgs());
        nubixbench::spinUntil([target] { return link.frames >= target; });
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_RequestDeliveredToPeer)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return nubixbench::runBenchmarks(argc, argv, options);
}
