// SPDX-License-Identifier: GPL-3.0-or-later
// The host platform's costs under the plug-in: one call through each event channel on the GUI
// thread, and listing a folder of 10,000 files into the workspace's file view (worker thread,
// model, icon view laid out to the last row) with the longest stall of the GUI thread's event
// loop ("max_stall_ms"). The host's listing against bare Qt is bench_nubix_cloudlisting's,
// per-file refreshes in the view bench_nubix_emblemstorm's.
#include "benchapp.h"
#include "filemodel.h"
#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/infofactory.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QEventLoop>
#include <QIcon>

namespace {

using nubixbench::kTreeFiles;
using nubixbench::sharedTree;

// --- Event channels: a slot push with two arguments, a publish through two filters and
// one listener, an emblem-style hook run with an out-argument ----------------------------

const QString kSpace = QStringLiteral("bench_space");

class Receiver : public QObject
{
public:
    int sum = 0;
    int add(int a, int b) { return sum += a + b; }
    bool filter(quint64 id, const QUrl &) { return id == 0; }
    void listen(quint64 id, const QUrl &) { sum += int(id); }
    bool emblems(const QUrl &, QList<QIcon> *icons)
    {
        icons->append(QIcon());
        return true;
    }
};

void slotPushTwoArguments(benchmark::State &state)
{
    hpf::EventChannelManager channel;
    Receiver receiver;
    channel.connect(kSpace, QStringLiteral("slot_Add"), &receiver, &Receiver::add);
    for (auto _ : state) {
        QVariant result = channel.push(kSpace, QStringLiteral("slot_Add"), 1, 2);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(slotPushTwoArguments);

void publishTwoFiltersOneListener(benchmark::State &state)
{
    hpf::EventDispatcherManager dispatcher;
    Receiver receiver;
    dispatcher.installEventFilter(1, &receiver, &Receiver::filter);
    dispatcher.installEventFilter(1, &receiver, &Receiver::filter);
    dispatcher.subscribe(1, &receiver, &Receiver::listen);
    const QUrl url(QStringLiteral("file:///home/user/Documents"));
    for (auto _ : state) {
        bool passed = dispatcher.publish(1, quint64(1), url);
        benchmark::DoNotOptimize(passed);
    }
}
BENCHMARK(publishTwoFiltersOneListener);

void hookRunWithOutArgument(benchmark::State &state)
{
    hpf::EventSequenceManager sequence;
    Receiver receiver;
    sequence.declare(kSpace, QStringLiteral("hook_Emblems"));
    sequence.follow(kSpace, QStringLiteral("hook_Emblems"), &receiver, &Receiver::emblems);
    const QUrl url(QStringLiteral("nubix:///doc/a.txt"));
    for (auto _ : state) {
        QList<QIcon> icons;
        bool handled = sequence.run(kSpace, QStringLiteral("hook_Emblems"), url, &icons);
        benchmark::DoNotOptimize(handled);
    }
}
BENCHMARK(hookRunWithOutArgument);

// --- The file view ---------------------------------------------------------------------

// Runs the event loop (sleeping while idle, as the application does) until `done` holds.
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

void listingIntoView(benchmark::State &state)
{
    const QUrl url = QUrl::fromLocalFile(sharedTree());
    hfmplugin_workspace::WorkspaceRegistry registry;
    nubixbench::StallWatch stalls;
    for (auto _ : state) {
        hfmbase::InfoCache::instance().clear();
        hfmplugin_workspace::FileView view(&registry);
        view.resize(1000, 700);
        view.show();
        QCoreApplication::processEvents();
        bool loaded = false;
        QObject::connect(&view, &hfmplugin_workspace::FileView::loadFinished, [&loaded] { loaded = true; });

        QElapsedTimer clock;
        clock.start();
        stalls.start();
        view.setRootUrl(url);
        QAbstractItemView *items = view.currentView();
        // Listed, sorted and laid out up to the last row.
        runUntil([&] {
            return loaded && view.fileModel()->rowCount() == kTreeFiles
                && items->visualRect(view.fileModel()->index(kTreeFiles - 1, 0)).isValid();
        });
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        stalls.stop();
    }
    state.counters["max_stall_ms"] = stalls.maxMs;
}

BENCHMARK(listingIntoView)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

}   // namespace

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.setUp = [] {
        hdehost::registerHostMetaTypes();
        return !sharedTree().isEmpty();
    };
    // The channels check the calling thread against the application's.
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
