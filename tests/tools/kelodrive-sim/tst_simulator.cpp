// SPDX-License-Identifier: GPL-3.0-or-later
// The simulator seen from a raw plug-in socket: its answers and notifications, and the sync
// engine it runs over a real folder.
#include "rawclient.h"

#include <kelodrivesim/simulator.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using kelodrive::Simulator;

namespace {
constexpr int kPaceMs = 15;

// Arguments of a "getFileStatus" request.
QJsonObject statusArgs(const QString &basedir, const QString &type = u"dir"_s)
{
    return {{u"basedir"_s, basedir}, {u"type"_s, type}};
}
}   // namespace

class SimulatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void answersRequests_data();
    void answersRequests();
    void syncControlPushesState_data();
    void syncControlPushesState();
    void malformedFramesAreDropped_data();
    void malformedFramesAreDropped();
    void toleratesFraming_data();
    void toleratesFraming();
    void notifiesEveryPeer();
    void silentWhileNotAnswering();
    void stopListeningRefusesThenAccepts();
    void stopRemovesOnlyItsOwnPortFile();
    void commandsRejectBadInput_data();
    void commandsRejectBadInput();
    void burstSendsEveryNotification();
    void malformedFramesReachThePeer();

    void newFileGoesThroughStatuses_data();
    void newFileGoesThroughStatuses();
    void changedFileSyncsAgain();
    void blockedStateHoldsProgress_data();
    void blockedStateHoldsProgress();
    void bannedFolderIsNeverSyncedUntilUnbanned();
    void downloadWritesTempThenRenames();
    void failingDownloadLeavesNoFile();
    void folderShowsBusiestChild();
    void lostRootIsReported();
    void listingEscapesNames_data();
    void listingEscapesNames();

private:
    QString local(const QString &cloudPath) const { return m_root + cloudPath; }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<Simulator> m_sim;
    std::unique_ptr<RawClient> m_client;
};

void SimulatorTest::initTestCase()
{
    // Traffic dumps drown the failures; warnings and life-cycle lines stay.
    QLoggingCategory::setFilterRules(u"org.sablo.kelodrive.sim.debug=false"_s);
}

void SimulatorTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_root = m_dir->path() + u"/Kelo Drive"_s;
    QVERIFY(writeFile(local(u"/a.txt"_s), "alpha"));
    QVERIFY(writeFile(local(u"/docs/inner.txt"_s), "inner"));
    QVERIFY(writeFile(local(u"/private/secret.txt"_s), "secret"));

    m_sim = std::make_unique<Simulator>();
    m_sim->setPortFilePath(m_dir->path() + u"/ipc"_s);
    m_sim->setAskPluginInfo(false);
    kelodrive::Account account;
    account.nickname = u"Tester"_s;
    account.isAdmin = true;
    m_sim->setAccount(account);
    kelodrive::Storage storage;
    storage.quota = -3;
    storage.used = 12345;
    m_sim->setStorage(storage);
    m_sim->setPublicCloud(false);
    m_sim->setPaceMs(kPaceMs);
    m_sim->setRescanMs(0);   // the tests rescan on purpose, so nothing happens behind their back
    m_sim->setFailPatterns({u"*.bad"_s});
    QVERIFY(m_sim->setSyncRoot(m_root));
    m_sim->setBanDirs({u"/private"_s});
    QVERIFY(m_sim->start());

    m_client = std::make_unique<RawClient>();
    QVERIFY(m_client->connectTo(m_sim->port()));
    QTRY_COMPARE(m_sim->connectionCount(), 1);
}

void SimulatorTest::cleanup()
{
    m_client.reset();
    m_sim.reset();
    m_dir.reset();
}

// --- Requests and notifications ---------------------------------------------------------------

