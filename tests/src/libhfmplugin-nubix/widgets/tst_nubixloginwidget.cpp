// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixloginwidget.h"

#include <htk/themehelper.h>

#include <QApplication>
#include <QLabel>
#include <QTest>

using namespace hfmplugin_nubix;

class TestNubixLoginWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blockStaysCentred_data()
    {
        QTest::addColumn<QSize>("size");
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
