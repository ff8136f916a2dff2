// SPDX-License-Identifier: GPL-3.0-or-later
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include "localpeer.h"
#include "messagelog.h"
#include "teststrings.h"

#include <QDateTime>
#include <QJsonArray>
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

// A handler connected to a peer on 127.0.0.1.
class ConnectedHandler
{
public:
    bool connect()
    {
        QSignalSpy connected(&handler, &NubixMessageHandler::sigConnected);
        handler.client()->connectToServer(QStringLiteral("127.0.0.1"), peer.port());
        return peer.waitForClient() && (connected.count() == 1 || connected.wait()) && handler.isConnected();
    }

    LocalPeer peer;
    NubixMessageHandler handler;
};

class TestNubixMessageHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void instanceIsOneObject();
    void keyIsBracedUuidWithoutClosingBrace();
    void buildsEnvelopes_data();
    void buildsEnvelopes();
    void requestSendsFramedEnvelope();
    void followsConnectionState();
    void malformedInputGivesOnlyItsWarning_data();
    void malformedInputGivesOnlyItsWarning();
    void answersPluginInfoWhileConnected();
    void refusesPluginInfoWhileDisconnected();
};

void TestNubixMessageHandler::instanceIsOneObject()
{
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    QVERIFY(handler);
    QCOMPARE(NubixMessageHandler::instance(), handler);
    QVERIFY(!handler->parent());
    QVERIFY(!handler->isConnected());
}

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
    QTest::newRow("request with arguments") << false << QStringLiteral("getFileStatus")
                                            << QVariantMap {{QStringLiteral("basedir"), QStringLiteral("/a/b")},
                                                   {QStringLiteral("type"), QStringLiteral("dir")}}
                                            << QJsonObject {{QStringLiteral("basedir"), QStringLiteral("/a/b")},
                                                   {QStringLiteral("type"), QStringLiteral("dir")}};
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

void TestNubixMessageHandler::requestSendsFramedEnvelope()
{
    ConnectedHandler c;
    QVERIFY(c.connect());

    const QVariantMap data {{QStringLiteral("basedir"), QStringLiteral("/x")}};
    const QString first = c.handler.request(QStringLiteral("getFileStatus"), data);
    const QString second = c.handler.request(QStringLiteral("getSyncInfo"), QVariantMap());
    QVERIFY(first != second);

    const QJsonObject one = parseObject(c.peer.nextFrame());
    const QJsonObject two = parseObject(c.peer.nextFrame());
    QCOMPARE(one.value(QStringLiteral("type")).toString(), QStringLiteral("ping"));
    const QJsonObject body = one.value(QStringLiteral("data")).toObject();
    QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("getFileStatus"));
    QCOMPARE(body.value(QStringLiteral("key")).toString(), first);
    QCOMPARE(body.value(QStringLiteral("data")).toObject().toVariantMap(), data);
    QCOMPARE(two.value(QStringLiteral("data")).toObject().value(QStringLiteral("key")).toString(), second);
}

void TestNubixMessageHandler::followsConnectionState()
{
    ConnectedHandler c;
    QSignalSpy disconnected(&c.handler, &NubixMessageHandler::sigDisconnected);
    QVERIFY(!c.handler.isConnected());
    QVERIFY(c.connect());
    QVERIFY(c.handler.isConnected());
    c.peer.disconnectClient();
    QTRY_COMPARE(disconnected.count(), 1);
    QVERIFY(!c.handler.isConnected());
}