void SimulatorTest::answersRequests_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QJsonObject>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QVariantMap>("expected");   // dotted path in "result" -> value

    QTest::newRow("user info: account and storage")
        << u"getUserInfo"_s << QJsonObject() << 0
        << QVariantMap {{u"account.nickname"_s, u"Tester"_s}, {u"account.isAdmin"_s, true}, {u"storage.quota"_s, -3},
               {u"storage.used"_s, 12345}, {u"storage.#size"_s, 5}};
    QTest::newRow("sync info: summary") << u"getSyncInfo"_s << QJsonObject() << 0
                                        << QVariantMap {{u"syncInited"_s, true}, {u"isPublicCloud"_s, false},
                                               {u"banDirs.0"_s, u"/private"_s}, {u"syncQuantity.todo"_s, 0},
                                               {u"syncErrors.isOnline"_s, true},
                                               {u"syncErrors.isLocalPathExist"_s, true},
                                               {u"syncErrors.isLocalPermitionForbid"_s, false},
                                               {u"syncErrors.#size"_s, 8}};
    QTest::newRow("file status of a folder lists one level")
        << u"getFileStatus"_s << statusArgs(u"/"_s) << 0
        << QVariantMap {{u"#size"_s, 3}, {u"0.path"_s, u"/a.txt"_s}, {u"0.isDir"_s, false}, {u"0.plan_status"_s, 3},
               {u"1.path"_s, u"/docs"_s}, {u"1.isDir"_s, true}, {u"2.path"_s, u"/private"_s}, {u"2.plan_status"_s, 0}};
    QTest::newRow("file status of one file") << u"getFileStatus"_s << statusArgs(u"/docs/inner.txt"_s, u"file"_s) << 0
                                             << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/docs/inner.txt"_s},
                                                    {u"0.isDir"_s, false}, {u"0.plan_error"_s, 0}};
    QTest::newRow("file status of a folder itself")
        << u"getFileStatus"_s << statusArgs(u"/docs"_s, u"file"_s) << 0
        << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/docs"_s}, {u"0.isDir"_s, true}, {u"0.plan_status"_s, 3}};
    QTest::newRow("file status inside a banned folder")
        << u"getFileStatus"_s << statusArgs(u"/private"_s) << 0
        << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/private/secret.txt"_s}, {u"0.plan_status"_s, 0}};
    QTest::newRow("file status of a missing file")
        << u"getFileStatus"_s << statusArgs(u"/nope.txt"_s, u"file"_s) << 0 << QVariantMap {{u"#size"_s, 0}};
    QTest::newRow("file status outside the root is refused")
        << u"getFileStatus"_s << statusArgs(u"/../etc"_s) << 2 << QVariantMap {{u"#size"_s, 0}};
    QTest::newRow("navigate without a page") << u"navigate"_s << QJsonObject() << 2 << QVariantMap();
    QTest::newRow("unknown method") << u"getWeather"_s << QJsonObject() << 1 << QVariantMap();
}

void SimulatorTest::answersRequests()
{
    QFETCH(QString, method);
    QFETCH(QJsonObject, args);
    QFETCH(int, code);
    QFETCH(QVariantMap, expected);

    if (code != 0)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Simulator: ")));
    const QString key = m_client->request(method, args);
    const QJsonObject body = m_client->waitForResponse(key);
    QVERIFY2(!body.isEmpty(), "no answer");
    QCOMPARE(body.value(u"method"_s).toString(), method);
    QCOMPARE(body.value(u"from"_s).toString(), QStringLiteral("server"));
    QCOMPARE(body.value(u"to"_s).toString(), QStringLiteral("client"));
    QCOMPARE(body.value(u"version"_s).toInt(), 1);
    QVERIFY(body.value(u"timestamp"_s).toDouble() > 0);
    const QJsonObject data = body.value(u"data"_s).toObject();
    QCOMPARE(data.value(u"code"_s).toInt(-1), code);
    const QJsonValue result = data.value(u"result"_s);
    for (auto it = expected.constBegin(); it != expected.constEnd(); ++it)
        QCOMPARE(follow(result, it.key()).toVariant(), QJsonValue::fromVariant(it.value()).toVariant());
}

void SimulatorTest::syncControlPushesState_data()
{
    QTest::addColumn<bool>("pausedBefore");
    QTest::addColumn<QString>("method");
    QTest::addColumn<bool>("pausedAfter");

    QTest::newRow("pause") << false << u"setSyncPause"_s << true;
    QTest::newRow("resume") << true << u"setSyncResume"_s << false;
    QTest::newRow("start resumes") << true << u"setSyncStart"_s << false;
}

