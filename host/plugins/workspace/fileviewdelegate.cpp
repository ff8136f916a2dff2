// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileviewdelegate.h"

#include "filemodel.h"

#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QApplication>
#include <QListView>
#include <QPainter>

namespace hfmplugin_workspace {

void FileViewDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (index.column() != FileModel::kName)
        return;
    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const QWidget *widget = opt.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    const QRect iconRect = style->subElementRect(QStyle::SE_ItemViewItemDecoration, &opt, widget);
    if (!iconRect.isValid())
        return;
    painter->save();
    hpf::channel()->push(hdehost::Space::kEmblem, hdehost::Topic::kEmblemPaint, painter, iconRect,
        index.data(FileModel::kUrlRole).toUrl());
    painter->restore();
}

}   // namespace hfmplugin_workspace

namespace hfmplugin_workspace {

QSize FileViewDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const auto *list = qobject_cast<const QListView *>(option.widget);
    if (list && list->viewMode() == QListView::IconMode && list->gridSize().isValid())
        return list->gridSize() - QSize(8, 4);
    return QStyledItemDelegate::sizeHint(option, index);
}

}   // namespace hfmplugin_workspace
