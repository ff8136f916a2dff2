// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixtitlewidget.h"

#include "caches/nubixcaches.h"

#include "messagelog.h"
#include "sentrequests.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QVBoxLayout>

using namespace hfmplugin_nubix;

namespace {
const QString kPaused = QStringLiteral(
    "The current synchronization has been paused, click <a href=\"SyncContinue\">Continue Synchronization </a>to keep "
    "the synchronization status");
const QString kLocalLow = QStringLiteral("Insufficient local disk space, some files cannot be synchronized");
const QString kRemoteLow = QStringLiteral("Insufficient cloud disk space");
const QString kOffline = QStringLiteral("Currently the network is not available, please check the network connection");
const QString kFlow = QStringLiteral("The flow rate has been exhausted");
const QString kDone = QStringLiteral("Files have been synchronized");
const QString kStopped = QStringLiteral(
    "File synchronization has been suspended, please <a href=\"LaunchApp\">start the Kelo Drive client </a>first");
const QString kChecking = QStringLiteral("Checking for updated synchronization files");

// Flags by letter: p paused, l local space low, r remote space low, o online,
// f flow empty, d disconnected (not confirmed by a live client).
SyncInfo state(const char *flags, SyncQuantity quantity = SyncQuantity())
{
    const QByteArray f(flags);
    const SyncError errors {
        f.contains('p'), f.contains('r'), f.contains('l'), false, false, false, f.contains('f'), f.contains('o')};
    return SyncInfo {QStringLiteral("/home/a/Drive"), {}, quantity, errors, true, false, f.contains('d')};
}

}   // namespace

class TestNubixTitleWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(client.connect()); }
    void init() { NubixCaches::instance()->setSyncInfo(state("o")); }

    void bannerPriority_data()
    {
        QTest::addColumn<QString>("flags");
        QTest::addColumn<SyncQuantity>("counts");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<bool>("syncing");

        const SyncQuantity busy = SyncQuantity {5, 0, 1, 0};
        QTest::newRow("paused wins over everything") << "plrf" << busy << kPaused << "fbnubix_drive_pause" << false;
        QTest::newRow("local space low before remote") << "lro" << busy << kLocalLow << "fbnubix_drive_error" << false;
        QTest::newRow("remote space low before offline")
            << "rf" << busy << kRemoteLow << "fbnubix_drive_error" << false;
        QTest::newRow("offline before flow") << "f" << busy << kOffline << "fbnubix_network_error" << false;
        QTest::newRow("online, flow used up, files to do") << "of" << busy << kFlow << "fbnubix_drive_error" << false;
        QTest::newRow("online and nothing to do") << "o" << SyncQuantity() << kDone << "fbnubix_drive_done" << false;
        QTest::newRow("disconnected overrides paused") << "pod" << busy << kStopped << "fbnubix_drive_pause" << false;
        QTest::newRow("disconnected overrides done")
            << "od" << SyncQuantity() << kStopped << "fbnubix_drive_pause" << false;
        QTest::newRow("progress: waiting and transferring add up")
            << "o" << SyncQuantity {3, 2, 10, 0}
            << "10 completed, 5 remaining. <a href=\"SyncDetail\">View synchronization details</a>"
            << "fbnubix_drive_syncing" << true;
        QTest::newRow("progress with anomalies")
            << "o" << SyncQuantity {7, 0, 2, 4}
            << "2 completed, 7 remaining, 4 anomalies. <a href=\"SyncDetail\">View synchronization details</a>"
            << "fbnubix_drive_syncing" << true;
        QTest::newRow("finished with anomalies")
            << "o" << SyncQuantity {0, 0, 12, 3}
            << "Kelo Drive Synchronization 3 Exception, <a href=\"ErrorList\">view</a>"
            << "fbnubix_drive_error" << false;
        QTest::newRow("large counts in plain decimal")
            << "o" << SyncQuantity {2000000000, 2000000000, 1234567, 0}
            << "1234567 completed, 4000000000 remaining. <a href=\"SyncDetail\">View synchronization details</a>"
            << "fbnubix_drive_syncing" << true;
    }
    void bannerPriority()
    {
        QFETCH(QString, flags);
        QFETCH(SyncQuantity, counts);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QFETCH(bool, syncing);

        NubixTitleWidget strip;
        // Every strip follows the cache's signal, and a new strip reads the same from the cache.
        NubixCaches::instance()->setSyncInfo(state(flags.toLatin1().constData(), counts));
        NubixTitleWidget fresh;
        for (const NubixTitleWidget *shown : {&strip, &fresh}) {
            QCOMPARE(shown->text(), text);
            QCOMPARE(shown->iconName(), icon);
            QCOMPARE(shown->isSyncing(), syncing);
        }
    }

    void progressNotificationReachesTheStrip()
    {
        NubixTitleWidget strip;
        client.peer.send(notification("syncQuantity", R"({"todo":4,"doing":1,"done":9,"error":2})"));
        QTRY_COMPARE(strip.text(),
            QStringLiteral(
                "9 completed, 5 remaining, 2 anomalies. <a href=\"SyncDetail\">View synchronization details</a>"));
        QVERIFY(strip.isSyncing());
    }

    void refreshButtonRules_data()
    {
        QTest::addColumn<QString>("flags");
        QTest::addColumn<SyncQuantity>("counts");
        QTest::addColumn<bool>("sends");

        QTest::newRow("idle and connected") << "o" << SyncQuantity() << true;
        QTest::newRow("finished with anomalies") << "o" << SyncQuantity {0, 0, 1, 2} << true;
        QTest::newRow("paused (not syncing)") << "po" << SyncQuantity() << true;
        QTest::newRow("still syncing") << "o" << SyncQuantity {1, 0, 0, 0} << false;
        QTest::newRow("client stopped") << "od" << SyncQuantity() << false;
    }
    void refreshButtonRules()
    {
        QFETCH(QString, flags);
        QFETCH(SyncQuantity, counts);
        QFETCH(bool, sends);

        NubixCaches::instance()->setSyncInfo(state(flags.toLatin1().constData(), counts));
        NubixTitleWidget strip;
        const QString before = strip.text();
        MessageLog log;
        strip.findChild<QAbstractButton *>(QStringLiteral("refreshButton"))->click();
        if (!sends) {
            QCOMPARE(log.lines(QtDebugMsg).filter(QStringLiteral("ignore request")),
                QStringList {QStringLiteral("Kelo Drive client offline or under updating, ignore request.")});
            QCOMPARE(strip.text(), before);
            QCOMPARE(client.drain(), QStringList());
            return;
        }
        QVERIFY(log.lines(QtDebugMsg).contains(QStringLiteral("request updating...")));
        QCOMPARE(strip.text(), kChecking);
        QCOMPARE(strip.iconName(), QStringLiteral("fbnubix_drive_syncing"));
        // Nothing goes out before the short delay; then start, then a fresh summary.
        QCOMPARE(client.drain(), QStringList());
        QCOMPARE(client.waitFor(QStringLiteral("getSyncInfo")),
            (QStringList {QStringLiteral("setSyncStart {}"), QStringLiteral("getSyncInfo {}")}));
    }

    void refreshWorksAgainAfterSyncing()
    {
        NubixTitleWidget strip;
        strip.onSyncProgressUpdated(SyncQuantity {2, 0, 0, 0});
        strip.doCheckUpdate();
        QCOMPARE(client.drain(), QStringList());
        strip.onSyncProgressUpdated(SyncQuantity {0, 0, 2, 0});
        QCOMPARE(strip.text(), kDone);
        strip.doCheckUpdate();
        QCOMPARE(client.waitFor(QStringLiteral("getSyncInfo")),
            (QStringList {QStringLiteral("setSyncStart {}"), QStringLiteral("getSyncInfo {}")}));
    }

    void links_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QStringList>("sent");

        QTest::newRow("details") << "SyncDetail"
                                 << QStringList {QStringLiteral(R"(navigate {"args":"syncList","type":"sync"})")};
        QTest::newRow("errors") << "ErrorList"
                                << QStringList {QStringLiteral(R"(navigate {"args":"errorList","type":"sync"})")};
        QTest::newRow("unknown link") << "http://example.com" << QStringList();
    }
    void links()
    {
        QFETCH(QString, link);
        QFETCH(QStringList, sent);

        NubixTitleWidget strip;
        MessageLog log;
        strip.onLinkActivated(link);
        QCOMPARE(client.drain(), sent);
        const QStringList warnings = log.lines(QtWarningMsg);
        if (sent.isEmpty()) {
            QCOMPARE(warnings.size(), 1);
            QVERIFY2(warnings.first().contains(QStringLiteral("onLinkActivated")), qPrintable(warnings.first()));
            QVERIFY(warnings.first().endsWith(QStringLiteral("Unhandled link type! \"%1\"").arg(link)));
        } else {
            QCOMPARE(warnings, QStringList());
        }
    }

    void launchLinkStartsTheClientAndConnects()
    {
        NubixTitleWidget strip;
        MessageLog log;
        strip.onLinkActivated(QStringLiteral("LaunchApp"));
        const QStringList info = log.lines(QtInfoMsg);
        QCOMPARE(info.size(), 2);
        QVERIFY(info.at(0).startsWith(QStringLiteral("NubixMessageHandler: Launching app:")));
        // Already connected here: the attempt is made and ends at once.
        QCOMPARE(info.at(1), QStringLiteral("NubixMessageHandler: Already connected."));
    }

    void linksFromTheKeyboard()
    {
        NubixCaches::instance()->setSyncInfo(state("po"));
        QWidget window;
        auto *before = new QLabel(QStringLiteral("before"), &window);
        before->setFocusPolicy(Qt::StrongFocus);
        auto *strip = new NubixTitleWidget(&window);
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(before);
        layout->addWidget(strip);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        before->setFocus();
        QTRY_VERIFY(before->hasFocus());

        auto *text = strip->findChild<QLabel *>(QStringLiteral("textLabel"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(text));
        // The first link has the focus at once: Enter follows it.
        QCOMPARE(text->selectedText(), QStringLiteral("Continue Synchronization "));
        QTest::keyClick(text, Qt::Key_Return);
        QCOMPARE(client.drain(), QStringList {QStringLiteral("setSyncResume {}")});

        // A text without links is no tab stop: Tab goes past it.
        NubixCaches::instance()->setSyncInfo(state("ol"));
        before->setFocus();
        QTRY_VERIFY(before->hasFocus());
        QTest::keyClick(before, Qt::Key_Tab);
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(before));
        QVERIFY(!text->hasFocus());
    }

    // What a shown strip offers: the sentence, to screen readers too, and no refresh button.
    void accessibleTextIsTheVisibleSentence()
    {
        NubixCaches::instance()->setSyncInfo(state("po"));
        NubixTitleWidget strip;
        strip.show();
        QVERIFY(QTest::qWaitForWindowExposed(&strip));
        QVERIFY(!strip.findChild<QAbstractButton *>(QStringLiteral("refreshButton"))->isVisible());
        const QString plain = QStringLiteral(
            "The current synchronization has been paused, click Continue Synchronization to keep the synchronization "
            "status");
        QCOMPARE(strip.plainText(), plain);
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&strip);
        QVERIFY(accessible);
        QCOMPARE(accessible->text(QAccessible::Name), plain);
        QCOMPARE(accessible->text(QAccessible::Description), plain);
        // It follows changes.
        NubixCaches::instance()->setSyncInfo(state("ol"));
        QCOMPARE(accessible->text(QAccessible::Name), kLocalLow);
    }

private:
    SentRequests client;
};

QTEST_MAIN(TestNubixTitleWidget)
#include "tst_nubixtitlewidget.moc"
