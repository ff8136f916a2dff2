// SPDX-License-Identifier: GPL-3.0-or-later
// What received messages cost in memory, as resident bytes of the process:
// an unterminated message waiting in the splitter (per byte received), and a
// message that repeats a key whose earlier value is an object (per message
// handled). Each runs once; the figures are the counters.
#include "benchapp.h"
#include "ipc/framesplitter.h"
#include "ipc/nubixmessagehandler.h"

#include <QFile>

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

// Argument: the number of messages handled.
static void BM_RepeatedKeyMessageGrowth(benchmark::State &state)
{
    NubixMessageHandler handler;
    const QString message
        = QStringLiteral("{\"type\":\"pong\",\"data\":{\"method\":\"getSyncInfo\",\"key\":\"{k\","
                         "\"data\":{\"result\":{\"syncQuantity\":{\"todo\":1},\"syncQuantity\":{\"todo\":2}}}}}");
    for (auto _ : state) {
        malloc_trim(0);
        const qint64 before = statusKb("VmRSS:");
        for (int i = 0; i < state.range(0); ++i)
            handler.handleMessage(message);
        malloc_trim(0);
        const qint64 after = statusKb("VmRSS:");
        state.counters["bytes_per_message"] = double(after - before) * 1024 / double(state.range(0));
    }
}
BENCHMARK(BM_RepeatedKeyMessageGrowth)->Arg(200000)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    nubixbench::RunOptions options;
    options.quietCategory = QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return nubixbench::runBenchmarks(argc, argv, options);
}
