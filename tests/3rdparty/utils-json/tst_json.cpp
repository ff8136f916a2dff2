// SPDX-License-Identifier: GPL-3.0-or-later
#include "json.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

namespace {
QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
// JSON written with single quotes, which read better in tables: "{'a':1}".
QString doc(const char *singleQuoted)
{
    return text(singleQuoted).replace(QLatin1Char('\''), QLatin1Char('"'));
}
QJsonObject object(const char *singleQuoted)
{
    return QJsonDocument::fromJson(doc(singleQuoted).toUtf8()).object();
}
}   // namespace

class TestJson : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsTypedValues_data();
    void readsTypedValues();
    void readsFromStartObject();
    void readsArrays_data();
    void readsArrays();
    void changesByPath_data();
    void changesByPath();
    void refusesTooLongPaths_data();
    void refusesTooLongPaths();
    void reportsParseErrors_data();
    void reportsParseErrors();
    void emptyTextIsEmptyObject();
    void writesCompactAndIndented();
    void savesAndLoadsFile();
    void failsOnFilesItCannotUse();
    void findsKeysRepeatedOverContainers_data();
    void findsKeysRepeatedOverContainers();
};

void TestJson::readsTypedValues_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("intValue");
    QTest::addColumn<bool>("boolValue");
    QTest::addColumn<double>("doubleValue");
    QTest::addColumn<QString>("stringValue");

    // Defaults used below: int 7, bool true, double 2.5, string "def".
    QTest::newRow("nested number") << doc("{'a':{'b':3}}") << text("a.b") << 3 << true << 3.0 << text("def");
    QTest::newRow("intermediate is a number") << doc("{'a':3}") << text("a.b") << 7 << true << 2.5 << text("def");
    QTest::newRow("missing intermediate") << doc("{'x':{'b':1}}") << text("a.b") << 7 << true << 2.5 << text("def");
    QTest::newRow("false flag") << doc("{'f':false}") << text("f") << 7 << false << 2.5 << text("def");
    QTest::newRow("fraction") << doc("{'d':{'e':{'f':1.25}}}") << text("d.e.f") << 7 << true << 1.25 << text("def");
    QTest::newRow("key with a dot cannot be addressed")
        << doc("{'a.b':5}") << text("a.b") << 7 << true << 2.5 << text("def");
    QTest::newRow("empty path") << doc("{'':5}") << QString() << 5 << true << 5.0 << text("def");
    QTest::newRow("string is not a number") << doc("{'n':'12'}") << text("n") << 7 << true << 2.5 << text("12");
}

void TestJson::readsTypedValues()
{
    QFETCH(QString, document);
    QFETCH(QString, path);

    const Json json(document);
    QVERIFY(json.isValid());
    QTEST(json.getInt(path, 7), "intValue");
    QTEST(json.getBool(path, true), "boolValue");
    QTEST(json.getDouble(path, 2.5), "doubleValue");
    QTEST(json.getString(path, text("def")), "stringValue");
}

void TestJson::readsFromStartObject()
{
    const Json json(doc("{'a':{'b':1},'c':{'b':2}}"));
    const QJsonObject start = json.getJsonObject(text("c"));
    QCOMPARE(json.getInt(text("b"), 0, start), 2);
    QCOMPARE(json.getInt(text("a.b"), 0, start), 0);
    QCOMPARE(json.getJsonValue(text("a.b")).toInt(), 1);
    // An empty start object means the root.
    QCOMPARE(json.getInt(text("a.b"), 0, QJsonObject()), 1);
}

void TestJson::readsArrays_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("strings");
    QTest::addColumn<int>("size");

    QTest::newRow("array member") << doc("{'l':['x','y']}") << text("l") << QStringList {text("x"), text("y")} << 2;
    QTest::newRow("top-level array by dot")
        << doc("['p','q','r']") << text(".") << QStringList {text("p"), text("q"), text("r")} << 3;
    QTest::newRow("top-level array by empty path") << doc("['p']") << QString() << QStringList {text("p")} << 1;
    QTest::newRow("non-strings become empty")
        << doc("{'l':[1,'s',true]}") << text("l") << QStringList {QString(), text("s"), QString()} << 3;
    QTest::newRow("not an array") << doc("{'l':'x'}") << text("l") << QStringList() << 0;
    QTest::newRow("object document by dot") << doc("{'l':[1]}") << text(".") << QStringList() << 0;
}

