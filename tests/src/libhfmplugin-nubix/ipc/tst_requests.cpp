// SPDX-License-Identifier: GPL-3.0-or-later
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include "localpeer.h"
#include "messagelog.h"
#include "syncrecordmaps.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace hfmplugin_nubix;
using recordmaps::defaultsWith;
using recordmaps::toMap;

namespace {

QJsonObject parseObject(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

QByteArray notification(const QString &type, const QByteArray &argsJson)
{
    const QByteArray args = argsJson.isNull() ? QByteArray() : ",\"args\":" + argsJson;
    return "{\"type\":\"ping\",\"data\":{\"method\":\"notify\",\"key\":\"k\",\"data\":{\"type\":\"" + type.toUtf8()
        + "\"" + args + "}}}";
}

QByteArray response(const QString &method, const QString &key, const QByteArray &dataJson)
{
    return "{\"type\":\"pong\",\"data\":{\"method\":\"" + method.toUtf8() + "\",\"key\":\"" + key.toUtf8()
        + "\",\"data\":" + dataJson + "}}";
}

QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}

QString warningFor(const char *parser)
{
    return QStringLiteral("NubixMessageHandler: Unexpected argument type for method %1").arg(QLatin1String(parser));
}

}   // namespace

// A handler connected to a peer on 127.0.0.1 that reads what it sends.
class Wire
{
public:
    bool connect()
    {
        QSignalSpy connected(&handler, &NubixMessageHandler::sigConnected);
        handler.client()->connectToServer(QStringLiteral("127.0.0.1"), peer.port());
        return peer.waitForClient() && (connected.count() == 1 || connected.wait()) && handler.isConnected();
    }
    // The body ("data") of the next envelope the handler sent.
    QJsonObject nextBody()
    {
        const QJsonObject envelope = parseObject(peer.nextFrame());
        if (envelope.value(QStringLiteral("type")).toString() != QLatin1String("ping"))
            return QJsonObject();
        return envelope.value(QStringLiteral("data")).toObject();
    }

    LocalPeer peer;
    NubixMessageHandler handler;
};

class TestRequests : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void requestsCarryTheirPayload_data();
    void requestsCarryTheirPayload();
    void navigatesToPages_data();
    void navigatesToPages();
    void checksNotificationKinds_data();
    void checksNotificationKinds();
    void readsNotificationValues_data();
    void readsNotificationValues();
    void notificationFileIdIs32Bit();
    void syncRootAsksForSyncInfoFirst();
    void readsUserInfo_data();
    void readsUserInfo();
    void readsSyncInfo_data();
    void readsSyncInfo();
    void readsFileStatus_data();
    void readsFileStatus();
    void logsAnswersWithoutParser_data();
    void logsAnswersWithoutParser();
    void recordsTravelQueued();

private:
    Wire wire;
};

void TestRequests::initTestCase()
{
    QVERIFY(wire.connect());
}

void TestRequests::requestsCarryTheirPayload_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QJsonObject>("data");
    QTest::addColumn<QString>("logLine");

    const QJsonObject none;
    QTest::newRow("user info") << "userInfo"
                               << "getUserInfo" << none << "NubixMessageHandler: Requesting user info";
    QTest::newRow("sync info") << "syncInfo"
                               << "getSyncInfo" << none << "NubixMessageHandler: Requesting sync info";
    QTest::newRow("status of one file") << "file:/a/b"
                                        << "getFileStatus" << json(R"({"basedir":"/a/b","type":"file"})")
                                        << "NubixMessageHandler: Requesting file status for \"/a/b\" (file)";
    QTest::newRow("status of a directory's children")
        << "dir:/a/b"
        << "getFileStatus" << json(R"({"basedir":"/a/b","type":"dir"})")
        << "NubixMessageHandler: Requesting file status for \"/a/b\" (directory)";
    QTest::newRow("status of the root") << "dir:/"
                                        << "getFileStatus" << json(R"({"basedir":"/","type":"dir"})")
                                        << "NubixMessageHandler: Requesting file status for \"/\" (directory)";
    QTest::newRow("path with spaces and accents")
        << "file:/Docs/r\u00e9sum\u00e9 final.odt"
        << "getFileStatus" << json("{\"basedir\":\"/Docs/r\u00e9sum\u00e9 final.odt\",\"type\":\"file\"}")
        << "NubixMessageHandler: Requesting file status for \"/Docs/r\u00e9sum\u00e9 final.odt\" (file)";
    QTest::newRow("pause") << "pause"
                           << "setSyncPause" << none << "NubixMessageHandler: Requesting sync pause";
    QTest::newRow("resume") << "resume"
                            << "setSyncResume" << none << "NubixMessageHandler: Requesting sync resume";
    QTest::newRow("start") << "start"
                           << "setSyncStart" << none << "NubixMessageHandler: Requesting sync start";
}

