// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>

#include <QLabel>
#include <QtTest>

using hfmbase::FileManagerWindow;
using hfmbase::FileManagerWindowsManager;

class TestWindows : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void idsGrowAndWindowOpenedOnce()
    {
        auto &manager = FileManagerWindowsManager::instance();
        QSignalSpy created(&manager, &FileManagerWindowsManager::windowCreated);
        QSignalSpy opened(&manager, &FileManagerWindowsManager::windowOpened);

        FileManagerWindow *first = manager.createWindow(QUrl(QStringLiteral("file:///")));
        FileManagerWindow *second = manager.createWindow(QUrl(QStringLiteral("file:///")));
        QVERIFY(first && second);
        const quint64 id1 = manager.findWindowId(first);
        const quint64 id2 = manager.findWindowId(second);
        QCOMPARE((QList<quint64> {id1, id2}), (QList<quint64> {1, 2}));
        QCOMPARE(created.size(), 2);
        QCOMPARE(manager.findWindowById(id2), second);
        QVERIFY(opened.isEmpty());   // created, not yet shown

        manager.showWindow(first);
        manager.showWindow(first);
        manager.showWindow(second);
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened.at(0).at(0).value<quint64>(), id1);
        QCOMPARE(opened.at(1).at(0).value<quint64>(), id2);

        // A widget inside a window belongs to it.
        auto *inner = new QLabel(first);
        QCOMPARE(manager.findWindowId(inner), id1);

        QSignalSpy closed(&manager, &FileManagerWindowsManager::windowClosed);
        QSignalSpy last(&manager, &FileManagerWindowsManager::lastWindowClosed);
        QPointer<FileManagerWindow> guard(first);
        QVERIFY(first->close());
        QCOMPARE(closed.size(), 1);
        QCOMPARE(closed.at(0).at(0).value<quint64>(), id1);
        QVERIFY(last.isEmpty());
        QCOMPARE(manager.windowIdList(), QList<quint64> {id2});
        QTRY_VERIFY(guard.isNull());   // deleted on close

        QVERIFY(second->close());
        QCOMPARE(last.size(), 1);
        QCOMPARE(last.at(0).at(0).value<quint64>(), id2);
        QVERIFY(manager.windowIdList().isEmpty());

        // Ids are never reused.
        FileManagerWindow *third = manager.createWindow(QUrl(QStringLiteral("file:///")));
        QCOMPARE(manager.findWindowId(third), quint64(3));
        delete third;   // deleted without closing: still leaves the list
        QVERIFY(manager.windowIdList().isEmpty());
    }

    void unknownIdsAndBadUrls()
    {
        auto &manager = FileManagerWindowsManager::instance();
        QVERIFY(!manager.findWindowById(987654));
        QCOMPARE(manager.findWindowId(nullptr), quint64(0));
        QString error;
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(QStringLiteral("^FileManagerWindowsManager::createWindow: ")));
        QVERIFY(!manager.createWindow(QUrl(), &error));
        QVERIFY(!error.isEmpty());
        FileManagerWindow stray(QUrl(QStringLiteral("file:///")));
        QTest::ignoreMessage(QtWarningMsg, "FileManagerWindowsManager::showWindow: the window is not one of ours");
        manager.showWindow(&stray);
        QVERIFY(!stray.isVisible());
    }

    void currentUrlIsRelayedWithTheId()
    {
        auto &manager = FileManagerWindowsManager::instance();
        FileManagerWindow *window = manager.createWindow(QUrl(QStringLiteral("file:///")));
        const quint64 id = manager.findWindowId(window);
        QSignalSpy relayed(&manager, &FileManagerWindowsManager::currentUrlChanged);
        const QUrl target(QStringLiteral("file:///tmp"));
        window->cd(target);
        QCOMPARE(window->currentUrl(), target);
        QCOMPARE(relayed.size(), 1);
        QCOMPARE(relayed.at(0).at(0).value<quint64>(), id);
        QCOMPARE(relayed.at(0).at(1).toUrl(), target);
        delete window;
    }
};

QTEST_MAIN(TestWindows)
#include "tst_windows.moc"
