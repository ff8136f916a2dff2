// SPDX-License-Identifier: GPL-3.0-or-later
#include "ipc/tcpclient.h"

#include "localpeer.h"
#include "messagelog.h"

#include <QEventLoop>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cstdio>

using hfmplugin_nubix::TcpClient;

namespace {
const QString kRawRead = QStringLiteral("TcpClient: Received raw data:");

bool connectTo(TcpClient &client, LocalPeer &peer)
{
    QSignalSpy connected(&client, &TcpClient::connected);
    client.connectToServer(QStringLiteral("127.0.0.1"), peer.port());
    return peer.waitForClient() && (connected.count() == 1 || connected.wait());
}
}   // namespace

class TestTcpClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The cutting itself, for every way text can arrive, is FrameSplitter's test.
    void receivesMessagesInTheGuiThread()
    {
        MessageLog log;
        LocalPeer peer;
        TcpClient client;
        QStringList got;
        connect(
            &client, &TcpClient::messageReceived, this,
            [&got](const QString &message) {
                got.append(
                    QThread::currentThread() == qApp->thread() ? message : QStringLiteral("elsewhere: ") + message);
            },
            Qt::DirectConnection);
        QVERIFY(connectTo(client, peer));

        // Each write is waited for until the client has read it, so that every
        // write is a read of its own: messages, then a character split between reads.
        const QList<QByteArray> writes {"{\"a\":1}\f{\"b\":2}\f{\"path\":\"/\xe4\xb8", "\xad\"}\f"};
        for (int i = 0; i < writes.size(); ++i) {
            peer.write(writes.at(i));
            QTRY_VERIFY(log.count(QtDebugMsg, kRawRead) >= i + 1);
        }
        // Give stray signals a chance to show up before counting them.
        peer.send("end");
        QTRY_VERIFY(got.contains(QStringLiteral("end")));
        QCOMPARE(got,
            (QStringList {QStringLiteral("{\"a\":1}"), QStringLiteral("{\"b\":2}"),
                QStringLiteral("{\"path\":\"/\u4e2d\"}"), QStringLiteral("end")}));
        QVERIFY(log.problems().isEmpty());
    }

    void sendsFramedUtf8InOrder()
    {
        LocalPeer peer;
        TcpClient client;
        QVERIFY(connectTo(client, peer));
        for (const QString &message : {QString(), QStringLiteral("\u00e9\u20ac"), QStringLiteral("22")})
            client.sendMessage(message);
        const QByteArray bytes("\f\xc3\xa9\xe2\x82\xac\f22\f");
        QCOMPARE(peer.received(bytes.size()), bytes);
        // Nothing more follows.
        client.sendMessage(QStringLiteral("z"));
        QCOMPARE(peer.received(bytes.size() + 2), bytes + "z\f");
    }

    // Half a message from a dead connection must not spoil the first one of the next.
    void newConnectionStartsEmpty()
    {
        MessageLog log;
        LocalPeer peer;
        TcpClient client;
        QSignalSpy received(&client, &TcpClient::messageReceived);
        QSignalSpy disconnected(&client, &TcpClient::disconnected);
        QVERIFY(connectTo(client, peer));

        peer.write("{\"type\":\"pong\",\"da");
        QTRY_COMPARE(log.count(QtDebugMsg, kRawRead), 1);
        peer.disconnectClient();
        QTRY_COMPARE(disconnected.count(), 1);
        peer.forgetClient();

        QVERIFY(connectTo(client, peer));
        peer.send("{\"first\":1}");
        QTRY_COMPARE(received.count(), 1);
        QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("{\"first\":1}"));
    }

    void connectingAgain_data()
    {
        QTest::addColumn<bool>("waitForFirst");
        QTest::addColumn<bool>("samePort");

        QTest::newRow("same place while connecting: one connection") << false << true;
        QTest::newRow("same place while connected: one connection") << true << true;
        QTest::newRow("another port while connecting: moves there") << false << false;
        QTest::newRow("another port while connected: moves there") << true << false;
    }

    void connectingAgain()
    {
        QFETCH(bool, waitForFirst);
        QFETCH(bool, samePort);

        MessageLog log;
        LocalPeer first;
        LocalPeer second;
        TcpClient client;
        QSignalSpy connected(&client, &TcpClient::connected);
        QSignalSpy errors(&client, &TcpClient::errorOccured);
        QSignalSpy messages(&client, &TcpClient::messageReceived);

        client.connectToServer(QStringLiteral("127.0.0.1"), first.port());
        if (waitForFirst)
            QVERIFY(connected.wait());
        LocalPeer &target = samePort ? first : second;
        client.connectToServer(QStringLiteral("127.0.0.1"), target.port());

        QVERIFY(target.waitForClient());
        target.send("{\"a\":1}");
        QTRY_COMPARE(messages.count(), 1);
        // The first peer never gets a second client when the place is the same.
        if (samePort)
            QVERIFY(!first.server.hasPendingConnections());
        QVERIFY(errors.isEmpty());
        QVERIFY2(log.problems().isEmpty(), qPrintable(log.problems().join(QLatin1Char('\n'))));
    }

    void burstsLeaveTurnsToTheEventLoop_data()
    {
        QTest::addColumn<QByteArray>("burst");
        QTest::addColumn<bool>("disconnectAfter");

        QByteArray many;
        for (int i = 0; i < 40000; ++i)
            many += "{\"n\":" + QByteArray::number(i) + "}\f";
        const QByteArray longMessage = "{\"long\":\"" + QByteArray(200 * 1024, 'x') + "\"}\f";
        QTest::newRow("thousands of short messages") << many << false;
        QTest::newRow("a long message behind a short one") << "{\"n\":0}\f" + longMessage + "{\"n\":2}\f" << false;
        // What was read before the connection dropped is all handed on first.
        QTest::newRow("disconnected right after a burst") << many << true;
    }

    void burstsLeaveTurnsToTheEventLoop()
    {
        QFETCH(QByteArray, burst);
        QFETCH(bool, disconnectAfter);

        MessageLog log;
        TcpClient client;
        QStringList got;
        int gotWhenLoopRan = -1;
        int gotAtDisconnect = -1;
        // Owns the callbacks below, so that a timer still queued when a row ends
        // dies with the locals it writes to.
        QObject scope;
        connect(&client, &TcpClient::messageReceived, &scope, [&](const QString &message) {
            if (got.isEmpty())
                QTimer::singleShot(0, &scope, [&] { gotWhenLoopRan = got.size(); });
            got.append(message);
        });
        connect(&client, &TcpClient::disconnected, &scope, [&] { gotAtDisconnect = got.size(); });
        const int expected = burst.count('\f');

        // All of it as one read, the way a fast sender fills the socket.
        QStringList messages = QString::fromLatin1(burst).split(QLatin1Char('\f'));
        messages.removeLast();
        QVERIFY(QMetaObject::invokeMethod(&client, "onMessages", Q_ARG(QStringList, messages)));
        if (disconnectAfter)
            QVERIFY(QMetaObject::invokeMethod(&client, "onDisconnected"));
        QTRY_COMPARE_WITH_TIMEOUT(got.size(), expected, 30000);

        // The event loop ran before the last message was handed on (unless the
        // connection dropped first), and nothing was lost or reordered on the way.
        if (disconnectAfter) {
            QCOMPARE(gotAtDisconnect, expected);
        } else {
            QTRY_VERIFY(gotWhenLoopRan >= 0);
            QVERIFY2(gotWhenLoopRan > 0 && gotWhenLoopRan < expected, qPrintable(QString::number(gotWhenLoopRan)));
        }
        for (int i = 0; i < got.size(); ++i)
            QVERIFY2(got.at(i) == QStringLiteral("{\"n\":%1}").arg(i) || got.at(i).startsWith(QLatin1String("{\"long")),
                qPrintable(got.at(i).left(40)));
    }

    void destroysWhileConnected()
    {
        LocalPeer peer;
        {
            TcpClient client;
            QVERIFY(connectTo(client, peer));
            client.sendMessage(QStringLiteral("bye"));
            peer.send("late");
        }
        // The worker closed the socket on its way out.
        QTRY_COMPARE(peer.socket->state(), QAbstractSocket::UnconnectedState);
    }

    // The plug-in's client is a static that goes after the application object at
    // exit; its socket must go with it all the same. A child process plays that
    // exit and then waits for its input to close, so that only our code can have
    // closed the connection, not the end of the process.
    void closesAfterTheApplicationIsGone()
    {
        LocalPeer peer;
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NUBIX_TEST_OUTLIVE_PORT"), QString::number(peer.port()));
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(child.waitForStarted());
        QVERIFY(peer.waitForClient());
        QTRY_COMPARE_WITH_TIMEOUT(peer.socket->state(), QAbstractSocket::UnconnectedState, 10000);
        child.closeWriteChannel();
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitCode(), 0);
    }

    // A peer that stops reading gets one warning, however many messages wait and
    // wherever they wait (here or in the kernel), and a line once it has read them.
    void warnsWhileThePeerTakesNothing()
    {
        const QString stalled = QStringLiteral("TcpClient: The client takes no data:");
        const QString again = QStringLiteral("TcpClient: The client takes data again");
        MessageLog log;
        LocalPeer peer;
        TcpClient client;
        client.setSendWarningMs(100);
        QVERIFY(connectTo(client, peer));
        peer.socket->setReadBufferSize(1);

        const QString message(64 * 1024, QLatin1Char('x'));
        for (int i = 0; i < 16; ++i)
            client.sendMessage(message);
        QTRY_COMPARE(log.count(QtWarningMsg, stalled), 1);
        client.sendMessage(message);
        QTest::qWait(300);
        QCOMPARE(log.count(QtWarningMsg, stalled), 1);

        peer.socket->setReadBufferSize(0);
        const int total = 17 * (message.size() + 1);
        QTRY_COMPARE_WITH_TIMEOUT(peer.received(total).size(), total, 20000);
        QTRY_COMPARE(log.count(QtInfoMsg, again), 1);
        QCOMPARE(log.problems().size(), 1);
    }
};

namespace {
int runClientOutlivingApplication(int argc, char **argv, quint16 port)
{
    auto *app = new QCoreApplication(argc, argv);
    auto *client = new TcpClient;
    QEventLoop loop;
    QObject::connect(client, &TcpClient::connected, &loop, &QEventLoop::quit);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    client->connectToServer(QStringLiteral("127.0.0.1"), port);
    loop.exec();
    delete app;
    delete client;
    char byte;
    while (std::fread(&byte, 1, 1, stdin) == 1) { }
    return 0;
}
}   // namespace

int main(int argc, char **argv)
{
    const quint16 port = quint16(qEnvironmentVariableIntValue("NUBIX_TEST_OUTLIVE_PORT"));
    if (port != 0)
        return runClientOutlivingApplication(argc, argv, port);
    QCoreApplication app(argc, argv);
    TestTcpClient test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_tcpclient.moc"
