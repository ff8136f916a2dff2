// SPDX-License-Identifier: GPL-3.0-or-later
#include "messagelog.h"
#include "syncrecordmaps.h"
#include "teststrings.h"
#include "wire.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTextCodec>
#include <QTimer>
#include <QUuid>

using namespace hfmplugin_nubix;
using recordmaps::defaultsWith;
using recordmaps::toMap;

namespace {
QJsonObject parseObject(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    return error.error == QJsonParseError::NoError ? document.object() : QJsonObject();
}

QString method(const QJsonObject &body)
{
    return body.value(QStringLiteral("method")).toString();
}

// A message that is refused whatever the connection state, used to know that
// everything sent before it has been handled.
const QByteArray kSentinel("{\"type\":\"sentinel\",\"data\":{}}");
const QString kSentinelWarning = QStringLiteral("NubixMessageHandler: Invalid message type: \"sentinel\"");
}   // namespace

// The envelope, the dispatch, every request and every parser. Most cases
// share one handler connected to a peer that plays the sync client.
class TestNubixMessageHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void keyIsBracedUuidWithoutClosingBrace();
    void buildsEnvelopes_data();
    void buildsEnvelopes();
    void malformedInputGivesOnlyItsWarning_data();
    void malformedInputGivesOnlyItsWarning();
    void answersPluginInfoWhileConnected();
    void refusesPluginInfoWhileDisconnected();
    void navigatesToPages_data();
    void navigatesToPages();
    void parsesNotifications_data();
    void parsesNotifications();
    void notificationFileIdIs32Bit();
    void namesSurviveAnyLocale_data();
    void namesSurviveAnyLocale();
    void parsesAnswers_data();
    void parsesAnswers();
    void recordsTravelQueued();
    void requestSyncWaitsWithoutBlocking_data();
    void requestSyncWaitsWithoutBlocking();
    void warnsOncePerSilence();

private:
    Wire wire;
};

