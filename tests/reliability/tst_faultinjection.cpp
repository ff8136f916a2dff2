// SPDX-License-Identifier: GPL-3.0-or-later
// Faults injected into whole runs: the file manager with the plug-in, driven
// by automation, against the client simulator or a misbehaving peer, each a
// real process under a temporary home. For every fault: the file manager keeps
// answering within a second, the user is told (a log line today), the next
// action of the user recovers once the fault is over, and no file changes.
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

const QString kEnter = QStringLiteral("cd last nubix:///");
const QString kConnectedLine = QStringLiteral("runs plug-in version");
const QString kDisconnectedLine = QStringLiteral("NubixMessageHandler: Disconnected from server");
const QString kNoAnswerLine = QStringLiteral("NubixMessageHandler: No answer from the client for");
const QString kNotReadLine = QStringLiteral("TcpClient: The client takes no data:");
const QString kCacheNotWrittenLine = QStringLiteral("NubixCaches: Cannot write the cache file");

// Every folder under `root`, and `root` itself, read-only (or writable again)
// for everyone, and every file in it too.
void setTreeWritable(const QString &root, bool writable)
{
    const auto folder = writable ? QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
                                 : QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadGroup
            | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther;
    const auto file = writable ? QFileDevice::ReadOwner | QFileDevice::WriteOwner : QFileDevice::ReadOwner;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        if (!it.fileInfo().isSymLink())
            QFile::setPermissions(it.filePath(), it.fileInfo().isDir() ? folder : file);
    }
    QFile::setPermissions(root, folder);
}

}   // namespace

class FaultInjectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void clientKilledMidSyncRestartsElsewhere();
    void misbehavingPeer_data();
    void misbehavingPeer();
    void malformedFramesInARow();
    void badPortFile_data();
    void badPortFile();
    void portFileRewrittenWhileRead();
    void badCacheFile_data();
    void badCacheFile();
    void syncRootWithAwkwardName();
    void syncRootGoesAway_data();
    void syncRootGoesAway();
    void toolMissingFromPath_data();
    void toolMissingFromPath();

private:
    QString path(const QString &relative) const { return QDir(tmp->path()).filePath(relative); }
    QString home() const { return path(QStringLiteral("home")); }
    QString portFile() const { return home() + QStringLiteral("/.config/kelodrive/App Data/ipc"); }
    QString cacheFile() const
    {
        return home() + QStringLiteral("/.config/sablo/hde-file-manager/hfm-nubix-config.ini");
    }
    QProcessEnvironment env() const { return environment(home(), searchPath); }
    void writePort(quint16 port);
    void startHost();
    void startSim(Sim &sim, const QStringList &extra = QStringList());
    // The user enters the tree; the simulator must see a new connection answer it.
    void expectRecoveryThrough(Sim &sim, const QString &action = kEnter);
    void expectResponsive(int durationMs, const char *during, int limitMs = kAnswerMs);

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

void FaultInjectionTest::init()
{
    hostWrapper.clear();
    mounted.clear();
    homeReadOnly = false;
    tmp.reset(new QTemporaryDir);
    QVERIFY(tmp->isValid());
    root = path(QStringLiteral("Kelo Drive"));
    QDir().mkpath(root + QStringLiteral("/sub"));
    QDir().mkpath(home() + QStringLiteral("/.config/kelodrive/App Data"));
    QDir().mkpath(home() + QStringLiteral("/.local/share"));
    const QStringList names {QStringLiteral("a.txt"), QStringLiteral("sub/b.bin"), QStringLiteral("报告 ü.txt")};
    for (const QString &name : names) {
        QFile file(root + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(name.toUtf8().repeated(100));
    }
    files = snapshot(tmp->path());
    searchPath
        = QFileInfo(QStringLiteral(HDE_FM_BINARY)).absolutePath() + QLatin1Char(':') + qEnvironmentVariable("PATH");
    host.reset(new Host);
}

void FaultInjectionTest::cleanup()
{
    if (host && host->running() && QTest::currentTestFailed())
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
            if (!it.key().startsWith(QStringLiteral("home")))
                QCOMPARE(after.value(it.key(), "<missing>"), it.value());
    }
}