void TestJson::readsArrays()
{
    QFETCH(QString, document);
    QFETCH(QString, path);

    const Json json(document);
    QVERIFY(json.isValid());
    QTEST(json.getStringList(path), "strings");
    QTEST(json.getJsonArray(path).size(), "size");
}

void TestJson::changesByPath_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonValue>("value");   // undefined: remove the path
    QTest::addColumn<QJsonObject>("expected");

    const QJsonValue remove(QJsonValue::Undefined);
    QTest::newRow("set creates nested objects")
        << text("{}") << text("x.y.z") << QJsonValue(1) << object("{'x':{'y':{'z':1}}}");
    QTest::newRow("set replaces a number on the way")
        << doc("{'x':5}") << text("x.y") << QJsonValue(true) << object("{'x':{'y':true}}");
    QTest::newRow("set keeps siblings") << doc("{'x':{'a':1},'b':2}") << text("x.c") << QJsonValue(text("s"))
                                        << object("{'x':{'a':1,'c':'s'},'b':2}");
    QTest::newRow("set a top-level key") << text("{}") << text("k") << QJsonValue(QJsonArray {1, 2})
                                         << object("{'k':[1,2]}");
    QTest::newRow("remove a nested leaf")
        << doc("{'a':{'b':1,'c':2}}") << text("a.b") << remove << object("{'a':{'c':2}}");
    QTest::newRow("remove a missing leaf") << doc("{'a':{'b':1}}") << text("a.x") << remove << object("{'a':{'b':1}}");
    // Removing walks the way exactly as setting does, objects made or replaced on it included.
    QTest::newRow("remove on a missing way makes it as set does")
        << doc("{'a':1}") << text("x.y.z") << remove << object("{'a':1,'x':{'y':{}}}");
    QTest::newRow("remove replaces a number on the way as set does")
        << doc("{'a':3}") << text("a.b") << remove << object("{'a':{}}");
    QTest::newRow("remove through an array replaces it as set does")
        << doc("{'a':[1],'k':0}") << text("a.b") << remove << object("{'a':{},'k':0}");
}

void TestJson::changesByPath()
{
    QFETCH(QString, document);
    QFETCH(QString, path);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonObject, expected);

    Json json(document);
    if (value.isUndefined())
        json.remove(path);
    else
        json.set(path, value);
    QCOMPARE(QJsonDocument::fromJson(json.toString().toUtf8()).object(), expected);
    if (!value.isUndefined())
        QCOMPARE(json.getJsonValue(path), value);
}

void TestJson::refusesTooLongPaths_data()
{
    QTest::addColumn<int>("keys");
    QTest::addColumn<bool>("remove");
    QTest::addColumn<bool>("changed");

    QTest::newRow("set at the limit") << Json::kMaxPathKeys << false << true;
    QTest::newRow("set past the limit") << Json::kMaxPathKeys + 1 << false << false;
    QTest::newRow("remove at the limit") << Json::kMaxPathKeys << true << true;
    QTest::newRow("remove past the limit") << Json::kMaxPathKeys + 1 << true << false;
}

void TestJson::refusesTooLongPaths()
{
    QFETCH(int, keys);
    QFETCH(bool, remove);
    QFETCH(bool, changed);

    QStringList way;
    for (int i = 0; i < keys; ++i)
        way.append(text("k"));
    const QString path = way.join(QLatin1Char('.'));
    Json json(doc("{'a':1}"));
    if (remove)
        json.remove(path);
    else
        json.set(path, 2);
    // Whatever is changed can be read back: Qt reads 1024 levels at most.
    QCOMPARE(json.toString() != doc("{'a':1}"), changed);
    QVERIFY(Json(json.toString()).isValid());
    QCOMPARE(json.getJsonValue(path), remove || !changed ? QJsonValue(QJsonValue::Undefined) : QJsonValue(2));
}

void TestJson::reportsParseErrors_data()
{
    QTest::addColumn<QString>("document");

    QTest::newRow("not json") << text("hello");
    QTest::newRow("trailing garbage") << doc("{'a':1} x");
}

