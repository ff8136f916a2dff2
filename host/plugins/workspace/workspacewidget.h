// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hostcommon/hostkeys.h>

#include <QVariantMap>
#include <QWidget>

class QLabel;
class QStackedWidget;
class QTabBar;

namespace hfmplugin_workspace {

class DetailPane;
class TabPage;
class WorkspaceRegistry;

// The workspace of one window: a tab bar over one TabPage per tab, and the
// detail pane at the side. Keeps the window's current URL and title in step
// with the current tab. GUI thread only.
class WorkspaceWidget : public QWidget
{
    Q_OBJECT
public:
    WorkspaceWidget(quint64 windowId, WorkspaceRegistry *registry, QWidget *parent = nullptr);

    quint64 windowId() const;
    int count() const;
    int currentIndex() const;
    TabPage *currentPage() const;
    TabPage *page(int index) const;
    // A new empty tab, made current.
    TabPage *addTab();
    bool closeTab(int index);
    bool setCurrentIndex(int index);

    void setViewMode(hdehost::ViewMode mode);
    hdehost::ViewMode viewMode() const;
    void setDetailVisible(bool visible);
    bool isDetailVisible() const;
    // Names the tab of `page` through hook_Tab_SetTabName, else by folder.
    void updateTabName(TabPage *page);
    QVariantMap state() const;

    static QString tabNameFor(const QUrl &url);

private:
    void onPageUrlChanged();
    void syncWindow();
    void refreshDetail();
    void refreshStatus();
    int indexOf(const TabPage *page) const;

    quint64 id;
    WorkspaceRegistry *registry;
    QTabBar *tabBar;
    QStackedWidget *pages;
    DetailPane *detail;
    QLabel *status;
    hdehost::ViewMode mode = hdehost::ViewMode::kIcon;
};

}   // namespace hfmplugin_workspace
