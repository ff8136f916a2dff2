// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QTemporaryDir>

// A directory holding a fake host executable that answers "-v" with the given
// output (none: prints nothing); `install` false leaves the directory empty.
class FakeHost
{
public:
    explicit FakeHost(const QByteArray &versionOutput, bool install = true)
    {
        if (!install)
            return;
        QFile script(dir.filePath(QStringLiteral("hde-file-manager")));
        script.open(QIODevice::WriteOnly);
        script.write("#!/bin/sh\n[ \"$1\" = \"-v\" ] || exit 2\nprintf '%s' '" + versionOutput + "'\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    // The search path with the fake first and the system's tools behind it.
    QByteArray path() const { return QFile::encodeName(dir.path()) + ":/usr/bin:/bin"; }

    QTemporaryDir dir;
};