void TestRequests::requestsCarryTheirPayload()
{
    QFETCH(QString, operation);
    QFETCH(QString, method);
    QFETCH(QJsonObject, data);
    QFETCH(QString, logLine);

    NubixMessageHandler &handler = wire.handler;
    MessageLog log;
    QString key;
    if (operation == QLatin1String("userInfo"))
        key = handler.requestUserInfo();
    else if (operation == QLatin1String("syncInfo"))
        key = handler.requestSyncInfo();
    else if (operation.startsWith(QLatin1String("file:")))
        key = handler.requestFileStatus(operation.mid(5), false);
    else if (operation.startsWith(QLatin1String("dir:")))
        key = handler.requestFileStatus(operation.mid(4), true);
    else if (operation == QLatin1String("pause"))
        handler.requestSyncPause();
    else if (operation == QLatin1String("resume"))
        handler.requestSyncResume();
    else if (operation == QLatin1String("start"))
        handler.requestSyncStart();

    const QJsonObject body = wire.nextBody();
    QCOMPARE(body.value(QStringLiteral("method")).toString(), method);
    QCOMPARE(body.value(QStringLiteral("data")).toObject(), data);
    QCOMPARE(body.value(QStringLiteral("from")).toString(), QStringLiteral("client"));
    if (!key.isEmpty())
        QCOMPARE(body.value(QStringLiteral("key")).toString(), key);
    QCOMPARE(log.lines(QtDebugMsg).first(), logLine);
    QVERIFY(log.problems().isEmpty());
}

void TestRequests::navigatesToPages_data()
{
    QTest::addColumn<int>("page");
    // Empty: the page is invalid and nothing is sent.
    QTest::addColumn<QJsonObject>("payload");

    QTest::newRow("0 welcome") << 0 << json(R"({"type":"home","args":"welcome"})");
    QTest::newRow("1 files") << 1 << json(R"({"type":"home","args":"file"})");
    QTest::newRow("2 documents") << 2 << json(R"({"type":"home","args":"fileDocs"})");
    QTest::newRow("3 recycle bin") << 3 << json(R"({"type":"home","args":"fileRecycle"})");
    QTest::newRow("4 sync set-up") << 4 << json(R"({"type":"home","args":"sync"})");
    QTest::newRow("5 sync list") << 5 << json(R"({"type":"sync","args":"syncList"})");
    QTest::newRow("6 error list") << 6 << json(R"({"type":"sync","args":"errorList"})");
    QTest::newRow("7 settings, no args") << 7 << json(R"({"type":"setting"})");
    QTest::newRow("8 past the end") << 8 << QJsonObject();
    QTest::newRow("-1 before the start") << -1 << QJsonObject();
    QTest::newRow("far out") << 0x7fffffff << QJsonObject();
}

void TestRequests::navigatesToPages()
{
    QFETCH(int, page);
    QFETCH(QJsonObject, payload);

    MessageLog log;
    wire.handler.requestNavigate(PageType(page));
    // Something sent after it shows whether the navigation went out before.
    wire.handler.requestSyncStart();

    QCOMPARE(log.lines(QtDebugMsg).first(), QStringLiteral("NubixMessageHandler: Navigating to page: %1").arg(page));
    QJsonObject body = wire.nextBody();
    if (payload.isEmpty()) {
        QCOMPARE(
            log.problems(), QStringList {QStringLiteral("NubixMessageHandler: Invalid navigate page: %1").arg(page)});
        QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("setSyncStart"));
        return;
    }
    QVERIFY(log.problems().isEmpty());
    QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("navigate"));
    QCOMPARE(body.value(QStringLiteral("data")).toObject(), payload);
    body = wire.nextBody();
    QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("setSyncStart"));
}

