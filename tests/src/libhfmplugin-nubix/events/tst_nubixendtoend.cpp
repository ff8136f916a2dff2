// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in inside the real file manager, talking to the real simulator:
// both are separate processes under a temporary HOME. The file manager is
// driven by an automation script fed line by line; the simulator by its
// commands. Checks are the file manager's own waits on its printed state,
// and the files on disk.
#include "e2eenvironment.h"

#include <QtTest>

#include <memory>

class TestNubixEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { s.reset(); }
    void windowsFollowTheSyncRoot();
    void emblemsFollowTheClient();
    void fileOperationsActOnLocalFiles();

private:
    QString root() const { return s->root(); }
    bool startSimulator(const QStringList &arguments)
    {
        return s->startSimulator(QStringList {QStringLiteral("--pace-ms"), QStringLiteral("100"),
                                     QStringLiteral("--rescan-ms"), QStringLiteral("0")}
            + arguments);
    }
    bool host(const QString &lines, int timeoutMs = 20000) { return s->host(lines, timeoutMs); }

    std::unique_ptr<E2eSession> s;
};

void TestNubixEndToEnd::init()
{
    s.reset(new E2eSession);
    QVERIFY(writeFile(root() + QStringLiteral("/a.txt"), "a"));
    QVERIFY(writeFile(root() + QStringLiteral("/sub/inner.txt"), "i"));
    QVERIFY(writeFile(root() + QStringLiteral("/Private/p.txt"), "p"));
    QVERIFY(writeFile(root() + QStringLiteral("/broken.bad"), "b"));
    QVERIFY(writeFile(s->path(QStringLiteral("outside/o.txt")), "o"));
}

void TestNubixEndToEnd::windowsFollowTheSyncRoot()
{
    QVERIFY(startSimulator({QStringLiteral("--no-root")}));

    // Without a root every way into the tree shows the welcome page, without view buttons.
    QVERIFY(host(QStringLiteral("open nubix:///\n"
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
    s->simulator(QStringLiteral("root %1\n").arg(root()));
    QVERIFY(host(QStringLiteral("wait-for url first nubix:///\n"
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
    QVERIFY(host(QStringLiteral("wait-for url first nubix-login:///\n"
                                "wait-for url last nubix-login:///\n"
                                "wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix-symbolic\n")));
}

void TestNubixEndToEnd::emblemsFollowTheClient()
{
    QVERIFY(startSimulator({QStringLiteral("--root"), root(), QStringLiteral("--ban"), QStringLiteral("/Private"),
        QStringLiteral("--fail-pattern"), QStringLiteral("*.bad")}));

    const QString item = QStringLiteral("windows/-1/tabs/0/view/items/[name=%1]/emblems");
    QVERIFY(host(QStringLiteral("wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix_personal 10000\n"
                                "open nubix:///\n"
                                "wait-for item last a.txt 10000\n"
                                "wait-for state %1 '[\"fbnubix_file_done\"]'\n"
                                "wait-for state %2 '[\"fbnubix_file_error\"]'\n"
                                "wait-for state %3 '[\"fbnubix_file_ban\"]'\n")
                     .arg(item.arg(QStringLiteral("a.txt")), item.arg(QStringLiteral("broken.bad")),
                         item.arg(QStringLiteral("Private")))));

    // A transfer in progress shows on its ".temp" file, then on the file it became.
    s->simulator(QStringLiteral("pace 400\ndownload /fresh.txt 4000 4\n"));
    QVERIFY(host(QStringLiteral("wait-for item last fresh.txt.temp\n"
                                "wait-for state %1 '[\"fbnubix_file_syncing\"]'\n"
                                "wait-for item last fresh.txt 10000\n"
                                "wait-for state %2 '[\"fbnubix_file_done\"]' 10000\n")
                     .arg(item.arg(QStringLiteral("fresh.txt.temp")), item.arg(QStringLiteral("fresh.txt")))));

    // A live change of status reaches the item.
    s->simulator(
        QStringLiteral("notify fileSyncStatus {\"fileid\":1,\"isDir\":false,\"path\":\"/a.txt\",\"plan\":\"upload\","
                       "\"plan_error\":0,\"plan_status\":2}\n"));
    QVERIFY(host(
        QStringLiteral("wait-for state %1 '[\"fbnubix_file_syncing\"]'\n").arg(item.arg(QStringLiteral("a.txt")))));

    // The client goes away: no stale state is shown.
    s->simulator(QStringLiteral("quit\n"));
    QVERIFY(host(QStringLiteral("wait-for state %1 []\n"
                                "wait-for state %2 []\n")
                     .arg(item.arg(QStringLiteral("a.txt")), item.arg(QStringLiteral("Private")))));
}

void TestNubixEndToEnd::fileOperationsActOnLocalFiles()
{
    QVERIFY(writeFile(root() + QStringLiteral("/partial.txt.temp"), "half"));
    QVERIFY(writeFile(root() + QStringLiteral("/gone.txt"), "g"));
    QVERIFY(writeFile(root() + QStringLiteral("/trashme.txt"), "t"));
    QVERIFY(writeFile(root() + QStringLiteral("/moved.txt"), "m"));
    QVERIFY(startSimulator({QStringLiteral("--root"), root()}));

    QVERIFY(host(QStringLiteral("wait-for state sidebar/items/[url=nubix-login:///]/icon fbnubix_personal 10000\n"
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
                                "wait-for state results/[event=1002]/targets/0 nubix:///b.txt\n")));

    const QString r = root() + QLatin1Char('/');
    QVERIFY(QFile::exists(r + QStringLiteral("o.txt")));
    QVERIFY(QFile::exists(s->path(QStringLiteral("outside/inner.txt"))));
    QVERIFY(QFile::exists(r + QStringLiteral("sub/inner.txt")));
    QVERIFY(QFile::exists(r + QStringLiteral("sub/moved.txt")));
    QVERIFY(!QFile::exists(r + QStringLiteral("moved.txt")));
    QVERIFY(QFileInfo(r + QStringLiteral("made")).isDir());
    QVERIFY(QFile::exists(r + QStringLiteral("New Document.txt")));
    QVERIFY(QFile::exists(r + QStringLiteral("b.txt")));
    QVERIFY(!QFile::exists(r + QStringLiteral("a.txt")));
    QVERIFY(!QFile::exists(r + QStringLiteral("gone.txt")));
    QVERIFY(!QFile::exists(r + QStringLiteral("trashme.txt")));
    QVERIFY(QFile::exists(s->path(QStringLiteral("home/.local/share/Trash/files/trashme.txt"))));
    QCOMPARE(QFileInfo(s->path(QStringLiteral("outside/b.link"))).symLinkTarget(), r + QStringLiteral("b.txt"));
    QCOMPARE(QFileInfo(r + QStringLiteral("b.txt")).permissions() & QFileDevice::Permissions(0x7777),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser);
    QFile hidden(r + QStringLiteral("sub/.hidden"));
    QVERIFY(hidden.open(QIODevice::ReadOnly));
    QVERIFY(hidden.readAll().split('\n').contains("inner.txt"));
    QVERIFY(!QFile::exists(QDir::currentPath() + QStringLiteral("/files")));
}

QTEST_GUILESS_MAIN(TestNubixEndToEnd)
#include "tst_nubixendtoend.moc"
