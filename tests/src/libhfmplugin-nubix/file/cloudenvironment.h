// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "caches/nubixcaches.h"
#include "nubixplugin.h"

#include "fakehost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>

// A real sync root in a temporary folder and the plug-in's cloud classes
// registered the way the host gets them: through NubixPlugin::initialize()
// with a host of a supported version first on the PATH. One per test
// program (the host's factories keep registrations for the process).
class CloudEnvironment
{
public:
    // False when the folders or the fake host cannot be made.
    bool setUp()
    {
        const FakeHost host("hde-file-manager 6.0.49.25\n");
        if (!host.dir.isValid() || !rootDir.isValid())
            return false;
        const QByteArray oldPath = qgetenv("PATH");
        qputenv("PATH", host.path());
        plugin.initialize();
        qputenv("PATH", oldPath);

        useRoot(rootDir.path());
        return true;
    }

    QString root() const { return rootDir.path(); }
    QString localPath(const QString &relative) const { return rootDir.path() + QLatin1Char('/') + relative; }

    static void useRoot(const QString &root)
    {
        hfmplugin_nubix::NubixCaches::instance()->setSyncInfo(hfmplugin_nubix::SyncInfo {root, {}, {}, {}});
    }

    // The cloud URL of a path below the root, built by hand ("" is the cloud
    // root); names may hold '#', '?' or '%'.
    static QUrl cloud(const QString &relative)
    {
        QUrl url;
        url.setScheme(QStringLiteral("nubix"));
        url.setHost(QStringLiteral(""));
        url.setPath(QLatin1Char('/') + relative, QUrl::DecodedMode);
        return url;
    }

    bool makeFile(const QString &relative, const QByteArray &content = QByteArray()) const
    {
        const QString path = localPath(relative);
        if (!QDir().mkpath(QFileInfo(path).absolutePath()))
            return false;
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

private:
    QTemporaryDir rootDir;
    hfmplugin_nubix::NubixPlugin plugin;
};
