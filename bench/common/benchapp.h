// SPDX-License-Identifier: GPL-3.0-or-later
// What every benchmark program shares: its main(), the wait on the event loop,
// a temporary folder of files, the ratio printout and the stall watch.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <thread>

namespace nubixbench {

struct RunOptions
{
    QString quietCategory;   // its debug and info lines are off: the work is measured, not the log
    std::function<bool()> setUp;   // once the application exists; false ends the program with 1
    benchmark::BenchmarkReporter *reporter = nullptr;   // instead of the console's, when set
};

namespace detail {
void prepareProcess();
int runInApplication(int &argc, char **argv, const RunOptions &options);
}   // namespace detail

// Gives the process a throw-away HOME (and the offscreen platform unless one is set), creates
// the application the measured code needs and runs the benchmarks named by the flags.
template <class Application = QCoreApplication> int runBenchmarks(int argc, char **argv, const RunOptions &options = {})
{
    detail::prepareProcess();
    Application app(argc, argv);
    return detail::runInApplication(argc, argv, options);
}

// Processes the calling thread's events until done() holds or, with one, the timeout passes.
template <class Done> bool spinUntil(Done done, qint64 timeoutMs = -1)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timeoutMs >= 0 && timer.elapsed() >= timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

constexpr int kTreeFiles = 10000;

// Writes file-00000.txt, file-00001.txt, ... into the folder `dir`, file i holding i % 97 bytes.
bool writeFiles(const QString &dir, int count);
// A folder of kTreeFiles such files for the whole run; empty when it could not be made.
const QString &sharedTree();

// What a file view reads of every listed entry (name, size, modification time), summed so
// that the reads cannot be optimised away.
struct ListingTotals
{
    qint64 bytes = 0;
    qint64 newest = 0;
    int names = 0;

    template <class Info> void add(const Info &info)
    {
        names += info.fileName().size();
        bytes += info.size();
        newest = qMax(newest, info.lastModified().toMSecsSinceEpoch());
    }
};

// After the table, prints each run of a subject relative to the run of its yardstick with the
// same arguments (or without any), medians when repeated, in wall-clock and in CPU time (on a
// busy machine the steadier one).
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    using Pairs = std::vector<std::pair<std::string, std::string>>;   // (subject, yardstick)
    RatioReporter(std::initializer_list<Pairs::value_type> pairs) : m_pairs(pairs) { }
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    const Pairs m_pairs;
    // (function, arguments) -> (wall-clock, CPU) time per iteration.
    std::map<std::pair<std::string, std::string>, std::pair<double, double>> m_times;
};

// The longest stall of the calling thread's event loop between start() and stop(), over all
// such spans, seen by a 1 ms heartbeat: wall-clock, and the thread's CPU time in that gap,
// which a busy machine does not inflate.
class StallWatch
{
public:
    StallWatch();
    void start();
    void stop();

    double maxMs = 0;
    double maxCpuMs = 0;

private:
    QTimer m_beat;
    QElapsedTimer m_sinceBeat;
    qint64 m_lastCpuNs = 0;
    qint64 m_longestNs = 0;
    qint64 m_longestCpuNs = 0;
};

// Writes all of `bytes` (which must outlive the thread) to a socket from a thread of its own,
// as a client does from its process, waiting whenever the socket is full.
std::thread sendFromThread(int descriptor, const QByteArray &bytes);

}   // namespace nubixbench
