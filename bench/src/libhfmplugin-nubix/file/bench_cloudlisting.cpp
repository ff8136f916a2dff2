// SPDX-License-Identifier: GPL-3.0-or-later
// Listing 10,000 files of the sync root through the cloud iterator and cloud
// infos ("nubix:///") against listing the same folder through the host's own
// local iterator and infos, reading name, size and modification time of
// every entry as a file view does.
#include "caches/nubixcaches.h"
#include "file/cloudfileiterator.h"
#include "file/cloudproxyfileinfo.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

using namespace hfmplugin_nubix;

namespace {

constexpr int kFiles = 10000;

const QString &treePath()
{
    static QTemporaryDir dir;
    static const bool filled = [] {
        for (int i = 0; i < kFiles; ++i) {
            QFile f(dir.filePath(QStringLiteral("file-%1.txt").arg(i, 5, 10, QLatin1Char('0'))));
            if (!f.open(QIODevice::WriteOnly))
                return false;
            f.write(QByteArray(i % 97, 'x'));
        }
        return true;
    }();
    static const QString path = filled ? dir.path() : QString();
    return path;
}

struct Totals
{
    qint64 bytes = 0;
    qint64 newest = 0;
    int names = 0;
    int urls = 0;
};

// The host's loop over one folder: next, the entry's URL, then its info.
void listFolder(const QUrl &url, benchmark::State &state)
{
    // Arg 0: the host's info cache is emptied before every listing (a
    // folder seen for the first time); 1: it keeps what earlier listings
    // left in it, as in a long session.
    const bool warm = state.range(0) == 1;
    hfmbase::InfoCache::instance().clear();
    for (auto _ : state) {
        if (!warm) {
            state.PauseTiming();
            hfmbase::InfoCache::instance().clear();
            state.ResumeTiming();
        }
        Totals totals;
        auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            url, {}, QDir::Files | QDir::NoDotAndDotDot);
        while (it->hasNext()) {
            it->next();
            totals.urls += it->fileUrl().isEmpty() ? 0 : 1;
            const hfmbase::FileInfoPointer info = it->fileInfo();
            totals.names += info->fileName().size();
            totals.bytes += info->size();
            totals.newest = qMax(totals.newest, info->lastModified().toMSecsSinceEpoch());
        }
        if (totals.urls != kFiles)
            state.SkipWithError("the listing missed files");
        benchmark::DoNotOptimize(totals);
    }
    hfmbase::InfoCache::instance().clear();
    state.SetItemsProcessed(state.iterations() * kFiles);
}

void hostLocalListing(benchmark::State &state)
{
    listFolder(QUrl::fromLocalFile(treePath()), state);
}

void cloudListing(benchmark::State &state)
{
    listFolder(QUrl(QStringLiteral("nubix:///")), state);
}

// Each pair runs back to back, so that a change of load on the machine hits both.
BENCHMARK(hostLocalListing)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(cloudListing)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(hostLocalListing)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(cloudListing)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// After the table, prints each cloud listing's time relative to the local
// one with the same argument (medians when repeated), in wall-clock and in
// CPU time: on a busy machine the CPU figure is the steadier one.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            const bool plain = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            if (plain || run.aggregate_name == "median")
                times[{run.run_name.function_name, run.run_name.args}]
                    = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        for (const auto &[key, time] : times) {
            if (key.first != "cloudListing")
                continue;
            const auto local = times.find({"hostLocalListing", key.second});
            if (local == times.end() || local->second.first <= 0 || local->second.second <= 0)
                continue;
            std::printf("cloudListing/%s vs hostLocalListing/%s: %.3fx wall, %.3fx cpu\n", key.second.c_str(),
                key.second.c_str(), time.first / local->second.first, time.second / local->second.second);
        }
    }

private:
    std::map<std::pair<std::string, std::string>, std::pair<double, double>> times;
};

}   // namespace

int main(int argc, char **argv)
{
    // The status cache keeps a file under HOME: give it a throw-away one.
    // Made before the cache so that it outlives the cache's last save.
    static QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));

    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (treePath().isEmpty()) {
        std::fprintf(stderr, "cannot create the test tree\n");
        return 1;
    }

    // What the plug-in registers for the scheme, and the tree as the sync root.
    hfmbase::InfoFactory::regClass<CloudProxyFileInfo>(
        QStringLiteral("nubix"), hfmbase::InfoFactory::RegOption::kNoCache);
    hfmbase::InfoCache::instance().setCacheDisbale(QStringLiteral("nubix"), true);
    hfmbase::DirIteratorFactory::regClass<CloudFileIterator>(QStringLiteral("nubix"));
    SyncInfo info;
    info.syncRoot = treePath();
    NubixCaches::instance()->setSyncInfo(info);
    // The iterator logs every listing it starts; that is not what is measured.
    QLoggingCategory::setFilterRules(QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix.debug=false"));

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
