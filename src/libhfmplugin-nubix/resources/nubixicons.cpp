// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/nubixicons.h"

#include <QIcon>
#include <QStringList>

// The resources live in a static library: they must be pulled in by name,
// outside any namespace.
static void initNubixIconResources()
{
    Q_INIT_RESOURCE(nubixicons);
}

namespace hfmplugin_nubix {

QString iconThemeRoot()
{
    return QStringLiteral(":/hfmplugin-nubix/icons");
}

void installIcons()
{
    initNubixIconResources();

    // Appended, so that an installed copy of the same icons, or the user's
    // theme, is found first.
    QStringList paths = QIcon::themeSearchPaths();
    if (!paths.contains(iconThemeRoot())) {
        paths.append(iconThemeRoot());
        QIcon::setThemeSearchPaths(paths);
    }
    // Without any theme (no desktop theme plug-in, as under the offscreen
    // platform) Qt looks nowhere; hicolor is where every theme ends anyway.
    if (QIcon::themeName().isEmpty())
        QIcon::setThemeName(QStringLiteral("hicolor"));
    if (QIcon::fallbackThemeName().isEmpty())
        QIcon::setFallbackThemeName(QStringLiteral("hicolor"));
}

}   // namespace hfmplugin_nubix