void TestRequests::checksNotificationKinds_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("args");
    QTest::addColumn<QByteArray>("signal");
    // Empty: the args are accepted and the signal is emitted once.
    QTest::addColumn<QString>("warning");

    const QByteArray inited = SIGNAL(sigSyncInited(bool));
    const QByteArray root = SIGNAL(sigSyncRootChanged(QString));
    const QByteArray ban = SIGNAL(sigBanDirsChanged(QStringList));
    const QByteArray quantity = SIGNAL(sigSyncQuantityChanged(SyncQuantity));
    const QByteArray errors = SIGNAL(sigSyncErrorOccured(SyncError));
    const QByteArray file = SIGNAL(sigFileSyncStatusChanged(FileData));

    QTest::newRow("syncInited: boolean") << "syncInited" << QByteArray("true") << inited << QString();
    QTest::newRow("syncInited: text true") << "syncInited" << QByteArray("\"true\"") << inited << QString();
    QTest::newRow("syncInited: object") << "syncInited" << QByteArray("{\"a\":1}") << inited
                                        << warningFor("parseSigSyncInited");
    QTest::newRow("syncInited: null") << "syncInited" << QByteArray("null") << inited
                                      << warningFor("parseSigSyncInited");
    QTest::newRow("syncRoot: text") << "syncRoot" << QByteArray("\"/home/u/Kelo\"") << root << QString();
    QTest::newRow("syncRoot: object") << "syncRoot" << QByteArray("{}") << root
                                      << warningFor("parseSigSyncRootChanged");
    QTest::newRow("banDirs: list of texts") << "banDirs" << QByteArray("[\"/a\",\"/b\"]") << ban << QString();
    QTest::newRow("banDirs: object") << "banDirs" << QByteArray("{\"a\":\"/a\"}") << ban
                                     << warningFor("parseSigBannedDirChanged");
    QTest::newRow("banDirs: number") << "banDirs" << QByteArray("3") << ban << warningFor("parseSigBannedDirChanged");
    QTest::newRow("syncQuantity: object") << "syncQuantity" << QByteArray("{\"todo\":1}") << quantity << QString();
    QTest::newRow("syncQuantity: list") << "syncQuantity" << QByteArray("[1,2,3,4]") << quantity
                                        << warningFor("parseSigSyncQuantityChanged");
    QTest::newRow("syncErrors: object") << "syncErrors" << QByteArray("{}") << errors << QString();
    QTest::newRow("syncErrors: text") << "syncErrors" << QByteArray("\"isPaused\"") << errors
                                      << warningFor("parseSigSyncErrorOccured");
    QTest::newRow("fileSyncStatus: object") << "fileSyncStatus" << QByteArray("{\"path\":\"/a\"}") << file << QString();
    QTest::newRow("fileSyncStatus: list")
        << "fileSyncStatus" << QByteArray("[{\"path\":\"/a\"}]") << file << warningFor("parseSigFileSyncStatusChanged");
    QTest::newRow("unknown notification") << "syncSpeed" << QByteArray("true") << inited
                                          << QStringLiteral("NubixMessageHandler: Unsupported signal: \"syncSpeed\"");
}

void TestRequests::checksNotificationKinds()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, args);
    QFETCH(QByteArray, signal);
    QFETCH(QString, warning);

    // A wrong kind must leave no trace; the other signals must stay silent too.
    QSignalSpy spy(&wire.handler, signal.constData());
    QVERIFY(spy.isValid());
    QSignalSpy anyRoot(&wire.handler, &NubixMessageHandler::sigSyncRootChanged);
    MessageLog log;
    wire.handler.handleMessage(QString::fromUtf8(notification(type, args)));

    if (warning.isEmpty()) {
        QCOMPARE(spy.count(), 1);
        QVERIFY(log.problems().isEmpty());
        if (type == QLatin1String("syncRoot"))
            QCOMPARE(wire.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getSyncInfo"));
    } else {
        QCOMPARE(spy.count(), 0);
        QCOMPARE(anyRoot.count(), 0);
        QCOMPARE(log.problems(), QStringList {warning});
    }
}

