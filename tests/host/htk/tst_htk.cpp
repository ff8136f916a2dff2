// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/label.h>
#include <htk/messagedialog.h>
#include <htk/themehelper.h>

#include <QApplication>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
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

class TestHtk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A tiny icon theme so that recorded icon names are deterministic.
        QVERIFY(m_iconDir.isValid());
        const QString theme = m_iconDir.filePath(QStringLiteral("htktest"));
        QVERIFY(QDir().mkpath(theme + QStringLiteral("/16x16")));
        QFile index(theme + QStringLiteral("/index.theme"));
        QVERIFY(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=htktest\nDirectories=16x16\n\n[16x16]\nSize=16\n");
        index.close();
        QPixmap pixmap(16, 16);
        pixmap.fill(Qt::red);
        QVERIFY(pixmap.save(theme + QStringLiteral("/16x16/htk-test-warning.png")));
        QIcon::setThemeSearchPaths({m_iconDir.path()});
        QIcon::setThemeName(QStringLiteral("htktest"));
        QVERIFY(!QIcon::fromTheme(QStringLiteral("htk-test-warning")).isNull());

        m_lightPalette = paletteWithWindow(QColor(0xf0, 0xf0, 0xf0));
        QApplication::setPalette(m_lightPalette);
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
        QCOMPARE(ThemeHelper::instance()->themeType(), ThemeHelper::LightType);
    }

    void cleanup()
    {
        MessageDialog::setAutomationMode(false);
        MessageDialog::clearRecordedDialogs();
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
        QApplication::setPalette(m_lightPalette);
    }

    void automationRecordsAndAnswersFirst_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QStringList>("buttons");

        QTest::newRow("warning with one button") << "The file is incomplete"
                                                 << "Wait until the transfer has finished."
                                                 << "htk-test-warning" << QStringList {QStringLiteral("OK")};
        QTest::newRow("question with two buttons")
            << "Delete?" << QString() << QString() << QStringList {QStringLiteral("Cancel"), QStringLiteral("Delete")};
    }
    void automationRecordsAndAnswersFirst()
    {
        QFETCH(QString, title);
        QFETCH(QString, message);
        QFETCH(QString, icon);
        QFETCH(QStringList, buttons);

        MessageDialog::setAutomationMode(true);
        QVERIFY(MessageDialog::automationMode());
        MessageDialog dialog;
        if (!icon.isEmpty())
            dialog.setIcon(QIcon::fromTheme(icon));
        dialog.setTitle(title);
        dialog.setMessage(message);
        for (const QString &text : qAsConst(buttons))
            dialog.addButton(text, text == buttons.value(1));

        // A dialog that blocked would be closed by this watchdog and answer -1.
        QTimer::singleShot(5000, &dialog, &QDialog::reject);
        QCOMPARE(dialog.exec(), 0);
        QVERIFY(!dialog.isVisible());

        const QList<MessageDialog::Record> records = MessageDialog::recordedDialogs();
        QCOMPARE(records.size(), 1);
        QCOMPARE(records.at(0).title, title);
        QCOMPARE(records.at(0).message, message);
        QCOMPARE(records.at(0).iconName, icon);
        QCOMPARE(records.at(0).buttons, buttons);
    }

    void recordsAccumulateUntilCleared()
    {
        MessageDialog::setAutomationMode(true);
        for (int i = 0; i < 3; ++i) {
            MessageDialog dialog;
            dialog.setTitle(QString::number(i));
            dialog.exec();
        }
        const QList<MessageDialog::Record> records = MessageDialog::recordedDialogs();
        QCOMPARE(records.size(), 3);
        QCOMPARE(records.at(2).title, QStringLiteral("2"));
        MessageDialog::clearRecordedDialogs();
        QVERIFY(MessageDialog::recordedDialogs().isEmpty());

        // Outside automation nothing is recorded.
        MessageDialog::setAutomationMode(false);
        MessageDialog dialog;
        QTimer::singleShot(0, &dialog, &QDialog::reject);
        QCOMPARE(dialog.exec(), -1);
        QVERIFY(MessageDialog::recordedDialogs().isEmpty());
    }

    void execReturnsPressedButton_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("expected");

        QTest::newRow("first button") << "click 0" << 0;
        QTest::newRow("third button") << "click 2" << 2;
        QTest::newRow("return presses the default") << "return" << 1;
        QTest::newRow("escape closes") << "escape" << -1;
    }
    void execReturnsPressedButton()
    {
        QFETCH(QString, action);
        QFETCH(int, expected);

        MessageDialog dialog;
        dialog.setTitle(QStringLiteral("Choose"));
        QCOMPARE(dialog.addButton(QStringLiteral("Cancel")), 0);
        QCOMPARE(dialog.addButton(QStringLiteral("Save"), true, MessageDialog::ButtonRecommend), 1);
        QCOMPARE(dialog.addButton(QStringLiteral("Discard"), false, MessageDialog::ButtonWarning), 2);

        QTimer::singleShot(0, &dialog, [&dialog, action] {
            QVERIFY(dialog.isVisible());
            const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
            if (action.startsWith(QLatin1String("click ")))
                buttons.at(action.mid(6).toInt())->click();
            else if (action == QLatin1String("return"))
                QTest::keyClick(&dialog, Qt::Key_Return);
            else
                QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        QTimer::singleShot(5000, &dialog, &QDialog::reject);
        QCOMPARE(dialog.exec(), expected);
    }

    void onlyOneDefaultButton()
    {
        MessageDialog dialog;
        dialog.addButton(QStringLiteral("A"), true);
        dialog.addButton(QStringLiteral("B"));
        dialog.addButton(QStringLiteral("C"), true);
        QCOMPARE(dialog.buttonTexts(), (QStringList {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
        QStringList defaults;
        for (const QPushButton *button : dialog.findChildren<QPushButton *>()) {
            if (button->isDefault())
                defaults << button->text();
        }
        QCOMPARE(defaults, QStringList {QStringLiteral("C")});
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
        const bool changed = expected != ThemeHelper::LightType;
        QCOMPARE(spy.size(), changed ? 1 : 0);
        if (changed)
            QCOMPARE(spy.at(0).at(0).value<ThemeHelper::ThemeType>(), ThemeHelper::ThemeType(expected));
    }

    void forcedThemeIgnoresPalette()
    {
        ThemeHelper *helper = ThemeHelper::instance();
        QSignalSpy spy(helper, &ThemeHelper::themeTypeChanged);

        helper->setThemeType(ThemeHelper::DarkType);
        QCOMPARE(helper->themeType(), ThemeHelper::DarkType);
        helper->setThemeType(ThemeHelper::DarkType);
        QCOMPARE(spy.size(), 1);

        // A forced theme stays while the palette changes underneath.
        QApplication::setPalette(paletteWithWindow(Qt::white));
        QCOMPARE(helper->themeType(), ThemeHelper::DarkType);
        QCOMPARE(spy.size(), 1);

        // Unforcing judges the palette again.
        helper->setThemeType(ThemeHelper::UnknownType);
        QCOMPARE(helper->themeType(), ThemeHelper::LightType);
        QCOMPARE(spy.size(), 2);
    }

    void tipLabelIsSmallerAndDimmed()
    {
        htk::Label label(QStringLiteral("main"));
        htk::TipLabel tip(QStringLiteral("secondary"));
        QVERIFY(tip.font().pointSizeF() < label.font().pointSizeF());
        const QColor lightTip = tip.palette().color(QPalette::WindowText);
        QVERIFY(lightTip.alphaF() < 1.0);
        QCOMPARE(lightTip.rgb(), QApplication::palette().color(QPalette::WindowText).rgb());

        const QPalette dark = paletteWithWindow(QColor(0x20, 0x20, 0x20));
        QApplication::setPalette(dark);
        QCOMPARE(ThemeHelper::instance()->themeType(), ThemeHelper::DarkType);
        const QColor darkTip = tip.palette().color(QPalette::WindowText);
        QCOMPARE(darkTip.rgb(), dark.color(QPalette::WindowText).rgb());
        QVERIFY(darkTip.alphaF() < 1.0);
    }

private:
    QTemporaryDir m_iconDir;
    QPalette m_lightPalette;
};

QTEST_MAIN(TestHtk)
#include "tst_htk.moc"
