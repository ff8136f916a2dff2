// SPDX-License-Identifier: GPL-3.0-or-later
// The kelodrive-sim program as the plug-in and the demo meet it: started in a home of its
// own, directly or through a link, driven by standard input or a script.
#include "rawclient.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

class SimulatorProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void servesAndCleansUp_data();
    void servesAndCleansUp();
    void restartRewritesPortFile();
    void scriptDrivesTheSimulator();
    void reportsBadCommands();
    void refusesBadOptions_data();
    void refusesBadOptions();

private:
    QString portFile() const { return m_home->path() + u"/.config/kelodrive/App Data/ipc"_s; }
    quint16 portInFile() const { return quint16(readFile(portFile()).trimmed().toUInt()); }
    // Starts the program (or a link to it) and waits for its port file.
    quint16 launch(const QStringList &args = {}, const QString &program = QString::fromUtf8(KELODRIVE_SIM_EXE));
    // Whether the program has ended by now or does within the time (it may end during
    // an earlier wait, which waitForFinished alone would count as a failure).
    bool waitForExit(int timeoutMs = 10000);

    QByteArray m_out;
    QByteArray m_err;

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_process;
};

void SimulatorProcessTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(m_home->isValid());
    m_process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"HOME"_s, m_home->path());
    m_process->setProcessEnvironment(env);
    m_process->setWorkingDirectory(m_home->path());
    m_out.clear();
    m_err.clear();
    connect(m_process.get(), &QProcess::readyReadStandardOutput, this,
        [this] { m_out += m_process->readAllStandardOutput(); });
    connect(m_process.get(), &QProcess::readyReadStandardError, this,
        [this] { m_err += m_process->readAllStandardError(); });
}

bool SimulatorProcessTest::waitForExit(int timeoutMs)
{
    return m_process->state() == QProcess::NotRunning || m_process->waitForFinished(timeoutMs);
}

void SimulatorProcessTest::cleanup()
{
    if (m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished();
    }
    if (QTest::currentTestFailed())
        qWarning().noquote() << "simulator output:" << m_err;
    m_process.reset();
    m_home.reset();
}

quint16 SimulatorProcessTest::launch(const QStringList &args, const QString &program)
{
    m_process->start(program, args);
    if (!m_process->waitForStarted())
        return 0;
    quint16 port = 0;
    const bool seen
        = QTest::qWaitFor([&] { return (port = portInFile()) != 0 || m_process->state() != QProcess::Running; }, 10000);
    return seen ? port : 0;
}

void SimulatorProcessTest::servesAndCleansUp_data()
{
    QTest::addColumn<bool>("throughLink");
    QTest::addColumn<bool>("bySignal");

    QTest::newRow("direct, quit on standard input") << false << false;
    QTest::newRow("through a link, terminated") << true << true;
}

void SimulatorProcessTest::servesAndCleansUp()
{
    QFETCH(bool, throughLink);
    QFETCH(bool, bySignal);

    QString program = QString::fromUtf8(KELODRIVE_SIM_EXE);
    if (throughLink) {
        // The same layout as the client's install path, under a temporary folder.
        const QString link = m_home->path() + u"/opt/apps/com.kelo.drive/files/kelodrive"_s;
        QVERIFY(QDir().mkpath(QFileInfo(link).absolutePath()));
        QVERIFY(QFile::link(program, link));
        program = link;
    }
    const quint16 port = launch({u"--pace-ms"_s, u"10"_s}, program);
    QVERIFY(port != 0);

    RawClient client;
    QVERIFY(client.connectTo(port));
    const QJsonObject result = client.call(u"getSyncInfo"_s).toObject();
    QCOMPARE(result.value(u"syncRoot").toString(), m_home->path() + u"/Kelo Drive"_s);
    QVERIFY(result.value(u"syncInited").toBool());
    QVERIFY(QFileInfo(m_home->path() + u"/Kelo Drive"_s).isDir());

    // It asked for the plug-in's version; answer as the plug-in does and see it logged.
    QTRY_VERIFY(!client.envelopes.isEmpty());
    const QJsonObject question = client.envelopes.first().value(u"data").toObject();
    QCOMPARE(question.value(u"method").toString(), u"getPluginInfo"_s);
    client.reply(question, {{u"version"_s, u"1.0.7"_s}});
    QTRY_VERIFY(m_err.contains("runs plug-in version 1.0.7"));

    if (bySignal)
        ::kill(pid_t(m_process->processId()), SIGTERM);
    else
        m_process->write("quit\n");
    QVERIFY(waitForExit());
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);
    QVERIFY(!QFile::exists(portFile()));
    QVERIFY(client.waitForDisconnected());
}