void SimulatorTest::syncControlPushesState()
{
    QFETCH(bool, pausedBefore);
    QFETCH(QString, method);
    QFETCH(bool, pausedAfter);

    m_sim->setPaused(pausedBefore);
    QTRY_COMPARE(m_client->notifications(u"syncErrors"_s).isEmpty(), !pausedBefore);
    m_client->envelopes.clear();

    const QJsonObject answer = m_client->waitForResponse(m_client->request(method));
    QCOMPARE(follow(answer, u"data.code"_s).toInt(-1), 0);
    const QJsonValue errors = m_client->waitForNotification(u"syncErrors"_s);
    QVERIFY(errors.isObject());
    QCOMPARE(errors.toObject().value(u"isPaused"_s).toBool(), pausedAfter);
    QCOMPARE(m_sim->flags().isPaused, pausedAfter);
    QCOMPARE(follow(m_client->call(u"getSyncInfo"_s), u"syncErrors.isPaused"_s).toBool(), pausedAfter);
}

void SimulatorTest::malformedFramesAreDropped_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("reason");

    QTest::newRow("not JSON") << QByteArray("hello") << u"not JSON"_s;
    QTest::newRow("invalid UTF-8") << QByteArray("\xff\xfe") << u"not JSON"_s;
    QTest::newRow("top-level array") << QByteArray("[1]") << u"not a JSON object"_s;
    QTest::newRow("unknown type") << QByteArray(R"({"type":"pang","data":{"method":"getUserInfo"}})") << u"\"type\""_s;
    QTest::newRow("empty data") << QByteArray(R"({"type":"ping","data":{}})") << u"\"data\""_s;
    QTest::newRow("no method") << QByteArray(R"({"type":"ping","data":{"key":"k"}})") << u"no \"method\""_s;
    QTest::newRow("empty frame") << QByteArray() << u"empty frame"_s;
}

void SimulatorTest::malformedFramesAreDropped()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, reason);

    QSignalSpy malformed(m_sim.get(), &Simulator::malformedFrameReceived);
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(
            u"^Simulator: dropped a malformed frame from peer \\d+: "_s + QRegularExpression::escape(reason)));
    m_client->sendRaw(frame + '\x0c');
    QTRY_COMPARE(malformed.count(), 1);
    QCOMPARE(malformed.first().at(1).toByteArray(), frame);
    QCOMPARE(m_sim->malformedReceived(), 1);
    // The same connection is still served.
    const QJsonObject body = m_client->waitForResponse(m_client->request(u"getUserInfo"_s));
    QCOMPARE(follow(body, u"data.code"_s).toInt(-1), 0);
    QCOMPARE(m_sim->connectionCount(), 1);
}

void SimulatorTest::toleratesFraming_data()
{
    QTest::addColumn<bool>("indented");
    QTest::addColumn<int>("pieces");   // writes the two requests are cut into

    QTest::newRow("indented, byte pieces") << true << 7;
    QTest::newRow("compact, many pieces") << false << 40;
}

void SimulatorTest::toleratesFraming()
{
    QFETCH(bool, indented);
    QFETCH(int, pieces);

    // Build two requests into one byte string, then send it in pieces.
    QSignalSpy received(m_sim.get(), &Simulator::messageReceived);
    QByteArray bytes;
    QStringList keys;
    for (const QString &method : {u"getUserInfo"_s, u"getSyncInfo"_s}) {
        keys << u"{key-%1"_s.arg(keys.size());
        bytes += RawClient::requestFrame(method, {}, keys.last(), indented);
    }
    const int step = qMax(1, bytes.size() / pieces);
    for (int from = 0; from < bytes.size(); from += step) {
        m_client->sendRaw(bytes.mid(from, step));
        QTest::qWait(0);   // let each piece travel alone
    }
    QTRY_COMPARE(received.count(), 2);
    for (const QString &key : qAsConst(keys))
        QVERIFY(!m_client->waitForResponse(key).isEmpty());
    QCOMPARE(m_sim->malformedReceived(), 0);
}

