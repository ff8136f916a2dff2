// SPDX-License-Identifier: GPL-3.0-or-later
#include "automation/scriptrunner.h"
#include "core/fileoperations.h"
#include "core/hoststartup.h"
#include "core/operationlog.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/hostmetatypes.h>
#include <hostcommon/navigation.h>
#include <hpf/lifecycle.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    // The version must come out before anything of the GUI starts.
    if (hdeapp::wantsVersion(argc, argv)) {
        std::printf("%s\n", hdeapp::versionLine().toUtf8().constData());
        return 0;
    }

    hdeapp::applyDefaultLogRules();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("hde-file-manager"));
    QApplication::setApplicationVersion(QStringLiteral(HDE_FM_VERSION));

    hdeapp::StartupOptions options;
    QString error;
    if (!hdeapp::parseArguments(QApplication::arguments(), &options, &error)) {
        QTextStream(stderr) << error << '\n';
        return error.contains(QLatin1String("Usage:")) ? 0 : 2;
    }
    const bool automation = !options.script.isEmpty();

    hdeapp::installTranslations();
    hdeapp::chooseIconTheme();
    hdehost::registerHostMetaTypes();
    hdehost::declareNavigationEvents();
    htk::MessageDialog::setAutomationMode(automation);

    hdeapp::OperationLog log;
    log.attach();
    hdeapp::FileOperations operations(&log);
    operations.attach();
    operations.setRecordOnly(automation);

    hdeapp::ScriptRunner runner(&log, &operations);
    if (automation) {
        QApplication::setQuitOnLastWindowClosed(false);
        if (!runner.setSource(options.script, &error)) {
            QTextStream(stderr) << "hde-file-manager: " << error << '\n';
            return 2;
        }
        QObject::connect(&runner, &hdeapp::ScriptRunner::finished, &app, [](int code) { QApplication::exit(code); });
    }

    const QStringList dirs = hdeapp::pluginDirectories(options.pluginDirs);
    if (!hdeapp::startPlugins(dirs, options.disabledPlugins)) {
        QTextStream(stderr) << "hde-file-manager: no plug-in found in " << dirs.join(QStringLiteral(", ")) << '\n';
        if (!automation)
            return 1;
    }

    QStringList rejected;
    const QList<QUrl> urls = hdeapp::startUrls(options.locations, &rejected);
    for (const QString &location : qAsConst(rejected))
        QTextStream(stderr) << "hde-file-manager: cannot open \"" << location << "\"\n";
    // A script opens its own windows unless locations are given.
    if (!automation || !options.locations.isEmpty()) {
        for (const QUrl &url : urls)
            hdehost::requestNewWindow(url);
    }
    if (!automation && hfmbase::FileManagerWindowsManager::instance().windowIdList().isEmpty()) {
        QTextStream(stderr) << "hde-file-manager: no window could be opened\n";
        return 1;
    }
    if (automation)
        runner.start();

    const int code = app.exec();
    auto &windows = hfmbase::FileManagerWindowsManager::instance();
    const QList<quint64> ids = windows.windowIdList();
    for (quint64 id : ids) {
        if (hfmbase::FileManagerWindow *window = windows.findWindowById(id))
            window->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    hpf::LifeCycle::shutdownPlugins();
    return code;
}
