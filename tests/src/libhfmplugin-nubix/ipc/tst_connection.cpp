// SPDX-License-Identifier: GPL-3.0-or-later
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"
#include "nubixglobal.h"

#include "messagelog.h"
#include "wire.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <algorithm>

#include <sys/stat.h>

using hfmplugin_nubix::NubixMessageHandler;
using hfmplugin_nubix::TcpClient;

namespace {

const QString kAttempt = QStringLiteral("NubixMessageHandler: Attempting to connect...");
const QString kNoValidPort = QStringLiteral("NubixMessageHandler: Failed to read valid port from config");
const QString kClientConnecting = QStringLiteral("TcpClient: Connecting to server");
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

// A process whose command line holds the client's path, as the real client's does.
class FakeClientProcess
{
public:
    FakeClientProcess()
    {
        process.start(QStringLiteral("bash"),
            {QStringLiteral("-c"), QStringLiteral("exec -a %1 sleep 30").arg(hfmplugin_nubix::nubixExecPath())});
        process.waitForStarted();
    }
    ~FakeClientProcess()
    {
        process.kill();
        process.waitForFinished();
    }
    QProcess process;
};

}   // namespace

class TestConnection : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void readsPortFile_data();
    void readsPortFile();
    void refusesSpecialPortFiles_data();
    void refusesSpecialPortFiles();
    void alreadyConnectedDoesNothing();
    void retriesRefusedConnectionWhileClientRuns();
    void stopsAfterRefusalWithoutClient();
    void closedConnectionIsNotRetried();
};

void TestConnection::init()
{
    QFile::remove(NubixMessageHandler::portFilePath());
}

void TestConnection::readsPortFile_data()
{
    QTest::addColumn<bool>("exists");
    // "%1" stands for the port of a listening peer.
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("connects");
    // "%1" stands for the port file's path.
    QTest::addColumn<QStringList>("criticals");

    const auto invalid = [](const char *line) {
        return QStringList {
            QStringLiteral("NubixMessageHandler: Invalid port number in config file: \"%1\"").arg(QLatin1String(line)),
            kNoValidPort};
    };
    QTest::newRow("plain port") << true << QByteArray("%1") << true << QStringList();
    QTest::newRow("spaces around the port") << true << QByteArray("  \t%1  \n") << true << QStringList();
    QTest::newRow("only the first line counts")
        << true << QByteArray("%1\n1\nsomething else\n") << true << QStringList();
    QTest::newRow("not a number") << true << QByteArray("port=8080\n") << false << invalid("port=8080");
    QTest::newRow("above 65535") << true << QByteArray("65536\n") << false << invalid("65536");
    QTest::newRow("empty file") << true << QByteArray() << false << invalid("");
    QTest::newRow("empty first line") << true << QByteArray("\n%1\n") << false << invalid("");
    QTest::newRow("letters after the digits") << true << QByteArray("8080abc\n") << false << invalid("8080abc");
    QTest::newRow("zero") << true << QByteArray("0\n") << false << QStringList {kNoValidPort};
    QTest::newRow("missing") << false << QByteArray() << false
                             << QStringList {QStringLiteral("NubixMessageHandler: Cannot open config file: \"%1\""),
                                    kNoValidPort};
}

void TestConnection::readsPortFile()
{
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(bool, connects);
    QFETCH(QStringList, criticals);

    LocalPeer peer;
    if (exists)
        QVERIFY(writePortFile(QString::fromLatin1(content).arg(peer.port()).toLatin1()));
    for (QString &line : criticals)
        line = line.arg(NubixMessageHandler::portFilePath());

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

    const bool asked
        = std::any_of(infos.cbegin(), infos.cend(), [](const QString &l) { return l.startsWith(kClientConnecting); });
    QCOMPARE(asked, connects);
    if (!connects)
        return;
    QVERIFY(
        infos.contains(QStringLiteral("NubixMessageHandler: Connecting to server on localhost: %1").arg(peer.port())));
    QVERIFY(infos.contains(QStringLiteral("TcpClient: Connecting to server \"localhost\" %1").arg(peer.port())));
    QVERIFY(peer.waitForClient());
    QTRY_COMPARE(connected.count(), 1);
    QVERIFY(handler.isConnected());
}

// Only a regular file is read, and never more than its first bytes: a FIFO
// would block start-up, a device would be read for ever.
void TestConnection::refusesSpecialPortFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("fifo") << QStringLiteral("fifo");
    QTest::newRow("symbolic link to /dev/zero") << QStringLiteral("zero");
    QTest::newRow("directory") << QStringLiteral("directory");
}

void TestConnection::refusesSpecialPortFiles()
{
    QFETCH(QString, kind);
    const QString path = NubixMessageHandler::portFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (kind == QLatin1String("fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else if (kind == QLatin1String("zero"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
    else
        QVERIFY(QDir().mkpath(path));

    NubixMessageHandler handler;
    MessageLog log;
    handler.tryConnect();
    QCOMPARE(log.lines(QtCriticalMsg),
        (QStringList {QStringLiteral("NubixMessageHandler: Cannot open config file: \"%1\"").arg(path), kNoValidPort}));
    QVERIFY(!log.lines(QtInfoMsg).contains(kClientConnecting));

    if (kind == QLatin1String("directory"))
        QDir(path).removeRecursively();
    else
        QFile::remove(path);
}

void TestConnection::alreadyConnectedDoesNothing()
{
    LocalPeer peer;
    QVERIFY(writePortFile(QByteArray::number(peer.port())));
    NubixMessageHandler handler;
    handler.tryConnect();
    QVERIFY(peer.waitForClient());
    QTRY_VERIFY(handler.isConnected());

    MessageLog log;
    handler.tryConnect();
    QCOMPARE(log.lines(QtInfoMsg), QStringList {QStringLiteral("NubixMessageHandler: Already connected.")});
    QVERIFY(log.problems().isEmpty());
    QVERIFY(!peer.server.hasPendingConnections());
}

void TestConnection::retriesRefusedConnectionWhileClientRuns()
{
    const quint16 port = closedPort();
    QVERIFY(port != 0);
    QVERIFY(writePortFile(QByteArray::number(port) + '\n'));
    FakeClientProcess client;

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

void TestConnection::stopsAfterRefusalWithoutClient()
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
    QCOMPARE(log.lines(QtInfoMsg).count(kStillRunning), 0);
    QVERIFY(log.lines(QtDebugMsg)
                .contains(QStringLiteral("NubixMessageHandler: Process \"%1\" is not running")
                              .arg(hfmplugin_nubix::nubixExecPath())));
    QCOMPARE(log.lines(QtInfoMsg).count(kAttempt), 1);
}

void TestConnection::closedConnectionIsNotRetried()
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
    for (const QString &line : log.lines(QtDebugMsg))
        QVERIFY2(!line.startsWith(QLatin1String("NubixMessageHandler: Process")), qPrintable(line));
    QCOMPARE(log.lines(QtInfoMsg).count(kStillRunning) + log.lines(QtInfoMsg).count(kNotRunning), 0);

    // The next caller's attempt reconnects.
    handler.tryConnect();
    QTRY_VERIFY(peer.server.hasPendingConnections());
}

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_connection.moc"
