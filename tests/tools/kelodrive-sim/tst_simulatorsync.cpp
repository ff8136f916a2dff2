// SPDX-License-Identifier: GPL-3.0-or-later
// The simulated sync engine over a real folder, observed through a raw plug-in socket.
#include "rawclient.h"

#include <kelodrivesim/simulator.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using kelodrive::Simulator;

namespace {
constexpr int kPaceMs = 15;
}   // namespace

class SimulatorSyncTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void newFileGoesThroughStatuses_data();
    void newFileGoesThroughStatuses();
    void changedFileSyncsAgain();
    void blockedStateHoldsProgress_data();
    void blockedStateHoldsProgress();
    void bannedFolderIsNeverSyncedUntilUnbanned();
    void downloadWritesTempThenRenames();
    void failingDownloadLeavesNoFile();
    void folderShowsBusiestChild();
    void lostRootIsReported();
    void rootCanBeClearedAndSet();
    void listingEscapesNames_data();
    void listingEscapesNames();
    void burstSendsEveryNotification();
    void malformedFramesReachThePeer();

private:
    QString local(const QString &cloudPath) const { return m_root + cloudPath; }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<Simulator> m_sim;
    std::unique_ptr<RawClient> m_client;
};

void SimulatorSyncTest::initTestCase()
{
    QLoggingCategory::setFilterRules(u"org.sablo.kelodrive.sim.debug=false"_s);
}

void SimulatorSyncTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_root = m_dir->path() + u"/Kelo Drive"_s;
    QVERIFY(writeFile(local(u"/old.txt"_s), "already there"));

    m_sim = std::make_unique<Simulator>();
    m_sim->setPortFilePath(QString());
    m_sim->setAskPluginInfo(false);
    m_sim->setPaceMs(kPaceMs);
    m_sim->setRescanMs(0);   // the tests rescan on purpose, so nothing happens behind their back
    m_sim->setFailPatterns({u"*.bad"_s});
    QVERIFY(m_sim->setSyncRoot(m_root));
    QVERIFY(m_sim->start());
    m_client = std::make_unique<RawClient>();
    QVERIFY(m_client->connectTo(m_sim->port()));
    QTRY_COMPARE(m_sim->connectionCount(), 1);
}

void SimulatorSyncTest::cleanup()
{
    m_client.reset();
    m_sim.reset();
    m_dir.reset();
}

void SimulatorSyncTest::newFileGoesThroughStatuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QList<int>>("statuses");
    QTest::addColumn<int>("planError");

    QTest::newRow("plain file") << u"/new.txt"_s << QList<int> {1, 2, 3} << 0;
    QTest::newRow("file in a new folder") << u"/fresh/deeper/new.txt"_s << QList<int> {1, 2, 3} << 0;
    QTest::newRow("name with spaces and accents") << u"/Été 2024/plan b.odt"_s << QList<int> {1, 2, 3} << 0;
    QTest::newRow("failing file") << u"/broken.bad"_s << QList<int> {1, 2, 10} << 1;
}

void SimulatorSyncTest::newFileGoesThroughStatuses()
{
    QFETCH(QString, path);
    QFETCH(QList<int>, statuses);
    QFETCH(int, planError);

    QVERIFY(writeFile(local(path), "content"));
    QTRY_COMPARE(m_client->lastStatus(path), statuses.last());
    QCOMPARE(m_client->statusesOf(path), statuses);
    QVERIFY(!m_client->statusesOf(u"/old.txt"_s).size());   // present from the start: already synced

    const bool failed = statuses.last() == 10;
    const QJsonValue quantity = m_client->waitForNotification(u"syncQuantity"_s, [&](const QJsonValue &v) {
        const QJsonObject q = v.toObject();
        return q.value(u"todo").toInt() == 0 && q.value(u"doing").toInt() == 0
            && q.value(u"done").toInt() + q.value(u"error").toInt() > 0;
    });
    QCOMPARE(quantity.toObject().value(u"done").toInt(), failed ? 0 : 1);
    QCOMPARE(quantity.toObject().value(u"error").toInt(), failed ? 1 : 0);

    const QJsonObject entry
        = follow(m_client->call(u"getFileStatus"_s, {{u"basedir"_s, path}, {u"type"_s, u"file"_s}}), u"0"_s).toObject();
    QCOMPARE(entry.value(u"path").toString(), path);
    QCOMPARE(entry.value(u"plan_status").toInt(), statuses.last());
    QCOMPARE(entry.value(u"plan_error").toInt(), planError);
}

