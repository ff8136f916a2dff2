// SPDX-License-Identifier: GPL-3.0-or-later
// The automation interface: whole runs of hde-file-manager under the
// offscreen platform, driven by scripts on standard input, with the host's
// plug-ins and the test plug-in loaded (checks are mostly the scripts' own
// "expect" lines); and the script syntax and state paths on their own.
#include "automation/jsonpath.h"
#include "automation/scriptlexer.h"
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

private:
    Run run(const QString &script, const QStringList &arguments = QStringList(),
        const QProcessEnvironment &extra = QProcessEnvironment())
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

    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString path(const char *relative) const { return path(QString::fromUtf8(relative)); }
    QString expand(QString text) const { return text.replace(QStringLiteral("$ROOT"), path("root")); }

    std::unique_ptr<QTemporaryDir> tmp;

private Q_SLOTS:
    void init()
    {
        tmp.reset(new QTemporaryDir);
        QVERIFY(tmp->isValid());
        writeFile(path("root/a.txt"), "a");
        writeFile(path("root/marked.txt"), "m");
        writeFile(path("root/dir/inner.txt"), "i");
        QDir().mkpath(path("home/.local/share"));
    }

    void versionComesBeforeAnyGui()
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

    void exitCodes_data()
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

    void exitCodes()
    {
        QFETCH(QString, script);
        QFETCH(int, exitCode);
        QFETCH(QString, errorPart);
        const Run result = run(script);
        QCOMPARE(result.exitCode, exitCode);
        QVERIFY2(result.errors.contains(errorPart), qPrintable(result.errors));
        QVERIFY(!result.lines.contains(QStringLiteral("never")));
    }

    void scriptFromFile()
    {
        writeFile(path("script.txt"), "open " + path("root").toUtf8() + "\nwait-for item last a.txt\necho found\n");
        const Run result = run(QString(), {QStringLiteral("--script"), path("script.txt")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.lines, QStringList {QStringLiteral("found")});

        const Run missing = run(QString(), {QStringLiteral("--script"), path("no-such-script")});
        QCOMPARE(missing.exitCode, 2);
    }

    void debugLinesFollowTheLogRules_data()
    {
        QTest::addColumn<QString>("rules");   // QT_LOGGING_RULES, empty: unset
        QTest::addColumn<QString>("confRules");   // written to a QT_LOGGING_CONF file, empty: none
        QTest::addColumn<bool>("debugShown");

        QTest::newRow("default keeps debug off") << QString() << QString() << false;
        QTest::newRow("QT_LOGGING_RULES turns it on") << "org.sablo.hde.*.debug=true" << QString() << true;
        QTest::newRow("QT_LOGGING_CONF turns it on") << QString() << "org.sablo.hde.*.debug=true" << true;
    }

    void debugLinesFollowTheLogRules()
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

    void navigationCommands()
    {
        // What the filters do is tst_hostplugins'; here the commands reach them.
        const Run result = run(QStringLiteral("open hosttest:///\n"
                                              "wait-for loaded last\n"
                                              "cd last hosttest-redirect:///dir\n"
                                              "wait-for url last hosttest:///dir\n"
                                              "back last\n"
                                              "wait-for url last hosttest:///\n"
                                              "forward last\n"
                                              "wait-for url last hosttest:///dir\n"
                                              "new-tab last hosttest:///forbidden\n"
                                              "new-tab last $ROOT\n"
                                              "new-window hosttest:///\n"
                                              "wait-for windows 2\n"
                                              "address 2 /no/such/place\n"
                                              "address 2 $ROOT/dir\n"
                                              "wait-for item 2 inner.txt\n"
                                              "select 2 inner.txt\n"
                                              "expect version 1\n"
                                              "expect windows/0/tabs/# 2\n"
                                              "expect windows/0/currentTab 1\n"
                                              "expect windows/0/tabs/1/name root\n"
                                              "expect windows/1/titlebar/address $ROOT/dir\n"
                                              "expect windows/1/tabs/0/view/items/[name=inner.txt]/selected true\n"));
        QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
    }

    void fileOperations_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("present");
        QTest::addColumn<QStringList>("absent");
        QTest::addColumn<int>("resultEvent");
        QTest::addColumn<bool>("ok");

        // The operations themselves are tst_fileoperations'; restore is the host's
        // own, outside the events.
        QTest::newRow("restore from the trash")
            << "trash 0 $ROOT/a.txt\nwait-for idle\nclear-records\nrestore 0 ~/.local/share/Trash/files/a.txt"
            << words("root/a.txt")
            << words("home/.local/share/Trash/files/a.txt|home/.local/share/Trash/info/a.txt.trashinfo") << 0 << true;
        QTest::newRow("restore onto a taken name")
            << "trash 0 $ROOT/a.txt\nwait-for idle\ncopy 0 $ROOT $ROOT/marked.txt\nwait-for idle\nrename 0 "
               "\"$ROOT/marked "
               "(1).txt\" a.txt\nclear-records\nrestore 0 ~/.local/share/Trash/files/a.txt"
            << words("root/a.txt|root/a (1).txt") << words("home/.local/share/Trash/files/a.txt") << 0 << true;
        QTest::newRow("restore what is not in the trash")
            << "restore 0 $ROOT/a.txt" << words("root/a.txt") << words("") << 0 << false;
        QTest::newRow("clipboard and paste") << "clipboard 0 cut $ROOT/a.txt\npaste 0 $ROOT/dir"
                                             << words("root/dir/a.txt") << words("root/a.txt") << 1011 << true;
    }

    void fileOperations()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        QFETCH(int, resultEvent);
        QFETCH(bool, ok);
        // A failure is told in a dialog as well (recorded in automation mode).
        const Run result = run(script
            + QStringLiteral("\nwait-for idle\nexpect results/# 1\nexpect results/0/event %1\n"
                             "expect results/0/ok %2\nexpect dialogs/# %3\n")
                  .arg(resultEvent)
                  .arg(ok ? QStringLiteral("true") : QStringLiteral("false"))
                  .arg(ok ? 0 : 1));
        QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
        for (const QString &name : present)
            QVERIFY2(QFileInfo::exists(path(name)), qPrintable(name));
        for (const QString &name : absent)
            QVERIFY2(!QFileInfo::exists(path(name)), qPrintable(name));
    }

    void menusAreListedAndTriggered()
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
)S"));
        QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
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

    void customViewClickAndScreenshot()
    {
        const QString shot = path("shot.png");
        const Run result = run(QStringLiteral(R"S(open hosttest-page:///
click last "Press me"
expect windows/0/tabs/0/view/texts/0 Pressed
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

    // The words of a script line and the state paths of wait-for, expect and state.
    void splitLine_data();
    void splitLine();
    void evaluatePath_data();
    void evaluatePath();
    void valueText_data();
    void valueText();
};

// Defined here: moc cannot read their raw strings.
void HostScriptsTest::splitLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<bool>("ok");

    QTest::newRow("plain words") << "cd 1 /tmp/x" << words("cd|1|/tmp/x") << true;
    QTest::newRow("extra blanks") << "  cd\t1   /tmp  " << words("cd|1|/tmp") << true;
    QTest::newRow("comment") << "# cd 1 /tmp" << words("") << true;
    QTest::newRow("blank") << "   " << words("") << true;
    QTest::newRow("double quotes keep blanks")
        << R"(activate 1 "My File.txt")" << words("activate|1|My File.txt") << true;
    QTest::newRow("single quotes are literal") << R"(echo 'a "b" \n')" << words("echo|a \"b\" \\n") << true;
    QTest::newRow("escapes in double quotes") << R"(echo "say \"hi\" \\ ok")" << words("echo|say \"hi\" \\ ok") << true;
    QTest::newRow("backslash outside quotes") << R"(activate 1 My\ File)" << words("activate|1|My File") << true;
    QTest::newRow("empty quoted word") << R"(touch 1 /tmp "")" << words("touch|1|/tmp|") << true;
    QTest::newRow("joined quotes") << R"(echo a"b c"'d')" << words("echo|ab cd") << true;
    QTest::newRow("hash inside a line") << "echo a#b" << words("echo|a#b") << true;
    QTest::newRow("unterminated double") << R"(echo "open)" << words("") << false;
    QTest::newRow("unterminated single") << "echo 'open" << words("") << false;
}

