// SPDX-License-Identifier: GPL-3.0-or-later
// Faults injected into whole runs of the file manager (driven by automation) against the
// client simulator or a misbehaving peer, under a temporary home. For every fault: the file
// manager keeps answering within a second, the user is told, the user's next action recovers
// once the fault is over, and no file changes.
#include "e2eprocess.h"

#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace e2e;

namespace {

constexpr int kAnswerMs = 1000;   // the longest the file manager may take to answer
constexpr int kStartMs = 30000;   // start-up, with a sanitizer build on a busy machine

const QString kEnter = u"cd last nubix:///"_s;
const QString kEnterSub = u"cd last nubix:///sub"_s;
const QString kConnectedLine = u"runs plug-in version"_s;
const QString kDisconnectedLine = u"NubixMessageHandler: Disconnected from server"_s;
const QString kNoAnswerLine = u"NubixMessageHandler: No answer from the client for"_s;
const QString kNotReadLine = u"TcpClient: The client takes no data:"_s;
const QString kCacheNotWrittenLine = u"NubixCaches: Cannot write the cache file"_s;

// A notification whose one string a peer makes huge (out of the class body: moc counts braces).
const QByteArray kHugeHead = R"({"type":"ping","data":{"method":"notify","from":"server","to":"client",)"
                             R"("key":"{00000000-0000-0000-0000-000000000000","version":1,)"
                             R"("data":{"type":"banDirs","args":[")";
const QByteArray kHugeTail = R"("]}}})"
                             "\x0c";

// Every folder (0555) and file (0444) under `root`, and `root` itself, read-only for everyone; or
// writable again by the owner.
bool setTreeWritable(const QString &root, bool writable)
{
    return QProcess::execute(u"chmod"_s, {u"-R"_s, writable ? u"u+w"_s : u"a=rX"_s, root}) == 0;
}

// Whether the simulator reports files queued or in transfer.
bool transfersPending(Sim &sim)
{
    const int from = sim.out.size();
    sim.send(u"status"_s);
    const int line = sim.waitOut(u"status {"_s, 5000, from);
    if (line < 0)
        return false;
    const QJsonValue quantity
        = QJsonDocument::fromJson(sim.out.at(line).mid(7).toUtf8())[u"syncInfo"_s][u"syncQuantity"_s];
    return quantity[u"todo"_s].toInt() + quantity[u"doing"_s].toInt() > 0;
}

}   // namespace

class FaultInjectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        hostWrapper.clear();
        mounted.clear();
        homeReadOnly = false;
        tmp.reset(new QTemporaryDir);
        QVERIFY(tmp->isValid());
        root = path(u"Kelo Drive"_s);
        QDir().mkpath(root + u"/sub"_s);
        QDir().mkpath(home() + u"/.config/kelodrive/App Data"_s);
        QDir().mkpath(home() + u"/.local/share"_s);
        for (const QString &name : {u"a.txt"_s, u"sub/b.bin"_s, u"报告 ü.txt"_s})
            QVERIFY(writeFile(root + QLatin1Char('/') + name, name.toUtf8().repeated(100)));
        files = snapshot(tmp->path());
        searchPath = e2e::searchPath();
        host.reset(new Host);
    }

    void cleanup()
    {
        if (host && QTest::currentTestFailed())
            qInfo().noquote() << "file manager's log:\n" << host->err.join(QLatin1Char('\n')).right(4000);
        host.reset();
        if (!mounted.isEmpty())
            ::umount2(QFile::encodeName(mounted).constData(), MNT_DETACH);
        if (homeReadOnly)
            setTreeWritable(home(), true);
        if (tmp) {
            // Whatever the fault, the files the user had are all still there, unchanged.
            QDir(home()).removeRecursively();
            const QMap<QString, QByteArray> after = snapshot(tmp->path());
            for (auto it = files.cbegin(); it != files.cend(); ++it)
                if (!it.key().startsWith(u"home"_s))
                    QCOMPARE(after.value(it.key(), "<missing>"), it.value());
        }
    }

    void clientKilledMidSyncRestartsElsewhere()
    {
        Sim first;
        startSim(first);
        startHost();
        QVERIFY(first.waitErr(kConnectedLine, 15000) >= 0);
        // New files keep the client busy, so the kill comes in the middle of syncing.
        for (int i = 0; i < 10; ++i)
            QVERIFY(writeFile(root + u"/new-%1.txt"_s.arg(i), "fresh"));
        files = snapshot(tmp->path());
        QVERIFY2(QTest::qWaitFor([&] { return transfersPending(first); }, 15000), "the client never started syncing");
        const quint16 oldPort = first.port();
        ::kill(first.process.processId(), SIGKILL);
        QVERIFY(first.process.waitForFinished(5000));

        QVERIFY(host->waitErr(kDisconnectedLine, 5000) >= 0);
        // The window that shows the tree says so in its banner.
        QTRY_VERIFY_WITH_TIMEOUT(host->state(u"windows/-1/tabs/[current=true]/top/text"_s)
                                     .toString()
                                     .contains(u"File synchronization has been suspended"_s),
            10000);
        expectResponsive(1500, "after the client died");

        Sim second;
        startSim(second);
        QVERIFY(second.port() != oldPort);
        expectRecoveryThrough(second);
        expectResponsive(500, "after recovery");
    }

    // A peer that takes the connection and then misbehaves in one way.
    void misbehavingPeer_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<qint64>("bytes");
        // The longest the file manager may take to answer while the fault lasts:
        // a whole message is parsed on the GUI thread, so a huge one holds it.
        QTest::addColumn<int>("limitMs");
        // What the log tells the user while the fault lasts, if anything.
        QTest::addColumn<QString>("told");
        QTest::newRow("accepts and never answers") << "silent" << qint64(0) << kAnswerMs << kNoAnswerLine;
        QTest::newRow("stops reading while the plug-in sends") << "no-read" << qint64(0) << kAnswerMs << kNotReadLine;
        QTest::newRow("one 50 MB message") << "message" << qint64(50) * 1024 * 1024 << 20000 << QString();
        QTest::newRow("200 MB without a frame end") << "endless" << qint64(200) * 1024 * 1024 << kAnswerMs << QString();
    }

    void misbehavingPeer()
    {
        QFETCH(QString, behaviour);
        QFETCH(qint64, bytes);
        QFETCH(int, limitMs);
        QFETCH(QString, told);

        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QVERIFY(writeFile(portFile(), QByteArray::number(server.serverPort()) + '\n'));
        if (behaviour == QLatin1String("no-read")) {
            // The sync root known from an earlier session: every folder entered is asked for.
            QVERIFY(QDir().mkpath(QFileInfo(cacheFile()).absolutePath()));
            QVERIFY(writeFile(cacheFile(), "[General]\nInited=true\nSyncRoot=" + QFile::encodeName(root) + '\n'));
        }
        startHost();
        // The connection may already have been taken in while the file manager started.
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), 15000);
        std::unique_ptr<QTcpSocket> peer(server.nextPendingConnection());
        QVERIFY(peer);

        qint64 sent = 0;
        QByteArray chunk;
        if (behaviour == QLatin1String("no-read")) {
            // Read nothing, with the smallest buffers, while the user goes back and forth
            // between two folders: the requests pile up on the plug-in's side.
            peer->setReadBufferSize(1);
            peer->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 1024);
            for (int i = 0; i < 400; ++i)
                host->send(i % 2 ? kEnter : kEnterSub);
            // Entering them takes 3 to 4 s, as with a peer that reads; the fault is measured after.
            const int entered = host->ping(30000);
            qInfo("400 folders entered in %d ms", entered);
            QVERIFY(entered >= 0);
        } else if (bytes > 0) {
            chunk = QByteArray(1024 * 1024, 'x');
            peer->write(kHugeHead);
            // Feed the socket as it drains rather than queueing everything here.
            QObject::connect(peer.get(), &QTcpSocket::bytesWritten, peer.get(), [&, behaviour] {
                if (peer->bytesToWrite() > 4 * chunk.size() || sent >= bytes)
                    return;
                sent += chunk.size();
                peer->write(chunk);
                if (sent >= bytes && behaviour == QLatin1String("message"))
                    peer->write(kHugeTail);
            });
            sent += chunk.size();
            peer->write(chunk);
        }

        expectResponsive(2000, qPrintable(behaviour), limitMs);
        if (!told.isEmpty()) {
            // Told within seconds, while the file manager keeps answering.
            QVERIFY2(host->waitErr(told, 20000) >= 0, qPrintable(u"not told: "_s + told));
            expectResponsive(500, qPrintable(behaviour + u" told"_s));
            // Told once, however many requests wait; a silent peer is not taken for one not reading.
            QCOMPARE(host->countErr(told), 1);
            if (behaviour == QLatin1String("silent"))
                QCOMPARE(host->countErr(kNotReadLine), 0);
        }
        if (bytes > 0) {
            QTRY_VERIFY_WITH_TIMEOUT(sent >= bytes && peer->bytesToWrite() == 0, 120000);
            expectResponsive(1000, qPrintable(behaviour + u" sent"_s), limitMs);
            expectResponsive(500, qPrintable(behaviour + u" over"_s));
            qInfo("file manager's memory after %lld MB: peak %lld kB, now %lld kB", bytes >> 20,
                host->memoryKb("VmHWM:"), host->memoryKb("VmRSS:"));
        }

        // The fault ends: the peer goes away and the real client takes its place.
        peer->abort();
        server.close();
        QVERIFY(host->waitErr(kDisconnectedLine, 10000) >= 0);
        Sim sim;
        startSim(sim);
        expectRecoveryThrough(sim);
    }

    void malformedFramesInARow()
    {
        Sim sim;
        startSim(sim);
        startHost();
        QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
        const int from = host->err.size();
        sim.send(u"malformed 10000"_s);
        expectResponsive(2000, "during 10,000 malformed frames");
        QVERIFY(host->waitErr(u"NubixMessageHandler: "_s, 10000, from) >= 0);
        // The same connection still serves the user.
        expectStatusRequest(sim, sim.err.size());
        sim.send(u"notify-all"_s);
        expectResponsive(500, "after the malformed frames");
        QCOMPARE(host->countErr(kDisconnectedLine), 0);
    }

    void badPortFile_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("a folder") << "dir";
        QTest::newRow("a FIFO") << "fifo";
        QTest::newRow("a link to /dev/zero") << "zero";
        QTest::newRow("empty") << "empty";
        QTest::newRow("not a number") << "garbage";
    }

    void badPortFile()
    {
        QFETCH(QString, kind);
        const QByteArray file = QFile::encodeName(portFile());
        if (kind == QLatin1String("dir"))
            QVERIFY(QDir().mkpath(portFile()));
        else if (kind == QLatin1String("fifo"))
            QCOMPARE(::mkfifo(file.constData(), 0600), 0);
        else if (kind == QLatin1String("zero"))
            QVERIFY(QFile::link(u"/dev/zero"_s, portFile()));
        else
            QVERIFY(writeFile(portFile(), kind == QLatin1String("garbage") ? "\x01\xff port?\n" : ""));

        startHost();
        expectResponsive(1000, qPrintable(u"with a port file that is "_s + kind));
        QVERIFY(host->waitErr(u"port"_s, 5000) >= 0);
        host->send(kEnter);   // another attempt reads the file again
        expectResponsive(1000, qPrintable(u"after another attempt, port file "_s + kind));

        // The client writes a good file; the user's next step connects.
        if (kind == QLatin1String("dir"))
            QDir(portFile()).removeRecursively();
        else
            QVERIFY(QFile::remove(portFile()));
        Sim sim;
        startSim(sim);
        expectRecoveryThrough(sim);
    }

    void portFileRewrittenWhileRead()
    {
        // The file is read only while there is no connection: the client is up, its port file gone.
        Sim sim;
        startSim(sim);
        const QByteArray good = QByteArray::number(sim.port()) + '\n';
        QVERIFY(QFile::remove(portFile()));
        startHost();
        QVERIFY(host->waitErr(u"Failed to read valid port from config"_s, 10000) >= 0);
        // Rewritten in place (not renamed as the client does), fast, while the user enters the tree.
        QElapsedTimer timer;
        timer.start();
        for (int rewrites = 0; timer.elapsed() < 1500;) {
            QVERIFY(writeFile(portFile(), good.left(rewrites % (good.size() + 1))));
            if (++rewrites % 50 == 0) {
                host->send(kEnter);
                QTest::qWait(1);
            }
        }
        expectResponsive(500, "while the port file was rewritten");
        QVERIFY(writeFile(portFile(), good));
        // A whole line seen during the rewrites may already have connected.
        host->send(kEnter);
        QVERIFY2(sim.waitErr(kConnectedLine, 15000) >= 0, "no connection once the port file was whole");
        expectStatusRequest(sim, sim.err.size());
    }

    void badCacheFile_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("replaced");   // by a good summary; otherwise it cannot be written
        const QByteArray good = "[General]\nSyncRoot=/nowhere\n";
        QTest::newRow("corrupt") << "corrupt"
                                 << QByteArray("[General\n\x00\xff=\x01SyncRoot=/\n\n[[[\n", 27).repeated(100) << true;
        QTest::newRow("truncated") << "truncated"
                                   << QByteArray("[General]\nInited=true\nIsPublic=true\nQuota=10737\nSizeTotal=")
                                   << true;
        QTest::newRow("cannot be written") << "unwritable" << good << false;
        QTest::newRow("home read-only as a whole") << "read-only" << good << false;
        QTest::newRow("home full") << "full" << good << false;
    }

    void badCacheFile()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, content);
        QFETCH(bool, replaced);
        const QString dir = QFileInfo(cacheFile()).absolutePath();
        QVERIFY(QDir().mkpath(dir));
        if (kind == QLatin1String("full")) {
            // A small file system of its own where the cache file lives, filled up.
            if (::geteuid() != 0)
                QSKIP("a full home needs a file system of its own: mounting one takes root");
            if (::mount("tmpfs", QFile::encodeName(dir).constData(), "tmpfs", 0, "size=256k,mode=0755") != 0)
                QSKIP(qPrintable(u"cannot mount a small file system: "_s + qt_error_string(errno)));
            mounted = dir;
        }
        QVERIFY(writeFile(cacheFile(), content));
        if (kind == QLatin1String("unwritable")) {
            // A file where its folder should be: no one, root included, can write the cache.
            QVERIFY(QDir(dir).removeRecursively());
            QVERIFY(writeFile(dir, {}));
        } else if (kind == QLatin1String("full")) {
            QFile filler(dir + u"/filler"_s);
            QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            const QByteArray block(4096, 'f');
            while (filler.write(block) == block.size()) { }
        }
        const QByteArray cacheBefore = readFile(cacheFile());

        Sim sim;
        startSim(sim);
        if (kind == QLatin1String("read-only")) {
            // After the client wrote its port file. Root keeps its rights over mode bits at exec
            // unless they leave the bounding set.
            if (::geteuid() == 0) {
                const QString setpriv = QStandardPaths::findExecutable(u"setpriv"_s);
                if (setpriv.isEmpty())
                    QSKIP("running as root without setpriv, which would hold the file manager to the mode bits");
                hostWrapper = QStringList {setpriv, u"--bounding-set"_s, u"-dac_override,-dac_read_search,-fowner"_s};
            }
            homeReadOnly = true;
            QVERIFY(setTreeWritable(home(), false));
        }
        startHost();
        QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
        expectResponsive(1500, qPrintable(u"with a cache file "_s + kind));
        if (replaced) {
            QTRY_VERIFY_WITH_TIMEOUT(readFile(cacheFile()).contains(QFile::encodeName(root)), 10000);
            return;
        }
        // The log says the summary could not be kept; the plug-in goes on from memory.
        QVERIFY(host->waitErr(kCacheNotWrittenLine, 10000) >= 0);
        expectStatusRequest(sim, sim.err.size());
        expectResponsive(500, qPrintable(u"after entering, cache file "_s + kind));
        // What was there stays as it was: no half-written summary.
        QCOMPARE(readFile(cacheFile()), cacheBefore);
    }

    void syncRootWithAwkwardName()
    {
        root = path(u"My Drive 云盘 é"_s);
        const QString inner = u"子目录 x"_s;
        QVERIFY(QDir().mkpath(root + QLatin1Char('/') + inner));
        files = snapshot(tmp->path());
        Sim sim;
        QVERIFY(sim.start(env(), {u"--root"_s, root + QLatin1Char('/')}));
        startHost();
        QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
        const int from = sim.err.size();
        QUrl folder;
        folder.setScheme(u"nubix"_s);
        folder.setPath(QLatin1Char('/') + inner);
        host->send(u"cd last "_s + folder.toString(QUrl::FullyEncoded));
        // The simulator logs what it receives as indented JSON, one member a line.
        QVERIFY2(sim.waitErr(u"\"basedir\": \"/"_s + inner + QLatin1Char('"'), 15000, from) >= 0,
            "the folder was not asked for under its own name");
        expectResponsive(500, "in a sync root with an awkward name");
    }

    void syncRootGoesAway_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("deleted") << "deleted";
        QTest::newRow("renamed") << "renamed";
        QTest::newRow("replaced by a file") << "file";
    }

    void syncRootGoesAway()
    {
        QFETCH(QString, how);
        Sim sim;
        startSim(sim);
        startHost();
        QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
        host->send(kEnterSub);
        expectResponsive(500, "in a subfolder");

        const QString moved = path(u"moved away"_s);
        if (how == QLatin1String("deleted"))
            QVERIFY(QDir(root).removeRecursively());
        else
            QVERIFY(QDir().rename(root, moved));
        if (how == QLatin1String("file"))
            QVERIFY(writeFile(root, {}));
        // The user keeps working in the windows that showed it.
        host->send(kEnter);
        host->send(kEnterSub);
        expectResponsive(1500, qPrintable(u"with the sync root "_s + how));

        // The folder comes back; entering it works again.
        QFile::remove(root);
        if (how == QLatin1String("deleted"))
            QVERIFY(QDir().mkpath(root + u"/sub"_s));
        else
            QVERIFY(QDir().rename(moved, root));
        expectStatusRequest(sim, sim.err.size(), kEnterSub);
        if (how == QLatin1String("deleted"))
            files = snapshot(tmp->path());   // the user deleted those files on purpose
    }

    void toolMissingFromPath_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::addColumn<QString>("told");
        QTest::newRow("no pgrep") << "pgrep"
                                  << "Server process not running";
        QTest::newRow("no bash") << "bash"
                                 << "cannot run";
    }

    void toolMissingFromPath()
    {
        QFETCH(QString, missing);
        QFETCH(QString, told);
        // A search path with only what the file manager needs, less one tool.
        const QString bin = path(u"bin"_s);
        QVERIFY(QDir().mkpath(bin));
        for (const QString &tool : {u"bash"_s, u"sh"_s, u"grep"_s, u"awk"_s, u"pgrep"_s}) {
            const QString found = QStandardPaths::findExecutable(tool);
            if (tool != missing && !found.isEmpty())
                QVERIFY(QFile::link(found, bin + QLatin1Char('/') + tool));
        }
        QVERIFY(QFile::link(QStringLiteral(HDE_FM_BINARY), bin + u"/hde-file-manager"_s));
        searchPath = bin;
        files = snapshot(tmp->path());

        // A port nobody listens on: the refusal makes the plug-in look for the client.
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const quint16 port = closed.serverPort();
        closed.close();
        QVERIFY(writeFile(portFile(), QByteArray::number(port) + '\n'));
        startHost();
        QVERIFY(host->waitErr(told, 15000) >= 0);
        expectResponsive(1000, qPrintable(u"without "_s + missing));
    }