void FaultInjectionTest::writePort(quint16 port)
{
    QFile::remove(portFile());
    QFile file(portFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::number(port) + '\n');
}

void FaultInjectionTest::startHost()
{
    QVERIFY(host->start(env(), QStringLiteral(HDE_FM_BINARY), hostWrapper));
    host->send(QStringLiteral("open nubix:///"));
    const int ms = host->ping(kStartMs);
    QVERIFY2(ms >= 0, "the file manager did not start");
}

void FaultInjectionTest::startSim(Sim &sim, const QStringList &extra)
{
    QVERIFY(sim.start(env(), QStringLiteral(KELODRIVE_SIM_EXE),
        QStringList {QStringLiteral("--root"), root, QStringLiteral("--pace-ms"), QStringLiteral("200")} + extra));
}

void FaultInjectionTest::expectRecoveryThrough(Sim &sim, const QString &action)
{
    const int from = sim.err.size();
    host->send(action);
    QVERIFY2(sim.waitErr(kConnectedLine, 15000, from) >= 0, "no new connection after the user's action");
    QVERIFY2(sim.waitErr(QStringLiteral("getFileStatus"), 15000, from) >= 0, "no status request after recovery");
}

void FaultInjectionTest::expectResponsive(int durationMs, const char *during, int limitMs)
{
    const int worst = host->worstPing(durationMs);
    qInfo("longest answer %s: %d ms", during, worst);
    QVERIFY2(worst >= 0 && worst <= limitMs, qPrintable(QStringLiteral("longest answer %1 ms").arg(worst)));
}

// Whether the simulator reports files queued or in transfer.
static bool transfersPending(Sim &sim)
{
    const int from = sim.out.size();
    sim.send(QStringLiteral("status"));
    const int line = sim.waitOut(QStringLiteral("status {"), 5000, from);
    if (line < 0)
        return false;
    const QJsonObject state = QJsonDocument::fromJson(sim.out.at(line).mid(7).toUtf8()).object();
    const QJsonObject quantity
        = state.value(QStringLiteral("syncInfo")).toObject().value(QStringLiteral("syncQuantity")).toObject();
    return quantity.value(QStringLiteral("todo")).toInt() + quantity.value(QStringLiteral("doing")).toInt() > 0;
}

void FaultInjectionTest::clientKilledMidSyncRestartsElsewhere()
{
    Sim first;
    startSim(first);
    startHost();
    QVERIFY(first.waitErr(kConnectedLine, 15000) >= 0);
    // New files keep the client busy, so the kill comes in the middle of syncing.
    for (int i = 0; i < 10; ++i) {
        QFile file(root + QStringLiteral("/new-%1.txt").arg(i));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("fresh");
    }
    files = snapshot(tmp->path());
    QVERIFY2(QTest::qWaitFor([&] { return transfersPending(first); }, 15000), "the client never started syncing");
    const quint16 oldPort = first.port();
    ::kill(first.process.processId(), SIGKILL);
    QVERIFY(first.process.waitForFinished(5000));

    QVERIFY(host->waitErr(kDisconnectedLine, 5000) >= 0);
    // The window that shows the tree says so in its banner.
    QTRY_VERIFY_WITH_TIMEOUT(host->state(QStringLiteral("windows/-1/tabs/[current=true]/top/text"))
                                 .toString()
                                 .contains(QStringLiteral("File synchronization has been suspended")),
        10000);
    expectResponsive(1500, "after the client died");

    Sim second;
    startSim(second);
    QVERIFY(second.port() != oldPort);
    expectRecoveryThrough(second);
    expectResponsive(500, "after recovery");
}

// A peer that takes the connection and then misbehaves in one way.
void FaultInjectionTest::misbehavingPeer_data()
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