void HostScriptsTest::splitLine()
{
    QFETCH(QString, line);
    QFETCH(QStringList, words);
    QFETCH(bool, ok);
    QStringList result;
    QString error;
    QCOMPARE(hdeapp::splitScriptLine(line, &result, &error), ok);
    QCOMPARE(result, words);
    QCOMPARE(error.isEmpty(), ok);
}

void HostScriptsTest::evaluatePath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("json");

    QTest::newRow("whole document") << "" << true << R"({"a":[1,2]})";
    QTest::newRow("member") << "a" << true << "[1,2]";
    QTest::newRow("index") << "a/1" << true << "2";
    QTest::newRow("index from the end") << "a/-1" << true << "2";
    QTest::newRow("index out of range") << "a/2" << false << "";
    QTest::newRow("length of array") << "a/#" << true << "2";
    QTest::newRow("length of object") << "#" << true << "1";
    QTest::newRow("length of scalar") << "a/0/#" << false << "";
    QTest::newRow("missing member") << "b" << false << "";
    QTest::newRow("selector") << "w/name=x.txt/url" << true << R"("file:///d/x.txt")";
    QTest::newRow("selector on bool") << "w/sel=true/name" << true << R"("y")";
    QTest::newRow("selector on number") << "w/n=2/name" << true << R"("y")";
    QTest::newRow("bracketed selector with slashes") << "w/[url=file:///d/y]/name" << true << R"("y")";
    QTest::newRow("selector finds nothing") << "w/name=z/url" << false << "";
    QTest::newRow("word on an array") << "w/name" << false << "";
    QTest::newRow("step into scalar") << "w/0/name/x" << false << "";
    QTest::newRow("unterminated bracket") << "w/[url=x" << false << "";
}

