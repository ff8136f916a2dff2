// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

// A fake host executable answering "-v" with the given output. Without `install`, only the
// tools the version query runs, as the whole search path: an installed host stays out of sight.
class FakeHost
{
public:
    explicit FakeHost(const QByteArray &versionOutput, bool install = true) : installed(install)
    {
        if (!install) {
            for (const char *tool : {"bash", "grep", "awk"})
                QFile::link(QStandardPaths::findExecutable(QLatin1String(tool)), dir.filePath(QLatin1String(tool)));
            return;
        }
        QFile script(dir.filePath(QStringLiteral("hde-file-manager")));
        script.open(QIODevice::WriteOnly);
        script.write("#!/bin/sh\n[ \"$1\" = \"-v\" ] || exit 2\nprintf '%s' '" + versionOutput + "'\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    // The search path with the fake first and the system's tools behind it.
    QByteArray path() const { return QFile::encodeName(dir.path()) + (installed ? ":/usr/bin:/bin" : ""); }

    QTemporaryDir dir;
    bool installed;
};
