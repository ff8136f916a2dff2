// SPDX-License-Identifier: GPL-3.0-or-later
// The simulator's small parts on their own: framing, command lines, cloud paths, port file.
#include "rawclient.h"   // the _s literal and file helpers

#include "commandline.h"
#include "framereader.h"
#include "portfile.h"
#include "syncengine.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace kelodrive;
using Bytes = QList<QByteArray>;

class SimulatorPartsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesAcrossChunks_data();
    void framesAcrossChunks();
    void overflowDropsPendingBytes();
    void commandLines_data();
    void commandLines();
    void cloudPaths_data();
    void cloudPaths();
    void portFileRoundTrip();
};

void SimulatorPartsTest::framesAcrossChunks_data()
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

void SimulatorPartsTest::framesAcrossChunks()
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

void SimulatorPartsTest::overflowDropsPendingBytes()
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

void SimulatorPartsTest::commandLines_data()
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
    QTest::newRow("path takes the rest") << u"root ~/Kelo Drive"_s << true << u"root"_s
                                         << QStringList {u"~/Kelo Drive"_s};
    QTest::newRow("notify keeps JSON whole")
        << u"notify syncErrors {\"isPaused\": true, \"isOnline\": false}"_s << true << u"notify"_s
        << QStringList {u"syncErrors"_s, u"{\"isPaused\": true, \"isOnline\": false}"_s};
}

void SimulatorPartsTest::commandLines()
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

void SimulatorPartsTest::cloudPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("normalized");

    QTest::newRow("root") << u"/"_s << true << u"/"_s;
    QTest::newRow("trailing slash") << u"/a/"_s << true << u"/a"_s;
    QTest::newRow("dots inside") << u"/a/./b/../c"_s << true << u"/a/c"_s;
    QTest::newRow("double slash") << u"//a//b"_s << true << u"/a/b"_s;
    QTest::newRow("relative") << u"a/b"_s << false << QString();
    QTest::newRow("leaves the root") << u"/../etc/passwd"_s << false << QString();
    QTest::newRow("leaves the root later") << u"/a/../../b"_s << false << QString();
    QTest::newRow("dots in a name") << u"/a..b/..c"_s << true << u"/a..b/..c"_s;
}

void SimulatorPartsTest::cloudPaths()
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

void SimulatorPartsTest::portFileRoundTrip()
{
    QTemporaryDir dir;
    const QString path = dir.path() + u"/deep/App Data/ipc"_s;
    QVERIFY(portfile::write(path, 4242));
    QCOMPARE(readFile(path), QByteArray("4242\n"));
    QCOMPARE(portfile::read(path), quint16(4242));
    // No temporary file is left beside it.
    QCOMPARE(QDir(dir.path() + u"/deep/App Data"_s).entryList(QDir::Files), QStringList {u"ipc"_s});

    QVERIFY(portfile::write(path, 5353));
    QVERIFY(!portfile::removeIfOurs(path, 4242));
    QVERIFY(QFile::exists(path));
    QVERIFY(portfile::removeIfOurs(path, 5353));
    QVERIFY(!QFile::exists(path));
    QVERIFY(portfile::removeIfOurs(path, 5353));   // already gone is fine
    QCOMPARE(portfile::read(path), quint16(0));
}

QTEST_GUILESS_MAIN(SimulatorPartsTest)
#include "tst_simulatorparts.moc"