void TestNubixMessageHandler::initTestCase()
{
    QVERIFY(wire.connect());
    // The shared peer answers nothing; its silence is a case of its own.
    wire.handler.setAnswerWarningMs(24 * 3600 * 1000);
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

    QJsonObject body = envelope.value(QStringLiteral("data")).toObject();
    const qint64 timestamp = qint64(body.take(QStringLiteral("timestamp")).toDouble());
    QVERIFY2(timestamp >= before && timestamp <= after, qPrintable(QString::number(timestamp)));
    const QJsonObject expected {{QStringLiteral("data"), expectedData},
        {QStringLiteral("from"), QStringLiteral("client")}, {QStringLiteral("key"), key},
        {QStringLiteral("method"), method}, {QStringLiteral("to"), QStringLiteral("server")},
        {QStringLiteral("version"), 1}};
    QCOMPARE(body, expected);

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
    // The parser would leak the first "data"; such a message never reaches it.
    QTest::newRow("key repeated over an object")
        << QByteArray(R"({"type":"pong","data":{"method":"getSyncInfo"},"data":{"method":"getSyncInfo"}})") << format;
    QTest::newRow("unknown type") << QByteArray(R"({"type":"bogus","data":{"method":"x"}})")
                                  << warning(R"(Invalid message type: "bogus")");
    QTest::newRow("pong with empty data") << QByteArray(R"({"type":"pong","data":{}})") << dataObject;
    QTest::newRow("ping with empty data") << QByteArray(R"({"type":"ping","data":{}})") << dataObject;
    QTest::newRow("unsupported request method") << QByteArray(R"({"type":"ping","data":{"method":"frob","key":"k"}})")
                                                << warning(R"(Unsupported request method: "frob")");
    QTest::newRow("notify without args")
        << QByteArray(R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncRoot"}}})")
        << warning(R"(Invalid notify! QJsonObject({"data":{"type":"syncRoot"},"key":"k","method":"notify"}))");
    QTest::newRow("notify with data not an object")
        << QByteArray(R"({"type":"ping","data":{"method":"notify","data":"syncRoot"}})")
        << warning(R"(Invalid notify! QJsonObject({"data":"syncRoot","method":"notify"}))");
    QTest::newRow("unknown notification")
        << notification("noSuchThing", "1") << warning(R"(Unsupported signal: "noSuchThing")");
    QTest::newRow("answer to a method without parser")
        << response("setSyncPause", "k", R"({"code":0})") << warning(R"(Unsupported method: "setSyncPause")");
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
    Wire &c = wire;
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

void TestNubixMessageHandler::navigatesToPages_data()
{
    QTest::addColumn<int>("page");
    // Empty: the page is invalid and nothing is sent.
    QTest::addColumn<QJsonObject>("payload");

    QTest::newRow("0 welcome") << 0 << parseObject(R"({"type":"home","args":"welcome"})");
    QTest::newRow("1 files") << 1 << parseObject(R"({"type":"home","args":"file"})");
    QTest::newRow("8 past the end") << 8 << QJsonObject();
    QTest::newRow("-1 before the start") << -1 << QJsonObject();
}

void TestNubixMessageHandler::navigatesToPages()
{
    QFETCH(int, page);
    QFETCH(QJsonObject, payload);

    MessageLog log;
    wire.handler.requestNavigate(PageType(page));
    // Something sent after it shows whether the navigation went out before.
    wire.handler.requestSyncStart();

    QCOMPARE(log.lines(QtDebugMsg).first(), QStringLiteral("NubixMessageHandler: Navigating to page: %1").arg(page));
    QJsonObject body = wire.peer.nextBody();
    if (payload.isEmpty()) {
        QCOMPARE(
            log.problems(), QStringList {QStringLiteral("NubixMessageHandler: Invalid navigate page: %1").arg(page)});
        QCOMPARE(method(body), QStringLiteral("setSyncStart"));
        return;
    }
    QVERIFY(log.problems().isEmpty());
    QCOMPARE(method(body), QStringLiteral("navigate"));
    QCOMPARE(body.value(QStringLiteral("data")).toObject(), payload);
    QCOMPARE(method(wire.peer.nextBody()), QStringLiteral("setSyncStart"));
}

void TestNubixMessageHandler::parsesNotifications_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("args");
    // What the one signal carries (records as maps); invalid: refused with a warning.
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("inited") << QByteArray("syncInited") << QByteArray("true") << QVariant(true);
    QTest::newRow("inited from text") << QByteArray("syncInited") << QByteArray("\"true\"") << QVariant(true);
    QTest::newRow("inited as object") << QByteArray("syncInited") << QByteArray("{\"a\":1}") << QVariant();
    QTest::newRow("root") << QByteArray("syncRoot") << QByteArray("\"/home/u/Kelo Drive\"")
                          << QVariant(QStringLiteral("/home/u/Kelo Drive"));
    QTest::newRow("root cleared") << QByteArray("syncRoot") << QByteArray("\"\"") << QVariant(QString());
    QTest::newRow("root as object") << QByteArray("syncRoot") << QByteArray("{}") << QVariant();
    QTest::newRow("banned dirs") << QByteArray("banDirs") << QByteArray("[\"/Private\",\"/a b/c\"]")
                                 << QVariant(QStringList {QStringLiteral("/Private"), QStringLiteral("/a b/c")});
    QTest::newRow("banned dirs as object") << QByteArray("banDirs") << QByteArray("{\"a\":\"/a\"}") << QVariant();

    const char *counts = R"({"todo":4,"doing":3,"done":2,"error":1})";
    QTest::newRow("all counts") << QByteArray("syncQuantity") << QByteArray(counts)
                                << QVariant(defaultsWith<SyncQuantity>(counts));
    QTest::newRow("missing counts are 0") << QByteArray("syncQuantity") << QByteArray(R"({"doing":7,"other":9})")
                                          << QVariant(defaultsWith<SyncQuantity>(R"({"doing":7})"));
    QTest::newRow("counts as list") << QByteArray("syncQuantity") << QByteArray("[1,2,3,4]") << QVariant();

    const char *allFlags = R"({"isPaused":true,"isRemoteSpaceLow":true,"isLocalSpaceLow":true,"isLocalPathExist":true,
        "isLocalPermitionForbid":true,"isUnknown":true,"isFlowEmpty":true,"isOnline":true})";
    QTest::newRow("all error flags") << QByteArray("syncErrors") << QByteArray(allFlags)
                                     << QVariant(defaultsWith<SyncError>(allFlags));
    QTest::newRow("the client's spelling only")
        << QByteArray("syncErrors") << QByteArray(R"({"isLocalPermissionForbid":true,"isOnline":true})")
        << QVariant(defaultsWith<SyncError>(R"({"isOnline":true})"));
    QTest::newRow("error flags as text") << QByteArray("syncErrors") << QByteArray("\"isPaused\"") << QVariant();

    QTest::newRow("file status, its error code not read")
        << QByteArray("fileSyncStatus")
        << QByteArray(
               R"({"path":"/a/b.txt","isDir":false,"fileid":42,"plan":"upload","plan_status":2,"plan_error":17})")
        << QVariant(defaultsWith<FileData>(R"({"path":"/a/b.txt","fileId":42,"plan":"upload","planStatus":2})"));
    QTest::newRow("largest 32-bit file id") << QByteArray("fileSyncStatus") << QByteArray(R"({"fileid":2147483647})")
                                            << QVariant(defaultsWith<FileData>(R"({"fileId":2147483647})"));
    QTest::newRow("file status as list") << QByteArray("fileSyncStatus") << QByteArray("[{\"path\":\"/a\"}]")
                                         << QVariant();
}

