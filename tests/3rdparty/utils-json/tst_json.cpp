// SPDX-License-Identifier: GPL-3.0-or-later
#include "json.h"

#include <QTest>

// The one call the plug-in makes; the rest of the class has no caller in the product, and the
// fuzz target's replay (fuzz_json) keeps its set, get and remove consistent.
class TestJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Text that repeats a key over an earlier object or array never reaches Qt's
    // parser (it would leak the earlier value); everything else does.
    void findsKeysRepeatedOverContainers_data()
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

    void findsKeysRepeatedOverContainers()
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
};

QTEST_GUILESS_MAIN(TestJson)
#include "tst_json.moc"
