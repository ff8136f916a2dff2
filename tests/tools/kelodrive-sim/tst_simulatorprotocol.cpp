// SPDX-License-Identifier: GPL-3.0-or-later
// The simulator's answers and notifications, seen from a raw plug-in socket.
#include "rawclient.h"

#include <kelodrivesim/simulator.h>

#include <QFile>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using kelodrive::Simulator;

class SimulatorProtocolTest : public QObject
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
    void notificationEnvelope();
    void asksPluginVersionOnConnect();
    void recordsNavigation();
    void malformedFramesAreDropped_data();
    void malformedFramesAreDropped();
    void toleratesFraming_data();
    void toleratesFraming();
    void servesSeveralPeers();
    void silentWhileNotAnswering();
    void stopListeningRefusesThenAccepts();
    void stopRemovesOnlyItsOwnPortFile();
    void commandsRejectBadInput_data();
    void commandsRejectBadInput();

private:
    QString local(const QString &cloudPath) const { return m_dir->path() + QStringLiteral("/root") + cloudPath; }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Simulator> m_sim;
    std::unique_ptr<RawClient> m_client;
};

void SimulatorProtocolTest::initTestCase()
{
    // Traffic dumps drown the failures; warnings and life-cycle lines stay.
    QLoggingCategory::setFilterRules(u"org.sablo.kelodrive.sim.debug=false"_s);
}

void SimulatorProtocolTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(writeFile(local(QStringLiteral("/a.txt")), "alpha"));
    QVERIFY(writeFile(local(QStringLiteral("/docs/inner.txt")), "inner"));
    QVERIFY(writeFile(local(QStringLiteral("/private/secret.txt")), "secret"));

    m_sim = std::make_unique<Simulator>();
    m_sim->setPortFilePath(m_dir->path() + QStringLiteral("/ipc"));
    m_sim->setAskPluginInfo(false);
    kelodrive::Account account;
    account.nickname = QStringLiteral("Tester");
    account.isAdmin = true;
    m_sim->setAccount(account);
    kelodrive::Storage storage;
    storage.quota = -3;
    storage.used = 12345;
    m_sim->setStorage(storage);
    m_sim->setPublicCloud(false);
    QVERIFY(m_sim->setSyncRoot(m_dir->path() + QStringLiteral("/root")));
    m_sim->setBanDirs({QStringLiteral("/private")});
    QVERIFY(m_sim->start());

    m_client = std::make_unique<RawClient>();
    QVERIFY(m_client->connectTo(m_sim->port()));
    QTRY_COMPARE(m_sim->connectionCount(), 1);
}

void SimulatorProtocolTest::cleanup()
{
    m_client.reset();
    m_sim.reset();
    m_dir.reset();
}

void SimulatorProtocolTest::answersRequests_data()
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
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/"_s}, {u"type"_s, u"dir"_s}}) << 0
        << QVariantMap {{u"#size"_s, 3}, {u"0.path"_s, u"/a.txt"_s}, {u"0.isDir"_s, false}, {u"0.plan_status"_s, 3},
               {u"1.path"_s, u"/docs"_s}, {u"1.isDir"_s, true}, {u"2.path"_s, u"/private"_s}, {u"2.plan_status"_s, 0}};
    QTest::newRow("file status of a subfolder")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/docs"_s}, {u"type"_s, u"dir"_s}}) << 0
        << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/docs/inner.txt"_s}, {u"0.plan_status"_s, 3}};
    QTest::newRow("file status of one file")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/docs/inner.txt"_s}, {u"type"_s, u"file"_s}}) << 0
        << QVariantMap {
               {u"#size"_s, 1}, {u"0.path"_s, u"/docs/inner.txt"_s}, {u"0.isDir"_s, false}, {u"0.plan_error"_s, 0}};
    QTest::newRow("file status of a folder itself")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/docs"_s}, {u"type"_s, u"file"_s}}) << 0
        << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/docs"_s}, {u"0.isDir"_s, true}, {u"0.plan_status"_s, 3}};
    QTest::newRow("file status inside a banned folder")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/private"_s}, {u"type"_s, u"dir"_s}}) << 0
        << QVariantMap {{u"#size"_s, 1}, {u"0.path"_s, u"/private/secret.txt"_s}, {u"0.plan_status"_s, 0}};
    QTest::newRow("file status of a missing file")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/nope.txt"_s}, {u"type"_s, u"file"_s}}) << 0
        << QVariantMap {{u"#size"_s, 0}};
    QTest::newRow("file status outside the root is refused")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/../etc"_s}, {u"type"_s, u"dir"_s}}) << 2
        << QVariantMap {{u"#size"_s, 0}};
    QTest::newRow("file status without a type is refused")
        << u"getFileStatus"_s << QJsonObject({{u"basedir"_s, u"/"_s}}) << 2 << QVariantMap {{u"#size"_s, 0}};
    QTest::newRow("navigate without a page") << u"navigate"_s << QJsonObject() << 2 << QVariantMap();
    QTest::newRow("unknown method") << u"getWeather"_s << QJsonObject() << 1 << QVariantMap();
}

