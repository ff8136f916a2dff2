// SPDX-License-Identifier: GPL-3.0-or-later
// Listing a directory through the host's factories (iterator plus one info
// per entry, reading name, size and modification time) against a bare
// QDirIterator + QFileInfo loop reading the same fields.
#include "benchapp.h"
#include "benchtree.h"
#include "ratioreporter.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QDir>
#include <QDirIterator>

namespace {

using nubixbench::kTreeFiles;
using nubixbench::ListingTotals;
using nubixbench::sharedTree;

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

// Arg 0: the info cache holds none of the files; 1: it holds all of them,
// so every listed info replaces a kept one.
void hostIteratorWithInfos(benchmark::State &state)
{
    const QString path = sharedTree();
    const QUrl url = QUrl::fromLocalFile(path);
    hfmbase::InfoCache::instance().clear();
    if (state.range(0) == 1) {
        QDirIterator it(path, QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext())
            hfmbase::InfoFactory::create<hfmbase::FileInfo>(QUrl::fromLocalFile(it.next()));
    }
    for (auto _ : state) {
        ListingTotals totals;
        auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            url, {}, QDir::Files | QDir::NoDotAndDotDot);
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

}   // namespace

int main(int argc, char **argv)
{
    nubixbench::RatioReporter reporter("hostIteratorWithInfos", "bareQDirIterator");
    nubixbench::RunOptions options;
    options.setUp = [] { return !sharedTree().isEmpty(); };
    options.reporter = &reporter;
    return nubixbench::runBenchmarks(argc, argv, options);
}