void TestNubixMessageHandler::parsesNotifications()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, args);
    QFETCH(QVariant, expected);

    QVariantList received;
    const auto keep = [&received](const QVariant &value) { received.append(value); };
    NubixMessageHandler &h = wire.handler;
    QObject context;
    connect(&h, &NubixMessageHandler::sigSyncInited, &context, keep);
    connect(&h, &NubixMessageHandler::sigSyncRootChanged, &context, keep);
    connect(&h, &NubixMessageHandler::sigBanDirsChanged, &context, keep);
    connect(&h, &NubixMessageHandler::sigSyncQuantityChanged, &context, [&](const SyncQuantity &v) { keep(toMap(v)); });
    connect(&h, &NubixMessageHandler::sigSyncErrorOccured, &context, [&](const SyncError &v) { keep(toMap(v)); });
    connect(&h, &NubixMessageHandler::sigFileSyncStatusChanged, &context, [&](const FileData &v) { keep(toMap(v)); });

    MessageLog log;
    h.handleMessage(QString::fromUtf8(notification(type, args)));
    if (!expected.isValid()) {
        // A wrong kind leaves no trace but its warning.
        QCOMPARE(received, QVariantList());
        QCOMPARE(log.problems().size(), 1);
        QVERIFY2(log.problems().first().startsWith(
                     QStringLiteral("NubixMessageHandler: Unexpected argument type for method parseSig")),
            qPrintable(log.problems().first()));
        return;
    }
    QCOMPARE(received, QVariantList {expected});
    QVERIFY(log.problems().isEmpty());
    if (type == "syncRoot")
        QCOMPARE(method(wire.peer.nextBody()), QStringLiteral("getSyncInfo"));
}

void TestNubixMessageHandler::notificationFileIdIs32Bit()
{
    // Notifications read the id narrower than answers do; the answer keeps it whole.
    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigFileSyncStatusChanged);
    wire.handler.handleMessage(
        QString::fromUtf8(notification("fileSyncStatus", R"({"path":"/big","fileid":3000000000,"plan_status":3})")));
    QCOMPARE(spy.count(), 1);
    const FileData data = spy.at(0).at(0).value<FileData>();
    QCOMPARE(data.path, QStringLiteral("/big"));
    QCOMPARE(data.planStatus, 3);
    QVERIFY(data.fileId != Q_INT64_C(3000000000));
}

void TestNubixMessageHandler::namesSurviveAnyLocale_data()
{
    QTest::addColumn<QByteArray>("locale");
    QTest::newRow("Latin-1") << QByteArray("ISO-8859-1");
    QTest::newRow("ASCII") << QByteArray("US-ASCII");
}

void TestNubixMessageHandler::namesSurviveAnyLocale()
{
    // Messages are UTF-8 on the wire, whatever the session's locale.
    QFETCH(QByteArray, locale);
    QTextCodec *const before = QTextCodec::codecForLocale();
    QTextCodec *const codec = QTextCodec::codecForName(locale);
    if (!codec)
        QSKIP("codec not available");
    QTextCodec::setCodecForLocale(codec);
    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigFileSyncStatusChanged);
    const QString path = QStringLiteral("/\u6587\u6863/caf\u00e9 \U0001F600.txt");
    wire.handler.handleMessage(QString::fromUtf8(
        notification("fileSyncStatus", QByteArray("{\"path\":\"") + path.toUtf8() + "\",\"plan_status\":1}")));
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<FileData>().path, path);
}

