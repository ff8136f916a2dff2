// SPDX-License-Identifier: GPL-3.0-or-later
// The drive's faces from a user's side: the file manager with the plug-in
// and the simulator, both as processes under a temporary HOME.
#include "e2eenvironment.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <memory>

namespace {

QStringList strings(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list << QString::fromUtf8(text);
    return list;
}

// The ids of the visible actions of every menu the script printed, in order.
QStringList menus(const QString &output)
{
    QStringList result;
    const QStringList lines = output.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
        if (!object.contains(QStringLiteral("menu")))
            continue;
        QStringList ids;
        const QJsonArray actions = object.value(QStringLiteral("menu")).toArray();
        for (const QJsonValue &action : actions) {
            if (action.toObject().value(QStringLiteral("visible")).toBool())
                ids << action.toObject().value(QStringLiteral("id")).toString();
        }
        result << ids.join(QLatin1Char(' '));
    }
    return result;
}

}   // namespace

class TestNubixUiEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { s.reset(); }
    void computerViewShowsTheDrive_data();
    void computerViewShowsTheDrive();
    void activatingTheEntry_data();
    void activatingTheEntry();
    void menusByClientState_data();
    void menusByClientState();
    void menuActionsReachTheClient();
    void fileMenuOpensLocalFilesAndTreeFolders();
    void bannerStatesAndLinks();
    void welcomeButtonStartsAndConnects();

private:
    QString root() const { return s->root(); }
    bool startSimulator(const QStringList &arguments) { return s->startSimulator(arguments); }
    bool runFileManager(const QString &script) { return s->host(script, 60000); }

    std::unique_ptr<E2eSession> s;
};

void TestNubixUiEndToEnd::init()
{
    s.reset(new E2eSession);
    QVERIFY(writeFile(root() + QStringLiteral("/a.txt"), "a"));
}

void TestNubixUiEndToEnd::computerViewShowsTheDrive_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("checks");

    const QString entry = QStringLiteral("computer/groups/[name=Disks]/entries/[name=Kelo Drive]");
    QTest::newRow("quota: used and total on a bar")
        << QString() << strings({"--used", "5368709120", "--total", "107374182400", "--quota", "107374182400"})
        << QStringLiteral("wait-for state \"%1/sizeUsage\" 5368709120 15000\n"
                          "expect \"%1/sizeTotal\" 107374182400\nexpect \"%1/showProgress\" true\n"
                          "expect \"%1/description\" \"\"\nexpect \"%1/order\" 3\n"
                          "expect \"%1/icon\" nubix-harddisk-individual\n")
               .arg(entry);
    QTest::newRow("no fixed quota: the used space line")
        << QString() << strings({"--used", "1073741824", "--quota", "-3"})
        << QStringLiteral("wait-for state \"%1/description\" \"Used space 1024.0 MB\" 15000\n"
                          "expect \"%1/showProgress\" false\nexpect \"%1/showUsageSize\" false\n")
               .arg(entry);
    QTest::newRow("enterprise account icon")
        << QString() << strings({"--enterprise"})
        << QStringLiteral("wait-for state \"%1/icon\" nubix-harddisk-enterprise 15000\n").arg(entry);
    // Run from the build tree, both sides find their translations, and the
    // drive joins the host's own (translated) disk group.
    const QString used
        = QStringLiteral("wait-for state \"computer/groups/[name=%1]/entries/[name=Kelo Drive]/description\" "
                         "\"%2 1024.0 MB\" 15000\n");
    QTest::newRow("German session") << QStringLiteral("de_DE.UTF-8")
                                    << strings({"--used", "1073741824", "--quota", "-3"})
                                    << used.arg(QStringLiteral("Laufwerke"), QStringLiteral("Belegt:"));
    QTest::newRow("Chinese session") << QStringLiteral("zh_CN.UTF-8")
                                     << strings({"--used", "1073741824", "--quota", "-3"})
                                     << used.arg(QStringLiteral("磁盘"), QStringLiteral("已用空间"));
}

void TestNubixUiEndToEnd::computerViewShowsTheDrive()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, arguments);
    s->locale = locale;
    QFETCH(QString, checks);
    QVERIFY(startSimulator(QStringList {QStringLiteral("--root"), root()} + arguments));
    // The entry reads the cache when the view repaints; revisiting repaints it.
    const QString script = QStringLiteral("open nubix:///\nwait-for url last nubix:/// 15000\n"
                                          "cd last computer:///\nwait-for url last computer:///\n")
        + checks;
    QVERIFY(runFileManager(script));
}

void TestNubixUiEndToEnd::activatingTheEntry_data()
{
    QTest::addColumn<bool>("withRoot");
    QTest::addColumn<QString>("target");
    QTest::newRow("root ready: the tree") << true << "nubix:///";
    QTest::newRow("no root: the welcome page") << false << "nubix-login:///";
}

void TestNubixUiEndToEnd::activatingTheEntry()
{
    QFETCH(bool, withRoot);
    QFETCH(QString, target);
    QVERIFY(startSimulator(
        withRoot ? QStringList {QStringLiteral("--root"), root()} : QStringList {QStringLiteral("--no-root")}));
    const QString script = QStringLiteral("open nubix-login:///\nwait 1500\ncd last computer:///\n"
                                          "wait-for url last computer:///\nactivate last \"Kelo Drive\"\n"
                                          "wait-for url last %1 15000\n")
                               .arg(target);
    QVERIFY(runFileManager(script));
}

