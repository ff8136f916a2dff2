// SPDX-License-Identifier: GPL-3.0-or-later
// What received messages cost in memory, as resident bytes of the process:
// an unterminated message waiting in the splitter (per byte received), and a
// message that repeats a key whose earlier value is an object (per message
// handled, by Qt's parser alone and by the handler). Each runs once; the
// figures are the counters.
#include "benchapp.h"
#include "ipc/framesplitter.h"
#include "ipc/nubixmessagehandler.h"

#include <QFile>
#include <QJsonDocument>

#include <malloc.h>

using hfmplugin_nubix::FrameSplitter;
using hfmplugin_nubix::NubixMessageHandler;

namespace {
constexpr int kReadSize = 64 * 1024;

qint64 statusKb(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}
}   // namespace

// Argument: the message's size in MiB; the delimiter never comes.
static void BM_UnterminatedMessageResident(benchmark::State &state)
{
    const qint64 size = state.range(0) * 1024 * 1024;
    const QByteArray read(kReadSize, 'x');
    double perByte = 0;
    for (auto _ : state) {
        malloc_trim(0);
        const qint64 before = statusKb("VmRSS:");
        FrameSplitter splitter;
        for (qint64 at = 0; at < size; at += kReadSize)
            splitter.feed(read);
        const qint64 after = statusKb("VmRSS:");
        perByte = double(after - before) * 1024 / double(size);
        state.counters["resident_MB"] = double(after - before) / 1024;
        if (splitter.pendingSize() != size)
            state.SkipWithError("bytes lost");
    }
    state.counters["bytes_per_byte"] = perByte;
}
BENCHMARK(BM_UnterminatedMessageResident)->Arg(16)->Arg(200)->Iterations(1)->Unit(benchmark::kMillisecond);

namespace {
// Repeats "syncQuantity" over an object, as a faulty or hostile peer could.
const QByteArray kRepeatedKey("{\"type\":\"pong\",\"data\":{\"method\":\"getSyncInfo\",\"key\":\"{k\","
                              "\"data\":{\"result\":{\"syncQuantity\":{\"todo\":1,\"doing\":2,\"done\":3,\"error\":4},"
                              "\"syncQuantity\":{\"todo\":2}}}}}");

// Runs one message count times and reports the resident growth per message.
template <class Handle> void growthPerMessage(benchmark::State &state, Handle handle)
{
    for (auto _ : state) {
        malloc_trim(0);
        const qint64 before = statusKb("VmRSS:");
        for (int i = 0; i < state.range(0); ++i)
            handle();
        malloc_trim(0);
        const qint64 after = statusKb("VmRSS:");
        state.counters["bytes_per_message"] = double(after - before) * 1024 / double(state.range(0));
    }
}
}   // namespace

// Qt's parser alone on the message: what it loses each time.
static void BM_RepeatedKeyParserGrowth(benchmark::State &state)
{
    growthPerMessage(state, [] { benchmark::DoNotOptimize(QJsonDocument::fromJson(kRepeatedKey).isObject()); });
}
BENCHMARK(BM_RepeatedKeyParserGrowth)->Arg(200000)->Iterations(1)->Unit(benchmark::kMillisecond);

// The handler, which refuses the message before the parser: nothing grows.
static void BM_RepeatedKeyHandlerGrowth(benchmark::State &state)
{
    NubixMessageHandler handler;
    const QString message = QString::fromUtf8(kRepeatedKey);
    growthPerMessage(state, [&handler, &message] { handler.handleMessage(message); });
}
BENCHMARK(BM_RepeatedKeyHandlerGrowth)->Arg(200000)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return nubixbench::runBenchmarks(argc, argv, options);
}