void SimulatorTest::notifiesEveryPeer()
{
    RawClient second;
    QVERIFY(second.connectTo(m_sim->port()));
    QTRY_COMPARE(m_sim->connectionCount(), 2);
    QCOMPARE(m_sim->totalConnections(), 2);

    const qint64 before = m_sim->notificationsSent();
    m_sim->notify(u"syncRoot"_s, u"/x"_s);
    QCOMPARE(m_sim->notificationsSent(), before + 2);
    QCOMPARE(second.waitForNotification(u"syncRoot"_s).toString(), u"/x"_s);
    const QJsonObject env = m_client->waitForEnvelope(
        [](const QJsonObject &e) { return follow(e, u"data.data.type"_s).toString() == u"syncRoot"_s; });
    QCOMPARE(env.value(u"type").toString(), u"ping"_s);
    const QJsonObject body = env.value(u"data").toObject();
    QCOMPARE(body.value(u"method").toString(), u"notify"_s);
    QCOMPARE(body.value(u"from").toString(), u"server"_s);
    QCOMPARE(body.value(u"to").toString(), u"client"_s);
    const QString key = body.value(u"key").toString();
    QCOMPARE(key.size(), 37);
    QVERIFY(key.startsWith(QLatin1Char('{')) && !key.endsWith(QLatin1Char('}')));
    QCOMPARE(follow(body, u"data.args"_s).toString(), u"/x"_s);
    QVERIFY(second.call(u"getSyncInfo"_s).isObject());

    m_sim->dropConnections();
    QVERIFY(m_client->waitForDisconnected());
    QVERIFY(second.waitForDisconnected());
    QTRY_COMPARE(m_sim->connectionCount(), 0);
    QVERIFY(m_sim->isListening());
}

void SimulatorTest::silentWhileNotAnswering()
{
    QSignalSpy received(m_sim.get(), &Simulator::messageReceived);
    m_sim->setAnswering(false);
    const QString ignored = m_client->request(u"getUserInfo"_s);
    QTRY_COMPARE(received.count(), 1);
    m_sim->setAnswering(true);
    const QString answered = m_client->request(u"getUserInfo"_s);
    QVERIFY(!m_client->waitForResponse(answered).isEmpty());
    // Answers go out in order, so the first one would have come before.
    QVERIFY(m_client->waitForResponse(ignored, 0).isEmpty());
    QCOMPARE(received.first().at(1).toJsonObject().value(u"data"_s).toObject().value(u"key"_s).toString(), ignored);
}

void SimulatorTest::stopListeningRefusesThenAccepts()
{
    const quint16 port = m_sim->port();
    QSignalSpy listening(m_sim.get(), &Simulator::listening);
    m_sim->stopListening(1);
    QVERIFY(!m_sim->isListening());
    RawClient refused;
    QSignalSpy errors(&refused.socket(), &QAbstractSocket::errorOccurred);
    refused.socket().connectToHost(QStringLiteral("127.0.0.1"), port);
    QTRY_COMPARE(errors.count(), 1);
    QCOMPARE(refused.socket().error(), QAbstractSocket::ConnectionRefusedError);
    // Existing peers stay connected meanwhile.
    QVERIFY(m_client->call(u"getSyncInfo"_s).isObject());

    QTRY_COMPARE_WITH_TIMEOUT(listening.count(), 1, 5000);
    QCOMPARE(m_sim->port(), port);
    RawClient later;
    QVERIFY(later.connectTo(port));
}

void SimulatorTest::stopRemovesOnlyItsOwnPortFile()
{
    const QString path = m_sim->portFilePath();
    QVERIFY(QFile::exists(path));
    m_sim->stop();
    QVERIFY(!QFile::exists(path));
    QCOMPARE(m_sim->connectionCount(), 0);

    // A second instance took the file over: stopping the first leaves it alone.
    Simulator other;
    other.setPortFilePath(path);
    QVERIFY(m_sim->start());
    QVERIFY(other.start());
    m_sim->stop();
    QCOMPARE(readFile(path), QByteArray::number(other.port()) + '\n');
}

