// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostentities.h"

#include <hostcommon/standardplaces.h>

#include <QDir>
#include <QStorageInfo>

namespace hfmplugin_computer {

using hdehost::StandardPlace;
using hdehost::standardPlaces;

namespace {

QString baseOf(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyDecoded);
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

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
    const QVector<StandardPlace> &places = standardPlaces();
    for (int i = 0; i < places.size(); ++i) {
        if (key == places.at(i).key) {
            place = &places.at(i);
            path = QStandardPaths::writableLocation(place->location);
            rank = i;
        }
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
    return place ? place->themeIcon() : QIcon::fromTheme(QStringLiteral("folder"));
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
    for (const StandardPlace &place : standardPlaces()) {
        if (!place.existingPath().isEmpty())
            urls.append(QUrl(QStringLiteral("entry:///%1.userdir").arg(place.key)));
    }
    return urls;
}

}   // namespace hfmplugin_computer
