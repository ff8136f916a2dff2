// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <htk/htk_global.h>

#include <QDialog>
#include <QIcon>

#include <memory>

namespace htk {

// A modal message box: icon, title, message and buttons. exec() returns the
// index of the pressed button (-1 when closed otherwise). GUI thread only.
// In automation mode exec() does not block: the dialog is recorded and
// answers with its first button at once.
class HTK_EXPORT MessageDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(MessageDialog)
public:
    enum ButtonType { ButtonNormal, ButtonWarning, ButtonRecommend };

    struct Record
    {
        QString title;
        QString message;
        QString iconName;
        QStringList buttons;
    };

    explicit MessageDialog(QWidget *parent = nullptr);
    ~MessageDialog() override;

    void setIcon(const QIcon &icon);
    void setTitle(const QString &title);
    void setMessage(const QString &message);
    QString title() const;
    QString message() const;
    // Returns the new button's index.
    int addButton(const QString &text, bool isDefault = false, ButtonType type = ButtonNormal);
    QStringList buttonTexts() const;

    int exec() override;

    static void setAutomationMode(bool on);
    static bool automationMode();
    static QList<Record> recordedDialogs();
    static void clearRecordedDialogs();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace htk
