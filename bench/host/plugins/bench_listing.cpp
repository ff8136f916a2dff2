// SPDX-License-Identifier: GPL-3.0-or-later
// Listing a 10,000-file folder into the workspace's file view (worker-thread
// listing, batches to the GUI thread, model, icon view laid out up to the
// last row) against the bare cost of the same listing: the iterator plus one
// file info per entry, reading what the view reads. The view run also
// reports the longest stall of the GUI thread's event loop while it lists
// ("max_stall_ms"), seen by a 1 ms heartbeat timer.
#include "benchapp.h"
#include "benchtree.h"
#include "filemodel.h"
#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/hostmetatypes.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <functional>

namespace {

using nubixbench::kTreeFiles;
using nubixbench::sharedTree;

// Runs the event loop (sleeping while idle, as the application does) until
// `done` holds.
void runUntil(const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    check.start(2);
    loop.exec();
}

void bareIterationWithInfos(benchmark::State &state)
{
    const QUrl url = QUrl::fromLocalFile(sharedTree());
    for (auto _ : state) {
        hfmbase::InfoCache::instance().clear();
        qint64 sum = 0;
        const auto it = hfmbase::DirIteratorFactory::create(
            url, QStringList(), QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
        while (it->hasNext()) {
            it->next();
            const hfmbase::FileInfoPointer info = it->fileInfo();
            sum += info->displayName().size() + info->size() + info->isDir() + info->lastModified().isValid();
        }
        benchmark::DoNotOptimize(sum);
    }
}

void listingIntoModel(benchmark::State &state)
{
    const QUrl url = QUrl::fromLocalFile(sharedTree());
    for (auto _ : state) {
        hfmbase::InfoCache::instance().clear();
        hfmplugin_workspace::FileModel model;
        bool loaded = false;
        QObject::connect(&model, &hfmplugin_workspace::FileModel::loadingFinished, [&loaded] { loaded = true; });
        QElapsedTimer clock;
        clock.start();
        model.setRootUrl(url);
        runUntil([&] { return loaded; });
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    }
}

void listingIntoView(benchmark::State &state)
{
    const QUrl url = QUrl::fromLocalFile(sharedTree());
    hfmplugin_workspace::WorkspaceRegistry registry;
    double maxStallMs = 0;
    for (auto _ : state) {
        hfmbase::InfoCache::instance().clear();
        hfmplugin_workspace::FileView view(&registry);
        view.resize(1000, 700);
        view.show();
        QCoreApplication::processEvents();

        QElapsedTimer heartbeat;
        qint64 longest = 0;
        QTimer beat;
        beat.setInterval(1);
        QObject::connect(&beat, &QTimer::timeout, [&] {
            longest = qMax(longest, heartbeat.nsecsElapsed());
            heartbeat.restart();
        });
        bool loaded = false;
        QObject::connect(&view, &hfmplugin_workspace::FileView::loadFinished, [&loaded] { loaded = true; });

        QElapsedTimer clock;
        clock.start();
        heartbeat.start();
        beat.start();
        view.setRootUrl(url);
        QAbstractItemView *items = view.currentView();
        // Listed, sorted and laid out up to the last row.
        runUntil([&] {
            return loaded && view.fileModel()->rowCount() == kTreeFiles
                && items->visualRect(view.fileModel()->index(kTreeFiles - 1, 0)).isValid();
        });
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        beat.stop();
        maxStallMs = qMax(maxStallMs, double(longest) / 1e6);
    }
    state.counters["max_stall_ms"] = maxStallMs;
}

}   // namespace

BENCHMARK(bareIterationWithInfos)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(listingIntoModel)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();
BENCHMARK(listingIntoView)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.setUp = [] {
        hdehost::registerHostMetaTypes();
        return !sharedTree().isEmpty();
    };
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
