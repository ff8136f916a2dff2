// SPDX-License-Identifier: GPL-3.0-or-later
// The host platform's costs under the plug-in, on a folder of 10,000 files:
// listing through the host's factories against a bare QDirIterator loop; one
// call through each event channel on the GUI thread; listing into the
// workspace's file view (worker thread, model, icon view laid out to the last
// row); 10,000 per-file refreshes arriving at that view, with an emblem hook
// painting an icon per item, in one turn of the event loop (one answer) or as
// 10,000 queued notifications. The view runs report the longest stall of the
// GUI thread's event loop ("max_stall_ms", "max_stall_cpu_ms").
#include "benchapp.h"
#include "filemodel.h"
#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QDirIterator>
#include <QEventLoop>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <vector>

namespace {

using nubixbench::kTreeFiles;
using nubixbench::ListingTotals;
using nubixbench::sharedTree;

// --- Listing through the factories ---------------------------------------------------

void bareQDirIterator(benchmark::State &state)
{
    const QString path = sharedTree();
    for (auto _ : state) {
        ListingTotals totals;
        QDirIterator it(path, QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext()) {
            it.next();
            totals.add(it.fileInfo());
        }
        benchmark::DoNotOptimize(totals);
    }
    state.SetItemsProcessed(state.iterations() * kTreeFiles);
}

// Arg 0: the info cache holds none of the files (emptied before every
// listing, as the view's listings below do); 1: it holds all of them, so
// every listed info replaces a kept one.
void hostIteratorWithInfos(benchmark::State &state)
{
    const QString path = sharedTree();
    hfmbase::InfoCache::instance().clear();
    if (state.range(0) == 1) {
        QDirIterator it(path, QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext())
            hfmbase::InfoFactory::create<hfmbase::FileInfo>(QUrl::fromLocalFile(it.next()));
    }
    for (auto _ : state) {
        if (state.range(0) == 0)
            hfmbase::InfoCache::instance().clear();
        ListingTotals totals;
        auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            QUrl::fromLocalFile(path), {}, QDir::Files | QDir::NoDotAndDotDot);
        while (it->hasNext()) {
            it->next();
            totals.add(*it->fileInfo());
        }
        benchmark::DoNotOptimize(totals);
    }
    hfmbase::InfoCache::instance().clear();
    state.SetItemsProcessed(state.iterations() * kTreeFiles);
}

BENCHMARK(bareQDirIterator)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(hostIteratorWithInfos)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);

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

// Runs the event loop (sleeping while idle, as the application does) until
// `done` holds, looking every `everyMs`.
void runUntil(const std::function<bool()> &done, int everyMs)
{
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    check.start(everyMs);
    loop.exec();
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
        runUntil([&] { return loaded; }, 2);
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    }
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
        runUntil(
            [&] {
                return loaded && view.fileModel()->rowCount() == kTreeFiles
                    && items->visualRect(view.fileModel()->index(kTreeFiles - 1, 0)).isValid();
            },
            2);
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        stalls.stop();
    }
    state.counters["max_stall_ms"] = stalls.maxMs;
}

BENCHMARK(listingIntoModel)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();
BENCHMARK(listingIntoView)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

// --- Per-file refreshes (last: the emblem hook it installs stays) -----------------------

// The plug-in side: a status per file name, an icon per status.
struct EmblemSource : QObject
{
    static QIcon filled(Qt::GlobalColor color)
    {
        QPixmap pixmap(16, 16);
        pixmap.fill(color);
        return QIcon(pixmap);
    }
    QHash<QString, int> statuses;
    QIcon icons[2] = {filled(Qt::green), filled(Qt::red)};
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

// arg 0: 0 = one burst in one turn, 1 = one queued notification per file.
void fileUpdatesIntoView(benchmark::State &state)
{
    const bool queued = state.range(0) == 1;
    EmblemSource &source = emblems();
    hfmplugin_workspace::WorkspaceRegistry registry;
    hfmplugin_workspace::FileView view(&registry);
    view.resize(1000, 700);
    view.show();
    bool loaded = false;
    QObject::connect(&view, &hfmplugin_workspace::FileView::loadFinished, [&loaded] { loaded = true; });
    view.setRootUrl(QUrl::fromLocalFile(sharedTree()));
    hfmplugin_workspace::FileModel *model = view.fileModel();
    runUntil([&] { return loaded && model->rowCount() == kTreeFiles; }, 1);
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

    const auto push = [](const QUrl &url) {
        hpf::channel()->push(hdehost::Space::kWorkspace, hdehost::Topic::kModelFileUpdate, url);
    };
    nubixbench::StallWatch stalls;
    int round = 0;
    for (auto _ : state) {
        ++round;
        for (const QUrl &url : urls)
            source.statuses.insert(url.fileName(), round);
        std::fill(changed.begin(), changed.end(), 0);
        changedCount = 0;
        QElapsedTimer clock;
        clock.start();
        stalls.start();
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
        runUntil([&] { return changedCount == kTreeFiles; }, 1);
        // The repaint that shows the new emblems.
        view.currentView()->viewport()->repaint();
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        stalls.stop();
    }
    state.counters["max_stall_ms"] = stalls.maxMs;
    state.counters["max_stall_cpu_ms"] = stalls.maxCpuMs;
}

BENCHMARK(fileUpdatesIntoView)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

}   // namespace

int main(int argc, char **argv)
{
    nubixbench::RatioReporter reporter("hostIteratorWithInfos", "bareQDirIterator");
    nubixbench::RunOptions options;
    options.setUp = [] {
        hdehost::registerHostMetaTypes();
        return !sharedTree().isEmpty();
    };
    options.reporter = &reporter;
    // The channels check the calling thread against the application's.
    return nubixbench::runBenchmarks<QApplication>(argc, argv, options);
}
