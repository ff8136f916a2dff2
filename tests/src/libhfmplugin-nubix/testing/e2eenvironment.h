// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>

// The environment of the file manager and the simulator in end-to-end tests:
// a throw-away home, the built file manager first on PATH (the plug-in asks
// "hde-file-manager -v" for the host's version), headless, and only the log
// lines the test reads.
inline QProcessEnvironment e2eEnvironment(const QString &home, const QString &logRules)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    env.insert(QStringLiteral("PATH"),
        QFileInfo(QStringLiteral(HDE_FM_BINARY)).path() + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("QT_LOGGING_RULES"), logRules);
    env.remove(QStringLiteral("HDE_PLUGIN_DIRS"));
    return env;
}

// Writes a file of the test's tree, making its folders.
inline bool writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}