void FaultInjectionTest::misbehavingPeer()
{
    QFETCH(QString, behaviour);
    QFETCH(qint64, bytes);
    QFETCH(int, limitMs);
    QFETCH(QString, told);

    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    writePort(server.serverPort());
    if (behaviour == QLatin1String("no-read")) {
        // The sync root known from an earlier session, so that every folder
        // the user enters is asked for, answer or not.
        QVERIFY(QDir().mkpath(QFileInfo(cacheFile()).absolutePath()));
        QFile cache(cacheFile());
        QVERIFY(cache.open(QIODevice::WriteOnly));
        cache.write("[General]\nInited=true\nSyncRoot=" + QFile::encodeName(root) + '\n');
    }
    startHost();
    // The connection may already have been taken in while the file manager started.
    QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), 15000);
    std::unique_ptr<QTcpSocket> peer(server.nextPendingConnection());
    QVERIFY(peer);

    qint64 sent = 0;
    QByteArray chunk;
    if (behaviour == QLatin1String("no-read")) {
        // Read nothing, with the smallest buffers the kernel allows, while the
        // user goes back and forth between two folders: each is asked for, and
        // the requests pile up on the plug-in's side.
        peer->setReadBufferSize(1);
        peer->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 1024);
        for (int i = 0; i < 400; ++i)
            host->send(i % 2 ? kEnter : QStringLiteral("cd last nubix:///sub"));
        // The folders are entered one after the other (3 to 4 s, as with a
        // peer that reads); the fault is measured once they are.
        const int entered = host->ping(30000);
        qInfo("400 folders entered in %d ms", entered);
        QVERIFY(entered >= 0);
    } else if (bytes > 0) {
        const QByteArray head = R"({"type":"ping","data":{"method":"notify","from":"server","to":"client",)"
                                R"("key":"{00000000-0000-0000-0000-000000000000","version":1,)"
                                R"("data":{"type":"banDirs","args":[")";
        chunk = QByteArray(1024 * 1024, 'x');
        peer->write(head);
        // Feed the socket as it drains rather than queueing everything here.
        QObject::connect(peer.get(), &QTcpSocket::bytesWritten, peer.get(), [&, behaviour] {
            if (peer->bytesToWrite() > 4 * chunk.size() || sent >= bytes)
                return;
            sent += chunk.size();
            peer->write(chunk);
            if (sent >= bytes && behaviour == QLatin1String("message"))
                peer->write(QByteArray(R"("]}}})") + '\x0c');
        });
        sent += chunk.size();
        peer->write(chunk);
    }

    expectResponsive(2000, qPrintable(behaviour), limitMs);
    if (!told.isEmpty()) {
        // Told within seconds, while the file manager keeps answering.
        QVERIFY2(host->waitErr(told, 20000) >= 0, qPrintable(QStringLiteral("not told: ") + told));
        expectResponsive(500, qPrintable(behaviour + QStringLiteral(" told")));
        // Told once, however many requests wait; a peer that reads is not
        // taken for one that does not.
        QCOMPARE(host->countErr(told), 1);
        if (behaviour == QLatin1String("silent"))
            QCOMPARE(host->countErr(kNotReadLine), 0);
    }
    if (bytes > 0) {
        QTRY_VERIFY_WITH_TIMEOUT(sent >= bytes && peer->bytesToWrite() == 0, 120000);
        expectResponsive(1000, qPrintable(behaviour + QStringLiteral(" sent")), limitMs);
        expectResponsive(500, qPrintable(behaviour + QStringLiteral(" over")));
        qInfo("file manager's memory after %lld MB: peak %lld kB, now %lld kB", bytes >> 20, host->memoryKb("VmHWM:"),
            host->memoryKb("VmRSS:"));
    }

    // The fault ends: the peer goes away and the real client takes its place.
    peer->abort();
    server.close();
    QVERIFY(host->waitErr(kDisconnectedLine, 10000) >= 0);
    Sim sim;
    startSim(sim);
    expectRecoveryThrough(sim);
}