void SimulatorTest::commandsRejectBadInput_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("blank") << u"   "_s << true;
    QTest::newRow("unknown word") << u"explode"_s << false;
    QTest::newRow("switch with a bad word") << u"local-space maybe"_s << false;
    QTest::newRow("pace not a number") << u"pace fast"_s << false;
    QTest::newRow("burst too many arguments") << u"burst 1 syncQuantity extra"_s << false;
    QTest::newRow("notify with broken JSON") << u"notify syncErrors {\"isPaused\":"_s << false;
    QTest::newRow("notify with an object") << u"notify syncErrors {\"isPaused\": true}"_s << true;
    QTest::newRow("unterminated quote") << u"burst \"3"_s << false;
    QTest::newRow("download outside the root") << u"download /../x"_s << false;
    QTest::newRow("storage with two numbers") << u"storage 1 2"_s << false;
    QTest::newRow("storage") << u"storage 1 2 3 4 -3"_s << true;
    QTest::newRow("stop-listening huge") << u"stop-listening 999999999"_s << false;
}

void SimulatorTest::commandsRejectBadInput()
{
    QFETCH(QString, command);
    QFETCH(bool, accepted);

    if (command.startsWith(QLatin1String("download")) && !accepted)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^SyncEngine::startDownload: "_s));
    QString error;
    QCOMPARE(m_sim->execute(command, &error), accepted);
    QCOMPARE(error.isEmpty(), accepted);
    // Whatever came in, the server still answers.
    QVERIFY(m_client->call(u"getSyncInfo"_s).isObject());
}

void SimulatorTest::burstSendsEveryNotification()
{
    m_client->envelopes.clear();
    m_sim->sendBurst(500, u"syncErrors"_s);
    QTRY_COMPARE(m_client->notifications(u"syncErrors"_s).size(), 500);
    QCOMPARE(m_client->unparsable, 0);
}

void SimulatorTest::malformedFramesReachThePeer()
{
    m_sim->sendMalformedFrames();
    m_sim->notify(u"syncInited"_s, true);   // a good frame after them still arrives whole
    QVERIFY(m_client->waitForNotification(u"syncInited"_s, [](const QJsonValue &v) { return v.isBool(); }).toBool());
    QVERIFY(m_client->unparsable >= 4);
}

// --- The sync engine --------------------------------------------------------------------------

void SimulatorTest::newFileGoesThroughStatuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QList<int>>("statuses");
    QTest::addColumn<int>("planError");

    QTest::newRow("plain file") << u"/new.txt"_s << QList<int> {1, 2, 3} << 0;
    QTest::newRow("file in a new folder") << u"/fresh/deeper/new.txt"_s << QList<int> {1, 2, 3} << 0;
    QTest::newRow("failing file") << u"/broken.bad"_s << QList<int> {1, 2, 10} << 1;
}

void SimulatorTest::newFileGoesThroughStatuses()
{
    QFETCH(QString, path);
    QFETCH(QList<int>, statuses);
    QFETCH(int, planError);

    QVERIFY(writeFile(local(path), "content"));
    QTRY_COMPARE(m_client->lastStatus(path), statuses.last());
    QCOMPARE(m_client->statusesOf(path), statuses);
    QVERIFY(!m_client->statusesOf(u"/a.txt"_s).size());   // present from the start: already synced

    const bool failed = statuses.last() == 10;
    const QJsonValue quantity = m_client->waitForNotification(u"syncQuantity"_s, [&](const QJsonValue &v) {
        const QJsonObject q = v.toObject();
        return q.value(u"todo").toInt() == 0 && q.value(u"doing").toInt() == 0
            && q.value(u"done").toInt() + q.value(u"error").toInt() > 0;
    });
    QCOMPARE(quantity.toObject().value(u"done").toInt(), failed ? 0 : 1);
    QCOMPARE(quantity.toObject().value(u"error").toInt(), failed ? 1 : 0);

    const QJsonObject entry
        = follow(m_client->call(u"getFileStatus"_s, statusArgs(path, u"file"_s)), u"0"_s).toObject();
    QCOMPARE(entry.value(u"path").toString(), path);
    QCOMPARE(entry.value(u"plan_status").toInt(), statuses.last());
    QCOMPARE(entry.value(u"plan_error").toInt(), planError);
}

void SimulatorTest::changedFileSyncsAgain()
{
    QVERIFY(writeFile(local(u"/a.txt"_s), "changed, and longer than before"));
    m_sim->rescan();
    QTRY_COMPARE(m_client->lastStatus(u"/a.txt"_s), 3);
    QCOMPARE(m_client->statusesOf(u"/a.txt"_s), (QList<int> {1, 2, 3}));

    // Once synced, a rescan without a change queues nothing.
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
}

