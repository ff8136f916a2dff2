// SPDX-License-Identifier: GPL-3.0-or-later
#include "caches/nubixcaches.h"
#include "ipc/nubixmessagehandler.h"

#include "syncrecordmaps.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

#include <sys/stat.h>

using namespace hfmplugin_nubix;
using recordmaps::toMap;

namespace {

void writeFile(const QByteArray &content)
{
    QDir().mkpath(QFileInfo(NubixCaches::cachePath()).absolutePath());
    QFile file(NubixCaches::cachePath());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

QByteArray fileContent()
{
    QFile file(NubixCaches::cachePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// With fields the file does not keep.
SyncInfo syncInfo(const QString &root, bool inited, bool isPublic)
{
    return SyncInfo {root, {QStringLiteral("/not/kept")}, SyncQuantity {3}, {}, inited, isPublic};
}

UserInfo userInfo(qint64 quota, qint64 total, qint64 used)
{
    return UserInfo {AccountInfo {QStringLiteral("not kept"), {}, {}, {}, {}}, 77, used, total, 0, quota};
}

// What the client's answers would bring, without a client.
void answer(const SyncInfo &info)
{
    Q_EMIT NubixMessageHandler::instance()->sigResponseSyncInfo(QStringLiteral("{k"), info);
}

void answer(const UserInfo &info)
{
    Q_EMIT NubixMessageHandler::instance()->sigResponseUserInfo(QStringLiteral("{k"), info);
}

QTimer *saveTimer(NubixCaches &caches)
{
    return caches.findChild<QTimer *>();
}

}   // namespace

// Each test makes its own cache objects, the way two runs of the plug-in would.
class TestCacheFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QFile::remove(NubixCaches::cachePath()); }

    void unusableFileKeepsDefaults_data()
    {
        // Null: no file, not even its folder.
        QTest::addColumn<QByteArray>("content");

        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        // Values the settings reader would decode into types of its own; damaged
        // ones crash it, and this file never holds any.
        QTest::newRow("serialized value")
            << QByteArray("[General]\nQuota=@Variant(\\0\\0\\0\\[Genera0\\x1\\0\\Quota)\n");
        QTest::newRow("serialized value, escaped")
            << QByteArray("[General]\nSyncRoot=\\x40V\\141riant(\\0\\0\\0\\x7f)\nInited=true\n");
        QTest::newRow("serialized value, quoted and continued")
            << QByteArray("[General]\nInited=true\nQuota=\"@Var\\\niant(\\0\\0\\0\\x7f)\"\n");
        QTest::newRow("larger than any cache file") << "[General]\nInited=true\n" + QByteArray(70000, ';');
        // Reading it would block the start until something writes into it.
        QTest::newRow("a FIFO") << QByteArray("fifo: Inited=true");
    }

    void unusableFileKeepsDefaults()
    {
        QFETCH(QByteArray, content);
        if (content.isNull())
            QDir(QDir::homePath() + QStringLiteral("/.config/sablo")).removeRecursively();
        else if (content.startsWith("fifo:"))
            QCOMPARE(::mkfifo(QFile::encodeName(NubixCaches::cachePath()).constData(), 0600), 0);
        else
            writeFile(content);
        if (content.contains("Inited=true") || content.contains("Quota="))
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Ignoring a damaged cache file")));
        NubixCaches caches;
        // Nothing read, so nothing counts as stale either; a missing file is created empty.
        QCOMPARE(toMap(caches.syncInfo()), toMap(SyncInfo()));
        QCOMPARE(toMap(caches.userInfo()), toMap(UserInfo()));
        if (!content.startsWith("fifo:"))
            QCOMPARE(fileContent(), content.isNull() ? QByteArray("") : content);
        QVERIFY(QFile::exists(NubixCaches::cachePath()));
    }

    void burstOfAnswersWritesOnce()
    {
        NubixCaches caches;
        QTimer *timer = saveTimer(caches);
        QVERIFY(timer);
        QSignalSpy saves(timer, &QTimer::timeout);

        answer(userInfo(100, 90, 80));
        QElapsedTimer sinceLast;
        for (int i = 0; i < 20; ++i) {
            answer(syncInfo(QStringLiteral("/root/%1").arg(i), true, false));
            sinceLast.start();
        }
        // Nothing is written while the answers keep coming.
        QCOMPARE(fileContent(), QByteArray());

        QTRY_COMPARE(saves.count(), 1);
        QVERIFY2(sinceLast.elapsed() >= 450, QByteArray::number(sinceLast.elapsed()).constData());
        QVERIFY(!timer->isActive());

        const QSettings settings(NubixCaches::cachePath(), QSettings::IniFormat);
        QCOMPARE(settings.childGroups(), QStringList());
        QCOMPARE(settings.allKeys().size(), 6);
        QCOMPARE(settings.value(QStringLiteral("SyncRoot")).toString(), QStringLiteral("/root/19"));
    }

    void accountFiguresAloneDoNotSave()
    {
        NubixCaches caches;
        answer(userInfo(1, 2, 3));
        QVERIFY(!saveTimer(caches)->isActive());
        caches.setSyncInfo(syncInfo(QStringLiteral("/r"), true, true));
        QVERIFY(!saveTimer(caches)->isActive());
        QCOMPARE(fileContent(), QByteArray());
    }

    void nextStartReadsSummaryBackAsUnconfirmed_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<bool>("inited");
        QTest::addColumn<bool>("isPublic");
        QTest::addColumn<qint64>("quota");

        QTest::newRow("set up, public") << "/home/u/Kelo Drive" << true << true << Q_INT64_C(10737418240);
        QTest::newRow("private deployment")
            << QString::fromUtf8("/data/\u00e9t\u00e9=1;x") << true << false << Q_INT64_C(-3);
        QTest::newRow("not set up") << "" << false << false << Q_INT64_C(0);
    }

