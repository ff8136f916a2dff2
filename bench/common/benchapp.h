// SPDX-License-Identifier: GPL-3.0-or-later
// The main() of every benchmark program, and the wait on the event loop.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QString>

#include <benchmark/benchmark.h>

#include <functional>

namespace nubixbench {

struct RunOptions
{
    // Debug and info messages of this logging category are turned off: the
    // programs measure the work, not the log.
    QString quietCategory;
    // Runs once the application exists and the flags are read; false ends
    // the program with exit code 1.
    std::function<bool()> setUp;
    // Replaces the default console output when set.
    benchmark::BenchmarkReporter *reporter = nullptr;
};

namespace detail {
void prepareProcess();
int runInApplication(int &argc, char **argv, const RunOptions &options);
}   // namespace detail

// Gives the process a throw-away HOME (and the offscreen platform unless one
// is set), creates the application the measured code needs, then runs the
// benchmarks named by the flags. Returns main's exit code.
template <class Application = QCoreApplication> int runBenchmarks(int argc, char **argv, const RunOptions &options = {})
{
    detail::prepareProcess();
    Application app(argc, argv);
    return detail::runInApplication(argc, argv, options);
}

// Processes the calling thread's events until done() holds; with a timeout,
// gives up after that many milliseconds. Returns done().
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

}   // namespace nubixbench
