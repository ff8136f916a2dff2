// SPDX-License-Identifier: GPL-3.0-or-later
// Listing a directory through the host's factories (iterator plus one info
// per entry, reading name, size and modification time) against a bare
// QDirIterator + QFileInfo loop reading the same fields.
#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

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
};

void bareQDirIterator(benchmark::State &state)
{
    const QString path = treePath();
    for (auto _ : state) {
        Totals totals;
        QDirIterator it(path, QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext()) {
            it.next();
            const QFileInfo info = it.fileInfo();
            totals.names += info.fileName().size();
            totals.bytes += info.size();
            totals.newest = qMax(totals.newest, info.lastModified().toMSecsSinceEpoch());
        }
        benchmark::DoNotOptimize(totals);
    }
    state.SetItemsProcessed(state.iterations() * kFiles);
}

// Arg 0: the info cache holds none of the files; 1: it holds all of them,
// so every listed info replaces a kept one.
void hostIteratorWithInfos(benchmark::State &state)
{
    const QString path = treePath();
    const QUrl url = QUrl::fromLocalFile(path);
    hfmbase::InfoCache::instance().clear();
    if (state.range(0) == 1) {
        QDirIterator it(path, QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext())
            hfmbase::InfoFactory::create<hfmbase::FileInfo>(QUrl::fromLocalFile(it.next()));
    }
    for (auto _ : state) {
        Totals totals;
        auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            url, {}, QDir::Files | QDir::NoDotAndDotDot);
        while (it->hasNext()) {
            it->next();
            const hfmbase::FileInfoPointer info = it->fileInfo();
            totals.names += info->fileName().size();
            totals.bytes += info->size();
            totals.newest = qMax(totals.newest, info->lastModified().toMSecsSinceEpoch());
        }
        benchmark::DoNotOptimize(totals);
    }
    hfmbase::InfoCache::instance().clear();
    state.SetItemsProcessed(state.iterations() * kFiles);
}

BENCHMARK(bareQDirIterator)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(hostIteratorWithInfos)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// After the table, prints each host loop's time relative to the bare loop
// (medians when repeated), in wall-clock and in CPU time: on a busy machine
// the CPU figure is the steadier one.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            const bool plain = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            if (plain || run.aggregate_name == "median")
                times[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)]
                    = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        auto bare = times.find("bareQDirIterator");
        if (bare == times.end() || bare->second.first <= 0 || bare->second.second <= 0)
            return;
        for (const auto &[name, time] : times) {
            if (name != bare->first)
                std::printf("%s vs bareQDirIterator: %.3fx wall, %.3fx cpu\n", name.c_str(),
                    time.first / bare->second.first, time.second / bare->second.second);
        }
    }

private:
    std::map<std::string, std::pair<double, double>> times;
};

}   // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (treePath().isEmpty()) {
        std::fprintf(stderr, "cannot create the test tree\n");
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
