// SPDX-License-Identifier: GPL-3.0-or-later
// A file view showing 10,000 items of the tree while the client reports a
// status for every one of them at once: as one "getFileStatus" answer, and as
// 10,000 "fileSyncStatus" notifications. Each run alternates the status, so
// every emblem has to change. Reported: the time until every status is cached
// and every row has been asked to repaint and has painted ("real time"), and
// the longest stall of the GUI thread's event loop, seen by a 1 ms heartbeat
// ("max_stall_ms"; "max_stall_cpu_ms" is the GUI thread's CPU time in that
// gap, which a busy machine does not inflate). Target: no stall over 50 ms.
// Logging is left as the host leaves it by default.
#include "caches/nubixcaches.h"
#include "events/eventshandler.h"
#include "file/cloudfileiterator.h"
#include "file/cloudfilewatcher.h"
#include "file/cloudproxyfileinfo.h"
#include "nubixbench.h"
#include "nubixglobal.h"
#include "resources/nubixicons.h"

#include "filemodel.h"
#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/abstractfilewatcher.h>
#include <hfmbase/infofactory.h>
#include <hfmbase/urlroute.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QLoggingCategory>
#include <QPainter>

using namespace hfmplugin_nubix;

namespace {

constexpr int kItems = nubixbench::kTreeFiles;

QByteArray cloudPath(int i)
{
    return "/file-" + QByteArray::number(i).rightJustified(5, '0') + ".txt";
}

QByteArray entry(int i, int status)
{
    return "{\"fileid\":" + QByteArray::number(1000 + i) + ",\"isDir\":false,\"path\":\"" + cloudPath(i)
        + "\",\"plan\":\"upload\",\"plan_error\":0,\"plan_status\":" + QByteArray::number(status) + "}";
}

QByteArray oneAnswer(int status)
{
    QByteArray text = "{\"type\":\"pong\",\"data\":{\"method\":\"getFileStatus\","
                      "\"key\":\"{3f2a8a5e-2c4b-4c7e-9d55-0a1b2c3d4e5f\",\"data\":{\"code\":0,\"result\":[";
    for (int i = 0; i < kItems; ++i)
        text += (i ? "," : "") + entry(i, status);
    return text + "]}}}\x0c";
}

QByteArray notifications(int status)
{
    QByteArray text;
    for (int i = 0; i < kItems; ++i)
        text
            += "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"n\",\"data\":{\"type\":\"fileSyncStatus\","
               "\"args\":"
            + entry(i, status) + "}}}\x0c";
    return text;
}

// The plug-in's pieces for the tree, as the plug-in registers them, and the
// host's emblem painting, as the emblem plug-in does it.
void registerTree()
{
    hdehost::registerHostMetaTypes();
    installIcons();
    hfmbase::UrlRoute::regScheme(Schemes::kNubix, QStringLiteral("/"), QIcon(), true, QStringLiteral("Kelo Drive"));
    hfmbase::InfoFactory::regClass<CloudProxyFileInfo>(Schemes::kNubix, hfmbase::InfoFactory::RegOption::kNoCache);
    hfmbase::InfoCache::instance().setCacheDisbale(Schemes::kNubix, true);
    hfmbase::DirIteratorFactory::regClass<CloudFileIterator>(Schemes::kNubix);
    hfmbase::WatcherCache::instance().setCacheDisbale(Schemes::kNubix, true);
    hfmbase::WatcherFactory::regClass<CloudFileWatcher>(Schemes::kNubix);

    hpf::sequence()->declare(hdehost::Space::kEmblem, hdehost::Topic::kCustomEmblemsFetch);
    hpf::channel()->connect(hdehost::Space::kEmblem, hdehost::Topic::kEmblemPaint,
        [](QPainter *painter, const QRect &rect, const QUrl &url) -> bool {
            QList<QIcon> icons;
            QList<QIcon> *out = &icons;
            hpf::sequence()->run(hdehost::Space::kEmblem, hdehost::Topic::kCustomEmblemsFetch, url, out);
            for (const QIcon &icon : qAsConst(icons))
                icon.paint(painter, QRect(rect.bottomRight() - QPoint(15, 15), QSize(16, 16)));
            return !icons.isEmpty();
        });
    EventsHandler::instance()->hookOperations();
}

struct Scene
{
    Scene()
    {
        SyncInfo info;
        info.syncRoot = nubixbench::sharedTree();
        info.syncInited = true;
        NubixCaches::instance()->setSyncInfo(info);
        hpf::channel()->connect(hdehost::Space::kWorkspace, hdehost::Topic::kModelFileUpdate, [this](const QUrl &url) {
            ++repaints;
            view.fileModel()->updateFile(url);
        });
        view.resize(1000, 700);
        view.show();
        bool loaded = false;
        QObject::connect(&view, &hfmplugin_workspace::FileView::loadFinished, [&loaded] { loaded = true; });
        view.setRootUrl(QUrl(QStringLiteral("nubix:///")));
        nubixbench::spinUntil([&] { return loaded && view.fileModel()->rowCount() == kItems; }, 120000);
    }
    hfmplugin_workspace::WorkspaceRegistry registry;
    hfmplugin_workspace::FileView view {&registry};
    nubixbench::ClientPeer client;
    qint64 repaints = 0;
};

Scene &scene()
{
    static Scene *s = new Scene;
    return *s;
}

void storm(benchmark::State &state, QByteArray (*payload)(int))
{
    Scene &s = scene();
    nubixbench::StallWatch stalls;
    int round = 0;
    for (auto _ : state) {
        const int status = (round++ % 2) ? 3 : 2;
        const QByteArray bytes = payload(status);
        const qint64 target = s.repaints + kItems;
        QElapsedTimer clock;
        clock.start();
        stalls.start();
        std::thread writer = s.client.send(bytes);
        nubixbench::spinUntil([&] { return s.repaints >= target; }, 120000);
        // The rows asked to repaint have painted.
        s.view.currentView()->viewport()->repaint();
        QCoreApplication::processEvents();
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        stalls.stop();
        writer.join();

        const QString last = QString::fromLatin1(cloudPath(kItems - 1));
        if (NubixCaches::instance()->fileData(last).planStatus != status)
            state.SkipWithError("the last status did not arrive");
    }
    state.counters["max_stall_ms"] = stalls.maxMs;
    state.counters["max_stall_cpu_ms"] = stalls.maxCpuMs;
}

void BM_StatusStorm_OneAnswer(benchmark::State &state)
{
    storm(state, &oneAnswer);
}
void BM_StatusStorm_Notifications(benchmark::State &state)
{
    storm(state, &notifications);
}

}   // namespace

BENCHMARK(BM_StatusStorm_OneAnswer)->Unit(benchmark::kMillisecond)->Iterations(4)->UseManualTime();
BENCHMARK(BM_StatusStorm_Notifications)->Unit(benchmark::kMillisecond)->Iterations(4)->UseManualTime();

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.setUp = [] {
        // The host's default: debug lines off, the rest on.
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
        registerTree();
        return !nubixbench::sharedTree().isEmpty();
    };
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
