// SPDX-License-Identifier: GPL-3.0-or-later
// Listing 10,000 files of the sync root through the cloud iterator and cloud infos
// ("nubix:///") against the host's own local iterator and infos on the same folder, and those
// against a bare QDirIterator loop, reading name, size and modification time of every entry
// as a file view does.
#include "benchapp.h"
#include "caches/nubixcaches.h"
#include "file/cloudfileiterator.h"
#include "file/cloudproxyfileinfo.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QDir>
#include <QDirIterator>

using namespace hfmplugin_nubix;

namespace {

using nubixbench::kTreeFiles;
using nubixbench::sharedTree;

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
        nubixbench::ListingTotals totals;
        int urls = 0;
        auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            url, {}, QDir::Files | QDir::NoDotAndDotDot);
        while (it->hasNext()) {
            it->next();
            urls += it->fileUrl().isEmpty() ? 0 : 1;
            totals.add(*it->fileInfo());
        }
        if (urls != kTreeFiles)
            state.SkipWithError("the listing missed files");
        benchmark::DoNotOptimize(totals);
    }
    hfmbase::InfoCache::instance().clear();
    state.SetItemsProcessed(state.iterations() * kTreeFiles);
}

// The yardstick of the host's own listing: Qt's iterator and file infos alone.
void bareQDirIterator(benchmark::State &state)
{
    for (auto _ : state) {
        nubixbench::ListingTotals totals;
        QDirIterator it(sharedTree(), QDir::Files | QDir::NoDotAndDotDot);
        while (it.hasNext()) {
            it.next();
            totals.add(it.fileInfo());
        }
        benchmark::DoNotOptimize(totals);
    }
    state.SetItemsProcessed(state.iterations() * kTreeFiles);
}

void hostLocalListing(benchmark::State &state)
{
    listFolder(QUrl::fromLocalFile(sharedTree()), state);
}

void cloudListing(benchmark::State &state)
{
    listFolder(QUrl(QStringLiteral("nubix:///")), state);
}

// Each pair runs back to back, so that a change of load on the machine hits both.
BENCHMARK(bareQDirIterator)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(hostLocalListing)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(cloudListing)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(hostLocalListing)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(cloudListing)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0);

}   // namespace

int main(int argc, char **argv)
{
    nubixbench::RatioReporter reporter {{"cloudListing", "hostLocalListing"}, {"hostLocalListing", "bareQDirIterator"}};
    nubixbench::RunOptions options;
    // The iterator logs every listing it starts; that is not what is measured.
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    options.setUp = [] {
        if (sharedTree().isEmpty())
            return false;
        // What the plug-in registers for the scheme, and the tree as the sync root.
        hfmbase::InfoFactory::regClass<CloudProxyFileInfo>(
            QStringLiteral("nubix"), hfmbase::InfoFactory::RegOption::kNoCache);
        hfmbase::InfoCache::instance().setCacheDisbale(QStringLiteral("nubix"), true);
        hfmbase::DirIteratorFactory::regClass<CloudFileIterator>(QStringLiteral("nubix"));
        SyncInfo info;
        info.syncRoot = sharedTree();
        NubixCaches::instance()->setSyncInfo(info);
        return true;
    };
    options.reporter = &reporter;
    return nubixbench::runBenchmarks(argc, argv, options);
}
