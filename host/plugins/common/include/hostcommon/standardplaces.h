// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QStandardPaths>
#include <QVector>

// The user's standard folders as the sidebar and the computer view show
// them. Reads the environment and the file system; any thread.
namespace hdehost {

struct StandardPlace
{
    QLatin1String key;   // "home", "desktop", "documents", ...
    QStandardPaths::StandardLocation location;
    QLatin1String icon;

    bool isHome() const { return location == QStandardPaths::HomeLocation; }
    // The folder, or empty when it does not exist or is the home folder
    // standing in for another one.
    QString existingPath() const;
    QIcon themeIcon() const;
};

// Home, desktop, documents, downloads, music, pictures, videos.
const QVector<StandardPlace> &standardPlaces();

}   // namespace hdehost
