// SPDX-License-Identifier: GPL-3.0-or-later
// The simulator seen from a raw plug-in socket: its answers and notifications, the sync
// engine it runs over a real folder, its small parts on their own, and the kelodrive-sim
// program as the plug-in and the demo meet it.
#include "commandline.h"
#include "framereader.h"
#include "portfile.h"
#include "syncengine.h"

#include <kelodrivesim/simulator.h>

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <algorithm>
#include <csignal>
#include <functional>

// QString literals in tests: u"text"_s.
inline QString operator""_s(const char16_t *text, size_t size)
{
    return QString::fromUtf16(text, int(size));
}

// Writes a file, creating its folders; false on failure.
inline bool writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Follows a dotted path (u"account.nickname"_s, u"0.path"_s) into a JSON value; u"#size"_s gives
// the element count of the value reached so far.
inline QJsonValue follow(QJsonValue value, const QString &path)
{
    for (const QString &part : path.split(QLatin1Char('.'))) {
        if (part == u"#size"_s)
            return value.isArray() ? value.toArray().size() : value.toObject().size();
        bool isIndex = false;
        const int index = part.toInt(&isIndex);
        value = isIndex ? value.toArray().at(index) : value.toObject().value(part);
    }
    return value;
}

// Compares values in `value` at dotted paths (see follow()) with the expected ones.
void compareFields(const QJsonValue &value, const QVariantMap &expected)
{
    for (auto it = expected.constBegin(); it != expected.constEnd(); ++it)
        QCOMPARE(follow(value, it.key()).toVariant(), QJsonValue::fromVariant(it.value()).toVariant());
}

// A bare plug-in side: a socket that frames JSON by 0x0C and keeps what it got. It builds and
// reads messages on its own, so that the simulator is never checked by itself.
class RawClient : public QObject
{
public:
    RawClient() { connect(&m_socket, &QTcpSocket::readyRead, this, &RawClient::onReadyRead); }

    bool connectTo(quint16 port)
    {
        m_socket.connectToHost(u"127.0.0.1"_s, port);
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; });
    }
    bool waitForDisconnected()
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; });
    }
    QTcpSocket &socket() { return m_socket; }

    static QByteArray frame(const QString &type, const QJsonObject &body)
    {
        return QJsonDocument(QJsonObject {{u"type"_s, type}, {u"data"_s, body}}).toJson() + '\x0c';
    }
    // Sends a request as the plug-in frames it and returns its key (a fresh one unless given).
    QString request(const QString &method, const QJsonObject &data = {}, QString key = {})
    {
        if (key.isEmpty())
            key = QUuid::createUuid().toString().chopped(1);
        sendRaw(frame(u"ping"_s,
            {{u"from"_s, u"client"_s}, {u"to"_s, u"server"_s}, {u"method"_s, method}, {u"data"_s, data},
                {u"version"_s, 1}, {u"key"_s, key}, {u"timestamp"_s, QDateTime::currentMSecsSinceEpoch()}}));
        return key;
    }
    // Sends a request and waits: "result" of the answer, undefined on time-out.
    QJsonValue call(const QString &method, const QJsonObject &data = {})
    {
        return follow(waitForResponse(request(method, data)), u"data.result"_s);
    }
    // Answers a ping of the simulator with this "data".
    void reply(QJsonObject question, const QJsonObject &data)
    {
        question.insert(u"from"_s, u"client"_s);
        question.insert(u"to"_s, u"server"_s);
        question.insert(u"data"_s, data);
        sendRaw(frame(u"pong"_s, question));
    }
    void sendRaw(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }

    // The first envelope the predicate accepts, waiting for it; empty on time-out.
    QJsonObject waitForEnvelope(const std::function<bool(const QJsonObject &)> &accept, int timeoutMs = 5000)
    {
        int at = -1;
        const auto find = [&] {
            at = int(std::find_if(envelopes.cbegin(), envelopes.cend(), accept) - envelopes.cbegin());
            return at < envelopes.size();
        };
        return QTest::qWaitFor(find, timeoutMs) ? envelopes.at(at) : QJsonObject();
    }
    // The body ("data" of the envelope) of the answer with this key; empty on time-out.
    QJsonObject waitForResponse(const QString &key, int timeoutMs = 5000)
    {
        return waitForEnvelope(
            [&](const QJsonObject &e) {
                return e.value(u"type"_s) == u"pong"_s && follow(e, u"data.key"_s).toString() == key;
            },
            timeoutMs)
            .value(u"data"_s)
            .toObject();
    }
    // Waits for a notification that the predicate accepts; returns its args (undefined on time-out).
    QJsonValue waitForNotification(const QString &type, const std::function<bool(const QJsonValue &)> &accept = {})
    {
        return argsOf(waitForEnvelope([&](const QJsonObject &env) {
            const QJsonValue args = argsOf(env, type);
            return !args.isUndefined() && (!accept || accept(args));
        }),
            type);
    }
    // Every notification of this type received so far, in order.
    QList<QJsonValue> notifications(const QString &type) const
    {
        QList<QJsonValue> out;
        for (const QJsonObject &env : envelopes) {
            if (const QJsonValue args = argsOf(env, type); !args.isUndefined())
                out.append(args);
        }
        return out;
    }
    // Plan statuses of "fileSyncStatus" notifications for one path, in order; lastStatus -1 when none.
    QList<int> statusesOf(const QString &path) const
    {
        QList<int> out;
        for (const QJsonValue &args : notifications(u"fileSyncStatus"_s)) {
            if (args[u"path"_s] == path)
                out.append(args[u"plan_status"_s].toInt());
        }
        return out;
    }
    int lastStatus(const QString &path) const
    {
        const QList<int> statuses = statusesOf(path);
        return statuses.isEmpty() ? -1 : statuses.last();
    }

    QList<QJsonObject> envelopes;   // every parsed message, in order
    int unparsable = 0;