void SimulatorSyncTest::changedFileSyncsAgain()
{
    QVERIFY(writeFile(local(u"/old.txt"_s), "changed, and longer than before"));
    m_sim->rescan();
    QTRY_COMPARE(m_client->lastStatus(u"/old.txt"_s), 3);
    QCOMPARE(m_client->statusesOf(u"/old.txt"_s), (QList<int> {1, 2, 3}));

    // Once synced, a rescan without a change queues nothing.
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
}

void SimulatorSyncTest::blockedStateHoldsProgress_data()
{
    QTest::addColumn<QString>("block");
    QTest::addColumn<QString>("unblock");

    QTest::newRow("paused") << u"pause"_s << u"resume"_s;
    QTest::newRow("offline") << u"offline"_s << u"online"_s;
    QTest::newRow("allowance used up") << u"allowance empty"_s << u"allowance ok"_s;
    QTest::newRow("cloud space low") << u"cloud-space low"_s << u"cloud-space ok"_s;
    QTest::newRow("paused, resumed by the plug-in") << u"pause"_s << QString();
}

void SimulatorSyncTest::blockedStateHoldsProgress()
{
    QFETCH(QString, block);
    QFETCH(QString, unblock);

    QVERIFY(m_sim->execute(block));
    QVERIFY(m_client->waitForNotification(u"syncErrors"_s).isObject());
    QVERIFY(writeFile(local(u"/held.txt"_s), "waiting"));
    QTRY_COMPARE(m_client->lastStatus(u"/held.txt"_s), 1);
    // Many paces later it still waits.
    QVERIFY(!QTest::qWaitFor([&] { return m_client->lastStatus(u"/held.txt"_s) != 1; }, 20 * kPaceMs));
    QCOMPARE(m_sim->counts().todo, 1);

    if (unblock.isEmpty())
        m_client->request(u"setSyncResume"_s);
    else
        QVERIFY(m_sim->execute(unblock));
    QTRY_COMPARE(m_client->lastStatus(u"/held.txt"_s), 3);
    QCOMPARE(m_client->statusesOf(u"/held.txt"_s), (QList<int> {1, 2, 3}));
}

void SimulatorSyncTest::bannedFolderIsNeverSyncedUntilUnbanned()
{
    m_sim->setBanDirs({u"private"_s});
    const QJsonValue bans = m_client->waitForNotification(u"banDirs"_s);
    QCOMPARE(bans.toArray().toVariantList(), QVariantList {u"/private"_s});

    QVERIFY(writeFile(local(u"/private/secret.txt"_s), "hidden"));
    QVERIFY(writeFile(local(u"/witness.txt"_s), "seen"));   // queued after the banned one
    QTRY_COMPARE(m_client->lastStatus(u"/witness.txt"_s), 3);
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
    QVERIFY(m_client->statusesOf(u"/private/secret.txt"_s).isEmpty());
    QCOMPARE(m_sim->fileStatus(u"/private/secret.txt"_s).planStatus, 0);
    QCOMPARE(m_sim->fileStatus(u"/private"_s).planStatus, 0);
    QVERIFY(!m_sim->startDownload(u"/private/other.bin"_s));

    QCOMPARE(follow(m_client->call(u"getSyncInfo"_s), u"banDirs.#size"_s).toInt(), 1);

    // Lifting the ban queues what was held back.
    QVERIFY(m_sim->execute(u"unban /private"_s));
    QVERIFY(m_sim->banDirs().isEmpty());
    QTRY_COMPARE(m_client->lastStatus(u"/private/secret.txt"_s), 3);
}

void SimulatorSyncTest::downloadWritesTempThenRenames()
{
    const QString target = local(u"/incoming/report.pdf"_s);
    const QString temp = target + u".temp"_s;
    QSignalSpy finished(m_sim.get(), &Simulator::downloadFinished);
    m_sim->setPaceMs(40);
    QVERIFY(m_sim->execute(u"download /incoming/report.pdf 4000 4"_s));

    // Part of the file exists under the temporary name before the real one does.
    QVERIFY(QTest::qWaitFor([&] {
        const QFileInfo info(temp);
        return info.exists() && info.size() > 0 && info.size() < 4000;
    }));
    QVERIFY(!QFile::exists(target));
    const QJsonArray listing
        = m_client->call(u"getFileStatus"_s, {{u"basedir"_s, u"/incoming"_s}, {u"type"_s, u"dir"_s}}).toArray();
    QCOMPARE(listing.size(), 1);
    QCOMPARE(follow(listing, u"0.path"_s).toString(), u"/incoming/report.pdf.temp"_s);
    QCOMPARE(follow(listing, u"0.plan"_s).toString(), u"download"_s);
    QCOMPARE(follow(listing, u"0.plan_status"_s).toInt(), 2);

    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().at(0).toString(), u"/incoming/report.pdf"_s);
    QCOMPARE(QFileInfo(target).size(), 4000);
    QVERIFY(!QFile::exists(temp));
    QCOMPARE(m_client->statusesOf(u"/incoming/report.pdf"_s), (QList<int> {1, 2, 3}));
    // The downloaded file is in sync: it is not sent back up.
    m_sim->rescan();
    QCOMPARE(m_sim->counts().todo, 0);
    QCOMPARE(m_client->statusesOf(u"/incoming/report.pdf"_s).size(), 3);
}

