// SPDX-License-Identifier: GPL-3.0-or-later
#include "portfile.h"

#include "logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace kelodrive {
namespace portfile {

QString defaultPath()
{
    return QDir::homePath() + QLatin1String("/.config/kelodrive/App Data/ipc");
}

bool write(const QString &path, quint16 port)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        qCWarning(lcKeloSim) << "portfile::write: cannot create the folder of" << path;
        return false;
    }
    // QSaveFile writes beside the target and renames it into place on commit.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qCWarning(lcKeloSim) << "portfile::write: cannot open" << path << file.errorString();
        return false;
    }
    file.write(QByteArray::number(port) + '\n');
    if (!file.commit()) {
        qCWarning(lcKeloSim) << "portfile::write: cannot write" << path << file.errorString();
        return false;
    }
    qCInfo(lcKeloSim) << "Wrote port" << port << "to" << path;
    return true;
}

quint16 read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return 0;
    bool ok = false;
    const uint port = QString::fromUtf8(file.readLine().trimmed()).toUInt(&ok);
    return ok && port <= 65535 ? quint16(port) : 0;
}

bool removeIfOurs(const QString &path, quint16 port)
{
    if (!QFileInfo::exists(path))
        return true;
    if (read(path) != port) {
        qCInfo(lcKeloSim) << "Leaving" << path << "in place: it names another port";
        return false;
    }
    if (!QFile::remove(path)) {
        qCWarning(lcKeloSim) << "portfile::removeIfOurs: cannot remove" << path;
        return false;
    }
    qCInfo(lcKeloSim) << "Removed" << path;
    return true;
}

}   // namespace portfile
}   // namespace kelodrive
