// SPDX-License-Identifier: GPL-3.0-or-later
#include "entrytile.h"

#include <hfmbase/abstractmenuscene.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>
#include <hostcommon/scenemenu.h>

#include <QContextMenuEvent>
#include <QLocale>
#include <QLoggingCategory>
#include <QPainter>
#include <QPainterPath>

Q_DECLARE_LOGGING_CATEGORY(logComputer)

namespace hfmplugin_computer {

using namespace hdehost;

namespace {

constexpr int kIconSize = 48;

}   // namespace

EntryTile::EntryTile(const ComputerEntry &entry, QWidget *parent) : QWidget(parent), data(entry)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setToolTip(entry.entity ? entry.entity->displayName() : entry.url.toString());
}

const ComputerEntry &EntryTile::entry() const
{
    return data;
}

void EntryTile::setSelected(bool on)
{
    if (selected == on)
        return;
    selected = on;
    update();
}

QSize EntryTile::sizeHint() const
{
    return data.shape == ComputerEntry::kSmall ? QSize(128, 104) : QSize(300, 84);
}

quint64 EntryTile::windowId() const
{
    return hfmbase::FileManagerWindowsManager::instance().findWindowId(this);
}

bool EntryTile::activate()
{
    if (!data.entity)
        return false;
    const QUrl target = data.entity->targetUrl();
    if (!target.isValid())
        return false;
    requestChangeUrl(windowId(), target);
    return true;
}

bool EntryTile::showContextMenu(const QPoint &globalPos)
{
    hfmbase::AbstractMenuScene *scene = createMenuScene(Scene::kComputerMenu);
    if (!scene) {
        qCWarning(logComputer) << "EntryTile::showContextMenu: the menu plug-in made no" << Scene::kComputerMenu;
        return false;
    }
    const QVariantHash params {{MenuParam::kWindowId, QVariant::fromValue<quint64>(windowId())},
        {MenuParam::kSelectFiles, QVariant::fromValue(QList<QUrl> {data.url})}};
    return execMenuScene(scene, params, globalPos);
}

QString EntryTile::sizeText() const
{
    const hfmbase::AbstractEntryFileEntity *entity = data.entity.data();
    const QLocale locale;
    if (entity->showUsageSize() && entity->showTotalSize() && entity->sizeTotal() > 0)
        return tr("%1 / %2").arg(
            locale.formattedDataSize(entity->sizeUsage()), locale.formattedDataSize(entity->sizeTotal()));
    if (entity->showTotalSize() && entity->sizeTotal() > 0)
        return locale.formattedDataSize(entity->sizeTotal());
    if (entity->showUsageSize())
        return locale.formattedDataSize(entity->sizeUsage());
    return QString();
}

void EntryTile::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette pal = palette();
    if (selected || hovered || hasFocus()) {
        QColor back = pal.color(QPalette::Highlight);
        back.setAlphaF(selected ? 0.25 : 0.10);
        QPainterPath path;
        path.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
        painter.fillPath(path, back);
    }
    const hfmbase::AbstractEntryFileEntity *entity = data.entity.data();
    if (!entity)
        return;
    const QString name = entity->displayName();
    QFont bold = font();
    bold.setBold(true);

    if (data.shape == ComputerEntry::kSmall) {
        const QRect iconRect((width() - kIconSize) / 2, 10, kIconSize, kIconSize);
        entity->icon().paint(&painter, iconRect);
        const QRect textRect(4, iconRect.bottom() + 8, width() - 8, fontMetrics().height() * 2);
        painter.setPen(pal.color(QPalette::Text));
        painter.drawText(textRect, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
            fontMetrics().elidedText(name, Qt::ElideMiddle, textRect.width() * 2 - 8));
        return;
    }

    const QRect iconRect(12, (height() - kIconSize) / 2, kIconSize, kIconSize);
    entity->icon().paint(&painter, iconRect);
    const int left = iconRect.right() + 14;
    const int textWidth = width() - left - 12;
    int y = 14;
    painter.setFont(bold);
    painter.setPen(pal.color(QPalette::Text));
    const QFontMetrics boldMetrics(bold);
    painter.drawText(QRect(left, y, textWidth, boldMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        boldMetrics.elidedText(name, Qt::ElideRight, textWidth));
    y += boldMetrics.height() + 6;
    painter.setFont(font());

    if (entity->showProgress() && entity->sizeTotal() > 0) {
        const QRectF bar(left, y, textWidth, 6);
        const double ratio = qBound(0.0, double(entity->sizeUsage()) / double(entity->sizeTotal()), 1.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(pal.color(QPalette::Midlight));
        painter.drawRoundedRect(bar, 3, 3);
        painter.setBrush(ratio > 0.9 ? QColor(0xd9, 0x3f, 0x3f) : pal.color(QPalette::Highlight));
        painter.drawRoundedRect(QRectF(bar.x(), bar.y(), bar.width() * ratio, bar.height()), 3, 3);
        y += 12;
    }
    const QString detail = entity->showProgress() || entity->showUsageSize() || entity->showTotalSize()
        ? sizeText()
        : entity->description();
    const QString line = detail.isEmpty() ? entity->description() : detail;
    if (!line.isEmpty()) {
        painter.setPen(pal.color(QPalette::Disabled, QPalette::Text));
        painter.drawText(QRect(left, y, textWidth, fontMetrics().height()), Qt::AlignLeft | Qt::AlignVCenter,
            fontMetrics().elidedText(line, Qt::ElideRight, textWidth));
    }
}

void EntryTile::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT pressed(this);
    QWidget::mousePressEvent(event);
}

void EntryTile::mouseDoubleClickEvent(QMouseEvent *)
{
    activate();
}

void EntryTile::contextMenuEvent(QContextMenuEvent *event)
{
    Q_EMIT pressed(this);
    showContextMenu(event->globalPos());
}

void EntryTile::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        activate();
        return;
    }
    QWidget::keyPressEvent(event);
}

void EntryTile::enterEvent(QEvent *event)
{
    hovered = true;
    update();
    QWidget::enterEvent(event);
}

void EntryTile::leaveEvent(QEvent *event)
{
    hovered = false;
    update();
    QWidget::leaveEvent(event);
}

}   // namespace hfmplugin_computer
