// SPDX-License-Identifier: GPL-3.0-or-later
// Whole runs of hde-file-manager under the offscreen platform, driven by
// automation scripts on standard input, with the host's plug-ins and the
// test plug-in loaded. Checks go through the printed state (JSON lines).
#include "filetestutils.h"
#include "statetestutils.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace filetest;
using statetest::at;

namespace {

struct Run
{
    int exitCode = -1;
    QStringList lines;   // standard output
    QString errors;   // standard error

    QJsonObject lastState() const
    {
        for (auto it = lines.crbegin(); it != lines.crend(); ++it) {
            const QJsonObject object = QJsonDocument::fromJson(it->toUtf8()).object();
            if (object.contains(QStringLiteral("version")))
                return object;
        }
        return QJsonObject();
    }
};

QStringList values(const QJsonValue &array, const char *key)
{
    QStringList list;
    const QJsonArray items = array.toArray();
    for (const QJsonValue &value : items)
        list.append(value.toObject().value(QLatin1String(key)).toString());
    return list;
}

}   // namespace

class HostScriptsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void versionComesBeforeAnyGui();
    void exitCodes_data();
    void exitCodes();
    void scriptFromFile();
    void navigationThroughFilters();
    void fileOperations_data();
    void fileOperations();
    void menusAreListedAndTriggered();
    void customViewClickAndScreenshot();
    void debugLinesFollowTheLogRules_data();
    void debugLinesFollowTheLogRules();

private:
    Run run(const QString &script, const QStringList &arguments = QStringList(),
        const QProcessEnvironment &extra = QProcessEnvironment());
    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString path(const char *relative) const { return path(QString::fromUtf8(relative)); }
    QString expand(QString text) const { return text.replace(QStringLiteral("$ROOT"), path("root")); }

    std::unique_ptr<QTemporaryDir> tmp;
};

void HostScriptsTest::init()
{
    tmp.reset(new QTemporaryDir);
    QVERIFY(tmp->isValid());
    writeFile(path("root/a.txt"), "a");
    writeFile(path("root/marked.txt"), "m");
    writeFile(path("root/dir/inner.txt"), "i");
    QDir().mkpath(path("home/.local/share"));
}

Run HostScriptsTest::run(const QString &script, const QStringList &arguments, const QProcessEnvironment &extra)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), path("home"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), path("home/.local/share"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), path("home/.config"));
    env.insert(QStringLiteral("HOSTTEST_ROOT"), path("root"));
    env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.info=false"));
    env.remove(QStringLiteral("HDE_PLUGIN_DIRS"));
    for (const QString &key : extra.keys()) {
        if (extra.value(key).isEmpty())
            env.remove(key);
        else
            env.insert(key, extra.value(key));
    }
    process.setProcessEnvironment(env);
    QStringList args {QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("--plugin-dir"),
        QStringLiteral(HOSTTEST_PLUGIN_DIR), QStringLiteral("--disable-plugin"), QStringLiteral("hfmplugin-nubix")};
    args += arguments.isEmpty() ? QStringList {QStringLiteral("--script"), QStringLiteral("-")} : arguments;
    process.start(QStringLiteral(HDE_FM_BINARY), args);
    Run result;
    if (!process.waitForStarted(10000))
        return result;
    process.write(expand(script).toUtf8());
    process.closeWriteChannel();
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    result.errors = QString::fromUtf8(process.readAllStandardError());
    return result;
}

void HostScriptsTest::versionComesBeforeAnyGui()
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // No display at all: starting any GUI would fail.
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(HDE_FM_BINARY), {QStringLiteral("-v")});
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray("hde-file-manager " HDE_FM_VERSION "\n"));
}

void HostScriptsTest::exitCodes_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("errorPart");

    QTest::newRow("end of script") << "echo done\n" << 0 << "";
    QTest::newRow("quit with a code") << "quit 7\necho never\n" << 7 << "";
    QTest::newRow("unknown command") << "echo a\nfly me\n" << 2 << "script line 2: fly me: unknown command";
    QTest::newRow("missing arguments") << "cd last\n" << 2 << "usage: cd";
    QTest::newRow("wait that times out") << "wait-for windows 3 50\n" << 3 << "timed out after 50 ms";
    QTest::newRow("expectation not met") << "expect windows/# 1\n" << 1 << "is 0, not 1";
    QTest::newRow("no such window") << "cd 42 /tmp\n" << 1 << "no window \"42\"";
    QTest::newRow("no such item") << "open $ROOT\nwait-for loaded last\nactivate last nothing.txt\n"
                                  << 1 << "no item \"nothing.txt\"";
    QTest::newRow("not a location") << "open relative/path\n" << 2 << "neither an absolute path nor a URL";
    QTest::newRow("unknown theme") << "theme blue\n" << 2 << "the theme must be light or dark";
}