void TestNubixMessageHandler::parsesAnswers_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("data");
    // The record as a map, or the list of file records; invalid: no parser.
    QTest::addColumn<QVariant>("expected");

    const QByteArray user("getUserInfo");
    const QByteArray account = R"({"uid":"u1","phone":"+1 555","nickname":"Ann","email":"ann@example.com",
                                   "avatarLink":"https://example.com/a.png","bookType":3,"isAdmin":true})";
    const QByteArray storage = R"({"free":1,"used":6442450944,"total":10737418240,"relative":-5,"quota":-3})";
    QTest::newRow("user info") << user
                               << QByteArray(
                                      R"({"code":0,"result":{"account":)" + account + R"(,"storage":)" + storage + "}}")
                               << QVariant(defaultsWith<UserInfo>(R"({"account":)" + account + "," + storage.mid(1)));
    QTest::newRow("user info, failure code still read")
        << user << QByteArray(R"({"code":1,"result":{"account":{"uid":"u2"}}})")
        << QVariant(defaultsWith<UserInfo>(R"({"account":{"uid":"u2"}})"));
    QTest::newRow("user info, no result") << user << QByteArray(R"({"code":0})") << QVariant(toMap(UserInfo()));

    const QByteArray sync("getSyncInfo");
    // Each field has the name of its key.
    const QByteArray summary = R"({"syncInited":true,"syncRoot":"/home/u/Kelo","banDirs":["/x"],"isPublicCloud":true,
        "syncQuantity":{"todo":1,"doing":2,"done":3,"error":4},
        "syncErrors":{"isPaused":true,"isOnline":true,"isLocalPathExist":true}})";
    QTest::newRow("sync info") << sync << QByteArray(R"({"code":0,"result":)" + summary + "}")
                               << QVariant(defaultsWith<SyncInfo>(summary));
    QTest::newRow("sync info, not set up")
        << sync << QByteArray(R"({"code":0,"result":{"syncInited":false}})") << QVariant(toMap(SyncInfo()));
    QTest::newRow("sync info, nested objects of the wrong kind")
        << sync << QByteArray(R"({"result":{"syncRoot":"/r","syncQuantity":5,"syncErrors":"x"}})")
        << QVariant(defaultsWith<SyncInfo>(R"({"syncRoot":"/r"})"));

    const QByteArray files("getFileStatus");
    QTest::newRow("file status in order, 64-bit ids kept")
        << files << QByteArray(R"({"code":0,"result":[
            {"fileid":3000000000,"isDir":true,"path":"/b","plan":"","plan_error":0,"plan_status":3},
            {"fileid":9007199254740993,"isDir":false,"path":"/a","plan":"download","plan_error":7,"plan_status":10}]})")
        << QVariant(
               QVariantList {defaultsWith<FileData>(R"({"fileId":3000000000,"isDir":true,"path":"/b","planStatus":3})"),
                   defaultsWith<FileData>(
                       R"({"fileId":9007199254740993,"path":"/a","plan":"download","planError":7,"planStatus":10})")});
    QTest::newRow("file status, nulls") << files << QByteArray(R"({"result":[{"fileid":null,"isDir":null,"path":null,
                                                        "plan":null,"plan_error":null,"plan_status":null}]})")
                                        << QVariant(QVariantList {toMap(FileData())});
    QTest::newRow("file status, result is an object")
        << files << QByteArray(R"({"result":{"path":"/x"}})") << QVariant(QVariantList());
    QTest::newRow("file status, no result") << files << QByteArray(R"({"code":2})") << QVariant(QVariantList());
    QTest::newRow("file status, element of the wrong kind")
        << files << QByteArray(R"({"result":["junk",{"path":"/c"}]})")
        << QVariant(QVariantList {toMap(FileData()), defaultsWith<FileData>(R"({"path":"/c"})")});

    // Answers to the sync controls and to navigation are only logged.
    QTest::newRow("pause") << QByteArray("setSyncPause") << QByteArray(R"({"code":0})") << QVariant();
}

