// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixglobal.h"

#include "messagelog.h"
#include "syncrecordmaps.h"
#include "teststrings.h"
#include "wire.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTextCodec>
#include <QTimer>
#include <QUuid>

#include <sys/stat.h>

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

const QString kAttempt = QStringLiteral("NubixMessageHandler: Attempting to connect...");
const QString kNoValidPort = QStringLiteral("NubixMessageHandler: Failed to read valid port from config");
const QString kStillRunning
    = QStringLiteral("NubixMessageHandler: Server process running, retrying connection in 3 seconds");
const QString kNotRunning
    = QStringLiteral("NubixMessageHandler: Server process not running, stopping reconnection attempts");

// A localhost port on which nobody listens.
quint16 closedPort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}
}   // namespace

// The peer's behaviour while a synchronous request waits.
enum class PeerDoes { Answer, Nothing, Disconnect, NotConnected };
Q_DECLARE_METATYPE(PeerDoes)

// The envelope, the dispatch, every request and every parser, and finding
// and keeping the connection. Most protocol cases share one handler connected
// to a peer that plays the sync client.

class TestNubixMessageHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(wire.connect());
        // The shared peer answers nothing; its silence is a case of its own.
        wire.handler.setAnswerWarningMs(24 * 3600 * 1000);
    }

    void init()
    {
        const QString path = NubixMessageHandler::portFilePath();
        QDir(path).removeRecursively();
        QFile::remove(path);
    }

    void keysAreBracedUuidsWithoutClosingBrace()
    {
        QSet<QString> seen;
        for (int i = 0; i < 100; ++i) {
            const QString key = NubixMessageHandler::createKey();
            QVERIFY2(key.size() == 37 && key.startsWith(QLatin1Char('{')) && !key.contains(QLatin1Char('}'))
                    && !QUuid(key + QLatin1Char('}')).isNull(),
                qPrintable(key));
            seen.insert(key);
        }
        QCOMPARE(seen.size(), 100);
    }

    void buildsEnvelopes_data()
    {
        QTest::addColumn<bool>("response");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QJsonObject>("data");

        QTest::newRow("request with nested arguments")
            << false << "navigate" << parseObject(R"({"type":"page","args":{"n":3,"on":true}})");
        QTest::newRow("response") << true << "getPluginInfo" << parseObject(R"({"version":"1.0.7"})");
    }

    void buildsEnvelopes()
    {
        QFETCH(bool, response);
        QFETCH(QString, method);
        QFETCH(QJsonObject, data);

        NubixMessageHandler handler;
        const QString key = NubixMessageHandler::createKey();
        const qint64 before = QDateTime::currentMSecsSinceEpoch();
        const QVariantMap map = data.toVariantMap();
        const QString text
            = response ? handler.buildResponseMessage(method, map, key) : handler.buildReqeustMessage(method, map, key);
        const qint64 after = QDateTime::currentMSecsSinceEpoch();

        const QJsonObject envelope = parseObject(text.toUtf8());
        QCOMPARE(envelope.keys(), utf8List({"data", "type"}));
        QCOMPARE(envelope.value(QStringLiteral("type")).toString(),
            response ? QStringLiteral("pong") : QStringLiteral("ping"));

        QJsonObject body = envelope.value(QStringLiteral("data")).toObject();
        const qint64 timestamp = qint64(body.take(QStringLiteral("timestamp")).toDouble());
        QVERIFY2(timestamp >= before && timestamp <= after, qPrintable(QString::number(timestamp)));
        const QJsonObject expected {{QStringLiteral("data"), data}, {QStringLiteral("from"), QStringLiteral("client")},
            {QStringLiteral("key"), key}, {QStringLiteral("method"), method},
            {QStringLiteral("to"), QStringLiteral("server")}, {QStringLiteral("version"), 1}};
        QCOMPARE(body, expected);

        // Sorted keys, indented form.
        QCOMPARE(text, QString::fromUtf8(QJsonDocument(envelope).toJson(QJsonDocument::Indented)));
    }

    void malformedInputGivesOnlyItsWarning_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("warning");
        const auto row = [](const char *name, const QByteArray &message, const char *warning) {
            QTest::newRow(name) << message << QStringLiteral("NubixMessageHandler: ") + QString::fromUtf8(warning);
        };

        row("not json", "hello there", "Invalid message format");
        row("top-level array", R"([{"type":"ping"}])", "Invalid message format");
        // The parser would leak the first "data"; such a message never reaches it.
        row("key repeated over an object",
            R"({"type":"pong","data":{"method":"getSyncInfo"},"data":{"method":"getSyncInfo"}})",
            "Invalid message format");
        row("unknown type", R"({"type":"bogus","data":{"method":"x"}})", R"(Invalid message type: "bogus")");
        row("pong with empty data", R"({"type":"pong","data":{}})", "Invalid data object");
        row("ping with empty data", R"({"type":"ping","data":{}})", "Invalid data object");
        row("unsupported request method", R"({"type":"ping","data":{"method":"frob","key":"k"}})",
            R"(Unsupported request method: "frob")");
        row("notify without args", R"({"type":"ping","data":{"method":"notify","key":"k","data":{"type":"syncRoot"}}})",
            R"(Invalid notify! QJsonObject({"data":{"type":"syncRoot"},"key":"k","method":"notify"}))");
        row("notify with data not an object", R"({"type":"ping","data":{"method":"notify","data":"syncRoot"}})",
            R"(Invalid notify! QJsonObject({"data":"syncRoot","method":"notify"}))");
        row("unknown notification", notification("noSuchThing", "1"), R"(Unsupported signal: "noSuchThing")");
        // Answers to the sync controls and to navigation are only logged.
        row("answer to a method without parser", response("setSyncPause", "k", R"({"code":0})"),
            R"(Unsupported method: "setSyncPause")");
    }

    void malformedInputGivesOnlyItsWarning()
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

    void answersPluginInfoOnlyWhileConnected()
    {
        MessageLog log;
        const qint64 before = QDateTime::currentMSecsSinceEpoch();
        // The key is the client's, opening brace and all.
        wire.peer.send(QByteArray(R"({"type":"ping","data":{"from":"server","to":"client","method":"getPluginInfo",
                                     "key":"KEY","data":{},"version":1}})")
                           .replace("KEY", "{abc-123"));
        const QJsonObject answer = parseObject(wire.peer.nextFrame());
        QCOMPARE(answer.value(QStringLiteral("type")).toString(), QStringLiteral("pong"));
        QJsonObject body = answer.value(QStringLiteral("data")).toObject();
        QVERIFY(qint64(body.take(QStringLiteral("timestamp")).toDouble()) >= before);
        QJsonObject expected = parseObject(R"({"data":{"version":"1.0.7"},"from":"client","method":"getPluginInfo",
                                              "to":"server","version":1})");
        expected.insert(QStringLiteral("key"), QStringLiteral("{abc-123"));
        QCOMPARE(body, expected);
        QVERIFY(log.problems().isEmpty());

        const auto refuses = [](NubixMessageHandler &handler) {
            MessageLog log;
            handler.handleMessage(QStringLiteral(R"({"type":"ping","data":{"method":"getPluginInfo","key":"k"}})"));
            return log.problems() == QStringList {QStringLiteral("NubixMessageHandler: Not connected.")}
            && log.count(QtDebugMsg, QStringLiteral("TcpClient: Sending message:")) == 0;
        };
        NubixMessageHandler never;
        QVERIFY(refuses(never));
        // Connected once, then dropped by the peer.
        Wire c;
        QVERIFY(c.connect());
        c.peer.disconnectClient();
        QTRY_VERIFY(!c.handler.isConnected());
        QVERIFY(refuses(c.handler));
    }

    void navigatesToPages_data()
    {
        QTest::addColumn<int>("page");
        // Empty: the page is invalid and nothing is sent.
        QTest::addColumn<QJsonObject>("payload");

        QTest::newRow("0 welcome") << 0 << parseObject(R"({"type":"home","args":"welcome"})");
        QTest::newRow("1 files") << 1 << parseObject(R"({"type":"home","args":"file"})");
        QTest::newRow("8 past the end") << 8 << QJsonObject();
        QTest::newRow("-1 before the start") << -1 << QJsonObject();
    }

    void navigatesToPages()
    {
        QFETCH(int, page);
        QFETCH(QJsonObject, payload);

        MessageLog log;
        wire.handler.requestNavigate(PageType(page));
        // Something sent after it shows whether the navigation went out before.
        wire.handler.requestSyncStart();

        QCOMPARE(
            log.lines(QtDebugMsg).first(), QStringLiteral("NubixMessageHandler: Navigating to page: %1").arg(page));
        QJsonObject body = wire.peer.nextBody();
        if (payload.isEmpty()) {
            QCOMPARE(log.problems(),
                QStringList {QStringLiteral("NubixMessageHandler: Invalid navigate page: %1").arg(page)});
            QCOMPARE(method(body), QStringLiteral("setSyncStart"));
            return;
        }
        QVERIFY(log.problems().isEmpty());
        QCOMPARE(method(body), QStringLiteral("navigate"));
        QCOMPARE(body.value(QStringLiteral("data")).toObject(), payload);
        QCOMPARE(method(wire.peer.nextBody()), QStringLiteral("setSyncStart"));
    }

    void parsesNotifications_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("args");
        // What the one signal carries (records as maps); invalid: refused with a warning.
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char *name, const char *type, const char *args, const QVariant &expected = {}) {
            QTest::newRow(name) << QByteArray(type) << QByteArray(args) << expected;
        };

        row("inited", "syncInited", "true", true);
        row("inited from text", "syncInited", "\"true\"", true);
        row("inited as object", "syncInited", "{\"a\":1}");
        row("root", "syncRoot", "\"/home/u/Kelo Drive\"", QStringLiteral("/home/u/Kelo Drive"));
        row("root as object", "syncRoot", "{}");
        row("banned dirs", "banDirs", R"(["/Private","/a b/c"])", utf8List({"/Private", "/a b/c"}));
        row("banned dirs as object", "banDirs", R"({"a":"/a"})");

        const char *counts = R"({"todo":4,"doing":3,"done":2,"error":1})";
        row("all counts", "syncQuantity", counts, defaultsWith<SyncQuantity>(counts));
        row("missing counts are 0", "syncQuantity", R"({"doing":7,"other":9})",
            defaultsWith<SyncQuantity>(R"({"doing":7})"));
        row("counts as list", "syncQuantity", "[1,2,3,4]");

        const char *allFlags
            = R"({"isPaused":true,"isRemoteSpaceLow":true,"isLocalSpaceLow":true,"isLocalPathExist":true,
        "isLocalPermitionForbid":true,"isUnknown":true,"isFlowEmpty":true,"isOnline":true})";
        row("all error flags", "syncErrors", allFlags, defaultsWith<SyncError>(allFlags));
        row("the client's spelling only", "syncErrors", R"({"isLocalPermissionForbid":true,"isOnline":true})",
            defaultsWith<SyncError>(R"({"isOnline":true})"));
        row("error flags as text", "syncErrors", "\"isPaused\"");

        row("file status, its error code not read", "fileSyncStatus",
            R"({"path":"/a/b.txt","isDir":false,"fileid":42,"plan":"upload","plan_status":2,"plan_error":17})",
            defaultsWith<FileData>(R"({"path":"/a/b.txt","fileId":42,"plan":"upload","planStatus":2})"));
        row("largest 32-bit file id", "fileSyncStatus", R"({"fileid":2147483647})",
            defaultsWith<FileData>(R"({"fileId":2147483647})"));
        // Read narrower than in answers, which keep it whole.
        row("file id past 32 bits is cut", "fileSyncStatus", R"({"fileid":3000000000})",
            defaultsWith<FileData>(R"({"fileId":-1294967296})"));
        row("file status as list", "fileSyncStatus", R"([{"path":"/a"}])");
    }

    void parsesNotifications()
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
        connect(
            &h, &NubixMessageHandler::sigSyncQuantityChanged, &context, [&](const SyncQuantity &v) { keep(toMap(v)); });
        connect(&h, &NubixMessageHandler::sigSyncErrorOccured, &context, [&](const SyncError &v) { keep(toMap(v)); });
        connect(
            &h, &NubixMessageHandler::sigFileSyncStatusChanged, &context, [&](const FileData &v) { keep(toMap(v)); });

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

    void namesSurviveAnyLocale()
    {
        // Messages are UTF-8 on the wire, whatever the session's locale.
        QTextCodec *const before = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigFileSyncStatusChanged);
        const QString path = QStringLiteral("/\u6587\u6863/caf\u00e9 \U0001F600.txt");
        wire.handler.handleMessage(QString::fromUtf8(
            notification("fileSyncStatus", QByteArray("{\"path\":\"") + path.toUtf8() + "\",\"plan_status\":1}")));
        QTextCodec::setCodecForLocale(before);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).value<FileData>().path, path);
    }

    void parsesAnswers_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("data");
        // The record as a map, or the list of file records.
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char *name, const char *method, const QByteArray &data, const QVariant &expected) {
            QTest::newRow(name) << QByteArray(method) << data << expected;
        };

        const QByteArray account = R"({"uid":"u1","phone":"+1 555","nickname":"Ann","email":"ann@example.com",
                                   "avatarLink":"https://example.com/a.png","bookType":3,"isAdmin":true})";
        const QByteArray storage = R"({"free":1,"used":6442450944,"total":10737418240,"relative":-5,"quota":-3})";
        row("user info", "getUserInfo",
            "{\"code\":0,\"result\":{\"account\":" + account + ",\"storage\":" + storage + "}}",
            defaultsWith<UserInfo>("{\"account\":" + account + "," + storage.mid(1)));
        row("user info, failure code still read", "getUserInfo", R"({"code":1,"result":{"account":{"uid":"u2"}}})",
            defaultsWith<UserInfo>(R"({"account":{"uid":"u2"}})"));
        row("user info, no result", "getUserInfo", R"({"code":0})", toMap(UserInfo()));

        // Each field has the name of its key.
        const QByteArray summary
            = R"({"syncInited":true,"syncRoot":"/home/u/Kelo","banDirs":["/x"],"isPublicCloud":true,
        "syncQuantity":{"todo":1,"doing":2,"done":3,"error":4},
        "syncErrors":{"isPaused":true,"isOnline":true,"isLocalPathExist":true}})";
        row("sync info", "getSyncInfo", "{\"code\":0,\"result\":" + summary + "}", defaultsWith<SyncInfo>(summary));
        row("sync info, not set up", "getSyncInfo", R"({"code":0,"result":{"syncInited":false}})", toMap(SyncInfo()));
        row("sync info, nested objects of the wrong kind", "getSyncInfo",
            R"({"result":{"syncRoot":"/r","syncQuantity":5,"syncErrors":"x"}})",
            defaultsWith<SyncInfo>(R"({"syncRoot":"/r"})"));

        row("file status in order, 64-bit ids kept", "getFileStatus", R"({"code":0,"result":[
            {"fileid":3000000000,"isDir":true,"path":"/b","plan":"","plan_error":0,"plan_status":3},
            {"fileid":9007199254740993,"isDir":false,"path":"/a","plan":"download","plan_error":7,"plan_status":10}]})",
            QVariantList {defaultsWith<FileData>(R"({"fileId":3000000000,"isDir":true,"path":"/b","planStatus":3})"),
                defaultsWith<FileData>(
                    R"({"fileId":9007199254740993,"path":"/a","plan":"download","planError":7,"planStatus":10})")});
        row("file status, nulls", "getFileStatus", R"({"result":[{"fileid":null,"isDir":null,"path":null,
                                                        "plan":null,"plan_error":null,"plan_status":null}]})",
            QVariantList {toMap(FileData())});
        row("file status, result is an object", "getFileStatus", R"({"result":{"path":"/x"}})", QVariantList());
        row("file status, no result", "getFileStatus", R"({"code":2})", QVariantList());
        row("file status, element of the wrong kind", "getFileStatus", R"({"result":["junk",{"path":"/c"}]})",
            QVariantList {toMap(FileData()), defaultsWith<FileData>(R"({"path":"/c"})")});
    }

    void parsesAnswers()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, data);
        QFETCH(QVariant, expected);

        // The key and the record (as a map, or a list of maps) of every answer parsed.
        QVariantList received;
        const auto keep = [&received](const QString &key, const QVariant &value) { received << key << value; };
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
        // Parsed records are always confirmed by the client.
        QCOMPARE(received, (QVariantList {QString::fromUtf8(key), expected}));
        QVERIFY(log.problems().isEmpty());
    }

    void requestSyncWaitsWithoutBlocking_data()
    {
        QTest::addColumn<PeerDoes>("peerDoes");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("warning");

        QTest::newRow("answered") << PeerDoes::Answer << int(NubixMessageHandler::SyncResult::Answered) << QString();
        QTest::newRow("timed out") << PeerDoes::Nothing << int(NubixMessageHandler::SyncResult::TimedOut)
                                   << "NubixMessageHandler: Request timed out. Method: \"getSyncInfo\"";
        QTest::newRow("connection lost")
            << PeerDoes::Disconnect << int(NubixMessageHandler::SyncResult::Disconnected)
            << "NubixMessageHandler: Disconnected before the answer. Method: \"getSyncInfo\"";
        QTest::newRow("not connected")
            << PeerDoes::NotConnected << int(NubixMessageHandler::SyncResult::Disconnected)
            << "NubixMessageHandler: Not connected, not waiting for an answer. Method: \"getSyncInfo\"";
    }

    void requestSyncWaitsWithoutBlocking()
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
                const QByteArray key = own.peer.nextBody().value(QStringLiteral("key")).toString().toUtf8();
                own.peer.send(response("getFileStatus", "x", "{}"));
                if (peerDoes == PeerDoes::Answer)
                    own.peer.send(response("getSyncInfo", key, R"({"code":0,"result":{"syncRoot":"/r"}})"));
                else if (peerDoes == PeerDoes::Disconnect)
                    own.peer.disconnectClient();
            });
        }

        MessageLog log;
        NubixMessageHandler::SyncResult got = NubixMessageHandler::SyncResult::Answered;
        const QVariantMap answer = own.handler.requestSync(QStringLiteral("getSyncInfo"), QVariantMap(), 1000, &got);

        QCOMPARE(int(got), result);
        const QStringList waits
            = log.lines(QtWarningMsg)
                  .filter(QRegularExpression(QStringLiteral("timed out|before the answer|not waiting")));
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
    void warnsOncePerSilence()
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

    void readsPortFile_data()
    {
        // "%1" stands for the port of a listening peer; <...> for a file of another kind.
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("connects");
        // "%1" stands for the port file's path.
        QTest::addColumn<QStringList>("criticals");

        const auto invalid = [](const char *line) {
            return QStringList {QStringLiteral("NubixMessageHandler: Invalid port number in config file: \"%1\"")
                                    .arg(QLatin1String(line)),
                kNoValidPort};
        };
        const QStringList cannotOpen {
            QStringLiteral("NubixMessageHandler: Cannot open config file: \"%1\""), kNoValidPort};
        QTest::newRow("plain port") << QByteArray("%1") << true << QStringList();
        QTest::newRow("spaces around the port") << QByteArray("  \t%1  \n") << true << QStringList();
        QTest::newRow("only the first line counts") << QByteArray("%1\n1\nsomething else\n") << true << QStringList();
        QTest::newRow("not a number") << QByteArray("port=8080\n") << false << invalid("port=8080");
        QTest::newRow("above 65535") << QByteArray("65536\n") << false << invalid("65536");
        QTest::newRow("empty file") << QByteArray("") << false << invalid("");
        QTest::newRow("empty first line") << QByteArray("\n%1\n") << false << invalid("");
        QTest::newRow("letters after the digits") << QByteArray("8080abc\n") << false << invalid("8080abc");
        QTest::newRow("zero") << QByteArray("0\n") << false << QStringList {kNoValidPort};
        QTest::newRow("missing") << QByteArray() << false << cannotOpen;
        // Only a regular file is read, and never more than its first bytes: a FIFO
        // would block start-up, a device would be read for ever.
        QTest::newRow("fifo") << QByteArray("<fifo>") << false << cannotOpen;
        QTest::newRow("symbolic link to /dev/zero") << QByteArray("<zero>") << false << cannotOpen;
        QTest::newRow("directory") << QByteArray("<directory>") << false << cannotOpen;
    }

    void readsPortFile()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, connects);
        QFETCH(QStringList, criticals);

        LocalPeer peer;
        const QString path = NubixMessageHandler::portFilePath();
        QDir().mkpath(QFileInfo(path).absolutePath());
        if (content == "<fifo>")
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (content == "<zero>")
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
        else if (content == "<directory>")
            QVERIFY(QDir().mkpath(path));
        else if (!content.isNull())
            QVERIFY(writePortFile(
                QString::fromLatin1(content).replace(QLatin1String("%1"), QString::number(peer.port())).toLatin1()));
        for (QString &line : criticals)
            line.replace(QLatin1String("%1"), path);

        NubixMessageHandler handler;
        QSignalSpy connected(&handler, &NubixMessageHandler::sigConnected);
        MessageLog log;
        handler.tryConnect();

        const QStringList infos = log.lines(QtInfoMsg);
        QCOMPARE(infos.count(kAttempt), 1);
        QCOMPARE(log.lines(QtCriticalMsg), criticals);
        // Port file problems show whatever the plug-in's own category lets through.
        for (const QString &category : log.categories(QtCriticalMsg))
            QCOMPARE(category, QStringLiteral("default"));
        for (const QString &category : log.categories(QtInfoMsg))
            QCOMPARE(category, QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix"));
        if (!connects) {
            QVERIFY(infos.filter(QRegularExpression(QStringLiteral("^TcpClient: Connecting"))).isEmpty());
            return;
        }
        QVERIFY(infos.contains(
            QStringLiteral("NubixMessageHandler: Connecting to server on localhost: %1").arg(peer.port())));
        QVERIFY(infos.contains(QStringLiteral("TcpClient: Connecting to server \"localhost\" %1").arg(peer.port())));
        QVERIFY(peer.waitForClient());
        QTRY_COMPARE(connected.count(), 1);
        QVERIFY(handler.isConnected());
    }

    void retriesRefusedConnectionWhileClientRuns()
    {
        const quint16 port = closedPort();
        QVERIFY(port != 0);
        QVERIFY(writePortFile(QByteArray::number(port) + '\n'));
        // A process whose command line holds the client's path, as the real client's does.
        QProcess client;
        client.start(QStringLiteral("bash"),
            {QStringLiteral("-c"), QStringLiteral("exec -a %1 sleep 30").arg(hfmplugin_nubix::nubixExecPath())});
        QVERIFY(client.waitForStarted());
        const auto stopClient = qScopeGuard([&client] {
            client.kill();
            client.waitForFinished();
        });

        NubixMessageHandler handler;
        QElapsedTimer clock;
        QList<qint64> refusals;
        connect(handler.client(), &TcpClient::errorOccured, this, [&](QAbstractSocket::SocketError error) {
            if (error == QAbstractSocket::ConnectionRefusedError)
                refusals.append(clock.elapsed());
        });
        MessageLog log;
        clock.start();
        handler.tryConnect();

        QTRY_COMPARE_WITH_TIMEOUT(refusals.size(), 2, 6000);
        const qint64 delay = refusals.at(1) - refusals.at(0);
        QVERIFY2(delay >= 2800 && delay <= 4500, QByteArray::number(delay).constData());
        QCOMPARE(log.lines(QtInfoMsg).count(kStillRunning), 2);
        QCOMPARE(log.lines(QtInfoMsg).count(kAttempt), 2);
        // "pgrep -f" matches the client's path anywhere in a command line.
        QVERIFY(log.lines(QtDebugMsg)
                    .contains(QStringLiteral("NubixMessageHandler: Process \"%1\" is running")
                                  .arg(hfmplugin_nubix::nubixExecPath())));
        QVERIFY(log.lines(QtWarningMsg)
                    .contains(QStringLiteral(
                        "NubixMessageHandler: TCP error occurred: QAbstractSocket::ConnectionRefusedError")));

        // The client starts listening: the next retry gets through.
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, port));
        QTRY_VERIFY_WITH_TIMEOUT(handler.isConnected(), 6000);
        const qint64 lastDelay = clock.elapsed() - refusals.at(1);
        QVERIFY2(lastDelay >= 2800 && lastDelay <= 5000, QByteArray::number(lastDelay).constData());
        QCOMPARE(refusals.size(), 2);
        QCOMPARE(log.lines(QtInfoMsg).count(kAttempt), 3);
        QVERIFY(!log.lines(QtInfoMsg).contains(kNotRunning));
    }

    void stopsAfterRefusalWithoutClient()
    {
        const quint16 port = closedPort();
        QVERIFY(port != 0);
        QVERIFY(writePortFile(QByteArray::number(port)));

        NubixMessageHandler handler;
        QSignalSpy errors(handler.client(), &TcpClient::errorOccured);
        MessageLog log;
        handler.tryConnect();
        // pgrep may take its whole time-out on a busy machine.
        QTRY_VERIFY_WITH_TIMEOUT(log.lines(QtInfoMsg).contains(kNotRunning), 35000);
        QCOMPARE(errors.count(), 1);
        QVERIFY(log.problems().contains(
            QStringLiteral("TcpClient: Error occurred: QAbstractSocket::ConnectionRefusedError")));
        QCOMPARE(log.lines(QtInfoMsg).count(kStillRunning), 0);
        QVERIFY(log.lines(QtDebugMsg)
                    .contains(QStringLiteral("NubixMessageHandler: Process \"%1\" is not running")
                                  .arg(hfmplugin_nubix::nubixExecPath())));
        QCOMPARE(log.lines(QtInfoMsg).count(kAttempt), 1);
    }

    void closedConnectionIsNotRetried()
    {
        LocalPeer peer;
        QVERIFY(writePortFile(QByteArray::number(peer.port())));
        NubixMessageHandler handler;
        QSignalSpy disconnected(&handler, &NubixMessageHandler::sigDisconnected);
        handler.tryConnect();
        QVERIFY(peer.waitForClient());
        QTRY_VERIFY(handler.isConnected());

        MessageLog log;
        peer.disconnectClient();
        QTRY_COMPARE(disconnected.count(), 1);
        QTRY_VERIFY(log.lines(QtWarningMsg)
                        .contains(QStringLiteral("NubixMessageHandler: Unhandled TCP error: "
                                                 "QAbstractSocket::RemoteHostClosedError")));
        QVERIFY(!handler.isConnected());
        // Neither the client process is looked for nor a retry planned.
        QVERIFY(log.lines(QtDebugMsg)
                    .filter(QRegularExpression(QStringLiteral("^NubixMessageHandler: Process")))
                    .isEmpty());
        QCOMPARE(log.lines(QtInfoMsg).count(kStillRunning) + log.lines(QtInfoMsg).count(kNotRunning), 0);

        // The next caller's attempt reconnects.
        handler.tryConnect();
        QTRY_VERIFY(peer.server.hasPendingConnections());
    }

private:
    Wire wire;
};

QTEST_GUILESS_MAIN(TestNubixMessageHandler)
#include "tst_nubixmessagehandler.moc"
