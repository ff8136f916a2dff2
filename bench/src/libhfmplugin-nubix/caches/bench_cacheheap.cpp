// SPDX-License-Identifier: GPL-3.0-or-later
// Heap that the status cache keeps per entry once a "getFileStatus" answer
// has been taken in and everything else has let go of it, the first time and
// after the same answer again; the target is at most 400 bytes (counters
// "heap_per_entry" and "heap_per_entry_repeated"). A counting malloc sees every
// allocation of the process, Qt's included, with the allocator's chunk header.
#include "caches/nubixcaches.h"
#include "nubixbench.h"

#include <atomic>
#include <malloc.h>
#include <memory>

using namespace hfmplugin_nubix;
using nubixbench::cloudPath;
using nubixbench::fileStatusAnswer;

extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void __libc_free(void *);
void *__libc_memalign(size_t, size_t);
}

namespace {
std::atomic<qint64> liveBytes {0};

void track(void *p, qint64 sign)
{
    if (p)
        liveBytes.fetch_add(sign * qint64(malloc_usable_size(p) + sizeof(size_t)), std::memory_order_relaxed);
}
}   // namespace

extern "C" {
void *malloc(size_t size)
{
    void *p = __libc_malloc(size);
    track(p, 1);
    return p;
}
void *calloc(size_t n, size_t size)
{
    void *p = __libc_calloc(n, size);
    track(p, 1);
    return p;
}
void *realloc(void *old, size_t size)
{
    track(old, -1);
    void *p = __libc_realloc(old, size);
    // A failed realloc leaves the old block in place.
    track(p ? p : (size ? old : nullptr), 1);
    return p;
}
void free(void *p)
{
    track(p, -1);
    __libc_free(p);
}
void *memalign(size_t alignment, size_t size)
{
    void *p = __libc_memalign(alignment, size);
    track(p, 1);
    return p;
}
void *aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}
int posix_memalign(void **out, size_t alignment, size_t size)
{
    *out = memalign(alignment, size);
    return *out ? 0 : 12;
}
}

static void BM_HeapPerCachedEntry(benchmark::State &state)
{
    const int count = int(state.range(0));
    const QString answer = QString::fromUtf8(fileStatusAnswer(count));
    double perEntry = 0;
    double afterRepeat = 0;
    for (auto _ : state) {
        // Only this cache listens to the process's handler.
        auto caches = std::make_unique<NubixCaches>();
        const qint64 before = liveBytes.load();
        NubixMessageHandler::instance()->handleMessage(answer);
        perEntry = double(liveBytes.load() - before) / count;
        // The same folder reported again replaces every entry.
        NubixMessageHandler::instance()->handleMessage(answer);
        afterRepeat = double(liveBytes.load() - before) / count;
        benchmark::DoNotOptimize(caches->fileData(cloudPath(0)).planStatus);
    }
    state.counters["heap_per_entry"] = perEntry;
    state.counters["heap_per_entry_repeated"] = afterRepeat;
}
BENCHMARK(BM_HeapPerCachedEntry)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return nubixbench::runBenchmarks(argc, argv, options);
}