void FaultInjectionTest::malformedFramesInARow()
{
    Sim sim;
    startSim(sim);
    startHost();
    QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
    const int from = host->err.size();
    sim.send(QStringLiteral("malformed 10000"));
    expectResponsive(2000, "during 10,000 malformed frames");
    QVERIFY(host->waitErr(QStringLiteral("NubixMessageHandler: "), 10000, from) >= 0);
    // The same connection still serves the user.
    const int sentBefore = sim.err.size();
    host->send(kEnter);
    QVERIFY(sim.waitErr(QStringLiteral("getFileStatus"), 15000, sentBefore) >= 0);
    sim.send(QStringLiteral("notify-all"));
    expectResponsive(500, "after the malformed frames");
    QCOMPARE(host->countErr(kDisconnectedLine), 0);
}

void FaultInjectionTest::badPortFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a folder") << "dir";
    QTest::newRow("a FIFO") << "fifo";
    QTest::newRow("a link to /dev/zero") << "zero";
    QTest::newRow("empty") << "empty";
    QTest::newRow("not a number") << "garbage";
}

void FaultInjectionTest::badPortFile()
{
    QFETCH(QString, kind);
    const QByteArray file = QFile::encodeName(portFile());
    if (kind == QLatin1String("dir"))
        QVERIFY(QDir().mkpath(portFile()));
    else if (kind == QLatin1String("fifo"))
        QCOMPARE(::mkfifo(file.constData(), 0600), 0);
    else if (kind == QLatin1String("zero"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), portFile()));
    else {
        QFile f(portFile());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(kind == QLatin1String("garbage") ? "\x01\xff port?\n" : "");
    }

    startHost();
    expectResponsive(1000, qPrintable(QStringLiteral("with a port file that is ") + kind));
    QVERIFY(host->waitErr(QStringLiteral("port"), 5000) >= 0);
    host->send(kEnter);   // another attempt reads the file again
    expectResponsive(1000, qPrintable(QStringLiteral("after another attempt, port file ") + kind));

    // The client writes a good file; the user's next step connects.
    if (kind == QLatin1String("dir"))
        QDir(portFile()).removeRecursively();
    else
        QVERIFY(QFile::remove(portFile()));
    Sim sim;
    startSim(sim);
    expectRecoveryThrough(sim);
}

void FaultInjectionTest::portFileRewrittenWhileRead()
{
    // The file is read only while there is no connection: the client is up,
    // but its port file is gone when the file manager starts.
    Sim sim;
    startSim(sim);
    const QByteArray good = QByteArray::number(sim.port()) + '\n';
    QVERIFY(QFile::remove(portFile()));
    startHost();
    QVERIFY(host->waitErr(QStringLiteral("Failed to read valid port from config"), 10000) >= 0);
    // The file is rewritten in place, without the client's rename, as fast as
    // possible while the user keeps entering the tree.
    QFile file(portFile());
    int rewrites = 0;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 1500) {
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(good.left(rewrites % (good.size() + 1)));
        file.close();
        if (++rewrites % 50 == 0) {
            host->send(kEnter);
            QTest::qWait(1);
        }
    }
    expectResponsive(500, "while the port file was rewritten");
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(good);
    file.close();
    // A whole line seen during the rewrites may already have connected.
    host->send(kEnter);
    QVERIFY2(sim.waitErr(kConnectedLine, 15000) >= 0, "no connection once the port file was whole");
    const int from = sim.err.size();
    host->send(kEnter);
    QVERIFY(sim.waitErr(QStringLiteral("getFileStatus"), 15000, from) >= 0);
}

void FaultInjectionTest::badCacheFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("corrupt") << "corrupt";
    QTest::newRow("truncated") << "truncated";
    QTest::newRow("cannot be written") << "unwritable";
    QTest::newRow("home read-only as a whole") << "read-only";
    QTest::newRow("home full") << "full";
}