void TestRequests::readsNotificationValues_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("args");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("inited false") << "syncInited" << QByteArray("false") << QVariant(false);
    QTest::newRow("inited from text") << "syncInited" << QByteArray("\"true\"") << QVariant(true);
    QTest::newRow("root") << "syncRoot" << QByteArray("\"/home/u/Kelo Drive\"")
                          << QVariant(QStringLiteral("/home/u/Kelo Drive"));
    QTest::newRow("root cleared") << "syncRoot" << QByteArray("\"\"") << QVariant(QString());
    QTest::newRow("banned dirs") << "banDirs" << QByteArray("[\"/Private\",\"/a b/c\"]")
                                 << QVariant(QStringList {QStringLiteral("/Private"), QStringLiteral("/a b/c")});
    QTest::newRow("no banned dirs") << "banDirs" << QByteArray("[]") << QVariant(QStringList());

    QTest::newRow("all counts") << "syncQuantity" << QByteArray(R"({"todo":4,"doing":3,"done":2,"error":1})")
                                << QVariant(defaultsWith<SyncQuantity>(R"({"todo":4,"doing":3,"done":2,"error":1})"));
    QTest::newRow("missing counts are 0") << "syncQuantity" << QByteArray(R"({"doing":7,"other":9})")
                                          << QVariant(defaultsWith<SyncQuantity>(R"({"doing":7})"));

    const char *allFlags = R"({"isPaused":true,"isRemoteSpaceLow":true,"isLocalSpaceLow":true,"isLocalPathExist":true,
        "isLocalPermitionForbid":true,"isUnknown":true,"isFlowEmpty":true,"isOnline":true})";
    QTest::newRow("all error flags") << "syncErrors" << QByteArray(allFlags)
                                     << QVariant(defaultsWith<SyncError>(allFlags));
    QTest::newRow("the client's spelling only")
        << "syncErrors" << QByteArray(R"({"isLocalPermissionForbid":true,"isOnline":true})")
        << QVariant(defaultsWith<SyncError>(R"({"isOnline":true})"));

    QTest::newRow("file status, its error code not read")
        << "fileSyncStatus"
        << QByteArray(
               R"({"path":"/a/b.txt","isDir":false,"fileid":42,"plan":"upload","plan_status":2,"plan_error":17})")
        << QVariant(defaultsWith<FileData>(R"({"path":"/a/b.txt","fileId":42,"plan":"upload","planStatus":2})"));
    QTest::newRow("directory status, nothing else")
        << "fileSyncStatus" << QByteArray(R"({"path":"/a","isDir":true})")
        << QVariant(defaultsWith<FileData>(R"({"path":"/a","isDir":true})"));
    QTest::newRow("largest 32-bit file id") << "fileSyncStatus" << QByteArray(R"({"fileid":2147483647})")
                                            << QVariant(defaultsWith<FileData>(R"({"fileId":2147483647})"));
}

void TestRequests::readsNotificationValues()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, args);
    QFETCH(QVariant, expected);

    QVariant received;
    NubixMessageHandler &h = wire.handler;
    QObject context;
    connect(&h, &NubixMessageHandler::sigSyncInited, &context, [&](bool v) { received = v; });
    connect(&h, &NubixMessageHandler::sigSyncRootChanged, &context, [&](const QString &v) { received = v; });
    connect(&h, &NubixMessageHandler::sigBanDirsChanged, &context, [&](const QStringList &v) { received = v; });
    connect(&h, &NubixMessageHandler::sigSyncQuantityChanged, &context,
        [&](const SyncQuantity &v) { received = toMap(v); });
    connect(&h, &NubixMessageHandler::sigSyncErrorOccured, &context, [&](const SyncError &v) { received = toMap(v); });
    connect(
        &h, &NubixMessageHandler::sigFileSyncStatusChanged, &context, [&](const FileData &v) { received = toMap(v); });

    h.handleMessage(QString::fromUtf8(notification(type, args)));
    QCOMPARE(received, expected);
    if (type == QLatin1String("syncRoot"))
        (void)wire.nextBody();
}

void TestRequests::notificationFileIdIs32Bit()
{
    // Notifications read the id narrower than answers do; the answer keeps it whole.
    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigFileSyncStatusChanged);
    wire.handler.handleMessage(QString::fromUtf8(
        notification(QStringLiteral("fileSyncStatus"), R"({"path":"/big","fileid":3000000000,"plan_status":3})")));
    QCOMPARE(spy.count(), 1);
    const FileData data = spy.at(0).at(0).value<FileData>();
    QCOMPARE(data.path, QStringLiteral("/big"));
    QCOMPARE(data.planStatus, 3);
    QVERIFY(data.fileId != Q_INT64_C(3000000000));
}

