// SPDX-License-Identifier: GPL-3.0-or-later
#include "caches/nubixcaches.h"

#include "messagelog.h"
#include "syncrecordmaps.h"
#include "wire.h"

#include <hfmbase/filemanagerwindowsmanager.h>
#include <hpf/event/event.h>

#include <QApplication>
#include <QDir>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace hfmplugin_nubix;
using recordmaps::defaultsWith;
using recordmaps::toMap;

namespace {

// An answer that succeeded with this result.
QByteArray answer(const char *method, const QByteArray &resultJson)
{
    return response(method, "{r", "{\"code\":0,\"result\":" + resultJson + "}");
}

QByteArray syncInfoAnswer(const QString &root)
{
    const QJsonObject result {{QStringLiteral("syncRoot"), root}, {QStringLiteral("syncInited"), !root.isEmpty()}};
    return answer("getSyncInfo", QJsonDocument(result).toJson(QJsonDocument::Compact));
}

}   // namespace

// The process's cache and message handler, connected to a peer that plays
// the sync client. Test functions run in order and share that state; each
// sets what it relies on first.
class TestNubixCaches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        hpf::channel()->connect(
            QStringLiteral("hfmplugin_workspace"), QStringLiteral("slot_Model_FileUpdate"), [this](const QUrl &url) {
                repainted.append(url);
                statusAtRepaint.append(caches->fileData(url.path()).planStatus);
            });

        auto &windows = hfmbase::FileManagerWindowsManager::instance();
        QVERIFY(windows.createWindow(QUrl(QStringLiteral("nubix:///docs/my notes"))));
        QVERIFY(windows.createWindow(QUrl::fromLocalFile(QDir::tempPath())));
        QVERIFY(windows.createWindow(QUrl(QStringLiteral("nubix-login:///"))));
        QVERIFY(windows.createWindow(QUrl(QStringLiteral("nubix:///"))));

        caches = NubixCaches::instance();
        handler = NubixMessageHandler::instance();
        // No cache file yet: nothing is marked stale.
        QCOMPARE(toMap(caches->syncInfo()), toMap(SyncInfo()));
    }

    void connectingAsksForAccountSummaryAndShownFolders()
    {
        QVERIFY(writePortFile(QByteArray::number(peer.port())));
        handler->tryConnect();
        QVERIFY(peer.waitForClient());

        QStringList requests;
        for (int i = 0; i < 6; ++i) {
            const QJsonObject body = peer.nextBody();
            const QJsonObject data = body.value(QStringLiteral("data")).toObject();
            requests.append(QStringLiteral("%1 %2 %3")
                                .arg(body.value(QStringLiteral("method")).toString(),
                                    data.value(QStringLiteral("basedir")).toString(),
                                    data.value(QStringLiteral("type")).toString()));
        }
        // Folders of windows showing the cloud scheme only, children first.
        const QStringList expected {
            QStringLiteral("getUserInfo  "),
            QStringLiteral("getSyncInfo  "),
            QStringLiteral("getFileStatus /docs/my notes dir"),
            QStringLiteral("getFileStatus /docs/my notes file"),
            QStringLiteral("getFileStatus / dir"),
            QStringLiteral("getFileStatus / file"),
        };
        QCOMPARE(requests, expected);
    }

    void storesAndRepaintsEveryReportedItem()
    {
        repainted.clear();
        statusAtRepaint.clear();
        // "/docs" twice: each repaint sees its own entry, and nothing of the entries after it.
        peer.send(answer("getFileStatus", R"([{"path":"/docs","plan_status":1},
        {"fileid":1,"isDir":true,"path":"/docs","plan":"","plan_error":0,"plan_status":3},
        {"fileid":2,"isDir":false,"path":"/docs/a b.txt","plan":"upload","plan_error":0,"plan_status":2},
        {"fileid":3,"isDir":false,"path":"/docs/bad.txt","plan":"upload","plan_error":9,"plan_status":10}])"));
        QTRY_COMPARE(repainted.size(), 4);
        QCOMPARE(repainted.at(1), QUrl(QStringLiteral("nubix:///docs")));
        QCOMPARE(repainted.at(2).scheme(), QStringLiteral("nubix"));
        QCOMPARE(repainted.at(2).host(), QString());
        QCOMPARE(repainted.at(2).path(), QStringLiteral("/docs/a b.txt"));
        QCOMPARE(repainted.at(3), QUrl(QStringLiteral("nubix:///docs/bad.txt")));
        QCOMPARE(statusAtRepaint, (QList<int> {1, 3, 2, 10}));

        QCOMPARE(toMap(caches->fileData(QStringLiteral("/docs"))),
            defaultsWith<FileData>(R"({"path":"/docs","isDir":true,"fileId":1,"planStatus":3})"));
        QCOMPARE(toMap(caches->fileData(QStringLiteral("/docs/bad.txt"))),
            defaultsWith<FileData>(
                R"({"path":"/docs/bad.txt","fileId":3,"plan":"upload","planError":9,"planStatus":10})"));

        // An empty answer repaints nothing and keeps what is known.
        peer.send(answer("getFileStatus", "[]"));
        sync();
        QCOMPARE(repainted.size(), 4);
        QCOMPARE(caches->fileData(QStringLiteral("/docs/a b.txt")).planStatus, 2);
    }

    void laterReportWinsOverALongAnswer()
    {
        // Long enough to be worked off over several turns of the event loop.
        constexpr int kEntries = 3000;
        QByteArray entries;
        for (int i = 0; i < kEntries; ++i)
            entries
                += (i ? "," : "") + QByteArray("{\"path\":\"/long/") + QByteArray::number(i) + "\",\"plan_status\":2}";
        repainted.clear();
        statusAtRepaint.clear();
        peer.send(answer("getFileStatus", "[" + entries + "]"));
        // The report about the answer's last entry comes after it: it must win.
        peer.send(notification("fileSyncStatus", R"({"path":"/long/2999","plan_status":3})"));
        QTRY_COMPARE(repainted.size(), kEntries + 1);

        QCOMPARE(repainted.last().path(), QStringLiteral("/long/2999"));
        QCOMPARE(statusAtRepaint.count(2), kEntries);
        QCOMPARE(statusAtRepaint.last(), 3);
        QCOMPARE(caches->fileData(QStringLiteral("/long/0")).planStatus, 2);
        QCOMPARE(caches->fileData(QStringLiteral("/long/2999")).planStatus, 3);
    }

    void rootNotificationWaitsForTheAnswer()
    {
        peer.send(syncInfoAnswer(QStringLiteral("/home/u/Kelo")));
        sync();
        QCOMPARE(caches->syncRoot(), QStringLiteral("/home/u/Kelo"));

        QSignalSpy changed(caches, &NubixCaches::syncRootChanged);
        QSignalSpy updated(caches, &NubixCaches::syncInfoUpdated);
        peer.send(notification("syncRoot", "\"/home/u/Elsewhere\""));
        // The handler asks once, the cache once more.
        QCOMPARE(peer.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getSyncInfo"));
        QCOMPARE(peer.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getSyncInfo"));
        sync();
        QCOMPARE(caches->syncRoot(), QStringLiteral("/home/u/Kelo"));
        QCOMPARE(changed.count(), 0);
        QCOMPARE(updated.count(), 0);

        peer.send(syncInfoAnswer(QStringLiteral("/home/u/Elsewhere")));
        QTRY_COMPARE(updated.count(), 1);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toString(), QStringLiteral("/home/u/Elsewhere"));
        QCOMPARE(caches->syncRoot(), QStringLiteral("/home/u/Elsewhere"));
    }

    void rootChangesOnlyWhenItsTextDiffers_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<bool>("changes");

        const QString kelo = QStringLiteral("/home/u/Kelo");
        const QString none;
        QTest::newRow("same root") << kelo << kelo << false;
        QTest::newRow("trailing slash") << kelo << "/home/u/Kelo/" << true;
        QTest::newRow("root forgotten") << kelo << none << true;
        QTest::newRow("still no root") << none << none << false;
    }

    void rootChangesOnlyWhenItsTextDiffers()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(bool, changes);

        caches->setSyncInfo(SyncInfo {before, {}, {}, {}});
        QSignalSpy changed(caches, &NubixCaches::syncRootChanged);
        QSignalSpy updated(caches, &NubixCaches::syncInfoUpdated);
        peer.send(syncInfoAnswer(after));
        QTRY_COMPARE(updated.count(), 1);
        QCOMPARE(changed.count(), changes ? 1 : 0);
        if (changes)
            QCOMPARE(changed.at(0).at(0).toString(), after);
        QCOMPARE(caches->syncRoot(), after);

        // Without a root the client is asked to show its set-up page.
        handler->requestSyncStart();
        QJsonObject body = peer.nextBody();
        if (after.isEmpty()) {
            QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("navigate"));
            QCOMPARE(body.value(QStringLiteral("data")).toObject(),
                QJsonDocument::fromJson(R"({"type":"home","args":"sync"})").object());
            body = peer.nextBody();
        }
        QCOMPARE(body.value(QStringLiteral("method")).toString(), QStringLiteral("setSyncStart"));
    }

    void notificationsReplacePartsSilently()
    {
        peer.send(syncInfoAnswer(QStringLiteral("/home/u/Kelo")));
        sync();
        const SyncInfo before = caches->syncInfo();

        QSignalSpy changed(caches, &NubixCaches::syncRootChanged);
        QSignalSpy updated(caches, &NubixCaches::syncInfoUpdated);
        peer.send(notification("syncErrors", R"({"isPaused":true,"isOnline":true})"));
        peer.send(notification("syncQuantity", R"({"todo":9,"doing":1})"));
        peer.send(notification("banDirs", R"(["/Private","/Old"])"));
        peer.send(notification("syncInited", "false"));
        sync();

        QCOMPARE(changed.count(), 0);
        QCOMPARE(updated.count(), 0);
        SyncInfo expected = before;
        expected.syncErrors.isPaused = true;
        expected.syncErrors.isOnline = true;
        expected.syncQuantity.todo = 9;
        expected.syncQuantity.doing = 1;
        expected.banDirs = QStringList {QStringLiteral("/Private"), QStringLiteral("/Old")};
        QCOMPARE(toMap(caches->syncInfo()), toMap(expected));

        // Replaced, not merged.
        peer.send(notification("syncErrors", R"({"isUnknown":true})"));
        peer.send(notification("banDirs", "[]"));
        sync();
        QCOMPARE(toMap(caches->syncInfo().syncErrors), defaultsWith<SyncError>(R"({"isUnknown":true})"));
        QCOMPARE(caches->syncInfo().banDirs, QStringList());
    }

    void marksDisconnectionUntilNextAnswer()
    {
        peer.send(syncInfoAnswer(QStringLiteral("/home/u/Kelo")));
        sync();
        QVERIFY(!caches->syncInfo().isDisconnected);
        const QVariantMap user = toMap(caches->userInfo());

        QSignalSpy updated(caches, &NubixCaches::syncInfoUpdated);
        QSignalSpy changed(caches, &NubixCaches::syncRootChanged);
        peer.disconnectClient();
        QTRY_COMPARE(updated.count(), 1);
        QVERIFY(caches->syncInfo().isDisconnected);
        // Everything else is kept for readers that go on showing it.
        QCOMPARE(caches->syncRoot(), QStringLiteral("/home/u/Kelo"));
        QCOMPARE(toMap(caches->userInfo()), user);
        QCOMPARE(caches->fileData(QStringLiteral("/docs/bad.txt")).planStatus, 10);
        QCOMPARE(changed.count(), 0);

        // Back again: the three requests go out, and the answer confirms the summary.
        peer.forgetClient();
        handler->tryConnect();
        QVERIFY(peer.waitForClient());
        QCOMPARE(peer.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getUserInfo"));
        QCOMPARE(peer.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getSyncInfo"));
        QCOMPARE(peer.nextBody().value(QStringLiteral("method")).toString(), QStringLiteral("getFileStatus"));
        QVERIFY(caches->syncInfo().isDisconnected);
        peer.send(syncInfoAnswer(QStringLiteral("/home/u/Kelo")));
        QTRY_COMPARE(updated.count(), 2);
        QVERIFY(!caches->syncInfo().isDisconnected);
        QCOMPARE(changed.count(), 0);
    }

private:
    // Waits until the handler has dealt with everything the peer sent so far.
    void sync()
    {
        // An answer nobody parses comes back as one warning once all before it is handled.
        MessageLog log;
        peer.send(response("marker", "m", "{}"));
        QTRY_VERIFY(log.problems().contains(QStringLiteral("NubixMessageHandler: Unsupported method: \"marker\"")));
    }

    NubixMessageHandler *handler = nullptr;
    NubixCaches *caches = nullptr;
    LocalPeer peer;
    QList<QUrl> repainted;
    // The status the cache held for each repainted item when it was asked to repaint it.
    QList<int> statusAtRepaint;
};

QTEST_MAIN(TestNubixCaches)
#include "tst_nubixcaches.moc"