void FaultInjectionTest::badCacheFile()
{
    QFETCH(QString, kind);
    const QString dir = QFileInfo(cacheFile()).absolutePath();
    QVERIFY(QDir().mkpath(dir));
    if (kind == QLatin1String("full")) {
        // A small file system of its own where the cache file lives, filled up.
        if (::geteuid() != 0)
            QSKIP("a full home needs a file system of its own: mounting one takes root");
        if (::mount("tmpfs", QFile::encodeName(dir).constData(), "tmpfs", 0, "size=256k,mode=0755") != 0)
            QSKIP(qPrintable(QStringLiteral("cannot mount a small file system: ") + qt_error_string(errno)));
        mounted = dir;
    }
    const bool writable = kind == QLatin1String("corrupt") || kind == QLatin1String("truncated");
    QFile file(cacheFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    if (kind == QLatin1String("corrupt"))
        file.write(QByteArray("[General\n\x00\xff=\x01SyncRoot=/\n\n[[[\n", 27).repeated(100));
    else if (kind == QLatin1String("truncated"))
        file.write("[General]\nInited=true\nIsPublic=true\nQuota=10737\nSizeTotal=");
    else
        file.write("[General]\nSyncRoot=/nowhere\n");
    file.close();
    if (kind == QLatin1String("unwritable")) {
        // A file where its folder should be: no one, root included, can write
        // the cache.
        QVERIFY(QDir(dir).removeRecursively());
        QFile blocker(dir);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
    } else if (kind == QLatin1String("full")) {
        QFile filler(dir + QStringLiteral("/filler"));
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray block(4096, 'f');
        while (filler.write(block) == block.size()) { }
    }
    const QByteArray cacheBefore = [&] {
        QFile f(cacheFile());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();

    Sim sim;
    startSim(sim);
    if (kind == QLatin1String("read-only")) {
        // After the client wrote its port file; root must be held to the mode
        // bits in the file manager, and root's effective rights come back at
        // exec unless they leave the bounding set.
        if (::geteuid() == 0) {
            const QString setpriv = QStandardPaths::findExecutable(QStringLiteral("setpriv"));
            if (setpriv.isEmpty())
                QSKIP("running as root without setpriv, which would hold the file manager to the mode bits");
            hostWrapper = QStringList {
                setpriv, QStringLiteral("--bounding-set"), QStringLiteral("-dac_override,-dac_read_search,-fowner")};
        }
        homeReadOnly = true;
        setTreeWritable(home(), false);
    }
    startHost();
    QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
    expectResponsive(1500, qPrintable(QStringLiteral("with a cache file ") + kind));
    if (!writable) {
        // The summary could not be kept: the user's log says so, and the plug-in
        // goes on with what it has in memory.
        QVERIFY(host->waitErr(kCacheNotWrittenLine, 10000) >= 0);
        const int from = sim.err.size();
        host->send(kEnter);
        QVERIFY(sim.waitErr(QStringLiteral("getFileStatus"), 15000, from) >= 0);
        expectResponsive(500, qPrintable(QStringLiteral("after entering, cache file ") + kind));
        // What was there stays as it was: no half-written summary.
        QFile f(cacheFile());
        QCOMPARE(f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray(), cacheBefore);
    } else {
        // A good summary replaces the broken one.
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                QFile f(cacheFile());
                return f.open(QIODevice::ReadOnly) && f.readAll().contains(QFile::encodeName(root));
            }(),
            10000);
    }
}

