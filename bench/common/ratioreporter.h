// SPDX-License-Identifier: GPL-3.0-or-later
// Console output that ends with how one benchmark compares to its yardstick.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>

namespace nubixbench {

// After the table, prints each run of `subject` relative to the run of
// `yardstick` with the same arguments (or to its run without any), using
// medians when repeated, in wall-clock and in CPU time: on a busy machine
// the CPU figure is the steadier one.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    RatioReporter(std::string subject, std::string yardstick);

    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    const std::string m_subject;
    const std::string m_yardstick;
    // (function, arguments) -> (wall-clock, CPU) time per iteration.
    std::map<std::pair<std::string, std::string>, std::pair<double, double>> m_times;
};

}   // namespace nubixbench
