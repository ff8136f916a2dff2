// SPDX-License-Identifier: GPL-3.0-or-later
#include "menus/nubixentrymenuscene.h"

#include "caches/nubixcaches.h"
#include "utils/nubixutils.h"

#include "sentrequests.h"

#include <hfmbase/globaleventtype.h>
#include <hpf/event/event.h>

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

using namespace hfmplugin_nubix;

namespace {
const char *const kActionID = hfmbase::ActionPropertyKey::kActionID;

QVariantHash params(const QList<QUrl> &selected, quint64 windowId = 42)
{
    return {{QStringLiteral("windowId"), QVariant::fromValue(windowId)},
        {QStringLiteral("selectFiles"), QVariant::fromValue(selected)}};
}

// Flags by letter: r sync root set, d disconnected, p paused, c public cloud.
void setState(const QByteArray &flags)
{
    SyncInfo info {flags.contains('r') ? QStringLiteral("/home/a/Drive") : QString(), {}, {}, {}, true,
        flags.contains('c'), flags.contains('d')};
    info.syncErrors.isPaused = flags.contains('p');
    info.syncErrors.isOnline = true;
    NubixCaches::instance()->setSyncInfo(info);
}

QStringList visibleIds(const QMenu &menu)
{
    QStringList ids;
    for (const QAction *action : menu.actions()) {
        if (action->isVisible())
            ids << action->property(kActionID).toString();
    }
    return ids;
}
}   // namespace

class TestNubixEntryMenuScene : public QObject
{
    Q_OBJECT

public:
    bool recordEvent(int type, const QVariantList &args)
    {
        if (type != hfmbase::kChangeCurrentUrl && type != hfmbase::kOpenNewWindow)
            return false;
        QStringList parts {QString::number(type)};
        for (const QVariant &arg : args)
            parts << arg.toString();
        events << parts.join(QLatin1Char(' '));
        return true;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(client.connect());
        hpf::dispatcher()->installGlobalEventFilter(this, &TestNubixEntryMenuScene::recordEvent);
    }

    void acceptsOnlyTheDrivesEntry_data()
    {
        QTest::addColumn<QList<QUrl>>("selected");
        QTest::addColumn<bool>("accepted");

        QTest::newRow("the drive's entry") << QList<QUrl> {NubixUtils::computerEntryUrl()} << true;
        QTest::newRow("another device's entry")
            << QList<QUrl> {QUrl(QStringLiteral("entry:///sda1.blockdev"))} << false;
        QTest::newRow("nothing selected") << QList<QUrl>() << false;
        QTest::newRow("the drive among others")
            << QList<QUrl> {QUrl(QStringLiteral("entry:///home.userdir")), NubixUtils::computerEntryUrl()} << true;
    }
    void acceptsOnlyTheDrivesEntry()
    {
        QFETCH(QList<QUrl>, selected);
        QFETCH(bool, accepted);
        NubixEntryMenuScene scene;
        QCOMPARE(scene.initialize(params(selected)), accepted);
    }

    void menuByState_data()
    {
        QTest::addColumn<QByteArray>("flags");
        QTest::addColumn<QStringList>("ids");

        // The ids after the two open actions, without their "nubix-".
        const auto row = [](const char *name, const char *flags, const char *more = "") {
            QStringList ids {QStringLiteral("nubix-open"), QStringLiteral("nubix-open-in-win")};
            for (const QString &id : QString::fromLatin1(more).split(QLatin1Char(' '), Qt::SkipEmptyParts))
                ids << QStringLiteral("nubix-") + id;
            QTest::newRow(name) << QByteArray(flags) << ids;
        };
        row("personal, syncing", "rc", "open-main-panel sync-detail trash-bin sync-pause upgrade-enterprise settings");
        row("personal, paused: resume, not pause", "rcp",
            "open-main-panel sync-detail trash-bin sync-resume upgrade-enterprise settings");
        row("private deployment: no upgrade", "r", "open-main-panel sync-detail trash-bin sync-pause settings");
        row("private deployment, paused", "rp", "open-main-panel sync-detail trash-bin sync-resume settings");
        row("client stopped: open only", "rcd");
        row("client stopped while paused", "rcpd");
        row("root not ready: open only", "c");
        row("root not ready, paused", "p");
    }
    void menuByState()
    {
        QFETCH(QByteArray, flags);
        QFETCH(QStringList, ids);

        setState(flags);
        QMenu menu;
        // What the computer view's own menu put there before this scene's turn.
        QAction *hostOpen = menu.addAction(QStringLiteral("Open"));
        hostOpen->setProperty(kActionID, QStringLiteral("open"));
        menu.addSeparator();

        NubixEntryMenuScene scene;
        QVERIFY(scene.initialize(params({NubixUtils::computerEntryUrl()})));
        QVERIFY(scene.create(&menu));
        // create() keeps the actions; the menu gets them in updateState().
        QCOMPARE(visibleIds(menu), (QStringList {QStringLiteral("open"), QStringLiteral("")}));
        scene.updateState(&menu);
        QCOMPARE(visibleIds(menu), ids);
        QVERIFY(!hostOpen->isVisible());
    }

    void actionsReachTheClient_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("sent");

        QTest::newRow("pause") << "nubix-sync-pause" << QStringList {QStringLiteral("setSyncPause {}")};
        QTest::newRow("resume") << "nubix-sync-resume" << QStringList {QStringLiteral("setSyncResume {}")};
        // Not handled here: left to the sub-scenes.
        QTest::newRow("another scene's action") << "open-in-new-tab" << QStringList();
    }
    void actionsReachTheClient()
    {
        QFETCH(QString, id);
        QFETCH(QStringList, sent);

        NubixEntryMenuScene scene;
        QAction action;
        action.setProperty(kActionID, id);
        events.clear();
        QCOMPARE(scene.triggered(&action), !sent.isEmpty());
        QVERIFY(!scene.triggered(nullptr));
        QCOMPARE(client.drain(), sent);
        QCOMPARE(events, QStringList());
    }

    void upgradeOpensThePricingPage()
    {
        // A stand-in for the desktop's opener that writes down what it was given.
        QTemporaryDir bin;
        const QString record = bin.filePath(QStringLiteral("opened"));
        QFile script(bin.filePath(QStringLiteral("xdg-open")));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s|' \"$@\" > \"" + record.toUtf8() + ".part\" && mv \"" + record.toUtf8()
            + ".part\" \"" + record.toUtf8() + "\"\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(bin.path()) + ":" + path);

        NubixEntryMenuScene scene;
        QAction action;
        action.setProperty(kActionID, QStringLiteral("nubix-upgrade-enterprise"));
        QVERIFY(scene.triggered(&action));
        qputenv("PATH", path);
        QTRY_VERIFY(QFile::exists(record));
        QFile opened(record);
        QVERIFY(opened.open(QIODevice::ReadOnly));
        QCOMPARE(opened.readAll(), QByteArray(NubixEntryMenuScene::kEnterprisePricingUrl) + '|');
        QCOMPARE(client.drain(), QStringList());
    }

private:
    SentRequests client;
    QStringList events;
};

QTEST_MAIN(TestNubixEntryMenuScene)
#include "tst_nubixentrymenuscene.moc"