void HostScriptsTest::evaluatePath()
{
    QFETCH(QString, path);
    QFETCH(bool, found);
    QFETCH(QString, json);
    const QByteArray text = path.startsWith(QLatin1Char('w'))
        ? QByteArray(R"({"w": [{"name": "x.txt", "url": "file:///d/x.txt", "sel": false, "n": 1},
                              {"name": "y", "url": "file:///d/y", "sel": true, "n": 2}]})")
        : QByteArray(R"({"a": [1, 2]})");
    const QJsonValue root = QJsonDocument::fromJson(text).object();
    QJsonValue value;
    QString error;
    QCOMPARE(hdeapp::evaluateJsonPath(root, path, &value, &error), found);
    QCOMPARE(error.isEmpty(), found);
    if (found)
        QCOMPARE(value, hdeapp::parseJsonValueText(json));
}

void HostScriptsTest::valueText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("normalised");

    // clang-format off
    QTest::newRow("bool") << "true" << "true";
    QTest::newRow("number") << "12" << "12";
    QTest::newRow("quoted string") << R"("a b")" << R"("a b")";
    QTest::newRow("bare word is a string") << "hello" << R"("hello")";
    QTest::newRow("list") << R"([1, "x"])" << R"([1,"x"])";
    QTest::newRow("null") << "null" << "null";
    QTest::newRow("broken json is a string") << "[1," << R"("[1,")";
    // clang-format on
}

void HostScriptsTest::valueText()
{
    QFETCH(QString, text);
    QFETCH(QString, normalised);
    QCOMPARE(hdeapp::jsonValueText(hdeapp::parseJsonValueText(text)), normalised);
}

QTEST_GUILESS_MAIN(HostScriptsTest)
#include "tst_hostscripts.moc"