void SimulatorProtocolTest::answersRequests()
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

void SimulatorProtocolTest::syncControlPushesState_data()
{
    QTest::addColumn<bool>("pausedBefore");
    QTest::addColumn<QString>("method");
    QTest::addColumn<bool>("pausedAfter");

    QTest::newRow("pause") << false << u"setSyncPause"_s << true;
    QTest::newRow("resume") << true << u"setSyncResume"_s << false;
    QTest::newRow("start resumes") << true << u"setSyncStart"_s << false;
}

void SimulatorProtocolTest::syncControlPushesState()
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

void SimulatorProtocolTest::notificationEnvelope()
{
    const qint64 before = m_sim->notificationsSent();
    m_sim->notify(u"syncRoot"_s, u"/x"_s);
    QCOMPARE(m_sim->notificationsSent(), before + 1);
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
}

void SimulatorProtocolTest::asksPluginVersionOnConnect()
{
    m_sim->setAskPluginInfo(true);
    QSignalSpy versions(m_sim.get(), &Simulator::pluginVersionReceived);
    RawClient second;
    QVERIFY(second.connectTo(m_sim->port()));
    QTRY_COMPARE(second.envelopes.size(), 1);
    const QJsonObject body = second.envelopes.first().value(u"data"_s).toObject();
    QCOMPARE(second.envelopes.first().value(u"type"_s).toString(), QStringLiteral("ping"));
    QCOMPARE(body.value(u"method"_s).toString(), QStringLiteral("getPluginInfo"));

    QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"^Simulator: peer \\d+ runs plug-in version 1\\.0\\.7$"_s));
    second.reply(body, {{u"version"_s, u"1.0.7"_s}});
    QTRY_COMPARE(versions.count(), 1);
    QCOMPARE(versions.first().at(1).toString(), QStringLiteral("1.0.7"));
    QCOMPARE(m_sim->pluginVersion(), QStringLiteral("1.0.7"));
}

void SimulatorProtocolTest::recordsNavigation()
{
    QSignalSpy navigated(m_sim.get(), &Simulator::navigated);
    QTest::ignoreMessage(QtInfoMsg, "Simulator: navigate to page type=setting args=");
    const QJsonObject answer = m_client->waitForResponse(m_client->request(u"navigate"_s, {{u"type"_s, u"setting"_s}}));
    QCOMPARE(follow(answer, u"data.code"_s).toInt(-1), 0);
    QTRY_COMPARE(navigated.count(), 1);
    QCOMPARE(m_sim->lastNavigation(), QJsonObject({{u"type"_s, u"setting"_s}}));
}

