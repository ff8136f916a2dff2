// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostentities.h"

#include <QDir>
#include <QStorageInfo>

namespace hfmplugin_computer {

namespace {

QString baseOf(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyDecoded);
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

struct UserDir
{
    const char *key;
    QStandardPaths::StandardLocation location;
    const char *icon;
};

const UserDir kUserDirs[] = {
    {"home", QStandardPaths::HomeLocation, "user-home"},
    {"desktop", QStandardPaths::DesktopLocation, "user-desktop"},
    {"documents", QStandardPaths::DocumentsLocation, "folder-documents"},
    {"downloads", QStandardPaths::DownloadLocation, "folder-download"},
    {"music", QStandardPaths::MusicLocation, "folder-music"},
    {"pictures", QStandardPaths::PicturesLocation, "folder-pictures"},
    {"videos", QStandardPaths::MoviesLocation, "folder-videos"},
};

}   // namespace

LocalDiskEntity::LocalDiskEntity(const QUrl &url) : AbstractEntryFileEntity(url)
{
    mountPoint = baseOf(url) == QLatin1String("root") ? QStringLiteral("/") : QString();
    refresh();
}

QString LocalDiskEntity::displayName() const
{
    return tr("System Disk");
}

QIcon LocalDiskEntity::icon() const
{
    return QIcon::fromTheme(QStringLiteral("drive-harddisk"));
}

bool LocalDiskEntity::exists() const
{
    return valid;
}

bool LocalDiskEntity::showProgress() const
{
    return valid;
}

bool LocalDiskEntity::showTotalSize() const
{
    return valid;
}

bool LocalDiskEntity::showUsageSize() const
{
    return valid;
}

int LocalDiskEntity::order() const
{
    return 0;
}

qint64 LocalDiskEntity::sizeTotal() const
{
    return total;
}

qint64 LocalDiskEntity::sizeUsage() const
{
    return total - available;
}

void LocalDiskEntity::refresh()
{
    if (mountPoint.isEmpty())
        return;
    const QStorageInfo storage(mountPoint);
    valid = storage.isValid() && storage.isReady();
    total = valid ? storage.bytesTotal() : 0;
    available = valid ? storage.bytesAvailable() : 0;
}

QUrl LocalDiskEntity::targetUrl() const
{
    return mountPoint.isEmpty() ? QUrl() : QUrl::fromLocalFile(mountPoint);
}

UserDirEntity::UserDirEntity(const QUrl &url) : AbstractEntryFileEntity(url)
{
    key = baseOf(url);
    int i = 0;
    for (const UserDir &dir : kUserDirs) {
        if (key == QLatin1String(dir.key)) {
            path = QStandardPaths::writableLocation(dir.location);
            rank = i;
        }
        ++i;
    }
}

QString UserDirEntity::displayName() const
{
    if (key == QLatin1String("home"))
        return tr("Home");
    return path.isEmpty() ? key : QDir(path).dirName();
}

QIcon UserDirEntity::icon() const
{
    for (const UserDir &dir : kUserDirs) {
        if (key == QLatin1String(dir.key))
            return QIcon::fromTheme(QString::fromLatin1(dir.icon), QIcon::fromTheme(QStringLiteral("folder")));
    }
    return QIcon::fromTheme(QStringLiteral("folder"));
}

bool UserDirEntity::exists() const
{
    return !path.isEmpty() && QDir(path).exists();
}

bool UserDirEntity::showProgress() const
{
    return false;
}

bool UserDirEntity::showTotalSize() const
{
    return false;
}

bool UserDirEntity::showUsageSize() const
{
    return false;
}

int UserDirEntity::order() const
{
    return rank;
}

QUrl UserDirEntity::targetUrl() const
{
    return path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path);
}

QList<QUrl> UserDirEntity::existingEntries()
{
    QList<QUrl> urls;
    const QString home = QDir::homePath();
    for (const UserDir &dir : kUserDirs) {
        const QString path = QStandardPaths::writableLocation(dir.location);
        if (path.isEmpty() || !QDir(path).exists() || (dir.location != QStandardPaths::HomeLocation && path == home))
            continue;
        urls.append(QUrl(QStringLiteral("entry:///%1.userdir").arg(QLatin1String(dir.key))));
    }
    return urls;
}

}   // namespace hfmplugin_computer
