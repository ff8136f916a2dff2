// SPDX-License-Identifier: GPL-3.0-or-later
#include "sidebarwidget.h"

#include "sidebarstore.h"

#include <hfmbase/abstractmenuscene.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>

#include <QHeaderView>
#include <QMenu>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace hfmplugin_sidebar {

namespace {

constexpr int kUrlRole = Qt::UserRole + 1;

}   // namespace

SidebarWidget::SidebarWidget(quint64 windowId, SidebarStore *store, QWidget *parent)
    : QWidget(parent), windowId(windowId), store(store)
{
    setObjectName(QStringLiteral("hde-sidebar"));
    setMinimumWidth(170);
    setMaximumWidth(300);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 0);
    view = new QTreeView(this);
    view->setObjectName(QStringLiteral("sidebar-view"));
    model = new QStandardItemModel(this);
    view->setModel(model);
    view->setHeaderHidden(true);
    view->setRootIsDecorated(false);
    view->setItemsExpandable(false);
    view->setIndentation(0);
    view->setFrameShape(QFrame::NoFrame);
    view->setIconSize(QSize(16, 16));
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setFocusPolicy(Qt::NoFocus);
    view->setStyleSheet(QStringLiteral("QTreeView::item { padding: 4px 6px; }"));
    layout->addWidget(view);

    connect(view, &QTreeView::clicked, this, &SidebarWidget::onClicked);
    connect(view, &QTreeView::customContextMenuRequested, this, &SidebarWidget::onContextMenuRequested);
    connect(store, &SidebarStore::changed, this, &SidebarWidget::rebuild);
    rebuild();
}

void SidebarWidget::rebuild()
{
    model->clear();
    if (!store)
        return;
    QString group;
    QStandardItem *groupItem = nullptr;
    const QList<SidebarItem> items = store->items();
    for (const SidebarItem &item : items) {
        if (!groupItem || item.group != group) {
            group = item.group;
            groupItem = new QStandardItem(SidebarStore::groupTitle(group));
            groupItem->setFlags(Qt::ItemIsEnabled);
            QFont font = groupItem->font();
            font.setBold(true);
            font.setPointSizeF(font.pointSizeF() * 0.85);
            groupItem->setFont(font);
            groupItem->setForeground(palette().color(QPalette::Disabled, QPalette::Text));
            model->appendRow(groupItem);
        }
        auto *row = new QStandardItem(item.icon, item.name);
        row->setData(item.url, kUrlRole);
        row->setToolTip(hdehost::urlDisplayText(item.url));
        row->setFlags(item.flags & (Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled));
        groupItem->appendRow(row);
    }
    view->expandAll();
    applyHighlight();
}

void SidebarWidget::setCurrentUrl(const QUrl &url)
{
    currentUrl = url;
    applyHighlight();
}

void SidebarWidget::applyHighlight()
{
    highlighted.clear();
    if (store) {
        const QList<SidebarItem> items = store->items();
        for (const SidebarItem &item : items) {
            if ((item.flags & Qt::ItemIsSelectable) && item.matches(currentUrl)) {
                highlighted = item.url;
                break;
            }
        }
    }
    view->selectionModel()->clearSelection();
    view->setCurrentIndex(QModelIndex());
    if (!highlighted.isValid())
        return;
    for (int g = 0; g < model->rowCount(); ++g) {
        QStandardItem *groupItem = model->item(g);
        for (int r = 0; r < groupItem->rowCount(); ++r) {
            if (groupItem->child(r)->data(kUrlRole).toUrl() == highlighted) {
                view->setCurrentIndex(groupItem->child(r)->index());
                return;
            }
        }
    }
}

QUrl SidebarWidget::highlightedUrl() const
{
    return highlighted;
}

bool SidebarWidget::activate(const QUrl &url)
{
    SidebarItem item;
    if (!store || !store->find(url.toString(), &item) || !(item.flags & Qt::ItemIsEnabled))
        return false;
    hdehost::requestChangeUrl(windowId, item.url);
    // A vetoed request leaves the window where it was.
    applyHighlight();
    return true;
}

void SidebarWidget::onClicked(const QModelIndex &index)
{
    const QUrl url = index.data(kUrlRole).toUrl();
    if (url.isValid())
        activate(url);
}

void SidebarWidget::onContextMenuRequested(const QPoint &pos)
{
    const QUrl url = view->indexAt(pos).data(kUrlRole).toUrl();
    if (url.isValid())
        showContextMenu(url, view->viewport()->mapToGlobal(pos));
}

bool SidebarWidget::showContextMenu(const QUrl &url, const QPoint &globalPos)
{
    SidebarItem item;
    if (!store || !store->find(url.toString(), &item) || !(item.flags & Qt::ItemIsEnabled))
        return false;
    if (item.contextMenu) {
        item.contextMenu(windowId, item.url, globalPos);
        return true;
    }
    QMenu menu;
    QAction *newWindow = menu.addAction(tr("Open in new window"));
    newWindow->setProperty(hfmbase::ActionPropertyKey::kActionID, hdehost::ActionId::kOpenInNewWindow);
    QAction *newTab = menu.addAction(tr("Open in new tab"));
    newTab->setProperty(hfmbase::ActionPropertyKey::kActionID, hdehost::ActionId::kOpenInNewTab);
    QAction *chosen = menu.exec(globalPos);
    if (chosen == newWindow)
        hdehost::requestNewWindow(item.url);
    else if (chosen == newTab)
        hdehost::requestNewTab(windowId, item.url);
    return true;
}

}   // namespace hfmplugin_sidebar
