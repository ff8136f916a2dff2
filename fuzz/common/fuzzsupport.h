// SPDX-License-Identifier: GPL-3.0-or-later
// What every fuzz target shares: one application object for the whole run
// and no logging, since every message is logged in full and the log is not
// what is being tested.
#pragma once

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>

namespace nubixfuzz {

inline void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) { }

// The GUI application is for code that the file manager only ever runs
// inside one: Qt's settings reader, for one, may build images from a file.
inline void setUp(int *argc, char ***argv, bool gui = false)
{
    if (gui) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        // Kept to the end: torn down, Qt's offscreen platform leaves its
        // screen behind, which the leak check at exit would report.
        static QGuiApplication *const app = new QGuiApplication(*argc, *argv);
        Q_UNUSED(app)
    } else {
        static QCoreApplication app(*argc, *argv);
    }
    QLoggingCategory::setFilterRules(QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix=false"));
    qInstallMessageHandler(dropMessage);
}

// Read sizes drawn from a generator seeded by the input, from 1 to 512 bytes,
// or all of one fixed size when the seed is below 64.
class ReadSizes
{
public:
    static constexpr int kMax = 512;

    explicit ReadSizes(uint8_t seed) : fixed(seed < 64 ? seed + 1 : 0), state(seed * 2654435761u + 1) { }
    int next()
    {
        if (fixed)
            return fixed;
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return int(state % kMax) + 1;
    }

private:
    int fixed;
    uint32_t state;
};

}   // namespace nubixfuzz