private:
    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString home() const { return path(u"home"_s); }
    QString portFile() const { return home() + u"/.config/kelodrive/App Data/ipc"_s; }
    QString cacheFile() const { return home() + u"/.config/sablo/hde-file-manager/hfm-nubix-config.ini"_s; }
    QProcessEnvironment env() const { return environment(home(), searchPath); }

    void startHost()
    {
        QVERIFY(host->start(env(), hostWrapper));
        host->send(u"open nubix:///"_s);
        QVERIFY2(host->ping(kStartMs) >= 0, "the file manager did not start");
    }

    void startSim(Sim &sim) { QVERIFY(sim.start(env(), {u"--root"_s, root, u"--pace-ms"_s, u"200"_s})); }

    // The simulator sees requests for the tree after this line of its log.
    void expectStatusRequest(Sim &sim, int from, const QString &action = kEnter)
    {
        host->send(action);
        QVERIFY2(sim.waitErr(u"getFileStatus"_s, 15000, from) >= 0, "the tree was not asked for");
    }

    // The user enters the tree; the simulator must see a new connection answer it.
    void expectRecoveryThrough(Sim &sim, const QString &action = kEnter)
    {
        const int from = sim.err.size();
        host->send(action);
        QVERIFY2(sim.waitErr(kConnectedLine, 15000, from) >= 0, "no new connection after the user's action");
        QVERIFY2(sim.waitErr(u"getFileStatus"_s, 15000, from) >= 0, "no status request after recovery");
    }

    void expectResponsive(int durationMs, const char *during, int limitMs = kAnswerMs)
    {
        const int worst = host->worstPing(durationMs);
        qInfo("longest answer %s: %d ms", during, worst);
        QVERIFY2(worst >= 0 && worst <= limitMs, qPrintable(u"longest answer %1 ms"_s.arg(worst)));
    }

    std::unique_ptr<QTemporaryDir> tmp;
    // Runs the file manager, when a row needs that (root held to the mode bits).
    QStringList hostWrapper;
    // Undone at the end of the row whatever its outcome.
    QString mounted;
    bool homeReadOnly = false;
    QString root;
    QString searchPath;
    QMap<QString, QByteArray> files;
    std::unique_ptr<Host> host;
};

QTEST_GUILESS_MAIN(FaultInjectionTest)
#include "tst_faultinjection.moc"
