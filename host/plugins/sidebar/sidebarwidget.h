// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QUrl>
#include <QWidget>

class QStandardItemModel;
class QTreeView;

namespace hfmplugin_sidebar {

class SidebarStore;

// The sidebar of one window: the store's places under group headings.
// Clicking a place asks to show it (event 1); the place that accepts the
// window's URL is highlighted. GUI thread only.
class SidebarWidget : public QWidget
{
    Q_OBJECT
public:
    SidebarWidget(quint64 windowId, SidebarStore *store, QWidget *parent = nullptr);

    void setCurrentUrl(const QUrl &url);
    QUrl highlightedUrl() const;
    // As a click on the place with this URL; false for an unknown or disabled one.
    bool activate(const QUrl &url);
    // The place's own menu when it has one, else the default one.
    bool showContextMenu(const QUrl &url, const QPoint &globalPos);

private:
    void rebuild();
    void applyHighlight();
    void onClicked(const QModelIndex &index);
    void onContextMenuRequested(const QPoint &pos);

    quint64 windowId;
    QPointer<SidebarStore> store;
    QUrl currentUrl;
    QUrl highlighted;
    QTreeView *view;
    QStandardItemModel *model;
};

}   // namespace hfmplugin_sidebar
