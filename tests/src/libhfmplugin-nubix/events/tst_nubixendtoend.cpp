// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in inside the real file manager, talking to the real simulator.
// Checks are the file manager's own waits on its printed state, and the files on disk.
#include "teststrings.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <memory>

namespace {

// Writes a file of the test's tree, making its folders.
bool writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

// Both programs as processes under a throw-away home, one session per test function: the file
// manager runs a script fed line by line, the simulator takes commands and logs what reached it.
class E2eSession
{
public:
    E2eSession() { QDir().mkpath(path(QStringLiteral("home/.local/share"))); }
    ~E2eSession()
    {
        stop(fm);
        stop(sim);
    }

    QString path(const QString &relative) const { return QDir(tmp.path()).filePath(relative); }
    QString root() const { return path(QStringLiteral("root")); }

    // The built file manager first on PATH (the plug-in asks "hde-file-manager
    // -v" for the host's version), headless, and only the log lines tests read.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        const QString home = path(QStringLiteral("home"));
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
        env.insert(QStringLiteral("PATH"),
            QFileInfo(QStringLiteral(HDE_FM_BINARY)).path() + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("QT_LOGGING_RULES"),
            QStringLiteral("*.debug=false;*.info=false;org.sablo.kelodrive.sim.info=true"));
        env.remove(QStringLiteral("HDE_PLUGIN_DIRS"));
        if (!locale.isEmpty()) {
            env.insert(QStringLiteral("LC_ALL"), locale);
            env.insert(QStringLiteral("LANG"), locale);
        }
        return env;
    }

    // Starts the simulator and waits until it listens. The tree's own cases
    // pace the transfers and leave out the periodic rescan.
    bool startSimulator(const QStringList &arguments, bool paced = false)
    {
        const QStringList pace {
            QStringLiteral("--pace-ms"), QStringLiteral("100"), QStringLiteral("--rescan-ms"), QStringLiteral("0")};
        sim.setProcessEnvironment(environment());
        sim.start(QStringLiteral(KELODRIVE_SIM_EXE), paced ? pace + arguments : arguments);
        return sim.waitForStarted(10000) && QTest::qWaitFor([this] {
            simOutput += QString::fromUtf8(sim.readAllStandardOutput());
            return simOutput.contains(QLatin1String("port ")) || sim.state() == QProcess::NotRunning;
        }) && simOutput.contains(QLatin1String("port "));
    }
    void simulator(const QString &commands) { sim.write(commands.toUtf8()); }
    void stopFileManager() { stop(fm); }
    // What the simulator logged so far, waiting until `until` shows up in it.
    QString simulatorLog(const QString &until)
    {
        (void)QTest::qWaitFor([&] {
            simErrors += QString::fromUtf8(sim.readAllStandardError());
            return simErrors.contains(until);
        });
        return simErrors;
    }

    // Runs script lines ($ROOT and $OUT replaced) and waits until they are
    // done; false, with the failing line logged, when the file manager
    // stopped (a failed wait or expectation ends it).
    bool host(QString lines, int timeoutMs = 60000)
    {
        if (fm.state() == QProcess::NotRunning) {
            fm.setProcessEnvironment(environment());
            fm.start(QStringLiteral(HDE_FM_BINARY), {QStringLiteral("--script"), QStringLiteral("-")});
            if (!fm.waitForStarted(10000))
                return false;
        }
        const QString done = QStringLiteral("done-%1").arg(++mark);
        lines.replace(QStringLiteral("$ROOT"), root()).replace(QStringLiteral("$OUT"), path(QStringLiteral("outside")));
        fm.write((lines + QStringLiteral("\necho ") + done + QLatin1Char('\n')).toUtf8());
        const auto finished = [&] { return fmOutput.split(QLatin1Char('\n')).contains(done); };
        (void)QTest::qWaitFor(
            [&] {
                fmOutput += QString::fromUtf8(fm.readAllStandardOutput());
                return finished() || fm.state() == QProcess::NotRunning;
            },
            timeoutMs);
        if (finished())
            return true;
        const QStringList errors = QString::fromUtf8(fm.readAllStandardError()).split(QLatin1Char('\n'));
        const QStringList failed = errors.filter(QStringLiteral("script line"));
        // A script that neither failed nor finished timed out: show where it stood.
        qWarning().noquote() << (failed.isEmpty() ? QStringLiteral("script unfinished after %1 ms; last lines:\n%2")
                                                        .arg(timeoutMs)
                                                        .arg(errors.mid(errors.size() - 8).join(QLatin1Char('\n')))
                                                  : failed.join(QLatin1Char('\n')));
        return false;
    }

