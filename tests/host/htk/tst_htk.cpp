// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/label.h>
#include <htk/messagedialog.h>
#include <htk/themehelper.h>

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using htk::MessageDialog;
using htk::ThemeHelper;

namespace {

QPalette paletteWithWindow(const QColor &window)
{
    QPalette pal(window);
    pal.setColor(QPalette::WindowText, window.lightness() < 128 ? Qt::white : Qt::black);
    return pal;
}

}   // namespace

// Recording of dialogs in automation mode is what every scripted test of the
// host and the plug-in reads back; here the interactive side and the theme.
class TestHtk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_lightPalette = paletteWithWindow(QColor(0xf0, 0xf0, 0xf0));
        QApplication::setPalette(m_lightPalette);
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
    }

    void cleanup()
    {
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
        QApplication::setPalette(m_lightPalette);
    }

    void execReturnsPressedButton_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("expected");

        QTest::newRow("first button") << "click 0" << 0;
        QTest::newRow("third button") << "click 2" << 2;
        QTest::newRow("return presses the last default") << "return" << 1;
        QTest::newRow("escape closes") << "escape" << -1;
    }
    void execReturnsPressedButton()
    {
        QFETCH(QString, action);

        MessageDialog dialog;
        dialog.setTitle(QStringLiteral("Choose"));
        QCOMPARE(dialog.addButton(QStringLiteral("Cancel"), true), 0);
        QCOMPARE(dialog.addButton(QStringLiteral("Save"), true, MessageDialog::ButtonRecommend), 1);
        QCOMPARE(dialog.addButton(QStringLiteral("Discard"), false, MessageDialog::ButtonWarning), 2);

        QTimer::singleShot(0, &dialog, [&dialog, action] {
            const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
            if (action.startsWith(QLatin1String("click ")))
                buttons.at(action.mid(6).toInt())->click();
            else
                QTest::keyClick(&dialog, action == QLatin1String("return") ? Qt::Key_Return : Qt::Key_Escape);
        });
        QTimer::singleShot(5000, &dialog, &QDialog::reject);
        QTEST(dialog.exec(), "expected");
    }

    void themeFollowsPalette_data()
    {
        QTest::addColumn<QColor>("window");
        QTest::addColumn<int>("expected");

        QTest::newRow("near black") << QColor(0x20, 0x20, 0x20) << int(ThemeHelper::DarkType);
        QTest::newRow("dark grey") << QColor(0x70, 0x70, 0x70) << int(ThemeHelper::DarkType);
        QTest::newRow("light grey") << QColor(0x90, 0x90, 0x90) << int(ThemeHelper::LightType);
    }
    void themeFollowsPalette()
    {
        QFETCH(QColor, window);
        QFETCH(int, expected);

        ThemeHelper *helper = ThemeHelper::instance();
        QCOMPARE(helper->themeType(), ThemeHelper::LightType);
        QSignalSpy spy(helper, &ThemeHelper::themeTypeChanged);
        QApplication::setPalette(paletteWithWindow(window));
        QCOMPARE(int(helper->themeType()), expected);
        QCOMPARE(spy.size(), expected != ThemeHelper::LightType ? 1 : 0);
    }

    void tipLabelIsSmallerAndDimmed()
    {
        htk::Label label(QStringLiteral("main"));
        htk::TipLabel tip(QStringLiteral("secondary"));
        QVERIFY(tip.font().pointSizeF() < label.font().pointSizeF());
        // It follows a theme switch, dimmed in both.
        for (const QColor &window : {QColor(0xf0, 0xf0, 0xf0), QColor(0x20, 0x20, 0x20)}) {
            const QPalette palette = paletteWithWindow(window);
            QApplication::setPalette(palette);
            const QColor text = tip.palette().color(QPalette::WindowText);
            QCOMPARE(text.rgb(), palette.color(QPalette::WindowText).rgb());
            QVERIFY(text.alphaF() < 1.0);
        }
    }

private:
    QPalette m_lightPalette;
};

QTEST_MAIN(TestHtk)
#include "tst_htk.moc"
