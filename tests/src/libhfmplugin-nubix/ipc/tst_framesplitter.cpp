// SPDX-License-Identifier: GPL-3.0-or-later
#include "ipc/framesplitter.h"

#include "teststrings.h"

#include <QRandomGenerator>
#include <QTest>

using hfmplugin_nubix::FrameSplitter;

using Chunks = QList<QByteArray>;

class TestFrameSplitter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What the random chunking below never does: zero bytes and empty reads.
    void splitsStream_data()
    {
        QTest::addColumn<Chunks>("chunks");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QByteArray>("pending");

        QTest::newRow("bytes after a zero byte dropped")
            << Chunks {QByteArray("a\fb\0c\fd", 7), "e\f"} << utf8List({"a", "be"}) << QByteArray();
        QTest::newRow("zero byte first drops the read")
            << Chunks {QByteArray("\0abc\f", 5), "x\f"} << utf8List({"x"}) << QByteArray();
        QTest::newRow("zero byte only affects its own read")
            << Chunks {QByteArray("a\0\f", 3), "b\f"} << utf8List({"ab"}) << QByteArray();
        QTest::newRow("empty read between parts") << Chunks {"a", "", "b\f"} << utf8List({"ab"}) << QByteArray();
    }

    void splitsStream()
    {
        QFETCH(Chunks, chunks);
        QFETCH(QStringList, messages);
        QFETCH(QByteArray, pending);

        FrameSplitter splitter;
        QStringList got;
        for (const QByteArray &chunk : chunks)
            got += splitter.feed(chunk);
        QCOMPARE(got, messages);
        QCOMPARE(splitter.pending(), pending);
    }

    // A new connection must not inherit the half message of the old one.
    void clearForgetsHalfMessage()
    {
        FrameSplitter splitter;
        QCOMPARE(splitter.feed("{\"half\":\xc3"), QStringList());
        QCOMPARE(splitter.pendingSize(), qint64(9));
        splitter.clear();
        QCOMPARE(splitter.pendingSize(), qint64(0));
        QCOMPARE(splitter.feed("{\"whole\":1}\f"), utf8List({"{\"whole\":1}"}));
    }

    // Whatever the chunking, the messages are the bytes cut at every delimiter,
    // each decoded whole (a character split between reads, invalid bytes replaced
    // once), and the rest waits as bytes.
    void matchesReferenceForRandomChunking()
    {
        QRandomGenerator random(20240611);
        const QByteArray alphabet("ab\f\xc3\xa9{}\":");
        for (int round = 0; round < 200; ++round) {
            QByteArray stream;
            const int length = int(random.bounded(400));
            for (int i = 0; i < length; ++i)
                stream += alphabet.at(int(random.bounded(alphabet.size())));

            FrameSplitter splitter;
            QStringList got;
            for (int at = 0; at < stream.size();) {
                const QByteArray chunk = stream.mid(at, 1 + int(random.bounded(40)));
                at += chunk.size();
                got += splitter.feed(chunk);
            }
            QList<QByteArray> parts = stream.split('\f');
            const QByteArray rest = parts.takeLast();
            QStringList expected;
            for (const QByteArray &part : qAsConst(parts))
                expected.append(QString::fromUtf8(part));
            QCOMPARE(got, expected);
            QCOMPARE(splitter.pending(), rest);
        }
    }
};

QTEST_GUILESS_MAIN(TestFrameSplitter)
#include "tst_framesplitter.moc"