void TestRequests::syncRootAsksForSyncInfoFirst()
{
    MessageLog log;
    int requestsBeforeSignal = -1;
    QObject context;
    connect(&wire.handler, &NubixMessageHandler::sigSyncRootChanged, &context, [&](const QString &) {
        requestsBeforeSignal = log.lines(QtDebugMsg).count(QStringLiteral("NubixMessageHandler: Requesting sync info"));
    });
    // Through the socket, as the client sends it.
    wire.peer.write(notification(QStringLiteral("syncRoot"), "\"/srv/kelo\"") + '\x0c');
    QTRY_COMPARE(requestsBeforeSignal, 1);
    const QJsonObject body = wire.nextBody();
    QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("getSyncInfo"));
    QCOMPARE(body.value(QStringLiteral("data")).toObject(), QJsonObject());
}

void TestRequests::readsUserInfo_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QVariantMap>("expected");

    QTest::newRow("complete") << QByteArray(R"({"code":0,"result":{
            "account":{"uid":"u1","phone":"+1 555","nickname":"Ann","email":"ann@example.com",
                       "avatarLink":"https://example.com/a.png","bookType":3,"isAdmin":true},
            "storage":{"free":1,"used":6442450944,"total":10737418240,"relative":-5,"quota":-3}}})")
                              << defaultsWith<UserInfo>(R"({
            "account":{"uid":"u1","phone":"+1 555","nickname":"Ann","email":"ann@example.com",
                       "avatarLink":"https://example.com/a.png","bookType":3,"isAdmin":true},
            "free":1,"used":6442450944,"total":10737418240,"relative":-5,"quota":-3})");
    QTest::newRow("failure code still read") << QByteArray(R"({"code":1,"result":{"account":{"uid":"u2"}}})")
                                             << defaultsWith<UserInfo>(R"({"account":{"uid":"u2"}})");
    QTest::newRow("no result") << QByteArray(R"({"code":0})") << toMap(UserInfo());
    QTest::newRow("result of the wrong kind") << QByteArray(R"({"result":[1,2]})") << toMap(UserInfo());
}

void TestRequests::readsUserInfo()
{
    QFETCH(QByteArray, data);
    QFETCH(QVariantMap, expected);

    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigResponseUserInfo);
    wire.handler.handleMessage(QString::fromUtf8(response(QStringLiteral("getUserInfo"), QStringLiteral("{k1"), data)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("{k1"));
    QCOMPARE(toMap(spy.at(0).at(1).value<UserInfo>()), expected);
}

void TestRequests::readsSyncInfo_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QVariantMap>("expected");

    QTest::newRow("complete") << QByteArray(R"({"code":0,"result":{"syncInited":true,"syncRoot":"/home/u/Kelo",
            "banDirs":["/x"],"isPublicCloud":true,"syncQuantity":{"todo":1,"doing":2,"done":3,"error":4},
            "syncErrors":{"isPaused":true,"isOnline":true,"isLocalPathExist":true}}})")
                              << defaultsWith<SyncInfo>(R"({"syncInited":true,"syncRoot":"/home/u/Kelo",
            "banDirs":["/x"],"isPublicCloud":true,"syncQuantity":{"todo":1,"doing":2,"done":3,"error":4},
            "syncErrors":{"isPaused":true,"isOnline":true,"isLocalPathExist":true}})");
    QTest::newRow("not set up") << QByteArray(R"({"code":0,"result":{"syncInited":false,"syncRoot":""}})")
                                << toMap(SyncInfo());
    QTest::newRow("no result") << QByteArray("{}") << toMap(SyncInfo());
    QTest::newRow("nested objects of the wrong kind")
        << QByteArray(R"({"result":{"syncRoot":"/r","syncQuantity":5,"syncErrors":"x"}})")
        << defaultsWith<SyncInfo>(R"({"syncRoot":"/r"})");
}

void TestRequests::readsSyncInfo()
{
    QFETCH(QByteArray, data);
    QFETCH(QVariantMap, expected);

    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigResponseSyncInfo);
    wire.handler.handleMessage(QString::fromUtf8(response(QStringLiteral("getSyncInfo"), QStringLiteral("{k2"), data)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("{k2"));
    // Parsed records are always confirmed by the client.
    QCOMPARE(toMap(spy.at(0).at(1).value<SyncInfo>()), expected);
}

