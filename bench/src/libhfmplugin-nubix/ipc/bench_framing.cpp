// SPDX-License-Identifier: GPL-3.0-or-later
// Cutting the client's byte stream into messages. A large message that
// arrives over many reads must cost time linear in its size (16 MiB at most
// 20x 1 MiB), and many small messages in one read must stay within 2x of
// QByteArray::split on the same bytes.
#include "benchapp.h"
#include "ipc/framesplitter.h"

#include <QList>

using hfmplugin_nubix::FrameSplitter;

namespace {
constexpr int kReadSize = 64 * 1024;
constexpr int kSmallMessages = 100000;

// JSON-like text of the given size followed by the delimiter, cut into reads.
QList<QByteArray> largeMessageReads(int size)
{
    const QByteArray pattern("{\"path\":\"/home/user/Kelo Drive/folder/file.txt\",\"plan_status\":3},");
    QByteArray message;
    message.reserve(size + 1);
    while (message.size() < size)
        message.append(pattern);
    message.truncate(size);
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
    for (int i = 0; i < kSmallMessages; ++i) {
        stream += "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"";
        stream += QByteArray::number(i);
        stream += "\"}}";
        stream += FrameSplitter::kDelimiter;
    }
    return stream;
}
}   // namespace

// One connection receiving one large message after another, as the client's
// splitter does over its life.
static void BM_LargeMessageInReads(benchmark::State &state)
{
    const int size = int(state.range(0)) * 1024 * 1024;
    const QList<QByteArray> reads = largeMessageReads(size);
    FrameSplitter splitter;
    for (auto _ : state) {
        feedOneMessage(state, splitter, reads);
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size));
    state.counters["reads"] = double(reads.size());
}
BENCHMARK(BM_LargeMessageInReads)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

// The same with the caches emptied before each message, as when a message
// arrives between the host's other work: the text then costs the same per
// byte whatever the size of the message. In the loop above a 1 MiB message
// and its buffer stay in the cache from one iteration to the next while a
// 16 MiB one (a 32 MiB string) cannot, which a plain copy of the same text
// into a string shows as well (BM_WidenIntoReusedString).
static void BM_LargeMessageInReadsColdCache(benchmark::State &state)
{
    const int size = int(state.range(0)) * 1024 * 1024;
    const QList<QByteArray> reads = largeMessageReads(size);
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
    state.SetBytesProcessed(state.iterations() * int64_t(size));
}
// Emptying the cache takes longer than the work, so the count is fixed.
BENCHMARK(BM_LargeMessageInReadsColdCache)->Arg(1)->Arg(16)->Iterations(100)->Unit(benchmark::kMillisecond);

static void BM_WidenIntoReusedString(benchmark::State &state)
{
    const int size = int(state.range(0)) * 1024 * 1024;
    const QByteArray text(size, 'x');
    QString buffer;
    buffer.reserve(size);
    for (auto _ : state) {
        buffer.resize(0);
        for (int at = 0; at < size; at += kReadSize)
            buffer.append(QLatin1String(text.constData() + at, qMin(kReadSize, size - at)));
        benchmark::DoNotOptimize(buffer.constData());
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size));
}
BENCHMARK(BM_WidenIntoReusedString)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);

// The first large message on a connection: its text lands in freshly
// allocated memory. Above the allocator's mapping threshold that cost is
// dominated by page faults, which a plain QString of the same size pays too
// (see BM_FillFreshString).
static void BM_LargeMessageFreshSplitter(benchmark::State &state)
{
    const int size = int(state.range(0)) * 1024 * 1024;
    const QList<QByteArray> reads = largeMessageReads(size);
    for (auto _ : state) {
        FrameSplitter splitter;
        feedOneMessage(state, splitter, reads);
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size));
}
BENCHMARK(BM_LargeMessageFreshSplitter)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);

static void BM_FillFreshString(benchmark::State &state)
{
    const int size = int(state.range(0)) * 1024 * 1024;
    for (auto _ : state) {
        QString text(size, QLatin1Char('x'));
        benchmark::DoNotOptimize(text.constData());
    }
    state.SetBytesProcessed(state.iterations() * int64_t(size));
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
    for (auto _ : state) {
        const QList<QByteArray> parts = stream.split(FrameSplitter::kDelimiter);
        benchmark::DoNotOptimize(parts.size());
    }
    state.SetItemsProcessed(state.iterations() * kSmallMessages);
}
BENCHMARK(BM_QByteArraySplitSameBytes)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return nubixbench::runBenchmarks(argc, argv);
}
