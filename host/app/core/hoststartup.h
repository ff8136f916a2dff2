// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QUrl>

// The start-up of the reference file manager, split out of main() so that
// tests can follow the same steps.
namespace hdeapp {

struct StartupOptions
{
    QStringList locations;   // positional URLs or paths
    QStringList pluginDirs;   // --plugin-dir, in order
    QStringList disabledPlugins;   // --disable-plugin
    QString script;   // --script FILE or "-"
};

// "hde-file-manager <version>"
QString versionLine();
// Whether the arguments ask for the version only (checked before any GUI).
bool wantsVersion(int argc, char **argv);
// False, with a reason, for unknown options or missing values.
bool parseArguments(const QStringList &arguments, StartupOptions *options, QString *error);
// The installed plug-in folder beside the program (or the build tree's one
// when the program runs from there); then HDE_PLUGIN_DIRS (colon-separated);
// then `extra`.
QStringList pluginDirectories(const QStringList &extra);
// Installs the host's translation for the system locale, found beside the
// program like the plug-ins.
void installTranslations();
// The URLs to open; the computer view when none is given. Unusable
// locations are reported in `rejected`.
QList<QUrl> startUrls(const QStringList &locations, QStringList *rejected);
// Sets the plug-in paths and the black list, reads and loads the plug-ins
// (the sidebar plug-in takes its items from the metadata while initialising,
// before any plug-in starts). False when no plug-in could be read.
bool startPlugins(const QStringList &dirs, const QStringList &blackList);
// Prefers a full icon theme when the platform gives none.
void chooseIconTheme();
// Turns debug lines off by default; QT_LOGGING_RULES, QT_LOGGING_CONF or the
// user's QtProject/qtlogging.ini turn them back on. Call before any logging.
void applyDefaultLogRules();

}   // namespace hdeapp