void TestJson::reportsParseErrors()
{
    QFETCH(QString, document);

    QJsonParseError parserError;
    QJsonDocument::fromJson(document.toUtf8(), &parserError);

    const Json json(document);
    QVERIFY(!json.isValid());
    const QStringList lines = json.errorString().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), parserError.errorString());
    QCOMPARE(lines.at(1), QStringLiteral("Offset: %1").arg(parserError.offset));
    // A failed document still answers with defaults.
    QCOMPARE(json.getInt(text("a"), 9), 9);
    QCOMPARE(json.toString(), text("{}"));
}

void TestJson::emptyTextIsEmptyObject()
{
    Json json;
    QVERIFY(json.isValid());
    QVERIFY(json.errorString().isEmpty());
    json.set(text("a.b"), QStringList {text("x"), text("y")});
    QCOMPARE(json.getStringList(text("a.b")), (QStringList {text("x"), text("y")}));
}

void TestJson::writesCompactAndIndented()
{
    const Json json(doc("{'b':1,'a':{'c':true}}"));
    QCOMPARE(json.toString(false), doc("{'a':{'c':true},'b':1}"));
    QCOMPARE(json.toString(true), doc("{\n    'a': {\n        'c': true\n    },\n    'b': 1\n}\n"));
}

void TestJson::savesAndLoadsFile()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(text("doc.json"));
    {
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(4096, ' '));
    }

    Json json;
    json.set(text("name"), QJsonValue(text("gr\u00fc\u00df")));
    json.set(text("nested.count"), QJsonValue(4));
    QVERIFY(json.save(path, true));

    const Json loaded(path, true);
    QVERIFY(loaded.isValid());
    QCOMPARE(loaded.getString(text("name")), text("gr\u00fc\u00df"));
    QCOMPARE(loaded.getInt(text("nested.count")), 4);
    // The old, longer content is gone.
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), json.toString(true).toUtf8());
}

void TestJson::failsOnFilesItCannotUse()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(text("missing.json"));
    const Json json(path, true);
    QVERIFY(!json.isValid());
    QCOMPARE(json.errorString(), text("Cannot open the file: ") + path);
    QCOMPARE(json.toString(), text("{}"));
    QVERIFY(!json.save(dir.filePath(text("no/such/dir/doc.json"))));
    QVERIFY(!json.save(dir.path()));
}

// Text that repeats a key over an earlier object or array never reaches Qt's
// parser (it would leak the earlier value); everything else does.
void TestJson::findsKeysRepeatedOverContainers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("offset");

    QTest::newRow("object then scalar") << QByteArray(R"({"a":{"x":1},"a":1})") << 13;
    QTest::newRow("array then object") << QByteArray(R"({"a":[1],"b":2,"a":{}})") << 15;
    QTest::newRow("escaped spelling of the same key") << QByteArray(R"({"a":{},"\u0061":1})") << 8;
    QTest::newRow("deep inside") << QByteArray(R"([1,{"k":{"a":[],"a":[]}}])") << 16;
    QTest::newRow("scalar then object") << QByteArray(R"({"a":1,"a":{}})") << -1;
    QTest::newRow("same key in sibling objects") << QByteArray(R"({"x":{"a":{}},"y":{"a":{}}})") << -1;
    QTest::newRow("same key in array elements") << QByteArray(R"([{"a":{}},{"a":{}}])") << -1;
    QTest::newRow("braces and quotes inside strings") << QByteArray(R"({"s":"}{\"a\":","a":{},"b":"a"})") << -1;
    QTest::newRow("unterminated string") << QByteArray(R"({"a":{},"a)") << -1;
}

void TestJson::findsKeysRepeatedOverContainers()
{
    QFETCH(QByteArray, text);
    QFETCH(int, offset);

    QCOMPARE(Json::repeatedContainerKeyAt(text), offset);
    Json json(QString::fromUtf8(text));
    if (offset >= 0) {
        QVERIFY(!json.isValid());
        QCOMPARE(json.errorString(), QStringLiteral("repeated object key\nOffset: %1").arg(offset));
    }
}

QTEST_GUILESS_MAIN(TestJson)
#include "tst_json.moc"
