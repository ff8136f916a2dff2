// SPDX-License-Identifier: GPL-3.0-or-later
// Emblems for 10,000 items of the tree: the plug-in's hook answering from the
// cache, against asking the client (the simulator, over a localhost socket)
// for each item's status and waiting for the answer, for the same items in
// the same run. Targets: the hook at least 100x faster than the round trips,
// and under 1 us per item ("ns_per_item").
#include "benchapp.h"
#include "caches/nubixcaches.h"
#include "events/eventshandler.h"
#include "ipc/nubixmessagehandler.h"
#include "resources/nubixicons.h"

#include <kelodrivesim/simulator.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QIcon>
#include <QUrl>

using namespace hfmplugin_nubix;

namespace {

constexpr int kItems = nubixbench::kTreeFiles;

QString cloudPath(int i)
{
    return QStringLiteral("/file-%1.txt").arg(i, 5, 10, QLatin1Char('0'));
}

const QList<QUrl> &itemUrls()
{
    static const QList<QUrl> urls = [] {
        QList<QUrl> list;
        for (int i = 0; i < kItems; ++i) {
            QUrl url;
            url.setScheme(QStringLiteral("nubix"));
            url.setPath(cloudPath(i));
            url.setHost(QString());
            list.append(url);
        }
        return list;
    }();
    return urls;
}

// The simulator keeps the shared tree as its sync root; the plug-in's cache
// holds a status for every file of it, confirmed by a live summary.
kelodrive::Simulator *simulator()
{
    static kelodrive::Simulator *sim = [] {
        auto *s = new kelodrive::Simulator;
        s->setRescanMs(0);
        s->setSyncRoot(nubixbench::sharedTree());
        s->start();
        NubixMessageHandler::instance()->tryConnect();
        nubixbench::spinUntil([] { return NubixMessageHandler::instance()->isConnected(); }, 10000);
        nubixbench::spinUntil([] { return !NubixCaches::instance()->syncRoot().isEmpty(); }, 10000);

        QList<FileData> datas;
        for (int i = 0; i < kItems; ++i) {
            FileData data;
            data.path = cloudPath(i);
            data.planStatus = (i % 5 == 0) ? 2 : 3;
            datas.append(data);
        }
        NubixCaches::instance()->cacheFileDatas(datas);
        // A large batch is stored over several event-loop turns.
        nubixbench::spinUntil(
            [] { return NubixCaches::instance()->fileData(cloudPath(kItems - 1)).planStatus == 3; }, 10000);
        return s;
    }();
    return sim;
}

}   // namespace

static void BM_EmblemHook(benchmark::State &state)
{
    simulator();
    const QList<QUrl> &urls = itemUrls();
    qint64 answered = 0;
    QElapsedTimer clock;
    clock.start();
    for (auto _ : state) {
        QList<QIcon> emblems;
        for (const QUrl &url : urls) {
            answered += EventsHandler::instance()->hookRequestCustomEmblems(url, &emblems);
            emblems.clear();
        }
    }
    if (answered != state.iterations() * kItems)
        state.SkipWithError("not every item got an emblem");
    state.counters["ns_per_item"] = double(clock.nsecsElapsed()) / double(state.iterations() * kItems);
}
BENCHMARK(BM_EmblemHook)->Unit(benchmark::kMillisecond)->UseRealTime();

static void BM_StatusRoundTrip(benchmark::State &state)
{
    simulator();
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    const QList<QUrl> &urls = itemUrls();
    QString pending;
    bool got = false;
    const QMetaObject::Connection connection = QObject::connect(handler, &NubixMessageHandler::sigResponseFileStatus,
        [&](const QString &key, const QList<FileData> &) { got = got || key == pending; });
    qint64 answered = 0;
    QElapsedTimer clock;
    clock.start();
    for (auto _ : state) {
        for (const QUrl &url : urls) {
            got = false;
            pending = handler->requestFileStatus(url.path(), false);
            if (!nubixbench::spinUntil([&] { return got; }, 5000)) {
                state.SkipWithError("the simulator did not answer");
                break;
            }
            ++answered;
        }
    }
    QObject::disconnect(connection);
    state.counters["ns_per_item"] = answered ? double(clock.nsecsElapsed()) / double(answered) : 0.0;
}
BENCHMARK(BM_StatusRoundTrip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

int main(int argc, char **argv)
{
    nubixbench::RatioReporter reporter {{"BM_EmblemHook", "BM_StatusRoundTrip"}};
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    options.reporter = &reporter;
    options.setUp = [] {
        installIcons();
        return !nubixbench::sharedTree().isEmpty();
    };
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