void TestNubixMessageHandler::malformedInputGivesOnlyItsWarning_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("warning");

    const QString format = QStringLiteral("NubixMessageHandler: Invalid message format");
    const QString dataObject = QStringLiteral("NubixMessageHandler: Invalid data object");

    QTest::newRow("not json") << QByteArray("hello there") << format;
    QTest::newRow("empty message") << QByteArray("") << format;
    QTest::newRow("truncated object") << QByteArray("{\"type\":\"ping\",\"data\":{") << format;
    QTest::newRow("top-level array") << QByteArray("[{\"type\":\"ping\"}]") << format;
    QTest::newRow("top-level string") << QByteArray("\"ping\"") << format;
    QTest::newRow("unknown type") << QByteArray("{\"type\":\"bogus\",\"data\":{\"method\":\"x\"}}")
                                  << QStringLiteral("NubixMessageHandler: Invalid message type: \"bogus\"");
    QTest::newRow("type missing") << QByteArray("{\"data\":{\"method\":\"x\"}}")
                                  << QStringLiteral("NubixMessageHandler: Invalid message type: \"\"");
    QTest::newRow("type not a string") << QByteArray("{\"type\":1,\"data\":{\"method\":\"x\"}}")
                                       << QStringLiteral("NubixMessageHandler: Invalid message type: \"\"");
    QTest::newRow("pong with empty data") << QByteArray("{\"type\":\"pong\",\"data\":{}}") << dataObject;
    QTest::newRow("ping with empty data") << QByteArray("{\"type\":\"ping\",\"data\":{}}") << dataObject;
    QTest::newRow("ping without data") << QByteArray("{\"type\":\"ping\"}") << dataObject;
    QTest::newRow("ping with array data") << QByteArray("{\"type\":\"ping\",\"data\":[1,2]}") << dataObject;
    QTest::newRow("unsupported request method")
        << QByteArray("{\"type\":\"ping\",\"data\":{\"method\":\"frobnicate\",\"key\":\"k\"}}")
        << QStringLiteral("NubixMessageHandler: Unsupported request method: \"frobnicate\"");
    QTest::newRow("request without method") << QByteArray("{\"type\":\"ping\",\"data\":{\"key\":\"k\"}}")
                                            << QStringLiteral("NubixMessageHandler: Unsupported request method: \"\"");
    QTest::newRow("notify without args")
        << QByteArray(
               "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"k\",\"data\":{\"type\":\"syncRoot\"}}}")
        << QStringLiteral("NubixMessageHandler: Invalid notify! "
                          "QJsonObject({\"data\":{\"type\":\"syncRoot\"},\"key\":\"k\",\"method\":\"notify\"})");
    QTest::newRow("notify without type") << QByteArray(
        "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"data\":{\"args\":true}}}")
                                         << QStringLiteral(
                                                "NubixMessageHandler: Invalid notify! "
                                                "QJsonObject({\"data\":{\"args\":true},\"method\":\"notify\"})");
    QTest::newRow("notify with empty data")
        << QByteArray("{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"data\":{}}}")
        << QStringLiteral("NubixMessageHandler: Invalid notify! QJsonObject({\"data\":{},\"method\":\"notify\"})");
    QTest::newRow("notify with data not an object")
        << QByteArray("{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"data\":\"syncRoot\"}}")
        << QStringLiteral(
               "NubixMessageHandler: Invalid notify! QJsonObject({\"data\":\"syncRoot\",\"method\":\"notify\"})");
    QTest::newRow("unknown notification") << QByteArray(
        "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"data\":{\"type\":\"noSuchThing\",\"args\":1}}}")
                                          << QStringLiteral("NubixMessageHandler: Unsupported signal: \"noSuchThing\"");
    QTest::newRow("response to a method without parser")
        << QByteArray("{\"type\":\"pong\",\"data\":{\"method\":\"setSyncPause\",\"key\":\"k\",\"data\":{\"code\":0}}}")
        << QStringLiteral("NubixMessageHandler: Unsupported method: \"setSyncPause\"");
    QTest::newRow("response without method") << QByteArray("{\"type\":\"pong\",\"data\":{\"key\":\"k\"}}")
                                             << QStringLiteral("NubixMessageHandler: Unsupported method: \"\"");
}

void TestNubixMessageHandler::malformedInputGivesOnlyItsWarning()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, warning);

    ConnectedHandler c;
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
    ConnectedHandler c;
    QVERIFY(c.connect());
    MessageLog log;

    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    c.peer.write("{\"type\":\"ping\",\"data\":{\"from\":\"server\",\"to\":\"client\",\"method\":\"getPluginInfo\","
                 "\"key\":\"{abc-123\",\"data\":{},\"version\":1}}\f");
    const QJsonObject answer = parseObject(c.peer.nextFrame());
    QCOMPARE(answer.value(QStringLiteral("type")).toString(), QStringLiteral("pong"));
    const QJsonObject body = answer.value(QStringLiteral("data")).toObject();
    QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("getPluginInfo"));
    QCOMPARE(body.value(QStringLiteral("key")).toString(), QStringLiteral("{abc-123"));
    QCOMPARE(body.value(QStringLiteral("from")).toString(), QStringLiteral("client"));
    QCOMPARE(body.value(QStringLiteral("to")).toString(), QStringLiteral("server"));
    QCOMPARE(body.value(QStringLiteral("version")).toInt(), 1);
    QCOMPARE(body.value(QStringLiteral("data")).toObject(),
        (QJsonObject {{QStringLiteral("version"), QStringLiteral("1.0.7")}}));
    QVERIFY(qint64(body.value(QStringLiteral("timestamp")).toDouble()) >= before);
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
    ConnectedHandler c;
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
