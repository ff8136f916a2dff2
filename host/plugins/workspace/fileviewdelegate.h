// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace hfmplugin_workspace {

// Paints a row as usual, then lets the emblem plug-in draw the row's
// emblems over its icon.
class FileViewDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    // In icon mode every item takes its grid cell, so names use its width.
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

}   // namespace hfmplugin_workspace
