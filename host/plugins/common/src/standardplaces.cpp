// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/standardplaces.h"

#include <QDir>

namespace hdehost {

QString StandardPlace::existingPath() const
{
    const QString path = QStandardPaths::writableLocation(location);
    if (path.isEmpty() || !QDir(path).exists() || (!isHome() && path == QDir::homePath()))
        return QString();
    return path;
}

QIcon StandardPlace::themeIcon() const
{
    return QIcon::fromTheme(icon, QIcon::fromTheme(QStringLiteral("folder")));
}

const QVector<StandardPlace> &standardPlaces()
{
    static const QVector<StandardPlace> places {
        {QLatin1String("home"), QStandardPaths::HomeLocation, QLatin1String("user-home")},
        {QLatin1String("desktop"), QStandardPaths::DesktopLocation, QLatin1String("user-desktop")},
        {QLatin1String("documents"), QStandardPaths::DocumentsLocation, QLatin1String("folder-documents")},
        {QLatin1String("downloads"), QStandardPaths::DownloadLocation, QLatin1String("folder-download")},
        {QLatin1String("music"), QStandardPaths::MusicLocation, QLatin1String("folder-music")},
        {QLatin1String("pictures"), QStandardPaths::PicturesLocation, QLatin1String("folder-pictures")},
        {QLatin1String("videos"), QStandardPaths::MoviesLocation, QLatin1String("folder-videos")},
    };
    return places;
}

}   // namespace hdehost