void HostScriptsTest::exitCodes()
{
    QFETCH(QString, script);
    QFETCH(int, exitCode);
    QFETCH(QString, errorPart);
    const Run result = run(script);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.errors.contains(errorPart), qPrintable(result.errors));
    QVERIFY(!result.lines.contains(QStringLiteral("never")));
}

void HostScriptsTest::debugLinesFollowTheLogRules_data()
{
    QTest::addColumn<QString>("rules");   // QT_LOGGING_RULES, empty: unset
    QTest::addColumn<QString>("confRules");   // written to a QT_LOGGING_CONF file, empty: none
    QTest::addColumn<bool>("debugShown");

    QTest::newRow("default keeps debug off") << QString() << QString() << false;
    QTest::newRow("QT_LOGGING_RULES turns it on") << "org.sablo.hde.*.debug=true" << QString() << true;
    QTest::newRow("QT_LOGGING_CONF turns it on") << QString() << "org.sablo.hde.*.debug=true" << true;
    QTest::newRow("other categories stay off") << "qt.foo.debug=true" << QString() << false;
}

void HostScriptsTest::debugLinesFollowTheLogRules()
{
    QFETCH(QString, rules);
    QFETCH(QString, confRules);
    QProcessEnvironment extra;
    extra.insert(QStringLiteral("QT_LOGGING_RULES"), rules);
    extra.insert(QStringLiteral("QT_LOGGING_CONF"), QString());
    if (!confRules.isEmpty()) {
        writeFile(path("logging.ini"), "[Rules]\n" + confRules.toUtf8() + "\n");
        extra.insert(QStringLiteral("QT_LOGGING_CONF"), path("logging.ini"));
    }
    const Run result = run(QStringLiteral("echo started\n"), QStringList(), extra);
    QCOMPARE(result.exitCode, 0);
    QTEST(result.errors.contains(QLatin1String("Loading plug-ins from")), "debugShown");
}

