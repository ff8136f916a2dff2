// SPDX-License-Identifier: GPL-3.0-or-later
// Cost of one call through each event channel, on the GUI thread as in the
// host: a slot push with two arguments, a publish through two filters and one
// listener, and an emblem-style hook run with an out-argument.
#include "benchapp.h"

#include <hpf/event/event.h>

namespace {

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
    channel.connect(QStringLiteral("bench_space"), QStringLiteral("slot_Add"), &receiver, &Receiver::add);
    for (auto _ : state) {
        QVariant result = channel.push(QStringLiteral("bench_space"), QStringLiteral("slot_Add"), 1, 2);
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
    sequence.declare(QStringLiteral("bench_space"), QStringLiteral("hook_Emblems"));
    sequence.follow(QStringLiteral("bench_space"), QStringLiteral("hook_Emblems"), &receiver, &Receiver::emblems);
    const QUrl url(QStringLiteral("nubix:///doc/a.txt"));
    for (auto _ : state) {
        QList<QIcon> icons;
        bool handled = sequence.run(QStringLiteral("bench_space"), QStringLiteral("hook_Emblems"), url, &icons);
        benchmark::DoNotOptimize(handled);
    }
}
BENCHMARK(hookRunWithOutArgument);

}   // namespace

int main(int argc, char **argv)
{
    // The channels check the calling thread against the application's.
    return nubixbench::runBenchmarks(argc, argv);
}
