// SPDX-License-Identifier: GPL-3.0-or-later
#include "messagelog.h"
#include "teststrings.h"
#include "wire.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

using hfmplugin_nubix::NubixMessageHandler;

namespace {
QJsonObject parseObject(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    return error.error == QJsonParseError::NoError ? document.object() : QJsonObject();
}

// A message that is refused whatever the connection state, used to know that
// everything sent before it has been handled.
const QByteArray kSentinel("{\"type\":\"sentinel\",\"data\":{}}");
const QString kSentinelWarning = QStringLiteral("NubixMessageHandler: Invalid message type: \"sentinel\"");
}   // namespace

class TestNubixMessageHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keyIsBracedUuidWithoutClosingBrace();
    void buildsEnvelopes_data();
    void buildsEnvelopes();
    void malformedInputGivesOnlyItsWarning_data();
    void malformedInputGivesOnlyItsWarning();
    void answersPluginInfoWhileConnected();
    void refusesPluginInfoWhileDisconnected();
};

void TestNubixMessageHandler::keyIsBracedUuidWithoutClosingBrace()
{
    QSet<QString> seen;
    for (int i = 0; i < 1000; ++i) {
        const QString key = NubixMessageHandler::createKey();
        QCOMPARE(key.size(), 37);
        QVERIFY(key.startsWith(QLatin1Char('{')));
        QVERIFY(!key.contains(QLatin1Char('}')));
        QVERIFY(!QUuid(key + QLatin1Char('}')).isNull());
        seen.insert(key);
    }
    QCOMPARE(seen.size(), 1000);
}

void TestNubixMessageHandler::buildsEnvelopes_data()
{
    QTest::addColumn<bool>("response");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantMap>("data");
    QTest::addColumn<QJsonObject>("expectedData");

    QTest::newRow("request without arguments")
        << false << QStringLiteral("getUserInfo") << QVariantMap() << QJsonObject();
    QTest::newRow("request with nested arguments")
        << false << QStringLiteral("navigate")
        << QVariantMap {{QStringLiteral("type"), QStringLiteral("page")},
               {QStringLiteral("args"), QVariantMap {{QStringLiteral("n"), 3}, {QStringLiteral("on"), true}}}}
        << QJsonObject {{QStringLiteral("type"), QStringLiteral("page")},
               {QStringLiteral("args"), QJsonObject {{QStringLiteral("n"), 3}, {QStringLiteral("on"), true}}}};
    QTest::newRow("response") << true << QStringLiteral("getPluginInfo")
                              << QVariantMap {{QStringLiteral("version"), QStringLiteral("1.0.7")}}
                              << QJsonObject {{QStringLiteral("version"), QStringLiteral("1.0.7")}};
}

void TestNubixMessageHandler::buildsEnvelopes()
{
    QFETCH(bool, response);
    QFETCH(QString, method);
    QFETCH(QVariantMap, data);
    QFETCH(QJsonObject, expectedData);

    NubixMessageHandler handler;
    const QString key = NubixMessageHandler::createKey();
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const QString text
        = response ? handler.buildResponseMessage(method, data, key) : handler.buildReqeustMessage(method, data, key);
    const qint64 after = QDateTime::currentMSecsSinceEpoch();

    const QJsonObject envelope = parseObject(text.toUtf8());
    QCOMPARE(envelope.keys(), utf8List({"data", "type"}));
    QCOMPARE(
        envelope.value(QStringLiteral("type")).toString(), response ? QStringLiteral("pong") : QStringLiteral("ping"));

    const QJsonObject body = envelope.value(QStringLiteral("data")).toObject();
    QCOMPARE(body.keys(), utf8List({"data", "from", "key", "method", "timestamp", "to", "version"}));
    QCOMPARE(body.value(QStringLiteral("from")).toString(), QStringLiteral("client"));
    QCOMPARE(body.value(QStringLiteral("to")).toString(), QStringLiteral("server"));
    QCOMPARE(body.value(QStringLiteral("method")).toString(), method);
    QCOMPARE(body.value(QStringLiteral("key")).toString(), key);
    QVERIFY(body.value(QStringLiteral("version")).isDouble());
    QCOMPARE(body.value(QStringLiteral("version")).toInt(), 1);
    QVERIFY(body.value(QStringLiteral("data")).isObject());
    QCOMPARE(body.value(QStringLiteral("data")).toObject(), expectedData);
    const qint64 timestamp = qint64(body.value(QStringLiteral("timestamp")).toDouble());
    QVERIFY2(timestamp >= before && timestamp <= after, qPrintable(QString::number(timestamp)));

    // Sorted keys, indented form.
    QCOMPARE(text, QString::fromUtf8(QJsonDocument(envelope).toJson(QJsonDocument::Indented)));
    QVERIFY(text.indexOf(QLatin1String("\"data\"")) < text.indexOf(QLatin1String("\"type\"")));
    QVERIFY(text.contains(QLatin1String("\n    \"data\": {")));
}

