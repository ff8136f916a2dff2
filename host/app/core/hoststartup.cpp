// SPDX-License-Identifier: GPL-3.0-or-later
#include "hoststartup.h"

#include <hostcommon/urlhelpers.h>
#include <hpf/lifecycle.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QLocale>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTranslator>

#include <cstring>

Q_LOGGING_CATEGORY(logStartup, "org.sablo.hde.filemanager.startup")

namespace hdeapp {

void applyDefaultLogRules()
{
    // Rules set here give way to QT_LOGGING_CONF and QT_LOGGING_RULES; a
    // user's own qtlogging.ini is left in charge entirely.
    if (QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("QtProject/qtlogging.ini"))
            .isEmpty())
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
}

QString versionLine()
{
    return QStringLiteral("hde-file-manager %1").arg(QStringLiteral(HDE_FM_VERSION));
}

bool wantsVersion(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        // The value of --script may legitimately be anything.
        if (std::strcmp(argv[i], "--script") == 0) {
            ++i;
            continue;
        }
        if (std::strcmp(argv[i], "-v") == 0 || std::strcmp(argv[i], "--version") == 0)
            return true;
    }
    return false;
}

bool parseArguments(const QStringList &arguments, StartupOptions *options, QString *error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The hde file manager."));
    parser.addHelpOption();
    const QCommandLineOption pluginDir(QStringLiteral("plugin-dir"),
        QStringLiteral("Also load plug-ins from <dir> (repeatable)."), QStringLiteral("dir"));
    const QCommandLineOption disable(QStringLiteral("disable-plugin"),
        QStringLiteral("Do not load the plug-in named <name> (repeatable)."), QStringLiteral("name"));
    const QCommandLineOption script(QStringLiteral("script"),
        QStringLiteral("Run the automation script <file> (\"-\" reads standard input)."), QStringLiteral("file"));
    parser.addOption(pluginDir);
    parser.addOption(disable);
    parser.addOption(script);
    parser.addPositionalArgument(
        QStringLiteral("locations"), QStringLiteral("URLs or paths to open."), QStringLiteral("[locations...]"));
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        *error = parser.helpText();
        return false;
    }
    options->locations = parser.positionalArguments();
    options->pluginDirs = parser.values(pluginDir);
    options->disabledPlugins = parser.values(disable);
    options->script = parser.value(script);
    return true;
}

namespace {

// The folder at `relative` from the program's own folder, when it exists.
// Relative, so that an installed program never looks into the tree it was
// built in, and a relocated installation still finds its parts.
QString besideProgram(const char *relative)
{
    const QString dir = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QString::fromUtf8(relative));
    const QFileInfo info(dir);
    return info.isDir() ? info.canonicalFilePath() : QString();
}

}   // namespace

QStringList pluginDirectories(const QStringList &extra)
{
    QStringList dirs;
    QString own = besideProgram(HDE_PLUGIN_INSTALL_RELPATH);
    if (own.isEmpty())
        own = besideProgram(HDE_PLUGIN_BUILD_RELPATH);
    if (!own.isEmpty())
        dirs.append(own);
    const QStringList fromEnvironment
        = qEnvironmentVariable("HDE_PLUGIN_DIRS").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString &dir : fromEnvironment + extra) {
        const QString absolute = QDir(dir).absolutePath();
        if (!dirs.contains(absolute))
            dirs.append(absolute);
    }
    return dirs;
}

void installTranslations()
{
    QString dir = besideProgram(HDE_TRANSLATIONS_INSTALL_RELPATH);
    if (dir.isEmpty())
        dir = besideProgram(HDE_TRANSLATIONS_BUILD_RELPATH);
    if (dir.isEmpty())
        return;
    auto *translator = new QTranslator(QCoreApplication::instance());
    // Without a translation for the locale the texts stay as written.
    if (translator->load(QLocale(), QStringLiteral("hde-file-manager"), QStringLiteral("_"), dir))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

QList<QUrl> startUrls(const QStringList &locations, QStringList *rejected)
{
    QList<QUrl> urls;
    for (const QString &location : locations) {
        QUrl url = hdehost::urlFromUserInput(location);
        // Relative paths are relative to where the program was started.
        if (!url.isValid() && !location.contains(QLatin1Char(':')))
            url = QUrl::fromLocalFile(QDir::current().absoluteFilePath(location));
        if (url.isValid())
            urls.append(url);
        else if (rejected)
            rejected->append(location);
    }
    if (locations.isEmpty())
        urls.append(QUrl(QStringLiteral("computer:///")));
    return urls;
}

bool startPlugins(const QStringList &dirs, const QStringList &blackList)
{
    qCDebug(logStartup) << "Loading plug-ins from" << dirs << "except" << blackList;
    hpf::LifeCycle::setPluginPaths(dirs);
    hpf::LifeCycle::setBlackList(blackList);
    if (!hpf::LifeCycle::readPlugins())
        return false;
    hpf::LifeCycle::loadPlugins();
    return true;
}

void chooseIconTheme()
{
    // Some platforms (offscreen among them) search no system folder at all.
    QStringList paths = QIcon::themeSearchPaths();
    QStringList dataDirs {qEnvironmentVariable("XDG_DATA_HOME", QDir::homePath() + QStringLiteral("/.local/share"))};
    dataDirs += qEnvironmentVariable("XDG_DATA_DIRS", QStringLiteral("/usr/local/share:/usr/share"))
                    .split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString &dir : qAsConst(dataDirs)) {
        const QString icons = dir + QStringLiteral("/icons");
        if (!paths.contains(icons) && QFileInfo(icons).isDir())
            paths.append(icons);
    }
    QIcon::setThemeSearchPaths(paths);
    if (QIcon::fallbackThemeName().isEmpty())
        QIcon::setFallbackThemeName(QStringLiteral("hicolor"));
    const QString current = QIcon::themeName();
    if (!current.isEmpty() && current != QLatin1String("hicolor"))
        return;
    for (const QString &base : qAsConst(paths)) {
        if (QFileInfo::exists(base + QStringLiteral("/Adwaita/index.theme"))) {
            QIcon::setThemeName(QStringLiteral("Adwaita"));
            return;
        }
    }
}

}   // namespace hdeapp