void HostScriptsTest::scriptFromFile()
{
    writeFile(path("script.txt"), "open " + path("root").toUtf8() + "\nwait-for item last a.txt\necho found\n");
    const Run result = run(QString(), {QStringLiteral("--script"), path("script.txt")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.lines, QStringList {QStringLiteral("found")});

    const Run missing = run(QString(), {QStringLiteral("--script"), path("no-such-script")});
    QCOMPARE(missing.exitCode, 2);
}

void HostScriptsTest::navigationThroughFilters()
{
    const Run result = run(QStringLiteral(R"S(open hosttest:///
wait-for loaded last
cd last hosttest-redirect:///dir
wait-for url last hosttest:///dir
cd last hosttest:///forbidden
new-tab last hosttest:///forbidden
new-tab last $ROOT
wait-for loaded last
new-window hosttest-redirect:///
wait-for windows 2
back 1
forward 1
address 2 /no/such/place
address 2 $ROOT/dir
wait-for item 2 inner.txt
select 2 inner.txt
state
)S"));
    QCOMPARE(result.exitCode, 0);
    const QJsonObject state = result.lastState();
    QCOMPARE(at(state, "version").toInt(), 1);
    QCOMPARE(at(state, "windows/#").toInt(), 2);
    // The vetoed tab never came; the redirect went to the tree.
    const QJsonValue tabs = at(state, "windows/0/tabs");
    QCOMPARE(values(tabs, "url"),
        (QStringList {QStringLiteral("hosttest:///dir"), QUrl::fromLocalFile(path("root")).toString()}));
    QCOMPARE(values(tabs, "name"), words("dir|root"));
    QCOMPARE(at(state, "windows/0/currentTab").toInt(), 1);
    QCOMPARE(at(state, "windows/1/url").toString(), QUrl::fromLocalFile(path("root/dir")).toString());
    QCOMPARE(at(state, "windows/1/titlebar/address").toString(), path("root/dir"));
}

void HostScriptsTest::fileOperations_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("absent");
    QTest::addColumn<int>("resultEvent");
    QTest::addColumn<bool>("ok");

    // The operations themselves are tst_fileoperations'; the nubix end-to-end
    // test drives mkdir, touch, copy, cut, delete, trash and rename by script.
    QTest::newRow("restore from the trash")
        << "trash 0 $ROOT/a.txt\nwait-for idle\nclear-records\nrestore 0 ~/.local/share/Trash/files/a.txt"
        << words("root/a.txt")
        << words("home/.local/share/Trash/files/a.txt|home/.local/share/Trash/info/a.txt.trashinfo") << 0 << true;
    QTest::newRow("restore onto a taken name")
        << "trash 0 $ROOT/a.txt\nwait-for idle\ncopy 0 $ROOT $ROOT/marked.txt\nwait-for idle\nrename 0 \"$ROOT/marked "
           "(1).txt\" a.txt\nclear-records\nrestore 0 ~/.local/share/Trash/files/a.txt"
        << words("root/a.txt|root/a (1).txt") << words("home/.local/share/Trash/files/a.txt") << 0 << true;
    QTest::newRow("restore what is not in the trash")
        << "restore 0 $ROOT/a.txt" << words("root/a.txt") << words("") << 0 << false;
    QTest::newRow("rename onto a taken name")
        << "rename 0 $ROOT/a.txt marked.txt" << words("root/a.txt|root/marked.txt") << words("") << 1002 << false;
    QTest::newRow("clipboard and paste") << "clipboard 0 cut $ROOT/a.txt\npaste 0 $ROOT/dir" << words("root/dir/a.txt")
                                         << words("root/a.txt") << 1011 << true;
    QTest::newRow("open a file") << "open-files 0 hosttest:///a.txt" << words("root/a.txt") << words("") << 1016
                                 << true;
}

void HostScriptsTest::fileOperations()
{
    QFETCH(QString, script);
    QFETCH(QStringList, present);
    QFETCH(QStringList, absent);
    QFETCH(int, resultEvent);
    QFETCH(bool, ok);
    const Run result = run(script + QStringLiteral("\nwait-for idle\nstate\n"));
    QCOMPARE(result.exitCode, 0);
    for (const QString &name : present)
        QVERIFY2(QFileInfo::exists(path(name)), qPrintable(name));
    for (const QString &name : absent)
        QVERIFY2(!QFileInfo::exists(path(name)), qPrintable(name));
    const QJsonObject state = result.lastState();
    QCOMPARE(at(state, "results/#").toInt(), 1);
    QCOMPARE(at(state, "results/0/event").toInt(), resultEvent);
    QCOMPARE(at(state, "results/0/ok").toBool(), ok);
    // A failure is told in a dialog as well (recorded in automation mode).
    QCOMPARE(at(state, "dialogs").toArray().isEmpty(), ok);
    if (resultEvent == 1016)
        QCOMPARE(at(state, "opened/[requested=hosttest:///a.txt]/url").toString(),
            QUrl::fromLocalFile(path("root/a.txt")).toString());
}

void HostScriptsTest::menusAreListedAndTriggered()
{
    const Run result = run(QStringLiteral(R"S(open hosttest:///
wait-for loaded last
menu item last a.txt
menu-shot "$ROOT/../menu.png" item last a.txt
menu-trigger item last a.txt copy
menu-trigger blank last paste
wait-for item last "a (1).txt"
menu-trigger item last "a (1).txt" move-to-trash
wait-for no-item last "a (1).txt"
cd last computer:///
menu-trigger entry last "Test Drive" hosttest-hello
menu-trigger sidebar last "Test Place (started)" hosttest-sidebar-action
menu-trigger item last nothing copy
)S"));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains(QLatin1String("no item \"nothing\"")), qPrintable(result.errors));
    // Only "menu" and "menu-shot" print; what the triggers did shows in the files.
    QCOMPARE(result.lines.size(), 2);
    QCOMPARE(values(at(QJsonDocument::fromJson(result.lines.at(0).toUtf8()).object(), "menu"), "id"),
        words("open|copy|cut|rename|move-to-trash|delete|hosttest-info"));
    QCOMPARE(result.lines.at(1), result.lines.at(0));
    // The picture is the menu as shown: a row per action.
    const QImage shot(path("menu.png"));
    QVERIFY(!shot.isNull());
    QVERIFY(shot.height() > 7 * 16);
    QVERIFY(QFileInfo::exists(path("home/.local/share/Trash/files/a (1).txt")));
    QVERIFY(QFileInfo::exists(path("root/a.txt")));
}

void HostScriptsTest::customViewClickAndScreenshot()
{
    const QString shot = path("shot.png");
    const Run result = run(QStringLiteral(R"S(open hosttest-page:///
click last "Press me"
expect windows/0/tabs/0/view/texts/0 Pressed
expect windows/0/titlebar/iconViewBtn false
resize last 800 500
screenshot last "%1"
expect theme light
theme dark
expect theme dark
screenshot last "%2"
theme light
expect theme light
)S")
                               .arg(shot, path("dark.png")));
    QCOMPARE(result.exitCode, 0);
    const QImage image(shot);
    QCOMPARE(image.size(), QSize(800, 500));
    // The window follows the theme switch: its empty corner turns dark.
    QVERIFY(image.pixelColor(790, 490).lightness() > 128);
    QVERIFY(QImage(path("dark.png")).pixelColor(790, 490).lightness() < 128);
}

QTEST_GUILESS_MAIN(HostScriptsTest)
#include "tst_hostscripts.moc"