    void nextStartReadsSummaryBackAsUnconfirmed()
    {
        QFETCH(QString, root);
        QFETCH(bool, inited);
        QFETCH(bool, isPublic);
        QFETCH(qint64, quota);

        {
            auto first = std::make_unique<NubixCaches>();
            answer(userInfo(quota, 5000000000, 4000000000));
            first->setSyncInfo(syncInfo(root, inited, isPublic));
            // Saved when it ends, without waiting for the timer.
        }

        NubixCaches next;
        QCOMPARE(toMap(next.syncInfo()), toMap(SyncInfo {root, {}, {}, {}, inited, isPublic, true}));
        QCOMPARE(toMap(next.userInfo()), toMap(UserInfo {{}, 0, 4000000000, 5000000000, 0, quota}));

        // The first answer confirms it.
        QSignalSpy updated(&next, &NubixCaches::syncInfoUpdated);
        answer(syncInfo(root, inited, isPublic));
        QCOMPARE(updated.count(), 1);
        QVERIFY(!next.syncInfo().isDisconnected);
    }

    void unwritableFileIsLoggedAndStateKept()
    {
        // A file where the cache's folder should be: nobody, not even root, can
        // write there, as in a full or read-only home.
        const QString dir = QFileInfo(NubixCaches::cachePath()).absolutePath();
        QDir(dir).removeRecursively();
        QDir().mkpath(QFileInfo(dir).absolutePath());
        {
            QFile blocker(dir);
            QVERIFY(blocker.open(QIODevice::WriteOnly));
        }
        struct Restore
        {
            QString dir;
            ~Restore() { QFile::remove(dir); }
        } restore {dir};

        const QRegularExpression logLine(QStringLiteral("^NubixCaches: Cannot write the cache file"));
        NubixCaches caches;
        answer(syncInfo(QStringLiteral("/new"), true, true));
        QTest::ignoreMessage(QtWarningMsg, logLine);
        caches.saveCache();
        QCOMPARE(caches.syncRoot(), QStringLiteral("/new"));
        QVERIFY(QFileInfo(dir).isFile());
        saveTimer(caches)->stop();
        // The save at the end fails the same way.
        QTest::ignoreMessage(QtWarningMsg, logLine);
    }
};

QTEST_GUILESS_MAIN(TestCacheFile)
#include "tst_cachefile.moc"