void SimulatorTest::blockedStateHoldsProgress_data()
{
    QTest::addColumn<QString>("block");
    QTest::addColumn<QString>("unblock");

    QTest::newRow("paused") << u"pause"_s << u"resume"_s;
    QTest::newRow("offline") << u"offline"_s << u"online"_s;
    QTest::newRow("paused, resumed by the plug-in") << u"pause"_s << QString();
}

void SimulatorTest::blockedStateHoldsProgress()
{
    QFETCH(QString, block);
    QFETCH(QString, unblock);

    QVERIFY(m_sim->execute(block));
    QVERIFY(m_client->waitForNotification(u"syncErrors"_s).isObject());
    QVERIFY(writeFile(local(u"/held.txt"_s), "waiting"));
    QTRY_COMPARE(m_client->lastStatus(u"/held.txt"_s), 1);
    // Many paces later it still waits.
    QVERIFY(!QTest::qWaitFor([&] { return m_client->lastStatus(u"/held.txt"_s) != 1; }, 20 * kPaceMs));
    QCOMPARE(m_sim->counts().todo, 1);

    if (unblock.isEmpty())
        m_client->request(u"setSyncResume"_s);
    else
        QVERIFY(m_sim->execute(unblock));
    QTRY_COMPARE(m_client->lastStatus(u"/held.txt"_s), 3);
    QCOMPARE(m_client->statusesOf(u"/held.txt"_s), (QList<int> {1, 2, 3}));
}

void SimulatorTest::bannedFolderIsNeverSyncedUntilUnbanned()
{
    m_sim->setBanDirs({u"private"_s});
    const QJsonValue bans = m_client->waitForNotification(u"banDirs"_s);
    QCOMPARE(bans.toArray().toVariantList(), QVariantList {u"/private"_s});

    QVERIFY(writeFile(local(u"/private/secret.txt"_s), "hidden"));
    QVERIFY(writeFile(local(u"/witness.txt"_s), "seen"));   // queued after the banned one
    QTRY_COMPARE(m_client->lastStatus(u"/witness.txt"_s), 3);
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
    QVERIFY(m_client->statusesOf(u"/private/secret.txt"_s).isEmpty());
    QCOMPARE(m_sim->fileStatus(u"/private/secret.txt"_s).planStatus, 0);
    QCOMPARE(m_sim->fileStatus(u"/private"_s).planStatus, 0);
    QVERIFY(!m_sim->startDownload(u"/private/other.bin"_s));

    QCOMPARE(follow(m_client->call(u"getSyncInfo"_s), u"banDirs.#size"_s).toInt(), 1);

    // Lifting the ban queues what was held back.
    QVERIFY(m_sim->execute(u"unban /private"_s));
    QVERIFY(m_sim->banDirs().isEmpty());
    QTRY_COMPARE(m_client->lastStatus(u"/private/secret.txt"_s), 3);
}

void SimulatorTest::downloadWritesTempThenRenames()
{
    const QString target = local(u"/incoming/report.pdf"_s);
    const QString temp = target + u".temp"_s;
    QSignalSpy finished(m_sim.get(), &Simulator::downloadFinished);
    m_sim->setPaceMs(40);
    QVERIFY(m_sim->execute(u"download /incoming/report.pdf 4000 4"_s));

    // Part of the file exists under the temporary name before the real one does.
    QVERIFY(QTest::qWaitFor([&] {
        const QFileInfo info(temp);
        return info.exists() && info.size() > 0 && info.size() < 4000;
    }));
    QVERIFY(!QFile::exists(target));
    const QJsonArray listing = m_client->call(u"getFileStatus"_s, statusArgs(u"/incoming"_s)).toArray();
    QCOMPARE(listing.size(), 1);
    QCOMPARE(follow(listing, u"0.path"_s).toString(), u"/incoming/report.pdf.temp"_s);
    QCOMPARE(follow(listing, u"0.plan"_s).toString(), u"download"_s);
    QCOMPARE(follow(listing, u"0.plan_status"_s).toInt(), 2);

    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().at(0).toString(), u"/incoming/report.pdf"_s);
    QCOMPARE(QFileInfo(target).size(), 4000);
    QVERIFY(!QFile::exists(temp));
    // The last notification may still be on its way when the signal comes.
    QTRY_COMPARE(m_client->statusesOf(u"/incoming/report.pdf"_s), (QList<int> {1, 2, 3}));
    // The downloaded file is in sync: it is not sent back up.
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
}