private:
    // The args of a notification of this type, or undefined.
    static QJsonValue argsOf(const QJsonObject &env, const QString &type)
    {
        if (env.value(u"type"_s) != u"ping"_s || follow(env, u"data.method"_s) != u"notify"_s
            || follow(env, u"data.data.type"_s) != type)
            return QJsonValue(QJsonValue::Undefined);
        return follow(env, u"data.data.args"_s);
    }
    void onReadyRead()
    {
        m_buffer.append(m_socket.readAll());
        for (int pos; (pos = m_buffer.indexOf('\x0c')) >= 0; m_buffer.remove(0, pos + 1)) {
            const QJsonDocument doc = QJsonDocument::fromJson(m_buffer.left(pos));
            if (doc.isObject())
                envelopes.append(doc.object());
            else
                ++unparsable;
        }
    }

    QTcpSocket m_socket;
    QByteArray m_buffer;
};

using namespace kelodrive;
using Bytes = QList<QByteArray>;

namespace {
// Arguments of a "getFileStatus" request.
QJsonObject statusArgs(const QString &basedir, const QString &type = u"dir"_s)
{
    return {{u"basedir"_s, basedir}, {u"type"_s, type}};
}

// The kelodrive-sim program in a home of its own; its output is kept, and shown if the test fails.
struct SimProcess
{
    SimProcess()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"HOME"_s, home.path());
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(home.path());
        QObject::connect(
            &process, &QProcess::readyReadStandardOutput, [this] { out += process.readAllStandardOutput(); });
        QObject::connect(
            &process, &QProcess::readyReadStandardError, [this] { err += process.readAllStandardError(); });
    }
    ~SimProcess()
    {
        if (QTest::currentTestFailed())
            qWarning().noquote() << "simulator output:" << err;
        process.kill();
        process.waitForFinished();
    }
    QString portFile() const { return home.path() + u"/.config/kelodrive/App Data/ipc"_s; }
    quint16 portInFile() const { return quint16(readFile(portFile()).trimmed().toUInt()); }
    // Starts the program (or a link to it) and waits for its port file; 0 when none comes.
    quint16 launch(const QStringList &args = {}, const QString &program = QString::fromUtf8(KELODRIVE_SIM_EXE))
    {
        process.start(program, args);
        quint16 port = 0;
        const auto written = [&] { return (port = portInFile()) != 0 || process.state() != QProcess::Running; };
        return process.waitForStarted() && QTest::qWaitFor(written, 10000) ? port : 0;
    }
    // Whether it has ended by now or does within 10 s (it may have ended during an earlier wait).
    bool ended() { return process.state() == QProcess::NotRunning || process.waitForFinished(10000); }
    // Ended with code 0 by itself and took its port file away.
    bool endedCleanly()
    {
        return ended() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
            && !QFile::exists(portFile());
    }

    QTemporaryDir home;
    QProcess process;
    QByteArray out;
    QByteArray err;
};
}   // namespace

class SimulatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Traffic dumps drown the failures; warnings and life-cycle lines stay.
        QLoggingCategory::setFilterRules(u"org.sablo.kelodrive.sim.debug=false"_s);
    }

    void init()
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
        m_sim->setPaceMs(15);
        m_sim->setRescanMs(0);   // the tests rescan on purpose, so nothing happens behind their back
        m_sim->setFailPatterns({u"*.bad"_s});
        QVERIFY(m_sim->setSyncRoot(m_root));
        m_sim->setBanDirs({u"/private"_s});
        QVERIFY(m_sim->start());

        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_sim->port()));
        QTRY_COMPARE(m_sim->connectionCount(), 1);
    }

    void cleanup()
    {
        m_client.reset();
        m_sim.reset();
        m_dir.reset();
    }

    void answersRequests_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QJsonObject>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QVariantMap>("expected");   // dotted path in "result" -> value

        QTest::newRow("user info: account and storage")
            << u"getUserInfo"_s << QJsonObject() << 0
            << QVariantMap {{u"account.nickname"_s, u"Tester"_s}, {u"account.isAdmin"_s, true},
                   {u"storage.quota"_s, -3}, {u"storage.used"_s, 12345}, {u"storage.#size"_s, 5}};
        QTest::newRow("sync info: summary")
            << u"getSyncInfo"_s << QJsonObject() << 0
            << QVariantMap {{u"syncInited"_s, true}, {u"isPublicCloud"_s, false}, {u"banDirs.0"_s, u"/private"_s},
                   {u"syncQuantity.todo"_s, 0}, {u"syncErrors.isOnline"_s, true},
                   {u"syncErrors.isLocalPathExist"_s, true}, {u"syncErrors.isLocalPermitionForbid"_s, false},
                   {u"syncErrors.#size"_s, 8}};
        QTest::newRow("file status of a folder lists one level")
            << u"getFileStatus"_s << statusArgs(u"/"_s) << 0
            << QVariantMap {{u"#size"_s, 3}, {u"0.path"_s, u"/a.txt"_s}, {u"0.isDir"_s, false}, {u"0.plan_status"_s, 3},
                   {u"1.path"_s, u"/docs"_s}, {u"1.isDir"_s, true}, {u"2.path"_s, u"/private"_s},
                   {u"2.plan_status"_s, 0}};
        QTest::newRow("file status of one file")
            << u"getFileStatus"_s << statusArgs(u"/docs/inner.txt"_s, u"file"_s) << 0
            << QVariantMap {
                   {u"#size"_s, 1}, {u"0.path"_s, u"/docs/inner.txt"_s}, {u"0.isDir"_s, false}, {u"0.plan_error"_s, 0}};
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

    void answersRequests()
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
        compareFields(body,
            {{u"method"_s, method}, {u"from"_s, u"server"_s}, {u"to"_s, u"client"_s}, {u"version"_s, 1},
                {u"data.code"_s, code}});
        QVERIFY(body.value(u"timestamp"_s).toDouble() > 0);
        compareFields(follow(body, u"data.result"_s), expected);
    }

    void syncControlPushesState_data()
    {
        QTest::addColumn<bool>("pausedBefore");
        QTest::addColumn<QString>("method");
        QTest::addColumn<bool>("pausedAfter");

        QTest::newRow("pause") << false << u"setSyncPause"_s << true;
        QTest::newRow("resume") << true << u"setSyncResume"_s << false;
        QTest::newRow("start resumes") << true << u"setSyncStart"_s << false;
    }

    void syncControlPushesState()
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

    void malformedFramesAreDropped_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("reason");

        QTest::newRow("not JSON") << QByteArray("hello") << u"not JSON"_s;
        QTest::newRow("top-level array") << QByteArray("[1]") << u"not a JSON object"_s;
        QTest::newRow("unknown type") << QByteArray(R"({"type":"pang","data":{"method":"getUserInfo"}})")
                                      << u"\"type\""_s;
        QTest::newRow("empty data") << QByteArray(R"({"type":"ping","data":{}})") << u"\"data\""_s;
        QTest::newRow("no method") << QByteArray(R"({"type":"ping","data":{"key":"k"}})") << u"no \"method\""_s;
        QTest::newRow("empty frame") << QByteArray() << u"empty frame"_s;
    }

    void malformedFramesAreDropped()
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

    void notifiesEveryPeer()
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
        compareFields(env,
            {{u"type"_s, u"ping"_s}, {u"data.method"_s, u"notify"_s}, {u"data.from"_s, u"server"_s},
                {u"data.to"_s, u"client"_s}, {u"data.data.args"_s, u"/x"_s}});
        const QString key = follow(env, u"data.key"_s).toString();
        QCOMPARE(key.size(), 37);
        QVERIFY(key.startsWith(QLatin1Char('{')) && !key.endsWith(QLatin1Char('}')));
        QVERIFY(second.call(u"getSyncInfo"_s).isObject());

        m_sim->dropConnections();
        QVERIFY(m_client->waitForDisconnected());
        QVERIFY(second.waitForDisconnected());
        QTRY_COMPARE(m_sim->connectionCount(), 0);
        QVERIFY(m_sim->isListening());
    }

    void silentWhileNotAnswering()
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

    void stopListeningRefusesThenAccepts()
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

    void commandsRejectBadInput_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("accepted");

        QTest::newRow("switch with a bad word") << u"local-space maybe"_s << false;
        QTest::newRow("burst too many arguments") << u"burst 1 syncQuantity extra"_s << false;
        QTest::newRow("notify with broken JSON") << u"notify syncErrors {\"isPaused\":"_s << false;
        QTest::newRow("notify with an object") << u"notify syncErrors {\"isPaused\": true}"_s << true;
        QTest::newRow("download outside the root") << u"download /../x"_s << false;
        QTest::newRow("storage with two numbers") << u"storage 1 2"_s << false;
        QTest::newRow("storage") << u"storage 1 2 3 4 -3"_s << true;
        QTest::newRow("stop-listening huge") << u"stop-listening 999999999"_s << false;
    }

    void commandsRejectBadInput()
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

    void newFileGoesThroughStatuses_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QList<int>>("statuses");

        QTest::newRow("plain file") << u"/new.txt"_s << QList<int> {1, 2, 3};
        QTest::newRow("file in a new folder") << u"/fresh/deeper/new.txt"_s << QList<int> {1, 2, 3};
        QTest::newRow("failing file") << u"/broken.bad"_s << QList<int> {1, 2, 10};
        QTest::newRow("changed file") << u"/a.txt"_s << QList<int> {1, 2, 3};
    }

    void newFileGoesThroughStatuses()
    {
        QFETCH(QString, path);
        QFETCH(QList<int>, statuses);

        QVERIFY(writeFile(local(path), "content, and longer than before"));
        m_sim->rescan();   // a change in place is seen by a scan only
        QTRY_COMPARE(m_client->lastStatus(path), statuses.last());
        QCOMPARE(m_client->statusesOf(path), statuses);
        QVERIFY(m_client->statusesOf(u"/docs/inner.txt"_s).isEmpty());   // present from the start: already synced

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
        QCOMPARE(entry.value(u"plan_error").toInt(), failed ? 1 : 0);
        // Once synced, a rescan without a change queues nothing.
        m_sim->rescan();
        QCOMPARE(m_sim->counts().todo, 0);
    }

    void bannedFolderIsNeverSyncedUntilUnbanned()
    {
        m_sim->setBanDirs({u"private"_s});
        const QJsonValue bans = m_client->waitForNotification(u"banDirs"_s);
        QCOMPARE(bans.toArray().toVariantList(), QVariantList {u"/private"_s});

        QVERIFY(writeFile(local(u"/private/secret.txt"_s), "hidden"));
        m_sim->rescan();
        QVERIFY(m_client->statusesOf(u"/private/secret.txt"_s).isEmpty());
        QVERIFY(!m_sim->startDownload(u"/private/other.bin"_s));

        // Lifting the ban queues what was held back.
        QVERIFY(m_sim->execute(u"unban /private"_s));
        QVERIFY(m_sim->banDirs().isEmpty());
        QTRY_COMPARE(m_client->lastStatus(u"/private/secret.txt"_s), 3);
    }

    void lostRootIsReported()
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

    void listingEscapesNames_data()
    {
        QTest::addColumn<bool>("indented");
        QTest::addColumn<QString>("key");

        QTest::newRow("indented") << true << u"{plain"_s;
        QTest::newRow("key imitating the result") << false << u"\"result\":null"_s;
    }

    void listingEscapesNames()
    {
        QFETCH(bool, indented);
        QFETCH(QString, key);

        const QStringList names
            = {u"quote\"d.txt"_s, u"back\\slash.txt"_s, u"tab\there.txt"_s, u"日本語.txt"_s, u"emoji 🙂.txt"_s};
        for (const QString &name : names)
            QVERIFY(writeFile(local(u"/odd/"_s + name), "x"));
        m_sim->rescan();
        m_sim->setIndentedOutput(indented);

        m_client->request(u"getFileStatus"_s, statusArgs(u"/odd"_s), key);
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

    void framesAcrossChunks_data()
    {
        QTest::addColumn<Bytes>("chunks");
        QTest::addColumn<Bytes>("frames");
        QTest::addColumn<int>("pending");

        QTest::newRow("two frames in one chunk") << Bytes {"a\fb\f"} << Bytes {"a", "b"} << 0;
        QTest::newRow("frame split over three chunks") << Bytes {"ab", "cd", "e\f"} << Bytes {"abcde"} << 0;
        QTest::newRow("empty frames kept") << Bytes {"\f\f"} << Bytes {"", ""} << 0;
        QTest::newRow("tail waits for its delimiter") << Bytes {"a\fbc"} << Bytes {"a"} << 2;
        QTest::newRow("multi-byte character split") << Bytes {"\xc3", "\xa9\f"} << Bytes {"\xc3\xa9"} << 0;
    }

    void framesAcrossChunks()
    {
        QFETCH(Bytes, chunks);
        QFETCH(Bytes, frames);
        QFETCH(int, pending);

        FrameReader reader;
        Bytes got;
        for (const QByteArray &chunk : qAsConst(chunks))
            got += reader.feed(chunk);
        QCOMPARE(got, frames);
        QCOMPARE(reader.pendingBytes(), pending);
        QCOMPARE(FrameReader::frame("x"), QByteArray("x\x0c"));
    }

    void overflowDropsPendingBytes()
    {
        FrameReader reader;
        bool overflowed = false;
        const QByteArray big(FrameReader::kMaxPending / 2 + 1, 'a');
        QVERIFY(reader.feed(big, &overflowed).isEmpty());
        QVERIFY(!overflowed);
        QVERIFY(reader.feed(big, &overflowed).isEmpty());
        QVERIFY(overflowed);
        QCOMPARE(reader.pendingBytes(), 0);
        // The stream goes on with the next frame.
        QCOMPARE(reader.feed("ok\x0c"), QList<QByteArray> {"ok"});
    }

    void commandLines_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QStringList>("args");

        QTest::newRow("blank") << u"  "_s << true << QString() << QStringList();
        QTest::newRow("comment") << u"# pause"_s << true << QString() << QStringList();
        QTest::newRow("extra spaces") << u"  burst   10   syncErrors "_s << true << u"burst"_s
                                      << QStringList {u"10"_s, u"syncErrors"_s};
        QTest::newRow("quoted argument") << u"download \"/My Files/a b.txt\" 100"_s << true << u"download"_s
                                         << QStringList {u"/My Files/a b.txt"_s, u"100"_s};
        QTest::newRow("empty quotes") << u"burst \"\""_s << true << u"burst"_s << QStringList {QString()};
        QTest::newRow("unterminated quote") << u"download \"/a"_s << false << u"download"_s << QStringList();
        QTest::newRow("path takes the rest")
            << u"root ~/Kelo Drive"_s << true << u"root"_s << QStringList {u"~/Kelo Drive"_s};
        QTest::newRow("notify keeps JSON whole")
            << u"notify syncErrors {\"isPaused\": true, \"isOnline\": false}"_s << true << u"notify"_s
            << QStringList {u"syncErrors"_s, u"{\"isPaused\": true, \"isOnline\": false}"_s};
    }

    void commandLines()
    {
        QFETCH(QString, line);
        QFETCH(bool, ok);
        QFETCH(QString, word);
        QFETCH(QStringList, args);

        const CommandLine cmd = CommandLine::parse(line);
        QCOMPARE(cmd.ok, ok);
        QCOMPARE(cmd.error.isEmpty(), ok);
        QCOMPARE(cmd.word, word);
        QCOMPARE(cmd.args, args);
    }

    void cloudPaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("normalized");

        QTest::newRow("root") << u"/"_s << true << u"/"_s;
        QTest::newRow("dots inside") << u"/a/./b/../c"_s << true << u"/a/c"_s;
        QTest::newRow("relative") << u"a/b"_s << false << QString();
        QTest::newRow("leaves the root") << u"/../etc/passwd"_s << false << QString();
        QTest::newRow("dots in a name") << u"/a..b/..c"_s << true << u"/a..b/..c"_s;
    }

    void cloudPaths()
    {
        QFETCH(QString, path);
        QFETCH(bool, ok);
        QFETCH(QString, normalized);

        bool valid = !ok;
        const QString result = SyncEngine::normalizeCloudPath(path, &valid);
        QCOMPARE(valid, ok);
        if (ok)
            QCOMPARE(result, normalized);
    }

    void portFileRoundTrip()
    {
        const QString path = m_dir->path() + u"/deep/App Data/ipc"_s;
        QVERIFY(portfile::write(path, 4242));
        QCOMPARE(readFile(path), QByteArray("4242\n"));
        QCOMPARE(portfile::read(path), quint16(4242));
        // No temporary file is left beside it.
        QCOMPARE(QDir(m_dir->path() + u"/deep/App Data"_s).entryList(QDir::Files), QStringList {u"ipc"_s});
        QVERIFY(portfile::removeIfOurs(path, 4242));
        QVERIFY(portfile::removeIfOurs(path, 4242));   // already gone is fine
        QCOMPARE(portfile::read(path), quint16(0));

        // A second instance took the file over: stopping the first leaves it alone.
        Simulator other;
        other.setPortFilePath(m_sim->portFilePath());
        QVERIFY(other.start());
        m_sim->stop();
        QCOMPARE(readFile(m_sim->portFilePath()), QByteArray::number(other.port()) + '\n');
    }

    // Started through a link (the client's install path) and ended by a signal; the other tests
    // here and the plug-in's end-to-end tests end it with "quit".
    void servesAndCleansUp()
    {
        SimProcess p;
        const QString link = p.home.path() + u"/opt/apps/com.kelo.drive/files/kelodrive"_s;
        QVERIFY(QDir().mkpath(QFileInfo(link).absolutePath()));
        QVERIFY(QFile::link(QString::fromUtf8(KELODRIVE_SIM_EXE), link));
        const quint16 port = p.launch({u"--pace-ms"_s, u"10"_s}, link);
        QVERIFY(port != 0);

        RawClient client;
        QVERIFY(client.connectTo(port));
        const QJsonObject result = client.call(u"getSyncInfo"_s).toObject();
        QCOMPARE(result.value(u"syncRoot").toString(), p.home.path() + u"/Kelo Drive"_s);
        QVERIFY(result.value(u"syncInited").toBool());
        QVERIFY(QFileInfo(p.home.path() + u"/Kelo Drive"_s).isDir());

        // It asked for the plug-in's version; answer as the plug-in does and see it logged.
        QTRY_VERIFY(!client.envelopes.isEmpty());
        const QJsonObject question = client.envelopes.first().value(u"data").toObject();
        QCOMPARE(question.value(u"method").toString(), u"getPluginInfo"_s);
        client.reply(question, {{u"version"_s, u"1.0.7"_s}});
        QTRY_VERIFY(p.err.contains("runs plug-in version 1.0.7"));

        ::kill(pid_t(p.process.processId()), SIGTERM);
        QVERIFY(p.endedCleanly());
        QVERIFY(client.waitForDisconnected());
    }

    void scriptDrivesTheSimulator()
    {
        SimProcess p;
        const QString script = p.home.path() + u"/faults.txt"_s;
        QVERIFY(writeFile(script,
            "# waits for the plug-in, then shows a few states\n"
            "wait-peer\n"
            "offline\n"
            "sleep 20\n"
            "notify syncRoot \"/from/script\"\n"
            "enterprise\n"
            "quit\n"));
        const quint16 port = p.launch({u"--script"_s, script, u"--no-plugin-info"_s});
        QVERIFY(port != 0);
        // Nothing happens before a peer connects.
        QCOMPARE(p.process.state(), QProcess::Running);
        RawClient client;
        QVERIFY(client.connectTo(port));
        QCOMPARE(client.waitForNotification(u"syncErrors"_s).toObject().value(u"isOnline").toBool(true), false);
        QCOMPARE(client.waitForNotification(u"syncRoot"_s).toString(), u"/from/script"_s);
        QVERIFY(p.endedCleanly());
    }

    void reportsBadCommands()
    {
        SimProcess p;
        QVERIFY(p.launch() != 0);
        p.process.write("explode\npace soon\nstatus\n");
        QTRY_VERIFY(p.out.contains("status {"));
        QTRY_VERIFY(p.err.contains("stdin:2: wrong arguments for \"pace\""));
        QVERIFY(p.err.contains("stdin:1: unknown command \"explode\""));
        QCOMPARE(p.process.state(), QProcess::Running);
        p.process.closeWriteChannel();   // end of input is not a reason to stop
        p.process.terminate();
        QVERIFY(p.endedCleanly());
    }

    void refusesBadOptions_data()
    {
        QTest::addColumn<QStringList>("args");

        QTest::newRow("port too large") << QStringList {u"--port"_s, u"70000"_s};
        QTest::newRow("missing script") << QStringList {u"--script"_s, u"/nonexistent/script"_s};
        QTest::newRow("unknown option") << QStringList {u"--frobnicate"_s};
    }

    void refusesBadOptions()
    {
        SimProcess p;
        QFETCH(QStringList, args);
        p.process.start(QString::fromUtf8(KELODRIVE_SIM_EXE), args);
        QVERIFY(p.ended());
        QCOMPARE(p.process.exitStatus(), QProcess::NormalExit);
        QVERIFY(p.process.exitCode() != 0);
        QVERIFY(!QFile::exists(p.portFile()));
    }

private:
    QString local(const QString &cloudPath) const { return m_root + cloudPath; }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<Simulator> m_sim;
    std::unique_ptr<RawClient> m_client;
};

QTEST_GUILESS_MAIN(SimulatorTest)
#include "tst_simulator.moc"
