// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchapp.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>

namespace nubixbench {

namespace detail {

void prepareProcess()
{
    // Code under measurement may keep files under HOME. A function-local
    // static made before any singleton of that code outlives its last save.
    static QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

int runInApplication(int &argc, char **argv, const RunOptions &options)
{
    if (!options.quietCategory.isEmpty())
        QLoggingCategory::setFilterRules(QStringLiteral("%1.debug=false\n%1.info=false").arg(options.quietCategory));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    if (options.setUp && !options.setUp())
        return 1;
    benchmark::RunSpecifiedBenchmarks(options.reporter);
    benchmark::Shutdown();
    return 0;
}

}   // namespace detail

bool writeFiles(const QString &dir, int count)
{
    for (int i = 0; i < count; ++i) {
        QFile file(dir + QStringLiteral("/file-%1.txt").arg(i, 5, 10, QLatin1Char('0')));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(QByteArray(i % 97, 'x'));
    }
    return true;
}

const QString &sharedTree()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        if (dir.isValid() && writeFiles(dir.path(), kTreeFiles))
            return dir.path();
        std::fprintf(stderr, "cannot create the test tree\n");
        return QString();
    }();
    return path;
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
    const auto name = [](const auto &key) { return key.second.empty() ? key.first : key.first + "/" + key.second; };
    for (const auto &[subject, yardstick] : m_pairs) {
        for (const auto &[key, time] : m_times) {
            if (key.first != subject)
                continue;
            auto base = m_times.find({yardstick, key.second});
            if (base == m_times.end())
                base = m_times.find({yardstick, std::string()});
            if (base == m_times.end() || base->second.first <= 0 || base->second.second <= 0)
                continue;
            std::printf("%s vs %s: %.3fx wall, %.3fx cpu\n", name(key).c_str(), name(base->first).c_str(),
                time.first / base->second.first, time.second / base->second.second);
        }
    }
}

static qint64 threadCpuNs()
{
    timespec now {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

StallWatch::StallWatch()
{
    m_beat.setInterval(1);
    QObject::connect(&m_beat, &QTimer::timeout, [this] {
        m_longestNs = qMax(m_longestNs, m_sinceBeat.nsecsElapsed());
        const qint64 cpu = threadCpuNs();
        m_longestCpuNs = qMax(m_longestCpuNs, cpu - m_lastCpuNs);
        m_lastCpuNs = cpu;
        m_sinceBeat.restart();
    });
}

void StallWatch::start()
{
    m_longestNs = m_longestCpuNs = 0;
    m_lastCpuNs = threadCpuNs();
    m_sinceBeat.start();
    m_beat.start();
}

void StallWatch::stop()
{
    m_beat.stop();
    maxMs = qMax(maxMs, double(m_longestNs) / 1e6);
    maxCpuMs = qMax(maxCpuMs, double(m_longestCpuNs) / 1e6);
}

std::thread sendFromThread(int descriptor, const QByteArray &bytes)
{
    return std::thread([descriptor, &bytes] {
        const char *data = bytes.constData();
        qint64 left = bytes.size();
        while (left > 0) {
            const ssize_t written = ::send(descriptor, data, size_t(left), MSG_NOSIGNAL);
            if (written > 0) {
                data += written;
                left -= written;
            } else if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
                pollfd fd {descriptor, POLLOUT, 0};
                ::poll(&fd, 1, 100);
            } else {
                return;
            }
        }
    });
}

}   // namespace nubixbench
