// SPDX-License-Identifier: GPL-3.0-or-later
// Building request envelopes and sending them through the TCP client to a peer
// on 127.0.0.1 (target: at least 50,000 a second, counted when the peer has
// them all), and handling a large answer, with the check for keys repeated
// over containers on its own.
#include "benchapp.h"
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include <json.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>

using hfmplugin_nubix::NubixMessageHandler;

namespace {
constexpr int kBatch = 10000;

const QVariantMap kFileStatusArgs {{QStringLiteral("basedir"), QStringLiteral("/home/user/Kelo Drive/Documents")},
    {QStringLiteral("type"), QStringLiteral("dir")}};

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

// A file-status answer of 10,000 entries, indented as the client sends it.
QString fileStatusAnswer()
{
    QJsonArray result;
    for (int i = 0; i < 10000; ++i) {
        result.append(QJsonObject {{QStringLiteral("fileid"), i}, {QStringLiteral("isDir"), false},
            {QStringLiteral("path"), QStringLiteral("/Documents/folder/file-%1.txt").arg(i)},
            {QStringLiteral("plan"), QString()}, {QStringLiteral("plan_error"), 0},
            {QStringLiteral("plan_status"), 3}});
    }
    const QJsonObject body {{QStringLiteral("method"), QStringLiteral("getFileStatus")},
        {QStringLiteral("key"), QStringLiteral("{k")},
        {QStringLiteral("data"), QJsonObject {{QStringLiteral("code"), 0}, {QStringLiteral("result"), result}}}};
    return QString::fromUtf8(
        QJsonDocument(QJsonObject {{QStringLiteral("type"), QStringLiteral("pong")}, {QStringLiteral("data"), body}})
            .toJson());
}
}   // namespace

static void BM_RequestDeliveredToPeer(benchmark::State &state)
{
    static Link link;
    for (auto _ : state) {
        const qint64 target = link.frames + kBatch;
        for (int i = 0; i < kBatch; ++i)
            link.handler.request(QStringLiteral("getFileStatus"), kFileStatusArgs);
        nubixbench::spinUntil([target] { return link.frames >= target; });
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_RequestDeliveredToPeer)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole handling of a large answer: text to bytes, the check for keys
// repeated over containers, the parse and the parser of the records.
static void BM_HandleFileStatusAnswer(benchmark::State &state)
{
    NubixMessageHandler handler;
    const QString answer = fileStatusAnswer();
    for (auto _ : state)
        handler.handleMessage(answer);
    state.SetBytesProcessed(state.iterations() * answer.size());
}
BENCHMARK(BM_HandleFileStatusAnswer)->Unit(benchmark::kMillisecond);

// The check for repeated keys alone, on the same bytes: its share of the above.
static void BM_RepeatedKeyCheck(benchmark::State &state)
{
    const QByteArray bytes = fileStatusAnswer().toUtf8();
    for (auto _ : state)
        benchmark::DoNotOptimize(Json::repeatedContainerKeyAt(bytes));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_RepeatedKeyCheck)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return nubixbench::runBenchmarks(argc, argv, options);
}
