// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixloginwidget.h"

#include "messagelog.h"
#include "wire.h"

#include <htk/label.h>
#include <htk/themehelper.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using namespace hfmplugin_nubix;

class TestNubixLoginWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsItsUrl()
    {
        const QUrl login(QStringLiteral("nubix-login:///"));
        NubixLoginWidget page(login);
        QCOMPARE(page.rootUrl(), login);
        QCOMPARE(page.widget(), static_cast<QWidget *>(&page));
        const int children = page.findChildren<QWidget *>().size();
        QVERIFY(page.setRootUrl(QUrl(QStringLiteral("nubix-login:///x"))));
        QCOMPARE(page.rootUrl(), QUrl(QStringLiteral("nubix-login:///x")));
        QCOMPARE(page.findChildren<QWidget *>().size(), children);
    }

    void textsAndSizes()
    {
        NubixLoginWidget page(QUrl(QStringLiteral("nubix-login:///")));
        auto *icon = page.findChild<QLabel *>(QStringLiteral("productIcon"));
        auto *name = page.findChild<QLabel *>(QStringLiteral("productName"));
        auto *button = page.findChild<QPushButton *>(QStringLiteral("openButton"));
        QVERIFY(icon && name && button);
        QCOMPARE(icon->size(), QSize(96, 96));
        QCOMPARE(name->text(), QStringLiteral("Kelo Drive"));
        QCOMPARE(name->font().weight(), 75);
        QCOMPARE(name->font().pixelSize(), QFontInfo(QApplication::font()).pixelSize() + 6);
        QCOMPARE(button->text(), QStringLiteral("Open Kelo Drive"));
        QCOMPARE(button->minimumWidth(), 200);

        QStringList titles;
        QStringList descriptions;
        for (QWidget *tile : page.findChildren<QWidget *>(QStringLiteral("functionWidget"))) {
            QCOMPARE(tile->findChild<QLabel *>(QStringLiteral("functionIcon"))->size(), QSize(60, 60));
            auto *title = tile->findChild<QLabel *>(QStringLiteral("functionTitle"));
            auto *description = tile->findChild<htk::TipLabel *>(QStringLiteral("functionDescription"));
            QVERIFY(title && description);
            QVERIFY(title->wordWrap() && description->wordWrap());
            QCOMPARE(title->font().pixelSize(), QFontInfo(QApplication::font()).pixelSize() - 2);
            QCOMPARE(description->font().pixelSize(), QFontInfo(QApplication::font()).pixelSize() - 2);
            titles << title->text();
            descriptions << description->text();
        }
        QCOMPARE(titles,
            (QStringList {QStringLiteral("Automatic Synchronization"), QStringLiteral("Cross-platform Collaboration"),
                QStringLiteral("Secure Backup")}));
        QCOMPARE(descriptions,
            (QStringList {
                QStringLiteral("Automatic detection of cloud updates\nBi-directional local cloud synchronization"),
                QStringLiteral("Kelo ID Unified Login\nMulti-Device Collaboration"),
                QStringLiteral(
                    "Easy to retrieve accidentally deleted documents\nAlways protect the security of documents")}));
        const QList<QLabel *> splitters = page.findChildren<QLabel *>(QStringLiteral("splitter"));
        QCOMPARE(splitters.size(), 2);
        for (QLabel *splitter : splitters)
            QCOMPARE(splitter->size(), QSize(1, 30));
    }

    void blockStaysCentred_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("small") << QSize(900, 600);
        QTest::newRow("wide") << QSize(1800, 700);
        QTest::newRow("tall") << QSize(1000, 1400);
    }
    void blockStaysCentred()
    {
        QFETCH(QSize, size);
        NubixLoginWidget page(QUrl(QStringLiteral("nubix-login:///")));
        page.resize(size);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        for (const char *name : {"productIcon", "productName", "openButton"}) {
            const QWidget *item = page.findChild<QWidget *>(QString::fromLatin1(name));
            QVERIFY2(qAbs(item->geometry().center().x() - page.width() / 2) <= 1, name);
        }
        const QList<QWidget *> tiles = page.findChildren<QWidget *>(QStringLiteral("functionWidget"));
        const int left = tiles.first()->geometry().left();
        const int right = tiles.last()->geometry().right();
        QVERIFY(qAbs(left - (page.width() - 1 - right)) <= 2);
        // From top to bottom: icon, name, tiles, button; all on the page.
        const int iconTop = page.findChild<QWidget *>(QStringLiteral("productIcon"))->y();
        const int buttonBottom = page.findChild<QWidget *>(QStringLiteral("openButton"))->geometry().bottom();
        QVERIFY(iconTop > 0);
        QVERIFY(buttonBottom < page.height());
        QVERIFY(tiles.first()->y() > iconTop && tiles.first()->y() < buttonBottom);
    }

    void buttonStartsTheClientAndConnects()
    {
        LocalPeer peer;
        QVERIFY(writePortFile(QByteArray::number(peer.port())));
        NubixLoginWidget page(QUrl(QStringLiteral("nubix-login:///")));
        {
            MessageLog log;
            page.findChild<QPushButton *>(QStringLiteral("openButton"))->click();
            QVERIFY(peer.waitForClient());
            const QStringList info = log.lines(QtInfoMsg);
            QVERIFY(!info.isEmpty());
            QCOMPARE(info.first(),
                QStringLiteral("NubixMessageHandler: Launching app: \"/opt/apps/com.kelo.drive/files/kelodrive\""));
            QVERIFY(info.contains(QStringLiteral("NubixMessageHandler: Attempting to connect...")));
            QTRY_VERIFY(NubixMessageHandler::instance()->isConnected());
        }

        // Pressed again: the client is started again all the same; the page does not check.
        MessageLog log;
        page.openNubix();
        QCOMPARE(log.lines(QtInfoMsg),
            (QStringList {
                QStringLiteral("NubixMessageHandler: Launching app: \"/opt/apps/com.kelo.drive/files/kelodrive\""),
                QStringLiteral("NubixMessageHandler: Already connected.")}));
    }

    void tilesFollowTheTheme()
    {
        auto *theme = htk::ThemeHelper::instance();
        theme->setThemeType(htk::ThemeHelper::LightType);
        NubixLoginWidget page(QUrl(QStringLiteral("nubix-login:///")));
        const QList<QLabel *> titles = page.findChildren<QLabel *>(QStringLiteral("functionTitle"));
        QCOMPARE(titles.size(), 3);
        const QColor light = titles.first()->palette().color(QPalette::WindowText);
        theme->setThemeType(htk::ThemeHelper::DarkType);
        const QColor dark = titles.first()->palette().color(QPalette::WindowText);
        QVERIFY(light != dark);
        // Light text on a dark page, dark text on a light one.
        QVERIFY(dark.lightness() > 160);
        QVERIFY(light.lightness() < 100);
        for (QLabel *title : titles)
            QCOMPARE(title->palette().color(QPalette::WindowText), dark);
        theme->setThemeType(htk::ThemeHelper::LightType);
        QCOMPARE(titles.last()->palette().color(QPalette::WindowText), light);
    }
};

QTEST_MAIN(TestNubixLoginWidget)
#include "tst_nubixloginwidget.moc"
