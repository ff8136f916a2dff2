// SPDX-License-Identifier: GPL-3.0-or-later
// The automation script's words and the state paths that wait-for, expect
// and state use.
#include "automation/jsonpath.h"
#include "automation/scriptlexer.h"
#include "filetestutils.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using filetest::words;

class ScriptSyntaxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splitLine_data();
    void splitLine();
    void evaluatePath_data();
    void evaluatePath();
    void valueText_data();
    void valueText();
};

void ScriptSyntaxTest::splitLine_data()
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

void ScriptSyntaxTest::splitLine()
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

void ScriptSyntaxTest::evaluatePath_data()
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

void ScriptSyntaxTest::evaluatePath()
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

void ScriptSyntaxTest::valueText_data()
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

void ScriptSyntaxTest::valueText()
{
    QFETCH(QString, text);
    QFETCH(QString, normalised);
    QCOMPARE(hdeapp::jsonValueText(hdeapp::parseJsonValueText(text)), normalised);
}

QTEST_GUILESS_MAIN(ScriptSyntaxTest)
#include "tst_scriptsyntax.moc"