void TestNubixMessageHandler::malformedInputGivesOnlyItsWarning_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("warning");

    const auto warning
        = [](const char *text) -> QString { return QStringLiteral("NubixMessageHandler: ") + QLatin1String(text); };
    const QString format = warning("Invalid message format");
    const QString dataObject = warning("Invalid data object");

    QTest::newRow("not json") << QByteArray("hello there") << format;
    QTest::newRow("top-level array") << QByteArray(R"([{"type":"ping"}])") << format;
    QTest::newRow("unknown type") << QByteArray(R"({"type":"bogus","data":{"method":"x"}})")
                                  << warning(R"(Invalid message type: "bogus")");
    QTest::newRow("type missing") << QByteArray(R"({"data":{"method":"x"}})") << warning(R"(Invalid message type: "")");
    QTest::newRow("pong with empty data") << QByteArray(R"({"type":"pong","data":{}})") << dataObject;
    QTest::newRow("ping with empty data") << QByteArray(R"({"type":"ping","data":{}})") << dataObject;
    QTest::newRow("ping with array data") << QByteArray(R"({"type":"ping","data":[1,2]})") << dataObject;
    QTest::newRow("unsupported request method") << QByteArray(R"({"type":"ping","data":{"method":"frob","key":"k"}})")
                                                << warning(R"(Unsupported request method: "frob")");
    QTest::newRow("request without method")
        << QByteArray(R"({"type":"ping","data":{"key":"k"}})") << warning(R"(Unsupported request method: "")");
    QTest::newRow("notify without args")
        << QByteArray(R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncRoot"}}})")
        << warning(R"(Invalid notify! QJsonObject({"data":{"type":"syncRoot"},"key":"k","method":"notify"}))");
    QTest::newRow("notify without type")
        << QByteArray(R"({"type":"ping","data":{"method":"notify","data":{"args":1}}})")
        << warning(R"(Invalid notify! QJsonObject({"data":{"args":1},"method":"notify"}))");
    QTest::newRow("notify with data not an object")
        << QByteArray(R"({"type":"ping","data":{"method":"notify","data":"syncRoot"}})")
        << warning(R"(Invalid notify! QJsonObject({"data":"syncRoot","method":"notify"}))");
    QTest::newRow("unknown notification")
        << notification("noSuchThing", "1") << warning(R"(Unsupported signal: "noSuchThing")");
    QTest::newRow("answer to a method without parser")
        << response("setSyncPause", "k", R"({"code":0})") << warning(R"(Unsupported method: "setSyncPause")");
    QTest::newRow("answer without method")
        << QByteArray(R"({"type":"pong","data":{"key":"k"}})") << warning(R"(Unsupported method: "")");
}

void TestNubixMessageHandler::malformedInputGivesOnlyItsWarning()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, warning);

    Wire c;
    QVERIFY(c.connect());
    MessageLog log;
    QSignalSpy connected(&c.handler, &NubixMessageHandler::sigConnected);
    QSignalSpy disconnected(&c.handler, &NubixMessageHandler::sigDisconnected);

    c.peer.write(message + '\f' + kSentinel + '\f');
    QTRY_COMPARE(log.problems().size(), 2);
    QCOMPARE(log.problems(), (QStringList {warning, kSentinelWarning}));
    // Nothing was answered and the connection is untouched.
    QCOMPARE(c.peer.received(), QByteArray());
    QVERIFY(c.handler.isConnected());
    QCOMPARE(connected.count() + disconnected.count(), 0);
}

void TestNubixMessageHandler::answersPluginInfoWhileConnected()
{
    Wire c;
    QVERIFY(c.connect());
    MessageLog log;

    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    c.peer.send(R"({"type":"ping","data":{"from":"server","to":"client","method":"getPluginInfo",)"
                R"("key":"{abc-123","data":{},"version":1}})");
    const QJsonObject answer = parseObject(c.peer.nextFrame());
    QCOMPARE(answer.value(QStringLiteral("type")).toString(), QStringLiteral("pong"));
    QJsonObject body = answer.value(QStringLiteral("data")).toObject();
    QVERIFY(qint64(body.take(QStringLiteral("timestamp")).toDouble()) >= before);
    QCOMPARE(body, parseObject(R"({"data":{"version":"1.0.7"},"from":"client","key":"{abc-123",
                                   "method":"getPluginInfo","to":"server","version":1})"));
    QVERIFY(log.problems().isEmpty());

    // Several questions in one read get one answer each, in order.
    c.peer.write("{\"type\":\"ping\",\"data\":{\"method\":\"getPluginInfo\",\"key\":\"k1\"}}\f"
                 "{\"type\":\"ping\",\"data\":{\"method\":\"getPluginInfo\",\"key\":\"k2\"}}\f");
    QCOMPARE(parseObject(c.peer.nextFrame()).value(QStringLiteral("data")).toObject().value(QStringLiteral("key")),
        QJsonValue(QStringLiteral("k1")));
    QCOMPARE(parseObject(c.peer.nextFrame()).value(QStringLiteral("data")).toObject().value(QStringLiteral("key")),
        QJsonValue(QStringLiteral("k2")));
}

void TestNubixMessageHandler::refusesPluginInfoWhileDisconnected()
{
    const QString question
        = QStringLiteral("{\"type\":\"ping\",\"data\":{\"method\":\"getPluginInfo\",\"key\":\"k\"}}");
    const QStringList expected {QStringLiteral("NubixMessageHandler: Not connected.")};
    const QString sending = QStringLiteral("TcpClient: Sending message:");

    {
        NubixMessageHandler handler;
        MessageLog log;
        handler.handleMessage(question);
        QCOMPARE(log.problems(), expected);
        QCOMPARE(log.count(QtDebugMsg, sending), 0);
    }

    // Connected once, then dropped by the peer.
    Wire c;
    QVERIFY(c.connect());
    QSignalSpy disconnected(&c.handler, &NubixMessageHandler::sigDisconnected);
    c.peer.disconnectClient();
    QTRY_COMPARE(disconnected.count(), 1);
    MessageLog log;
    c.handler.handleMessage(question);
    QCOMPARE(log.problems(), expected);
    QCOMPARE(log.count(QtDebugMsg, sending), 0);
}

QTEST_GUILESS_MAIN(TestNubixMessageHandler)
#include "tst_nubixmessagehandler.moc"
