// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/messagedialog.h>

#include <htk/label.h>

#include "htklog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace htk {

Q_LOGGING_CATEGORY(logHtk, "org.sablo.hde.htk")

namespace {

// Automation state is process-wide and touched on the GUI thread only.
bool g_automation = false;
QList<MessageDialog::Record> &records()
{
    static QList<MessageDialog::Record> list;
    return list;
}

}   // namespace

struct MessageDialog::Private
{
    QIcon icon;
    QLabel *iconLabel = nullptr;
    QLabel *titleLabel = nullptr;
    QLabel *messageLabel = nullptr;
    QHBoxLayout *buttonRow = nullptr;
    QList<QPushButton *> buttons;
    int clicked = -1;
};

MessageDialog::MessageDialog(QWidget *parent) : QDialog(parent), d(new Private)
{
    setModal(true);

    d->iconLabel = new QLabel(this);
    d->iconLabel->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    d->iconLabel->hide();

    d->titleLabel = new Label(this);
    QFont titleFont = d->titleLabel->font();
    titleFont.setBold(true);
    d->titleLabel->setFont(titleFont);
    d->titleLabel->setWordWrap(true);
    d->titleLabel->hide();

    d->messageLabel = new Label(this);
    d->messageLabel->setWordWrap(true);
    d->messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    d->messageLabel->hide();

    auto *texts = new QVBoxLayout;
    texts->addWidget(d->titleLabel);
    texts->addWidget(d->messageLabel);
    texts->addStretch();

    auto *top = new QHBoxLayout;
    top->addWidget(d->iconLabel);
    top->addLayout(texts, 1);

    d->buttonRow = new QHBoxLayout;
    d->buttonRow->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(d->buttonRow);
}

MessageDialog::~MessageDialog() = default;

void MessageDialog::setIcon(const QIcon &icon)
{
    d->icon = icon;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    d->iconLabel->setPixmap(icon.pixmap(size, size));
    d->iconLabel->setVisible(!icon.isNull());
}

void MessageDialog::setTitle(const QString &title)
{
    d->titleLabel->setText(title);
    d->titleLabel->setVisible(!title.isEmpty());
    setWindowTitle(title);
}

void MessageDialog::setMessage(const QString &message)
{
    d->messageLabel->setText(message);
    d->messageLabel->setVisible(!message.isEmpty());
}

QString MessageDialog::title() const
{
    return d->titleLabel->text();
}

QString MessageDialog::message() const
{
    return d->messageLabel->text();
}

int MessageDialog::addButton(const QString &text, bool isDefault, ButtonType type)
{
    const int index = d->buttons.size();
    auto *button = new QPushButton(text, this);
    button->setAutoDefault(false);
    if (isDefault) {
        for (QPushButton *other : qAsConst(d->buttons))
            other->setDefault(false);
        button->setDefault(true);
    }
    if (type == ButtonWarning) {
        QPalette pal = button->palette();
        pal.setColor(QPalette::ButtonText, QColor(0xd7, 0x1b, 0x1b));
        button->setPalette(pal);
    } else if (type == ButtonRecommend) {
        QFont f = button->font();
        f.setBold(true);
        button->setFont(f);
    }
    connect(button, &QPushButton::clicked, this, [this, index] {
        d->clicked = index;
        done(index);
    });
    d->buttons.append(button);
    d->buttonRow->addWidget(button);
    return index;
}

QStringList MessageDialog::buttonTexts() const
{
    QStringList texts;
    texts.reserve(d->buttons.size());
    for (const QPushButton *button : qAsConst(d->buttons))
        texts.append(button->text());
    return texts;
}

int MessageDialog::exec()
{
    if (g_automation) {
        records().append(Record {title(), message(), d->icon.name(), buttonTexts()});
        qCInfo(logHtk).noquote() << "MessageDialog::exec: recorded" << title() << "-" << message();
        d->clicked = 0;
        setResult(0);
        return 0;
    }
    d->clicked = -1;
    QDialog::exec();
    return d->clicked;
}

void MessageDialog::setAutomationMode(bool on)
{
    g_automation = on;
}

bool MessageDialog::automationMode()
{
    return g_automation;
}

QList<MessageDialog::Record> MessageDialog::recordedDialogs()
{
    return records();
}

void MessageDialog::clearRecordedDialogs()
{
    records().clear();
}

}   // namespace htk
