// SPDX-License-Identifier: GPL-3.0-or-later
#include "ratioreporter.h"

#include <cstdio>

namespace nubixbench {

namespace {
std::string runName(const std::pair<std::string, std::string> &key)
{
    return key.second.empty() ? key.first : key.first + "/" + key.second;
}
}   // namespace

RatioReporter::RatioReporter(std::string subject, std::string yardstick)
    : m_subject(std::move(subject)), m_yardstick(std::move(yardstick))
{
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const bool plain = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
        if (plain || run.aggregate_name == "median")
            m_times[{run.run_name.function_name, run.run_name.args}]
                = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
    }
    ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::Finalize()
{
    ConsoleReporter::Finalize();
    for (const auto &[key, time] : m_times) {
        if (key.first != m_subject)
            continue;
        auto base = m_times.find({m_yardstick, key.second});
        if (base == m_times.end())
            base = m_times.find({m_yardstick, std::string()});
        if (base == m_times.end() || base->second.first <= 0 || base->second.second <= 0)
            continue;
        std::printf("%s vs %s: %.3fx wall, %.3fx cpu\n", runName(key).c_str(), runName(base->first).c_str(),
            time.first / base->second.first, time.second / base->second.second);
    }
}

}   // namespace nubixbench