void TestNubixUiEndToEnd::menusByClientState_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("ids");

    const QString open = QStringLiteral("nubix-open nubix-open-in-win");
    const QString pages = QStringLiteral(" nubix-open-main-panel nubix-sync-detail nubix-trash-bin");
    QTest::newRow("paused: resume, not pause")
        << strings({"--root", "$ROOT", "--paused"})
        << open + pages + QStringLiteral(" nubix-sync-resume nubix-upgrade-enterprise nubix-settings");
    QTest::newRow("root not ready: open only") << strings({"--no-root"}) << open;
}

void TestNubixUiEndToEnd::menusByClientState()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, ids);
    arguments.replaceInStrings(QStringLiteral("$ROOT"), root());
    QVERIFY(startSimulator(arguments));
    // The entry's menu and the sidebar item's menu are the same scene.
    const QString script = QStringLiteral("open computer:///\nwait 2000\nmenu entry last \"Kelo Drive\"\n"
                                          "menu sidebar last \"Kelo Drive\"\n");
    QVERIFY(runFileManager(script));
    QCOMPARE(menus(s->fmOutput), (QStringList {ids, ids}));
}

void TestNubixUiEndToEnd::menuActionsReachTheClient()
{
    QVERIFY(startSimulator({QStringLiteral("--root"), root()}));
    const QString script = QStringLiteral(R"(open computer:///
wait 2000
menu-trigger entry last "Kelo Drive" nubix-open-main-panel
menu-trigger entry last "Kelo Drive" nubix-sync-detail
menu-trigger entry last "Kelo Drive" nubix-trash-bin
menu-trigger entry last "Kelo Drive" nubix-settings
menu-trigger entry last "Kelo Drive" nubix-sync-pause
wait 1500
menu-trigger entry last "Kelo Drive" nubix-sync-resume
wait 1000
menu-trigger entry last "Kelo Drive" nubix-open-in-win
wait-for windows 2 10000
wait-for url last nubix:/// 10000
cd first computer:///
menu-trigger entry first "Kelo Drive" nubix-open
wait-for url first nubix:/// 10000
)");
    QVERIFY(runFileManager(script));
    const QStringList navigated = s->simulatorLog(QStringLiteral("type=setting"))
                                      .split(QLatin1Char('\n'))
                                      .filter(QStringLiteral("navigate to page"));
    QCOMPARE(navigated.size(), 4);
    QVERIFY(navigated.at(0).endsWith(QLatin1String("type=home args=fileDocs")));
    QVERIFY(navigated.at(1).endsWith(QLatin1String("type=sync args=syncList")));
    QVERIFY(navigated.at(2).endsWith(QLatin1String("type=home args=fileRecycle")));
    QVERIFY(navigated.at(3).contains(QLatin1String("type=setting")));
}

// The host's own file menu, run for the tree: a file opens as the local
// file, a folder stays in the tree.
void TestNubixUiEndToEnd::fileMenuOpensLocalFilesAndTreeFolders()
{
    QVERIFY(writeFile(root() + QStringLiteral("/sub/b.txt"), "b"));
    QVERIFY(startSimulator({QStringLiteral("--root"), root()}));
    const QString script = QStringLiteral(R"(open nubix:///
wait-for item last a.txt 15000
menu item last a.txt
menu-trigger item last a.txt open
wait-for state opened/# 1
expect opened/0/url file://$ROOT/a.txt
menu-trigger item last sub open
wait-for url last nubix:///sub
)");
    QVERIFY(runFileManager(script));
    QCOMPARE(menus(s->fmOutput), QStringList {QStringLiteral("open copy cut rename move-to-trash delete")});
}

void TestNubixUiEndToEnd::bannerStatesAndLinks()
{
    QVERIFY(startSimulator({QStringLiteral("--root"), root()}));
    const QString top = QStringLiteral("windows/0/tabs/0/top");
    // Each state is reached through a link, so one script serves.
    const QString script = QStringLiteral(R"(open nubix:///
wait-for url last nubix:/// 15000
wait-for state %1/icon fbnubix_drive_done 15000
expect %1/text "Files have been synchronized"
menu-trigger sidebar last "Kelo Drive" nubix-sync-pause
wait-for state %1/icon fbnubix_drive_pause 10000
expect %1/links '["SyncContinue"]'
top-link last SyncContinue
wait-for state %1/icon fbnubix_drive_done 10000
)")
                               .arg(top);
    QVERIFY(runFileManager(script));

    // The client stops: the banner asks to start it.
    // Seen by a file manager started afterwards, from the cached summary.
    s->simulator(QStringLiteral("quit\n"));
    QVERIFY(s->sim.waitForFinished(10000));
    s->stopFileManager();
    QVERIFY(runFileManager(QStringLiteral(R"(open nubix:///
wait 1500
wait-for state %1/icon fbnubix_drive_pause 15000
expect %1/links '["LaunchApp"]'
)")
                               .arg(top)));
}

void TestNubixUiEndToEnd::welcomeButtonStartsAndConnects()
{
    QVERIFY(startSimulator({QStringLiteral("--no-root")}));
    const QString script = QStringLiteral(R"(open nubix-login:///
wait-for url last nubix-login:/// 10000
expect windows/0/tabs/0/view/buttons '["Open Kelo Drive"]'
click last "Open Kelo Drive"
wait 1000
)");
    QVERIFY(runFileManager(script));
    QVERIFY(s->simulatorLog(QStringLiteral("runs plug-in version")).contains(QLatin1String("runs plug-in version")));
}

QTEST_GUILESS_MAIN(TestNubixUiEndToEnd)
#include "tst_nubixuiendtoend.moc"