void SimulatorProcessTest::restartRewritesPortFile()
{
    const quint16 port = launch({u"--no-root"_s});
    QVERIFY(port != 0);
    RawClient client;
    QVERIFY(client.connectTo(port));
    m_process->write("restart\n");
    QVERIFY(client.waitForDisconnected());
    quint16 moved = 0;
    QTRY_VERIFY((moved = portInFile()) != 0 && moved != port);
    QCOMPARE(readFile(portFile()), QByteArray::number(moved) + '\n');
    RawClient again;
    QVERIFY(again.connectTo(moved));
    QCOMPARE(follow(again.call(u"getSyncInfo"_s), u"syncInited"_s).toBool(true), false);
    m_process->write("quit\n");
    QVERIFY(waitForExit());
    QVERIFY(!QFile::exists(portFile()));
}

void SimulatorProcessTest::scriptDrivesTheSimulator()
{
    const QString script = m_home->path() + u"/faults.txt"_s;
    QVERIFY(writeFile(script,
        "# waits for the plug-in, then shows a few states\n"
        "wait-peer\n"
        "offline\n"
        "sleep 20\n"
        "notify syncRoot \"/from/script\"\n"
        "enterprise\n"
        "quit\n"));
    const quint16 port = launch({u"--script"_s, script, u"--no-plugin-info"_s});
    QVERIFY(port != 0);
    // Nothing happens before a peer connects.
    QCOMPARE(m_process->state(), QProcess::Running);
    RawClient client;
    QVERIFY(client.connectTo(port));
    QCOMPARE(client.waitForNotification(u"syncErrors"_s).toObject().value(u"isOnline").toBool(true), false);
    QCOMPARE(client.waitForNotification(u"syncRoot"_s).toString(), u"/from/script"_s);
    QVERIFY(waitForExit());
    QCOMPARE(m_process->exitCode(), 0);
    QVERIFY(!QFile::exists(portFile()));
}

void SimulatorProcessTest::reportsBadCommands()
{
    QVERIFY(launch() != 0);
    m_process->write("explode\npace soon\nstatus\n");
    QTRY_VERIFY(m_out.contains("status {"));
    QTRY_VERIFY(m_err.contains("stdin:2: wrong arguments for \"pace\""));
    QVERIFY(m_err.contains("stdin:1: unknown command \"explode\""));
    QCOMPARE(m_process->state(), QProcess::Running);
    m_process->closeWriteChannel();   // end of input is not a reason to stop
    m_process->terminate();
    QVERIFY(waitForExit());
    QCOMPARE(m_process->exitCode(), 0);
}

void SimulatorProcessTest::refusesBadOptions_data()
{
    QTest::addColumn<QStringList>("args");

    QTest::newRow("port too large") << QStringList {u"--port"_s, u"70000"_s};
    QTest::newRow("missing script") << QStringList {u"--script"_s, u"/nonexistent/script"_s};
    QTest::newRow("unknown option") << QStringList {u"--frobnicate"_s};
}

void SimulatorProcessTest::refusesBadOptions()
{
    QFETCH(QStringList, args);
    m_process->start(QString::fromUtf8(KELODRIVE_SIM_EXE), args);
    QVERIFY(waitForExit());
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QVERIFY(m_process->exitCode() != 0);
    QVERIFY(!QFile::exists(portFile()));
}

QTEST_GUILESS_MAIN(SimulatorProcessTest)
#include "tst_simulatorprocess.moc"
