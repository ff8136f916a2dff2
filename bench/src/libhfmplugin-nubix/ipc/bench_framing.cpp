// SPDX-License-Identifier: GPL-3.0-or-later
// Cutting the client's byte stream into messages. Targets: a large message
// over many reads costs time linear in its size (16 MiB at most 20x 1 MiB);
// many small messages in one read stay within 2x of QByteArray::split.
#include "benchapp.h"
#include "ipc/framesplitter.h"

using hfmplugin_nubix::FrameSplitter;

namespace {
constexpr int kReadSize = 64 * 1024;
constexpr int kSmallMessages = 100000;

// JSON-like text of `mib` MiB followed by the delimiter, cut into reads.
QList<QByteArray> largeMessageReads(qint64 mib)
{
    const QByteArray pattern("{\"path\":\"/home/user/Kelo Drive/folder/file.txt\",\"plan_status\":3},");
    QByteArray message = pattern.repeated(int(mib * 1024 * 1024 / pattern.size() + 1));
    message.truncate(int(mib * 1024 * 1024));
    message.append(FrameSplitter::kDelimiter);
    QList<QByteArray> reads;
    for (int at = 0; at < message.size(); at += kReadSize)
        reads.append(message.mid(at, kReadSize));
    return reads;
}

// Feeds every read of one large message; exactly that message must come out.
void feedOneMessage(benchmark::State &state, FrameSplitter &splitter, const QList<QByteArray> &reads)
{
    int messages = 0;
    for (const QByteArray &read : reads)
        messages += splitter.feed(read).size();
    if (messages != 1)
        state.SkipWithError("expected exactly one message");
}

QByteArray smallMessages()
{
    QByteArray stream;
    for (int i = 0; i < kSmallMessages; ++i)
        stream += "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"" + QByteArray::number(i) + "\"}}"
            + FrameSplitter::kDelimiter;
    return stream;
}
}   // namespace

// One connection receiving one large message after another.
static void BM_LargeMessageInReads(benchmark::State &state)
{
    const QList<QByteArray> reads = largeMessageReads(state.range(0));
    FrameSplitter splitter;
    for (auto _ : state)
        feedOneMessage(state, splitter, reads);
    state.SetBytesProcessed(state.iterations() * state.range(0) * 1024 * 1024);
    state.counters["reads"] = double(reads.size());
}
BENCHMARK(BM_LargeMessageInReads)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

// The same with the CPU caches emptied before each message, as when it arrives
// between the host's other work: above, a 1 MiB message stays in the cache
// from one iteration to the next and a 16 MiB one cannot.
static void BM_LargeMessageInReadsColdCache(benchmark::State &state)
{
    const QList<QByteArray> reads = largeMessageReads(state.range(0));
    FrameSplitter splitter;
    QByteArray evict(64 * 1024 * 1024, 0);
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < evict.size(); i += 64)
            evict[i] = char(evict[i] + 1);
        benchmark::ClobberMemory();
        state.ResumeTiming();
        feedOneMessage(state, splitter, reads);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 1024 * 1024);
}
// Emptying the cache takes longer than the work, so the count is fixed.
BENCHMARK(BM_LargeMessageInReadsColdCache)->Arg(1)->Arg(16)->Iterations(100)->Unit(benchmark::kMillisecond);

// The first large message on a connection: its bytes land in fresh memory,
// which above the allocator's mapping threshold costs page faults.
static void BM_LargeMessageFreshSplitter(benchmark::State &state)
{
    const QList<QByteArray> reads = largeMessageReads(state.range(0));
    for (auto _ : state) {
        FrameSplitter splitter;
        feedOneMessage(state, splitter, reads);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 1024 * 1024);
}
BENCHMARK(BM_LargeMessageFreshSplitter)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);

// Yardstick of the two above: a plain QString of the same size in fresh memory.
static void BM_FillFreshString(benchmark::State &state)
{
    for (auto _ : state) {
        QString text(int(state.range(0) * 1024 * 1024), QLatin1Char('x'));
        benchmark::DoNotOptimize(text.constData());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 1024 * 1024);
}
BENCHMARK(BM_FillFreshString)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);

static void BM_SmallMessagesOneRead(benchmark::State &state)
{
    const QByteArray stream = smallMessages();
    for (auto _ : state) {
        FrameSplitter splitter;
        const QStringList messages = splitter.feed(stream);
        if (messages.size() != kSmallMessages)
            state.SkipWithError("wrong message count");
        benchmark::DoNotOptimize(messages.size());
    }
    state.SetItemsProcessed(state.iterations() * kSmallMessages);
}
BENCHMARK(BM_SmallMessagesOneRead)->Unit(benchmark::kMillisecond);

// The yardstick: splitting the same bytes without decoding them.
static void BM_QByteArraySplitSameBytes(benchmark::State &state)
{
    const QByteArray stream = smallMessages();
    for (auto _ : state)
        benchmark::DoNotOptimize(stream.split(FrameSplitter::kDelimiter).size());
    state.SetItemsProcessed(state.iterations() * kSmallMessages);
}
BENCHMARK(BM_QByteArraySplitSameBytes)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return nubixbench::runBenchmarks(argc, argv);
}
