// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/label.h>
#include <htk/messagedialog.h>
#include <htk/themehelper.h>

#include <QApplication>
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

        m_lightPalette = paletteWithWindow(QColor(0xf0, 0xf0, 0xf0));
        QApplication::setPalette(m_lightPalette);
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
    }

    void cleanup()
    {
        MessageDialog::setAutomationMode(false);
        MessageDialog::clearRecordedDialogs();
        ThemeHelper::instance()->setThemeType(ThemeHelper::UnknownType);
        QApplication::setPalette(m_lightPalette);
    }

    void automationRecordsAndAnswersFirst()
    {
        MessageDialog::setAutomationMode(true);
        MessageDialog warning;
        warning.setIcon(QIcon::fromTheme(QStringLiteral("htk-test-warning")));
        warning.setTitle(QStringLiteral("The file is incomplete"));
        warning.setMessage(QStringLiteral("Wait until the transfer has finished."));
        warning.addButton(QStringLiteral("OK"));
        MessageDialog question;
        question.setTitle(QStringLiteral("Delete?"));
        question.addButton(QStringLiteral("Cancel"));
        question.addButton(QStringLiteral("Delete"), true);
        // A dialog that blocked would be closed by these watchdogs and answer -1.
        for (MessageDialog *dialog : {&warning, &question}) {
            QTimer::singleShot(5000, dialog, &QDialog::reject);
            QCOMPARE(dialog->exec(), 0);
            QVERIFY(!dialog->isVisible());
        }

        const QList<MessageDialog::Record> records = MessageDialog::recordedDialogs();
        QCOMPARE(records.size(), 2);
        QCOMPARE(records.at(0).title, QStringLiteral("The file is incomplete"));
        QCOMPARE(records.at(0).message, QStringLiteral("Wait until the transfer has finished."));
        QCOMPARE(records.at(0).iconName, QStringLiteral("htk-test-warning"));
        QCOMPARE(records.at(1).iconName, QString());
        QCOMPARE(records.at(1).buttons, (QStringList {QStringLiteral("Cancel"), QStringLiteral("Delete")}));
        MessageDialog::clearRecordedDialogs();
        QVERIFY(MessageDialog::recordedDialogs().isEmpty());

        // Outside automation nothing is recorded.
        MessageDialog::setAutomationMode(false);
        QTimer::singleShot(0, &warning, &QDialog::reject);
        QCOMPARE(warning.exec(), -1);
        QVERIFY(MessageDialog::recordedDialogs().isEmpty());
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
    QTemporaryDir m_iconDir;
    QPalette m_lightPalette;
};

QTEST_MAIN(TestHtk)
#include "tst_htk.moc"