void SimulatorTest::failingDownloadLeavesNoFile()
{
    QVERIFY(m_sim->startDownload(u"/photo.bad"_s, 100, 2));
    QTRY_COMPARE(m_client->lastStatus(u"/photo.bad"_s), 10);
    QVERIFY(!QFile::exists(local(u"/photo.bad"_s)));
    QVERIFY(!QFile::exists(local(u"/photo.bad.temp"_s)));
    QCOMPARE(m_sim->counts().error, 1);
}

void SimulatorTest::folderShowsBusiestChild()
{
    QVERIFY(m_sim->execute(u"pause"_s));
    QVERIFY(writeFile(local(u"/box/a.txt"_s), "a"));
    QTRY_COMPARE(m_client->lastStatus(u"/box/a.txt"_s), 1);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 2);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).isDir, true);
    QVERIFY(m_sim->execute(u"resume"_s));
    QTRY_COMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 3);

    QVERIFY(writeFile(local(u"/box/b.bad"_s), "b"));
    QTRY_COMPARE(m_client->lastStatus(u"/box/b.bad"_s), 10);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 10);
    QVERIFY(QFile::remove(local(u"/box/b.bad"_s)));
    m_sim->rescan();
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 3);
    QCOMPARE(m_sim->counts().error, 0);
}

void SimulatorTest::lostRootIsReported()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^SyncEngine::scanDir: the sync root .* is gone$"_s));
    QVERIFY(QDir(m_root).removeRecursively());
    m_sim->rescan();
    const QJsonValue errors = m_client->waitForNotification(u"syncErrors"_s);
    QCOMPARE(errors.toObject().value(u"isLocalPathExist").toBool(true), false);

    QVERIFY(QDir().mkpath(m_root));
    m_client->envelopes.clear();
    m_sim->rescan();
    QVERIFY(m_client->waitForNotification(u"syncErrors"_s).toObject().value(u"isLocalPathExist").toBool());
}

void SimulatorTest::listingEscapesNames_data()
{
    QTest::addColumn<bool>("indented");
    QTest::addColumn<QString>("key");

    QTest::newRow("indented") << true << u"{plain"_s;
    QTest::newRow("key imitating the result") << false << u"\"result\":null"_s;
}

void SimulatorTest::listingEscapesNames()
{
    QFETCH(bool, indented);
    QFETCH(QString, key);

    const QStringList names
        = {u"quote\"d.txt"_s, u"back\\slash.txt"_s, u"tab\there.txt"_s, u"日本語.txt"_s, u"emoji 🙂.txt"_s};
    for (const QString &name : names)
        QVERIFY(writeFile(local(u"/odd/"_s + name), "x"));
    m_sim->rescan();
    m_sim->setIndentedOutput(indented);

    m_client->request(u"getFileStatus"_s, statusArgs(u"/odd"_s), true, key);
    const QJsonObject answer = m_client->waitForResponse(key);
    QCOMPARE(m_client->unparsable, 0);
    QCOMPARE(answer.value(u"method").toString(), u"getFileStatus"_s);
    const QJsonArray result = follow(answer, u"data.result"_s).toArray();
    QStringList paths;
    for (const QJsonValue &entry : result) {
        paths << entry.toObject().value(u"path").toString();
        const int status = entry.toObject().value(u"plan_status").toInt();
        QVERIFY(status >= 1 && status <= 3);   // new files, somewhere on their way
        QVERIFY(entry.toObject().value(u"fileid").toDouble() > 0);
    }
    QStringList expected;
    for (const QString &name : names)
        expected << u"/odd/"_s + name;
    paths.sort();
    expected.sort();
    QCOMPARE(paths, expected);
}

QTEST_GUILESS_MAIN(SimulatorTest)
#include "tst_simulator.moc"
