// SPDX-License-Identifier: GPL-3.0-or-later
// 10,000 per-file refreshes ("slot_Model_FileUpdate") arriving at a file view
// that shows 10,000 items, with an emblem hook painting an icon per item as a
// plug-in would. Two shapes of arrival: all in one turn of the event loop
// (one answer carrying 10,000 statuses) and as 10,000 separate queued
// notifications. Reported: the longest stall of the GUI thread's event loop
// ("max_stall_ms", seen by a 1 ms heartbeat timer; "max_stall_cpu_ms", the
// GUI thread's CPU time in that gap) and the time until every
// row has been announced as changed and painted (the iteration time).
#include "benchapp.h"
#include "benchtree.h"
#include "filemodel.h"
#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/infofactory.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QTimer>

#include <ctime>

#include <vector>

namespace {

// CPU time of the calling thread: on a busy machine the wall-clock stall
// also counts the time other programs had the core.
qint64 threadCpuNs()
{
    timespec now {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

using nubixbench::kTreeFiles;
using nubixbench::sharedTree;

// The plug-in side: a status per file name, an icon per status.
struct EmblemSource : QObject
{
    QHash<QString, int> statuses;
    QIcon icons[2];

    EmblemSource()
    {
        QPixmap green(16, 16);
        green.fill(Qt::green);
        QPixmap red(16, 16);
        red.fill(Qt::red);
        icons[0] = QIcon(green);
        icons[1] = QIcon(red);
    }
    bool fetch(const QUrl &url, QList<QIcon> *emblems)
    {
        const auto it = statuses.constFind(url.fileName());
        if (it == statuses.cend() || !emblems)
            return false;
        emblems->append(icons[*it & 1]);
        return true;
    }
    // What the emblem plug-in does for every painted item.
    bool paint(QPainter *painter, const QRect &iconRect, const QUrl &url)
    {
        QList<QIcon> emblems;
        hpf::sequence()->run(hdehost::Space::kEmblem, hdehost::Topic::kCustomEmblemsFetch, url, &emblems);
        for (const QIcon &icon : qAsConst(emblems))
            icon.paint(painter, QRect(iconRect.bottomRight() - QPoint(15, 15), QSize(16, 16)));
        return !emblems.isEmpty();
    }
};

EmblemSource &emblems()
{
    static EmblemSource source;
    static const bool hooked = [] {
        hpf::sequence()->declare(hdehost::Space::kEmblem, hdehost::Topic::kCustomEmblemsFetch);
        hpf::sequence()->follow(
            hdehost::Space::kEmblem, hdehost::Topic::kCustomEmblemsFetch, &source, &EmblemSource::fetch);
        hpf::channel()->connect(hdehost::Space::kEmblem, hdehost::Topic::kEmblemPaint, &source, &EmblemSource::paint);
        return true;
    }();
    Q_UNUSED(hooked)
    return source;
}

void runUntil(const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    check.start(1);
    loop.exec();
}

// arg 0: 0 = one burst in one turn, 1 = one queued notification per file.
void fileUpdatesIntoView(benchmark::State &state)
{
    const bool queued = state.range(0) == 1;
    const QString root = sharedTree();
    EmblemSource &source = emblems();
    hfmplugin_workspace::WorkspaceRegistry registry;
    hfmplugin_workspace::FileView view(&registry);
    view.resize(1000, 700);
    view.show();
    bool loaded = false;
    QObject::connect(&view, &hfmplugin_workspace::FileView::loadFinished, [&loaded] { loaded = true; });
    view.setRootUrl(QUrl::fromLocalFile(root));
    hfmplugin_workspace::FileModel *model = view.fileModel();
    runUntil([&] { return loaded && model->rowCount() == kTreeFiles; });
    // What the workspace plug-in does with the push, for the one view here.
    hpf::channel()->connect(hdehost::Space::kWorkspace, hdehost::Topic::kModelFileUpdate,
        [model](const QUrl &url) { model->updateFile(url); });

    std::vector<QUrl> urls;
    for (int row = 0; row < model->rowCount(); ++row)
        urls.push_back(model->itemAt(row)->url);

    std::vector<char> changed(size_t(kTreeFiles), 0);
    int changedCount = 0;
    QObject::connect(model, &QAbstractItemModel::dataChanged, [&](const QModelIndex &from, const QModelIndex &to) {
        for (int row = from.row(); row <= to.row(); ++row) {
            if (!changed[size_t(row)]) {
                changed[size_t(row)] = 1;
                ++changedCount;
            }
        }
    });

    double maxStallMs = 0;
    double maxStallCpuMs = 0;
    int round = 0;
    for (auto _ : state) {
        ++round;
        for (const QUrl &url : urls)
            source.statuses.insert(url.fileName(), round);
        std::fill(changed.begin(), changed.end(), 0);
        changedCount = 0;
        QElapsedTimer heartbeat;
        qint64 longest = 0;
        qint64 longestCpu = 0;
        qint64 lastCpu = threadCpuNs();
        QTimer beat;
        beat.setInterval(1);
        QObject::connect(&beat, &QTimer::timeout, [&] {
            longest = qMax(longest, heartbeat.nsecsElapsed());
            const qint64 cpu = threadCpuNs();
            longestCpu = qMax(longestCpu, cpu - lastCpu);
            lastCpu = cpu;
            heartbeat.restart();
        });
        QElapsedTimer clock;
        clock.start();
        heartbeat.start();
        beat.start();
        auto push = [](const QUrl &url) {
            hpf::channel()->push(hdehost::Space::kWorkspace, hdehost::Topic::kModelFileUpdate, url);
        };
        if (queued) {
            for (const QUrl &url : urls)
                QMetaObject::invokeMethod(
                    qApp, [push, url] { push(url); }, Qt::QueuedConnection);
        } else {
            QMetaObject::invokeMethod(
                qApp,
                [push, &urls] {
                    for (const QUrl &url : urls)
                        push(url);
                },
                Qt::QueuedConnection);
        }
        runUntil([&] { return changedCount == kTreeFiles; });
        // The repaint that shows the new emblems.
        view.currentView()->viewport()->repaint();
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        beat.stop();
        maxStallMs = qMax(maxStallMs, double(longest) / 1e6);
        maxStallCpuMs = qMax(maxStallCpuMs, double(longestCpu) / 1e6);
    }
    state.counters["max_stall_ms"] = maxStallMs;
    state.counters["max_stall_cpu_ms"] = maxStallCpuMs;
}

}   // namespace

BENCHMARK(fileUpdatesIntoView)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.setUp = [] {
        hdehost::registerHostMetaTypes();
        return !sharedTree().isEmpty();
    };
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