void SimulatorProtocolTest::malformedFramesAreDropped_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("reason");

    QTest::newRow("not JSON") << QByteArray("hello") << u"not JSON"_s;
    QTest::newRow("cut short") << QByteArray(R"({"type":"ping","data":{"method")") << u"not JSON"_s;
    QTest::newRow("invalid UTF-8") << QByteArray("\xff\xfe") << u"not JSON"_s;
    QTest::newRow("top-level array") << QByteArray("[1]") << u"not a JSON object"_s;
    QTest::newRow("unknown type") << QByteArray(R"({"type":"pang","data":{"method":"getUserInfo"}})") << u"\"type\""_s;
    QTest::newRow("empty data") << QByteArray(R"({"type":"ping","data":{}})") << u"\"data\""_s;
    QTest::newRow("data not an object") << QByteArray(R"({"type":"ping","data":[1]})") << u"\"data\""_s;
    QTest::newRow("no method") << QByteArray(R"({"type":"ping","data":{"key":"k"}})") << u"no \"method\""_s;
    QTest::newRow("empty frame") << QByteArray() << u"empty frame"_s;
    QTest::newRow("white space only") << QByteArray(" \n\t") << u"empty frame"_s;
}

void SimulatorProtocolTest::malformedFramesAreDropped()
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

void SimulatorProtocolTest::toleratesFraming_data()
{
    QTest::addColumn<bool>("indented");
    QTest::addColumn<int>("pieces");   // writes the two requests are cut into

    QTest::newRow("compact, one write") << false << 1;
    QTest::newRow("indented, one write") << true << 1;
    QTest::newRow("indented, byte pieces") << true << 7;
    QTest::newRow("compact, many pieces") << false << 40;
}

void SimulatorProtocolTest::toleratesFraming()
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

void SimulatorProtocolTest::servesSeveralPeers()
{
    QSignalSpy connected(m_sim.get(), &Simulator::peerConnected);
    RawClient second;
    QVERIFY(second.connectTo(m_sim->port()));
    QTRY_COMPARE(m_sim->connectionCount(), 2);
    QCOMPARE(m_sim->totalConnections(), 2);

    const qint64 before = m_sim->notificationsSent();
    m_sim->notify(u"syncInited"_s, true);
    QVERIFY(m_client->waitForNotification(u"syncInited"_s).toBool());
    QVERIFY(second.waitForNotification(u"syncInited"_s).toBool());
    QCOMPARE(m_sim->notificationsSent(), before + 2);
    QVERIFY(second.call(u"getSyncInfo"_s).isObject());

    m_sim->dropConnections();
    QVERIFY(m_client->waitForDisconnected());
    QVERIFY(second.waitForDisconnected());
    QTRY_COMPARE(m_sim->connectionCount(), 0);
    QVERIFY(m_sim->isListening());
}

void SimulatorProtocolTest::silentWhileNotAnswering()
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

void SimulatorProtocolTest::stopListeningRefusesThenAccepts()
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

void SimulatorProtocolTest::stopRemovesOnlyItsOwnPortFile()
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

void SimulatorProtocolTest::commandsRejectBadInput_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("blank") << u"   "_s << true;
    QTest::newRow("comment") << u"# nothing"_s << true;
    QTest::newRow("unknown word") << u"explode"_s << false;
    QTest::newRow("switch with a bad word") << u"local-space maybe"_s << false;
    QTest::newRow("switch without a word") << u"allowance"_s << false;
    QTest::newRow("pace not a number") << u"pace fast"_s << false;
    QTest::newRow("pace negative") << u"pace -5"_s << false;
    QTest::newRow("burst too many arguments") << u"burst 1 syncQuantity extra"_s << false;
    QTest::newRow("notify with broken JSON") << u"notify syncErrors {\"isPaused\":"_s << false;
    QTest::newRow("notify with a scalar") << u"notify syncInited true"_s << true;
    QTest::newRow("notify with an object") << u"notify syncErrors {\"isPaused\": true}"_s << true;
    QTest::newRow("unterminated quote") << u"burst \"3"_s << false;
    QTest::newRow("download outside the root") << u"download /../x"_s << false;
    QTest::newRow("download a banned file") << u"download /private/x.bin"_s << false;
    QTest::newRow("storage with two numbers") << u"storage 1 2"_s << false;
    QTest::newRow("storage") << u"storage 1 2 3 4 -3"_s << true;
    QTest::newRow("quota none") << u"quota -3"_s << true;
    QTest::newRow("stop-listening huge") << u"stop-listening 999999999"_s << false;
}

void SimulatorProtocolTest::commandsRejectBadInput()
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

QTEST_GUILESS_MAIN(SimulatorProtocolTest)
#include "tst_simulatorprotocol.moc"
