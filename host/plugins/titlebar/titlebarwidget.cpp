// SPDX-License-Identifier: GPL-3.0-or-later
#include "titlebarwidget.h"

#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>
#include <htk/iconbutton.h>

#include <QAction>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QStyle>

namespace hfmplugin_titlebar {

using namespace hdehost;

namespace {

QToolButton *makeButton(const QString &objectName, const QString &icon, const QString &tip, QWidget *parent)
{
    auto *button = new htk::IconButton(QIcon::fromTheme(icon), parent);
    button->setObjectName(objectName);
    button->setToolTip(tip);
    button->setIconSize(QSize(16, 16));
    button->setFixedSize(30, 30);
    return button;
}

}   // namespace

TitleBarWidget::TitleBarWidget(
    quint64 windowId, std::function<QVariantMap(const QString &)> settingsOf, QWidget *parent)
    : QWidget(parent), windowId(windowId), settingsOf(std::move(settingsOf))
{
    setObjectName(QStringLiteral("hde-titlebar"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(4);

    backButton = makeButton(QStringLiteral("back"), QStringLiteral("go-previous"), tr("Back"), this);
    forwardButton = makeButton(QStringLiteral("forward"), QStringLiteral("go-next"), tr("Forward"), this);
    address = new QLineEdit(this);
    address->setObjectName(QStringLiteral("address"));
    // A clear button of our own: the built-in one fades in through an
    // animation without a parent, which a window closed within its 160 ms
    // left behind for good.
    QAction *clear
        = address->addAction(style()->standardIcon(QStyle::SP_LineEditClearButton), QLineEdit::TrailingPosition);
    clear->setObjectName(QStringLiteral("clear"));
    clear->setVisible(false);
    connect(clear, &QAction::triggered, address, &QLineEdit::clear);
    connect(
        address, &QLineEdit::textChanged, clear, [clear](const QString &text) { clear->setVisible(!text.isEmpty()); });
    address->setMinimumHeight(30);
    iconButton = makeButton(QStringLiteral("icon"), QStringLiteral("view-grid-symbolic"), tr("Icon view"), this);
    listButton = makeButton(QStringLiteral("list"), QStringLiteral("view-list-symbolic"), tr("List view"), this);
    detailButton = makeButton(QStringLiteral("detail"), QStringLiteral("view-dual-symbolic"), tr("Show details"), this);
    iconButton->setCheckable(true);
    listButton->setCheckable(true);
    detailButton->setCheckable(true);
    iconButton->setChecked(true);
    auto *modes = new QButtonGroup(this);
    modes->addButton(iconButton);
    modes->addButton(listButton);
    modes->setExclusive(true);

    layout->addWidget(backButton);
    layout->addWidget(forwardButton);
    layout->addSpacing(6);
    layout->addWidget(address, 1);
    layout->addSpacing(6);
    layout->addWidget(iconButton);
    layout->addWidget(listButton);
    layout->addWidget(detailButton);

    connect(backButton, &QToolButton::clicked, this,
        [this] { hpf::channel()->push(Space::kWorkspace, Topic::kNavigateBack, this->windowId); });
    connect(forwardButton, &QToolButton::clicked, this,
        [this] { hpf::channel()->push(Space::kWorkspace, Topic::kNavigateForward, this->windowId); });
    connect(address, &QLineEdit::returnPressed, this, &TitleBarWidget::onAddressEntered);
    connect(iconButton, &QToolButton::clicked, this, [this] { setViewMode(int(ViewMode::kIcon)); });
    connect(listButton, &QToolButton::clicked, this, [this] { setViewMode(int(ViewMode::kList)); });
    connect(detailButton, &QToolButton::toggled, this,
        [this](bool on) { hpf::channel()->push(Space::kWorkspace, Topic::kDetailSpaceShow, this->windowId, on); });
}

void TitleBarWidget::setUrl(const QUrl &newUrl)
{
    url = newUrl;
    address->setText(urlDisplayText(url));
    address->setCursorPosition(0);
    refreshButtons();
}

void TitleBarWidget::refreshButtons()
{
    const QVariantMap settings = settingsOf(url.scheme());
    iconButton->setVisible(!settings.value(PropertyKey::kHideIconViewBtn).toBool());
    listButton->setVisible(!settings.value(PropertyKey::kHideListViewBtn).toBool());
    detailButton->setVisible(!settings.value(PropertyKey::kHideDetailSpaceBtn).toBool());
}

void TitleBarWidget::onAddressEntered()
{
    const QUrl target = urlFromUserInput(address->text());
    if (!target.isValid()) {
        address->setText(urlDisplayText(url));
        return;
    }
    requestChangeUrl(windowId, target);
}

void TitleBarWidget::setViewMode(int mode)
{
    hpf::channel()->push(Space::kWorkspace, Topic::kViewSetMode, windowId, mode);
}

QToolButton *TitleBarWidget::buttonByName(const QString &name) const
{
    for (QToolButton *button : {backButton, forwardButton, iconButton, listButton, detailButton}) {
        if (button->objectName() == name)
            return button;
    }
    return nullptr;
}

bool TitleBarWidget::clickButton(const QString &name)
{
    QToolButton *button = buttonByName(name);
    if (!button || button->isHidden() || !button->isEnabled())
        return false;
    button->click();
    return true;
}

bool TitleBarWidget::enterAddress(const QString &text)
{
    address->setText(text);
    Q_EMIT address->returnPressed();
    return true;
}

QVariantMap TitleBarWidget::state() const
{
    QVariantMap map;
    map.insert(QStringLiteral("address"), address->text());
    map.insert(QStringLiteral("iconViewBtn"), !iconButton->isHidden());
    map.insert(QStringLiteral("listViewBtn"), !listButton->isHidden());
    // There is no tree mode; its button never shows.
    map.insert(QStringLiteral("treeViewBtn"), false);
    map.insert(QStringLiteral("detailSpaceBtn"), !detailButton->isHidden());
    map.insert(QStringLiteral("viewMode"), listButton->isChecked() ? QStringLiteral("list") : QStringLiteral("icon"));
    map.insert(QStringLiteral("detailSpace"), detailButton->isChecked());
    return map;
}

}   // namespace hfmplugin_titlebar