    QTemporaryDir tmp;
    QString locale;   // empty: the machine's
    QProcess sim;
    QProcess fm;
    QString fmOutput;

private:
    // Both programs take "quit"; the file manager saves its cache as it ends.
    static void stop(QProcess &process)
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.write("quit\n");
        process.closeWriteChannel();
        if (!process.waitForFinished(5000)) {
            process.kill();
            process.waitForFinished();
        }
    }

    QString simOutput;
    QString simErrors;
    int mark = 0;
};

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

class TestNubixEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        s.reset(new E2eSession);
        for (const char *file :
            {"root/a.txt", "root/sub/inner.txt", "root/Private/p.txt", "root/broken.bad", "outside/o.txt"})
            QVERIFY(writeFile(s->path(QLatin1String(file)), file));
    }
    void cleanup() { s.reset(); }

    void computerViewShowsTheDrive_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("checks");

        const QString entry = QStringLiteral("computer/groups/[name=Disks]/entries/[name=Kelo Drive]");
        QTest::newRow("quota: used and total on a bar")
            << QString() << utf8List({"--used", "5368709120", "--total", "107374182400", "--quota", "107374182400"})
            << QStringLiteral("wait-for state \"%1/sizeUsage\" 5368709120 15000\n"
                              "expect \"%1/sizeTotal\" 107374182400\nexpect \"%1/showProgress\" true\n"
                              "expect \"%1/description\" \"\"\nexpect \"%1/order\" 3\n"
                              "expect \"%1/icon\" nubix-harddisk-individual\n")
                   .arg(entry);
        QTest::newRow("enterprise account icon")
            << QString() << utf8List({"--enterprise"})
            << QStringLiteral("wait-for state \"%1/icon\" nubix-harddisk-enterprise 15000\n").arg(entry);
        // Run from the build tree, both sides find their translations, and the
        // drive joins the host's own (translated) disk group.
        QTest::newRow("no fixed quota: the used space line, in German")
            << "de_DE.UTF-8" << utf8List({"--used", "1073741824", "--quota", "-3"})
            << QStringLiteral("wait-for state \"%1/description\" \"Belegt: 1024.0 MB\" 15000\n"
                              "expect \"%1/showProgress\" false\nexpect \"%1/showUsageSize\" false\n")
                   .arg(QStringLiteral("computer/groups/[name=Laufwerke]/entries/[name=Kelo Drive]"));
    }

    void computerViewShowsTheDrive()
    {
        QFETCH(QString, locale);
        QFETCH(QStringList, arguments);
        s->locale = locale;
        QFETCH(QString, checks);
        QVERIFY(s->startSimulator(QStringList {QStringLiteral("--root"), s->root()} + arguments));
        // The entry reads the cache when the view repaints; revisiting repaints it.
        const QString script = QStringLiteral("open nubix:///\nwait-for url last nubix:/// 15000\n"
                                              "cd last computer:///\nwait-for url last computer:///\n")
            + checks;
        QVERIFY(s->host(script));
    }

    // The entry's actions reach the client or open the tree, and so does
    // activating it (it opens the welcome page, which becomes the tree). Its
    // menu and the sidebar item's are the same scene, whose content for each
    // state is the scene's unit test.
    void entryMenuAndActivation()
    {
        QVERIFY(s->startSimulator({QStringLiteral("--root"), s->root()}));
        const QString script = QStringLiteral(R"(open computer:///
wait 2000
menu entry last "Kelo Drive"
menu sidebar last "Kelo Drive"
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
cd first computer:///
wait-for url first computer:///
activate first "Kelo Drive"
wait-for url first nubix:/// 15000
)");
        QVERIFY(s->host(script));
        const QString ids = QStringLiteral("nubix-open nubix-open-in-win nubix-open-main-panel nubix-sync-detail "
                                           "nubix-trash-bin nubix-sync-pause nubix-upgrade-enterprise nubix-settings");
        QCOMPARE(menus(s->fmOutput), (QStringList {ids, ids}));
        const QStringList navigated = s->simulatorLog(QStringLiteral("type=setting"))
                                          .split(QLatin1Char('\n'))
                                          .filter(QStringLiteral("navigate to page"));
        QCOMPARE(navigated.size(), 4);
        QVERIFY(navigated.at(0).endsWith(QLatin1String("type=home args=fileDocs")));
        QVERIFY(navigated.at(1).endsWith(QLatin1String("type=sync args=syncList")));
        QVERIFY(navigated.at(2).endsWith(QLatin1String("type=home args=fileRecycle")));
        QVERIFY(navigated.at(3).contains(QLatin1String("type=setting")));
    }

    void bannerStatesAndLinks()
    {
        QVERIFY(s->startSimulator({QStringLiteral("--root"), s->root()}));
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
        QVERIFY(s->host(script));

        // The client stops: the banner asks to start it.
        // Seen by a file manager started afterwards, from the cached summary.
        s->simulator(QStringLiteral("quit\n"));
        QVERIFY(s->sim.waitForFinished(10000));
        s->stopFileManager();
        QVERIFY(s->host(QStringLiteral(R"(open nubix:///
wait 1500
wait-for state %1/icon fbnubix_drive_pause 15000
expect %1/links '["LaunchApp"]'
)")
                            .arg(top)));
    }

    void welcomeButtonStartsAndConnects()
    {
        QVERIFY(s->startSimulator({QStringLiteral("--no-root")}));
        const QString script = QStringLiteral(R"(open nubix-login:///
wait-for url last nubix-login:/// 10000
expect windows/0/tabs/0/view/buttons '["Open Kelo Drive"]'
click last "Open Kelo Drive"
wait 1000
)");
        QVERIFY(s->host(script));
        const QString answered = QStringLiteral("runs plug-in version 1.0.7");
        QVERIFY(s->simulatorLog(answered).contains(answered));
    }

    void windowsFollowTheSyncRoot()
    {
        QVERIFY(s->startSimulator({QStringLiteral("--no-root")}, true));

        // Without a root every way into the tree shows the welcome page, without view buttons.
        QVERIFY(s->host(QStringLiteral("open nubix:///\n"
                                       "wait-for url last nubix-login:///\n"
                                       "wait-for state windows/-1/titlebar/iconViewBtn false\n"
                                       "expect windows/-1/titlebar/listViewBtn false\n"
                                       "expect windows/-1/titlebar/detailSpaceBtn false\n"
                                       "expect windows/-1/tabs/0/name \"Kelo Drive\"\n"
                                       "new-tab last nubix:///\n"
                                       "wait-for state windows/-1/tabs/1/url nubix-login:///\n"
                                       "new-window nubix:///\n"
                                       "wait-for windows 2\n"
                                       "wait-for url last nubix-login:///\n"
                                       "wait-for state sidebar/items/[url=nubix-login:///]/name \"Kelo Drive\"\n"
                                       "expect windows/0/sidebar/highlighted nubix-login:///\n")));

        // A root appears: every welcome page moves to the tree, which lists the files.
        s->simulator(QStringLiteral("root %1\n").arg(s->root()));
        QVERIFY(s->host(QStringLiteral("wait-for url first nubix:///\n"
                                       "wait-for url last nubix:///\n"
                                       "wait-for state windows/0/tabs/1/url nubix:///\n"
                                       "wait-for item last a.txt\n"
                                       "expect windows/-1/tabs/0/name \"Kelo Drive\"\n"
                                       "expect windows/-1/titlebar/iconViewBtn true\n"
                                       "wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix_personal\n"
                                       "expect windows/-1/sidebar/highlighted nubix-login:///\n"
                                       "activate last sub\n"
                                       "wait-for url last nubix:///sub\n"
                                       "wait-for item last inner.txt\n"
                                       "expect windows/-1/tabs/0/name sub\n"
                                       "expect windows/-1/sidebar/highlighted \"\"\n")));

        // Cleared again: the tree windows go back to the welcome page.
        s->simulator(QStringLiteral("root none\n"));
        QVERIFY(s->host(QStringLiteral("wait-for url first nubix-login:///\n"
                                       "wait-for url last nubix-login:///\n"
                                       "wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix-symbolic\n")));
    }

    void emblemsFollowTheClient()
    {
        QVERIFY(
            s->startSimulator({QStringLiteral("--root"), s->root(), QStringLiteral("--ban"), QStringLiteral("/Private"),
                                  QStringLiteral("--fail-pattern"), QStringLiteral("*.bad")},
                true));

        const QString item = QStringLiteral("windows/-1/tabs/0/view/items/[name=%1]/emblems");
        QVERIFY(
            s->host(QStringLiteral("wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix_personal 10000\n"
                                   "open nubix:///\n"
                                   "wait-for item last a.txt 10000\n"
                                   "wait-for state %1 '[\"fbnubix_file_done\"]'\n"
                                   "wait-for state %2 '[\"fbnubix_file_error\"]'\n"
                                   "wait-for state %3 '[\"fbnubix_file_ban\"]'\n")
                        .arg(item.arg(QStringLiteral("a.txt")), item.arg(QStringLiteral("broken.bad")),
                            item.arg(QStringLiteral("Private")))));

        // A transfer in progress shows on its ".temp" file, then on the file it became.
        s->simulator(QStringLiteral("pace 400\ndownload /fresh.txt 4000 4\n"));
        QVERIFY(s->host(QStringLiteral("wait-for item last fresh.txt.temp\n"
                                       "wait-for state %1 '[\"fbnubix_file_syncing\"]'\n"
                                       "wait-for item last fresh.txt 10000\n"
                                       "wait-for state %2 '[\"fbnubix_file_done\"]' 10000\n")
                            .arg(item.arg(QStringLiteral("fresh.txt.temp")), item.arg(QStringLiteral("fresh.txt")))));

        // A live change of status reaches the item.
        s->simulator(QStringLiteral(
            "notify fileSyncStatus {\"fileid\":1,\"isDir\":false,\"path\":\"/a.txt\",\"plan\":\"upload\","
            "\"plan_error\":0,\"plan_status\":2}\n"));
        QVERIFY(s->host(
            QStringLiteral("wait-for state %1 '[\"fbnubix_file_syncing\"]'\n").arg(item.arg(QStringLiteral("a.txt")))));

        // The client goes away: no stale state is shown.
        s->simulator(QStringLiteral("quit\n"));
        QVERIFY(s->host(QStringLiteral("wait-for state %1 []\n"
                                       "wait-for state %2 []\n")
                            .arg(item.arg(QStringLiteral("a.txt")), item.arg(QStringLiteral("Private")))));
    }

    void fileOperationsActOnLocalFiles()
    {
        for (const char *file : {"partial.txt.temp", "gone.txt", "trashme.txt", "moved.txt"})
            QVERIFY(writeFile(s->root() + QLatin1Char('/') + QLatin1String(file), file));
        QVERIFY(s->startSimulator({QStringLiteral("--root"), s->root()}, true));

        QVERIFY(
            s->host(QStringLiteral("wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix_personal 10000\n"
                                   "open nubix:///\n"
                                   "wait-for item last a.txt 10000\n"
                                   // A transfer in progress: one dialog, nothing opened.
                                   "activate last partial.txt.temp\n"
                                   "wait-for dialogs 1\n"
                                   "expect dialogs/# 1\n"
                                   "expect dialogs/0/title \"Open failed\"\n"
                                   "expect opened/# 0\n"
                                   // A synced file opens the local file.
                                   "activate last a.txt\n"
                                   "wait-for state opened/# 1\n"
                                   "expect opened/0/url file://$ROOT/a.txt\n"
                                   "expect dialogs/# 1\n"
                                   "copy last nubix:/// $OUT/o.txt\n"
                                   "wait-for idle\n"
                                   "copy last $OUT nubix:///sub/inner.txt\n"
                                   "wait-for idle\n"
                                   "cut last nubix:///sub $ROOT/moved.txt\n"
                                   "wait-for idle\n"
                                   "mkdir last nubix:///made\n"
                                   "touch last nubix:/// txt\n"
                                   "rename last nubix:///a.txt b.txt\n"
                                   // The renamed item is selected under the tree's own URL.
                                   "wait-for state windows/-1/tabs/0/view/items/[name=b.txt]/selected true\n"
                                   "expect windows/-1/tabs/0/view/items/[name=b.txt]/url nubix:///b.txt\n"
                                   "expect windows/-1/tabs/0/view/items/[name=made]/selected false\n"
                                   "delete last nubix:///gone.txt\n"
                                   "wait-for idle\n"
                                   "trash last nubix:///trashme.txt\n"
                                   "wait-for idle\n"
                                   "link last nubix:///b.txt $OUT/b.link\n"
                                   "chmod last nubix:///b.txt 600\n"
                                   "hide last nubix:///sub/inner.txt\n"
                                   "wait-for idle\n"
                                   "wait-for item last b.txt\n"
                                   "wait-for state results/[event=1002]/targets/0 nubix:///b.txt\n"
                                   // The host's own menu for the tree's items: a folder opens in the tree.
                                   "menu item last b.txt\n"
                                   "menu-trigger item last sub open\n"
                                   "wait-for url last nubix:///sub\n")));
        QCOMPARE(menus(s->fmOutput), QStringList {QStringLiteral("open copy cut rename move-to-trash delete")});

        const QString r = s->root() + QLatin1Char('/');
        for (const char *made : {"o.txt", "sub/inner.txt", "sub/moved.txt", "New Document.txt", "b.txt",
                 "../outside/inner.txt", "../home/.local/share/Trash/files/trashme.txt"})
            QVERIFY2(QFile::exists(r + QLatin1String(made)), made);
        for (const char *gone : {"moved.txt", "a.txt", "gone.txt", "trashme.txt"})
            QVERIFY2(!QFile::exists(r + QLatin1String(gone)), gone);
        QVERIFY(QFileInfo(r + QStringLiteral("made")).isDir());
        QCOMPARE(QFileInfo(s->path(QStringLiteral("outside/b.link"))).symLinkTarget(), r + QStringLiteral("b.txt"));
        QCOMPARE(QFileInfo(r + QStringLiteral("b.txt")).permissions() & QFileDevice::Permissions(0x7777),
            QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser);
        QFile hidden(r + QStringLiteral("sub/.hidden"));
        QVERIFY(hidden.open(QIODevice::ReadOnly));
        QVERIFY(hidden.readAll().split('\n').contains("inner.txt"));
        QVERIFY(!QFile::exists(QDir::currentPath() + QStringLiteral("/files")));
    }

private:
    std::unique_ptr<E2eSession> s;
};

QTEST_GUILESS_MAIN(TestNubixEndToEnd)
#include "tst_nubixendtoend.moc"
