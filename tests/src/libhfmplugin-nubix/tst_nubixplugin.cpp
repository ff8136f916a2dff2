// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixplugin.h"

#include "caches/nubixcaches.h"

#include "fakehost.h"
#include "messagelog.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/urlroute.h>
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMainWindow>
#include <QProcess>
#include <QShowEvent>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace hfmplugin_nubix;

namespace {
const char kGateChild[] = "--gate-child";
const QString kShowLine = QStringLiteral("window showed, try connect to nubix server.");
const QString kAttemptLine = QStringLiteral("NubixMessageHandler: Attempting to connect...");

// Runs in a fresh process, since schemes once registered stay registered:
// initialise and start the plug-in, open two windows, print what happened.
int runGateChild(int argc, char **argv)
{
    QApplication app(argc, argv);
    QJsonArray removed;
    hpf::channel()->connect(QStringLiteral("hfmplugin_sidebar"), QStringLiteral("slot_Item_Remove"),
        [&removed](const QUrl &url) { removed.append(url.toString()); });

    NubixPlugin plugin;
    plugin.initialize();
    QJsonObject report;
    report.insert(QStringLiteral("nubix"), hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix")));
    report.insert(QStringLiteral("login"), hfmbase::UrlRoute::hasScheme(QStringLiteral("nubix-login")));
    report.insert(QStringLiteral("names"),
        QJsonArray {hfmbase::UrlRoute::displayName(QStringLiteral("nubix")),
            hfmbase::UrlRoute::displayName(QStringLiteral("nubix-login"))});
    report.insert(QStringLiteral("roots"),
        QJsonArray {hfmbase::UrlRoute::rootPath(QStringLiteral("nubix")),
            hfmbase::UrlRoute::rootPath(QStringLiteral("nubix-login"))});
    report.insert(QStringLiteral("virtual"),
        hfmbase::UrlRoute::isVirtual(QStringLiteral("nubix"))
            && hfmbase::UrlRoute::isVirtual(QStringLiteral("nubix-login")));
    MessageLog log;
    report.insert(QStringLiteral("start"), plugin.start());
    report.insert(QStringLiteral("attemptsAtStart"), log.lines(QtInfoMsg).count(kAttemptLine));
    report.insert(QStringLiteral("cacheFile"), QFile::exists(NubixCaches::cachePath()));
    report.insert(QStringLiteral("removedAtStart"), removed.size());

    auto &windows = hfmbase::FileManagerWindowsManager::instance();
    const QUrl home = QUrl::fromLocalFile(QDir::homePath());
    // A window whose sidebar comes after it opened.
    hfmbase::FileManagerWindow *late = windows.createWindow(home);
    windows.showWindow(late);
    report.insert(QStringLiteral("removedBeforeSidebar"), removed.size());
    late->installSideBar(new QWidget);
    report.insert(QStringLiteral("removedAfterSidebar"), removed.size());
    // A window that has its sidebar when it opens.
    hfmbase::FileManagerWindow *ready = windows.createWindow(home);
    ready->installSideBar(new QWidget);
    windows.showWindow(ready);
    report.insert(QStringLiteral("removedAtEnd"), removed.size());
    report.insert(QStringLiteral("removedUrls"), removed);

    std::fputs(QJsonDocument(report).toJson(QJsonDocument::Compact).constData(), stdout);
    std::fflush(stdout);
    return 0;
}
}   // namespace

// A window of another class that happens to look like the host's.
class LookalikeWindow : public hfmbase::FileManagerWindow
{
    Q_OBJECT
public:
    using hfmbase::FileManagerWindow::FileManagerWindow;
};

class TestNubixPlugin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        hpf::LifeCycle::setPluginPaths({QStringLiteral(NUBIX_PROBE_PLUGIN_DIR)});
        QVERIFY(hpf::LifeCycle::readPlugins());
        hpf::LifeCycle::loadPlugins();
    }

    void gatesOnHostVersion_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<bool>("installed");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("runs");

        QTest::newRow("exactly the minimum")
            << QByteArray("hde-file-manager 6.0.49.25\n") << true << "6.0.49.25" << true;
        QTest::newRow("newer, line among others")
            << QByteArray("loading\nhde-file-manager 6.0.50.1\nbye\n") << true << "6.0.50.1" << true;
        QTest::newRow("one below the minimum")
            << QByteArray("hde-file-manager 6.0.49.24\n") << true << "6.0.49.24" << false;
        QTest::newRow("three-digit component")
            << QByteArray("hde-file-manager 6.0.100.1\n") << true << "6.0.100.1" << false;
        QTest::newRow("line of another program") << QByteArray("xhde-file-manager 9.9\n") << true << "" << false;
        QTest::newRow("no version printed") << QByteArray() << true << "" << false;
        QTest::newRow("not installed") << QByteArray() << false << "" << false;
    }

    void gatesOnHostVersion()
    {
        QFETCH(QByteArray, output);
        QFETCH(bool, installed);
        QFETCH(bool, runs);

        const FakeHost host(output, installed);
        const QByteArray oldPath = qgetenv("PATH");
        qputenv("PATH", host.path());
        const QString version = getHfmVersion();
        qputenv("PATH", oldPath);
        QTEST(version, "version");

        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"), QString::fromLocal8Bit(host.path()));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        // Each run starts without the cache file of an earlier one.
        const QTemporaryDir home;
        env.insert(QStringLiteral("HOME"), home.path());
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kGateChild)});
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        const QJsonObject report = QJsonDocument::fromJson(child.readAllStandardOutput()).object();
        QVERIFY2(!report.isEmpty(), child.readAllStandardError().constData());

        QCOMPARE(report.value(QStringLiteral("nubix")).toBool(), runs);
        QCOMPARE(report.value(QStringLiteral("login")).toBool(), runs);
        QCOMPARE(report.value(QStringLiteral("start")).toBool(), runs);
        // A running plug-in has its cache (which creates its file) and tries to connect once at start.
        QCOMPARE(report.value(QStringLiteral("attemptsAtStart")).toInt(), runs ? 1 : 0);
        QCOMPARE(report.value(QStringLiteral("cacheFile")).toBool(), runs);
        if (runs) {
            const QString name = QStringLiteral("Kelo Drive");
            const QString root = QStringLiteral("/");
            QCOMPARE(report.value(QStringLiteral("names")).toArray(), (QJsonArray {name, name}));
            QCOMPARE(report.value(QStringLiteral("roots")).toArray(), (QJsonArray {root, root}));
            QVERIFY(report.value(QStringLiteral("virtual")).toBool());
        }

        // A too old host loses the sidebar item at start and in every window,
        // whether the window's sidebar comes before or after it opens.
        const int once = runs ? 0 : 1;
        QCOMPARE(report.value(QStringLiteral("removedAtStart")).toInt(), once);
        QCOMPARE(report.value(QStringLiteral("removedBeforeSidebar")).toInt(), once);
        QCOMPARE(report.value(QStringLiteral("removedAfterSidebar")).toInt(), 2 * once);
        QCOMPARE(report.value(QStringLiteral("removedAtEnd")).toInt(), 3 * once);
        for (const QJsonValue &url : report.value(QStringLiteral("removedUrls")).toArray())
            QCOMPARE(url.toString(), QStringLiteral("nubix-login:///"));
    }

    void registersOnceThePluginStarted_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("started");
        QTest::newRow("started: at once, and only then") << "hfmplugin-probe-starting" << true;
        QTest::newRow("unknown plug-in") << "hfmplugin-later" << false;
        QTest::newRow("loaded but not started") << "hfmplugin-probe-failing" << false;
    }

    void registersOnceThePluginStarted()
    {
        QFETCH(QString, name);
        QFETCH(bool, started);

        NubixPlugin plugin;
        int calls = 0;
        plugin.doRegStuff(name, [&calls] { ++calls; });
        QCOMPARE(calls, started ? 1 : 0);
        auto *listener = hpf::Listener::instance();
        Q_EMIT listener->pluginStarted(QStringLiteral(HPF_PLUGIN_IID), QStringLiteral("hfmplugin-something-else"));
        Q_EMIT listener->pluginStarted(name, QStringLiteral("hfmplugin-something-else"));
        QCOMPARE(calls, started ? 1 : 0);
        Q_EMIT listener->pluginStarted(QStringLiteral(HPF_PLUGIN_IID), name);
        QCOMPARE(calls, 1);
        Q_EMIT listener->pluginStarted(QString(), name);
        QCOMPARE(calls, started ? 1 : 2);
        // An empty function is never called.
        plugin.doRegStuff(name, {});
        Q_EMIT listener->pluginStarted(QStringLiteral(HPF_PLUGIN_IID), name);
    }

    void everyShownWindowIsNoticed()
    {
        NubixPlugin plugin;
        qApp->installEventFilter(&plugin);
        MessageLog log;
        const QUrl url = QUrl::fromLocalFile(QDir::homePath());
        hfmbase::FileManagerWindow first(url);
        hfmbase::FileManagerWindow second(url);
        // Neither another main window nor a subclass of the host's is a host window.
        QMainWindow other;
        LookalikeWindow lookalike(url);

        first.show();
        QTRY_COMPARE(log.lines(QtDebugMsg).count(kShowLine), 1);
        // Hiding and painting are no shows.
        first.update();
        QCoreApplication::processEvents();
        first.hide();
        QCOMPARE(log.lines(QtDebugMsg).count(kShowLine), 1);
        other.show();
        lookalike.show();
        second.show();
        QTRY_COMPARE(log.lines(QtDebugMsg).count(kShowLine), 2);
        first.show();
        QTRY_COMPARE(log.lines(QtDebugMsg).count(kShowLine), 3);
        QCOMPARE(log.lines(QtInfoMsg).count(kAttemptLine), 3);
        qApp->removeEventFilter(&plugin);
    }
};

int main(int argc, char **argv)
{
    if (argc > 1 && qstrcmp(argv[1], kGateChild) == 0)
        return runGateChild(argc, argv);
    QApplication app(argc, argv);
    TestNubixPlugin test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_nubixplugin.moc"