void FaultInjectionTest::syncRootWithAwkwardName()
{
    root = path(QStringLiteral("My Drive 云盘 é"));
    const QString inner = QStringLiteral("子目录 x");
    QVERIFY(QDir().mkpath(root + QLatin1Char('/') + inner));
    files = snapshot(tmp->path());
    Sim sim;
    QVERIFY(sim.start(env(), QStringLiteral(KELODRIVE_SIM_EXE), {QStringLiteral("--root"), root + QLatin1Char('/')}));
    startHost();
    QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
    const int from = sim.err.size();
    QUrl folder;
    folder.setScheme(QStringLiteral("nubix"));
    folder.setPath(QLatin1Char('/') + inner);
    host->send(QStringLiteral("cd last ") + folder.toString(QUrl::FullyEncoded));
    // The simulator logs what it receives as indented JSON, one member a line.
    QVERIFY2(sim.waitErr(QStringLiteral("\"basedir\": \"/") + inner + QLatin1Char('"'), 15000, from) >= 0,
        "the folder was not asked for under its own name");
    expectResponsive(500, "in a sync root with an awkward name");
}

void FaultInjectionTest::syncRootGoesAway_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("deleted") << "deleted";
    QTest::newRow("renamed") << "renamed";
    QTest::newRow("replaced by a file") << "file";
}

void FaultInjectionTest::syncRootGoesAway()
{
    QFETCH(QString, how);
    Sim sim;
    startSim(sim);
    startHost();
    QVERIFY(sim.waitErr(kConnectedLine, 15000) >= 0);
    host->send(QStringLiteral("cd last nubix:///sub"));
    expectResponsive(500, "in a subfolder");

    const QString moved = path(QStringLiteral("moved away"));
    if (how == QLatin1String("deleted"))
        QVERIFY(QDir(root).removeRecursively());
    else
        QVERIFY(QDir().rename(root, moved));
    if (how == QLatin1String("file")) {
        QFile file(root);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    // The user keeps working in the windows that showed it.
    host->send(kEnter);
    host->send(QStringLiteral("cd last nubix:///sub"));
    expectResponsive(1500, qPrintable(QStringLiteral("with the sync root ") + how));

    // The folder comes back; entering it works again.
    QFile::remove(root);
    if (how == QLatin1String("deleted"))
        QVERIFY(QDir().mkpath(root + QStringLiteral("/sub")));
    else
        QVERIFY(QDir().rename(moved, root));
    const int from = sim.err.size();
    host->send(QStringLiteral("cd last nubix:///sub"));
    QVERIFY(sim.waitErr(QStringLiteral("getFileStatus"), 15000, from) >= 0);
    if (how == QLatin1String("deleted"))
        files = snapshot(tmp->path());   // the user deleted those files on purpose
}

void FaultInjectionTest::toolMissingFromPath_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("told");
    QTest::newRow("no pgrep") << "pgrep"
                              << "Server process not running";
    QTest::newRow("no bash") << "bash"
                             << "cannot run";
}

void FaultInjectionTest::toolMissingFromPath()
{
    QFETCH(QString, missing);
    QFETCH(QString, told);
    // A search path with only what the file manager needs, less one tool.
    const QString bin = path(QStringLiteral("bin"));
    QVERIFY(QDir().mkpath(bin));
    const QStringList tools {QStringLiteral("bash"), QStringLiteral("sh"), QStringLiteral("grep"),
        QStringLiteral("awk"), QStringLiteral("pgrep")};
    for (const QString &tool : tools) {
        const QString found = QStandardPaths::findExecutable(tool);
        if (tool != missing && !found.isEmpty())
            QVERIFY(QFile::link(found, bin + QLatin1Char('/') + tool));
    }
    QVERIFY(QFile::link(QStringLiteral(HDE_FM_BINARY), bin + QStringLiteral("/hde-file-manager")));
    searchPath = bin;
    files = snapshot(tmp->path());

    // A port nobody listens on: the refusal makes the plug-in look for the client.
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const quint16 port = closed.serverPort();
    closed.close();
    writePort(port);
    startHost();
    QVERIFY(host->waitErr(told, 15000) >= 0);
    expectResponsive(1000, qPrintable(QStringLiteral("without ") + missing));
}

QTEST_GUILESS_MAIN(FaultInjectionTest)
#include "tst_faultinjection.moc"