void TestNubixMessageHandler::parsesAnswers()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, data);
    QFETCH(QVariant, expected);

    QStringList keys;
    QVariantList received;
    const auto keep = [&](const QString &key, const QVariant &value) {
        keys.append(key);
        received.append(value);
    };
    NubixMessageHandler &h = wire.handler;
    QObject context;
    connect(&h, &NubixMessageHandler::sigResponseUserInfo, &context,
        [&](const QString &key, const UserInfo &info) { keep(key, toMap(info)); });
    connect(&h, &NubixMessageHandler::sigResponseSyncInfo, &context,
        [&](const QString &key, const SyncInfo &info) { keep(key, toMap(info)); });
    connect(&h, &NubixMessageHandler::sigResponseFileStatus, &context,
        [&](const QString &key, const QList<FileData> &list) {
            QVariantList maps;
            for (const FileData &file : list)
                maps.append(toMap(file));
            keep(key, maps);
        });

    MessageLog log;
    const QByteArray key = "{" + QByteArray(QTest::currentDataTag());
    h.handleMessage(QString::fromUtf8(response(method, key, data)));
    if (!expected.isValid()) {
        QCOMPARE(received, QVariantList());
        QCOMPARE(log.problems(),
            QStringList {
                QStringLiteral("NubixMessageHandler: Unsupported method: \"%1\"").arg(QString::fromUtf8(method))});
        return;
    }
    QCOMPARE(keys, QStringList {QString::fromUtf8(key)});
    // Parsed records are always confirmed by the client.
    QCOMPARE(received, QVariantList {expected});
    QVERIFY(log.problems().isEmpty());
}

void TestNubixMessageHandler::recordsTravelQueued()
{
    // Receivers in other threads get the records through queued connections.
    QThread thread;
    QObject receiver;
    receiver.moveToThread(&thread);
    thread.start();
    QList<FileData> received;
    QString root;
    connect(
        &wire.handler, &NubixMessageHandler::sigResponseFileStatus, &receiver,
        [&](const QString &, const QList<FileData> &list) { received = list; }, Qt::QueuedConnection);
    connect(
        &wire.handler, &NubixMessageHandler::sigResponseSyncInfo, &receiver,
        [&](const QString &, const SyncInfo &info) { root = info.syncRoot; }, Qt::QueuedConnection);

    MessageLog log;
    wire.handler.handleMessage(QString::fromUtf8(response("getFileStatus", "{k5", "{\"result\":[{\"path\":\"/q\"}]}")));
    wire.handler.handleMessage(QString::fromUtf8(response("getSyncInfo", "{k6", "{\"result\":{\"syncRoot\":\"/r\"}}")));
    QTRY_COMPARE(root, QStringLiteral("/r"));
    thread.quit();
    thread.wait();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().path, QStringLiteral("/q"));
    QVERIFY(log.problems().isEmpty());
}

// The peer's behaviour while a synchronous request waits.
enum class PeerDoes { Answer, Nothing, Disconnect, NotConnected };
Q_DECLARE_METATYPE(PeerDoes)

void TestNubixMessageHandler::requestSyncWaitsWithoutBlocking_data()
{
    QTest::addColumn<PeerDoes>("peerDoes");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("warning");

    QTest::newRow("answered") << PeerDoes::Answer << int(NubixMessageHandler::SyncResult::Answered) << QString();
    QTest::newRow("timed out") << PeerDoes::Nothing << int(NubixMessageHandler::SyncResult::TimedOut)
                               << QStringLiteral("NubixMessageHandler: Request timed out. Method: \"getSyncInfo\"");
    QTest::newRow("connection lost")
        << PeerDoes::Disconnect << int(NubixMessageHandler::SyncResult::Disconnected)
        << QStringLiteral("NubixMessageHandler: Disconnected before the answer. Method: \"getSyncInfo\"");
    QTest::newRow("not connected")
        << PeerDoes::NotConnected << int(NubixMessageHandler::SyncResult::Disconnected)
        << QStringLiteral("NubixMessageHandler: Not connected, not waiting for an answer. Method: \"getSyncInfo\"");
}