void SimulatorSyncTest::failingDownloadLeavesNoFile()
{
    QVERIFY(m_sim->startDownload(u"/photo.bad"_s, 100, 2));
    QTRY_COMPARE(m_client->lastStatus(u"/photo.bad"_s), 10);
    QVERIFY(!QFile::exists(local(u"/photo.bad"_s)));
    QVERIFY(!QFile::exists(local(u"/photo.bad.temp"_s)));
    QCOMPARE(m_sim->counts().error, 1);
}

void SimulatorSyncTest::folderShowsBusiestChild()
{
    QVERIFY(m_sim->execute(u"pause"_s));
    QVERIFY(writeFile(local(u"/box/a.txt"_s), "a"));
    QTRY_COMPARE(m_client->lastStatus(u"/box/a.txt"_s), 1);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 2);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).isDir, true);
    QVERIFY(m_sim->execute(u"resume"_s));
    QTRY_COMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 3);

    QVERIFY(writeFile(local(u"/box/b.bad"_s), "b"));
    QTRY_COMPARE(m_client->lastStatus(u"/box/b.bad"_s), 10);
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 10);
    QVERIFY(QFile::remove(local(u"/box/b.bad"_s)));
    m_sim->rescan();
    QCOMPARE(m_sim->fileStatus(u"/box"_s).planStatus, 3);
    QCOMPARE(m_sim->counts().error, 0);
}

void SimulatorSyncTest::lostRootIsReported()
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

void SimulatorSyncTest::rootCanBeClearedAndSet()
{
    QVERIFY(m_sim->execute(u"root none"_s));
    QCOMPARE(m_client->waitForNotification(u"syncInited"_s).toBool(true), false);
    QVERIFY(m_client->waitForNotification(u"syncRoot"_s).toString(u"x"_s).isEmpty());
    QVERIFY(!m_sim->isSyncInited());
    QCOMPARE(m_client->call(u"getFileStatus"_s, {{u"basedir"_s, u"/"_s}, {u"type"_s, u"dir"_s}}).toArray().size(), 0);

    m_client->envelopes.clear();
    const QString other = m_dir->path() + u"/elsewhere"_s;
    QVERIFY(m_sim->execute(u"root "_s + other));
    QVERIFY(QFileInfo(other).isDir());
    QCOMPARE(m_client->waitForNotification(u"syncRoot"_s).toString(), other);
    QVERIFY(m_client->waitForNotification(u"syncInited"_s).toBool());
}

void SimulatorSyncTest::listingEscapesNames_data()
{
    QTest::addColumn<bool>("indented");
    QTest::addColumn<QString>("key");

    QTest::newRow("compact") << false << u"{plain"_s;
    QTest::newRow("indented") << true << u"{plain"_s;
    QTest::newRow("key imitating the result") << false << u"\"result\":null"_s;
}

void SimulatorSyncTest::listingEscapesNames()
{
    QFETCH(bool, indented);
    QFETCH(QString, key);

    const QStringList names
        = {u"quote\"d.txt"_s, u"back\\slash.txt"_s, u"tab\there.txt"_s, u"日本語.txt"_s, u"emoji 🙂.txt"_s};
    for (const QString &name : names)
        QVERIFY(writeFile(local(u"/odd/"_s + name), "x"));
    m_sim->rescan();
    m_sim->setIndentedOutput(indented);

    m_client->request(u"getFileStatus"_s, {{u"basedir"_s, u"/odd"_s}, {u"type"_s, u"dir"_s}}, true, key);
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

void SimulatorSyncTest::burstSendsEveryNotification()
{
    m_client->envelopes.clear();
    m_sim->sendBurst(500, u"syncErrors"_s);
    QTRY_COMPARE(m_client->notifications(u"syncErrors"_s).size(), 500);
    QCOMPARE(m_client->unparsable, 0);
}

void SimulatorSyncTest::malformedFramesReachThePeer()
{
    m_sim->sendMalformedFrames();
    m_sim->notify(u"syncInited"_s, true);   // a good frame after them still arrives whole
    QVERIFY(m_client->waitForNotification(u"syncInited"_s, [](const QJsonValue &v) { return v.isBool(); }).toBool());
    QVERIFY(m_client->unparsable >= 4);
}

QTEST_GUILESS_MAIN(SimulatorSyncTest)
#include "tst_simulatorsync.moc"