void TestRequests::readsFileStatus_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QVariantList>("expected");

    QTest::newRow("entries in order, 64-bit ids kept")
        << QByteArray(R"({"code":0,"result":[
            {"fileid":3000000000,"isDir":true,"path":"/b","plan":"","plan_error":0,"plan_status":3},
            {"fileid":9007199254740993,"isDir":false,"path":"/a","plan":"download","plan_error":7,"plan_status":10}]})")
        << QVariantList {defaultsWith<FileData>(R"({"fileId":3000000000,"isDir":true,"path":"/b","planStatus":3})"),
               defaultsWith<FileData>(
                   R"({"fileId":9007199254740993,"path":"/a","plan":"download","planError":7,"planStatus":10})")};
    // Values of another kind convert as variants do.
    QVariantMap converted = toMap(FileData());
    converted.insert(QStringLiteral("fileId"), QVariant(12.7).toLongLong());
    converted.insert(QStringLiteral("isDir"), QVariant(QStringLiteral("true")).toBool());
    converted.insert(QStringLiteral("path"), QVariant(Q_INT64_C(42)).toString());
    converted.insert(QStringLiteral("plan"), QVariant(true).toString());
    converted.insert(QStringLiteral("planError"), QVariant(Q_INT64_C(4294967297)).toInt());
    converted.insert(QStringLiteral("planStatus"), QVariant(QStringLiteral("3")).toInt());
    QTest::newRow("values of other kinds")
        << QByteArray(R"({"result":[{"fileid":12.7,"isDir":"true","path":42,"plan":true,
                                     "plan_error":4294967297,"plan_status":"3"}]})")
        << QVariantList {converted};
    QTest::newRow("nulls") << QByteArray(R"({"result":[{"fileid":null,"isDir":null,"path":null,"plan":null,
                                                        "plan_error":null,"plan_status":null}]})")
                           << QVariantList {toMap(FileData())};
    QTest::newRow("result is an object") << QByteArray(R"({"result":{"path":"/x"}})") << QVariantList();
    QTest::newRow("empty list") << QByteArray(R"({"code":0,"result":[]})") << QVariantList();
    QTest::newRow("no result") << QByteArray(R"({"code":2})") << QVariantList();
    QTest::newRow("element of the wrong kind")
        << QByteArray(R"({"result":["junk",{"path":"/c"}]})")
        << QVariantList {toMap(FileData()), defaultsWith<FileData>(R"({"path":"/c"})")};
}

void TestRequests::readsFileStatus()
{
    QFETCH(QByteArray, data);
    QFETCH(QVariantList, expected);

    QSignalSpy spy(&wire.handler, &NubixMessageHandler::sigResponseFileStatus);
    wire.handler.handleMessage(
        QString::fromUtf8(response(QStringLiteral("getFileStatus"), QStringLiteral("{k3"), data)));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("{k3"));
    QVariantList received;
    for (const FileData &file : spy.at(0).at(1).value<QList<FileData>>())
        received.append(toMap(file));
    QCOMPARE(received, expected);
}

void TestRequests::logsAnswersWithoutParser_data()
{
    QTest::addColumn<QString>("method");

    QTest::newRow("pause") << "setSyncPause";
    QTest::newRow("navigate") << "navigate";
    QTest::newRow("unknown") << "getSomethingElse";
}

void TestRequests::logsAnswersWithoutParser()
{
    QFETCH(QString, method);

    QSignalSpy users(&wire.handler, &NubixMessageHandler::sigResponseUserInfo);
    QSignalSpy syncs(&wire.handler, &NubixMessageHandler::sigResponseSyncInfo);
    QSignalSpy files(&wire.handler, &NubixMessageHandler::sigResponseFileStatus);
    MessageLog log;
    wire.handler.handleMessage(QString::fromUtf8(response(method, QStringLiteral("{k4"), "{\"code\":0}")));
    QCOMPARE(
        log.problems(), QStringList {QStringLiteral("NubixMessageHandler: Unsupported method: \"%1\"").arg(method)});
    QCOMPARE(users.count() + syncs.count() + files.count(), 0);
}

void TestRequests::recordsTravelQueued()
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
    wire.handler.handleMessage(QString::fromUtf8(
        response(QStringLiteral("getFileStatus"), QStringLiteral("{k5"), "{\"result\":[{\"path\":\"/q\"}]}")));
    wire.handler.handleMessage(QString::fromUtf8(
        response(QStringLiteral("getSyncInfo"), QStringLiteral("{k6"), "{\"result\":{\"syncRoot\":\"/r\"}}")));
    QTRY_COMPARE(root, QStringLiteral("/r"));
    thread.quit();
    thread.wait();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().path, QStringLiteral("/q"));
    QVERIFY(log.problems().isEmpty());
}

QTEST_GUILESS_MAIN(TestRequests)
#include "tst_requests.moc"