void TestNubixMessageHandler::requestSyncWaitsWithoutBlocking()
{
    QFETCH(PeerDoes, peerDoes);
    QFETCH(int, result);
    QFETCH(QString, warning);

    Wire own;
    if (peerDoes != PeerDoes::NotConnected)
        QVERIFY(own.connect());
    QSignalSpy parsed(&own.handler, &NubixMessageHandler::sigResponseSyncInfo);
    // Another answer arriving meanwhile goes to its parser at once.
    QSignalSpy other(&own.handler, &NubixMessageHandler::sigResponseFileStatus);
    bool timerRan = false;
    // Dies with the row: without a wait the timer is still pending at its end.
    QObject rowScope;
    QTimer::singleShot(0, &rowScope, [&timerRan] { timerRan = true; });
    if (own.peer.socket) {
        QObject::connect(own.peer.socket, &QTcpSocket::readyRead, this, [&own, peerDoes] {
            const QByteArray frame = own.peer.nextFrame();
            const QString key
                = parseObject(frame).value(QStringLiteral("data")).toObject().value(QStringLiteral("key")).toString();
            own.peer.send("{\"type\":\"pong\",\"data\":{\"method\":\"getFileStatus\",\"key\":\"x\",\"data\":{}}}");
            if (peerDoes == PeerDoes::Answer)
                own.peer.send("{\"type\":\"pong\",\"data\":{\"method\":\"getSyncInfo\",\"key\":\"" + key.toUtf8()
                    + "\",\"data\":{\"code\":0,\"result\":{\"syncRoot\":\"/r\"}}}}");
            else if (peerDoes == PeerDoes::Disconnect)
                own.peer.disconnectClient();
        });
    }

    MessageLog log;
    NubixMessageHandler::SyncResult got = NubixMessageHandler::SyncResult::Answered;
    const QVariantMap answer = own.handler.requestSync(QStringLiteral("getSyncInfo"), QVariantMap(), 1000, &got);

    QCOMPARE(int(got), result);
    const QStringList waits
        = log.lines(QtWarningMsg).filter(QRegularExpression(QStringLiteral("timed out|before the answer|not waiting")));
    QCOMPARE(waits.size(), warning.isEmpty() ? 0 : 1);
    if (!warning.isEmpty())
        QVERIFY2(waits.first().startsWith(warning), qPrintable(waits.first()));
    if (peerDoes == PeerDoes::Answer) {
        QCOMPARE(answer.value(QStringLiteral("result")).toMap().value(QStringLiteral("syncRoot")).toString(),
            QStringLiteral("/r"));
        QCOMPARE(parsed.count(), 1);
    } else {
        QVERIFY(answer.isEmpty());
    }
    if (peerDoes != PeerDoes::NotConnected)
        QCOMPARE(other.count(), 1);
    // The event loop ran while waiting; without a connection nothing waits.
    QCOMPARE(timerRan, peerDoes != PeerDoes::NotConnected);
}

// A client that stops answering gets one warning per silence, however many
// requests wait, and a line once it answers again.
void TestNubixMessageHandler::warnsOncePerSilence()
{
    const QString silent = QStringLiteral("NubixMessageHandler: No answer from the client for");
    const QString again
        = QStringLiteral("NubixMessageHandler: The client answers again (1 earlier requests went unanswered)");
    Wire own;
    QVERIFY(own.connect());
    own.handler.setAnswerWarningMs(50);
    MessageLog log;

    own.handler.requestUserInfo();   // never answered
    QTRY_COMPARE(log.count(QtWarningMsg, silent), 1);
    const QString key = own.handler.requestSyncInfo();
    // Some looks later, and with one more request waiting, still one line.
    QTest::qWait(200);
    QCOMPARE(log.count(QtWarningMsg, silent), 1);
    own.peer.send(response("getSyncInfo", key.toUtf8(), "{}"));
    QTRY_COMPARE(log.count(QtInfoMsg, again), 1);

    // The request never answered does not start the next silence; a new one does.
    QTest::qWait(200);
    QCOMPARE(log.count(QtWarningMsg, silent), 1);
    own.handler.requestUserInfo();
    QTRY_COMPARE(log.count(QtWarningMsg, silent), 2);
    // Requests made while down are not watched: nobody is there to answer them.
    own.peer.disconnectClient();
    QTRY_VERIFY(!own.handler.isConnected());
    own.handler.requestUserInfo();
    QTest::qWait(200);
    QCOMPARE(log.count(QtWarningMsg, silent), 2);
}

QTEST_GUILESS_MAIN(TestNubixMessageHandler)
#include "tst_nubixmessagehandler.moc"
