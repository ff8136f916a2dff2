// SPDX-License-Identifier: GPL-3.0-or-later
// What every fuzz target shares: one application object for the whole run
// and no logging, since every message is logged in full and the log is not
// what is being tested.
#pragma once

#include <QCoreApplication>
#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>

namespace nubixfuzz {

inline void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) { }

inline void setUp(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv);
    QLoggingCategory::setFilterRules(QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix=false"));
    qInstallMessageHandler(dropMessage);
}

// Read sizes drawn from a generator seeded by the input, from 1 to 512 bytes,
// or all of one fixed size when the seed is below 64.
class ReadSizes
{
public:
    explicit ReadSizes(uint8_t seed) : fixed(seed < 64 ? seed + 1 : 0), state(seed * 2654435761u + 1) { }
    int next()
    {
        if (fixed)
            return fixed;
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return int(state % 512) + 1;
    }

private:
    int fixed;
    uint32_t state;
};

}   // namespace nubixfuzz
