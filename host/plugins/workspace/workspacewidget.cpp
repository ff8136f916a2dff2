// SPDX-License-Identifier: GPL-3.0-or-later
#include "workspacewidget.h"

#include "detailpane.h"
#include "fileview.h"
#include "tabpage.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>

#include "filemodel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace hfmplugin_workspace {

using namespace hdehost;

WorkspaceWidget::WorkspaceWidget(quint64 windowId, WorkspaceRegistry *registry, QWidget *parent)
    : QWidget(parent),
      id(windowId),
      registry(registry),
      tabBar(new QTabBar(this)),
      pages(new QStackedWidget(this)),
      detail(new DetailPane(this)),
      status(new QLabel(this))
{
    setObjectName(QStringLiteral("hde-workspace"));
    auto *outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    auto *column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    tabBar->setObjectName(QStringLiteral("tabbar"));
    tabBar->setDocumentMode(true);
    tabBar->setTabsClosable(true);
    tabBar->setExpanding(false);
    tabBar->setElideMode(Qt::ElideMiddle);
    tabBar->hide();
    column->addWidget(tabBar);
    column->addWidget(pages, 1);
    status->setObjectName(QStringLiteral("status"));
    status->setContentsMargins(10, 3, 10, 3);
    status->setStyleSheet(QStringLiteral("color: palette(mid);"));
    column->addWidget(status);
    outer->addLayout(column, 1);
    outer->addWidget(detail);
    detail->hide();

    connect(tabBar, &QTabBar::currentChanged, this, [this](int index) {
        if (index >= 0 && index < pages->count()) {
            pages->setCurrentIndex(index);
            syncWindow();
            refreshDetail();
            refreshStatus();
        }
    });
    connect(tabBar, &QTabBar::tabCloseRequested, this, &WorkspaceWidget::closeTab);
}

quint64 WorkspaceWidget::windowId() const
{
    return id;
}

int WorkspaceWidget::count() const
{
    return pages->count();
}

int WorkspaceWidget::currentIndex() const
{
    return pages->currentIndex();
}

TabPage *WorkspaceWidget::currentPage() const
{
    return qobject_cast<TabPage *>(pages->currentWidget());
}

TabPage *WorkspaceWidget::page(int index) const
{
    return qobject_cast<TabPage *>(pages->widget(index));
}

int WorkspaceWidget::indexOf(const TabPage *page) const
{
    for (int i = 0; i < pages->count(); ++i) {
        if (pages->widget(i) == page)
            return i;
    }
    return -1;
}

TabPage *WorkspaceWidget::addTab()
{
    auto *page = new TabPage(registry, pages);
    page->setViewMode(mode);
    pages->addWidget(page);
    connect(page, &TabPage::urlChanged, this, &WorkspaceWidget::onPageUrlChanged);
    connect(page, &TabPage::selectionChanged, this, [this, page] {
        if (page == currentPage()) {
            refreshDetail();
            refreshStatus();
        }
    });
    for (auto signal : {&TabPage::itemCountChanged, &TabPage::loadFinished}) {
        connect(page, signal, this, [this, page] {
            if (page == currentPage())
                refreshStatus();
        });
    }
    const int index = tabBar->addTab(QString());
    tabBar->setVisible(tabBar->count() > 1);
    tabBar->setCurrentIndex(index);
    pages->setCurrentIndex(index);
    return page;
}

bool WorkspaceWidget::closeTab(int index)
{
    if (index < 0 || index >= pages->count() || pages->count() == 1)
        return false;
    QWidget *page = pages->widget(index);
    pages->removeWidget(page);
    tabBar->removeTab(index);
    tabBar->setVisible(tabBar->count() > 1);
    // A view of the closed tab may be running the code that closed it.
    page->hide();
    page->deleteLater();
    pages->setCurrentIndex(tabBar->currentIndex());
    syncWindow();
    return true;
}

bool WorkspaceWidget::setCurrentIndex(int index)
{
    if (index < 0 || index >= pages->count())
        return false;
    tabBar->setCurrentIndex(index);
    return true;
}

void WorkspaceWidget::setViewMode(ViewMode wanted)
{
    mode = wanted;
    for (int i = 0; i < pages->count(); ++i)
        page(i)->setViewMode(wanted);
}

ViewMode WorkspaceWidget::viewMode() const
{
    return mode;
}

void WorkspaceWidget::setDetailVisible(bool visible)
{
    detail->setVisible(visible);
    refreshDetail();
}

bool WorkspaceWidget::isDetailVisible() const
{
    return !detail->isHidden();
}

QString WorkspaceWidget::tabNameFor(const QUrl &url)
{
    QString hooked;
    QString *out = &hooked;
    if (hpf::sequence()->run(Space::kWorkspace, Topic::kTabSetTabName, url, out) && !hooked.isEmpty())
        return hooked;
    return defaultTabName(url);
}

void WorkspaceWidget::updateTabName(TabPage *tabPage)
{
    const int index = indexOf(tabPage);
    if (index < 0 || !tabPage->url().isValid())
        return;
    const QString name = tabNameFor(tabPage->url());
    tabBar->setTabText(index, name);
    tabBar->setTabToolTip(index, urlDisplayText(tabPage->url()));
}

void WorkspaceWidget::onPageUrlChanged()
{
    auto *tabPage = qobject_cast<TabPage *>(sender());
    if (!tabPage)
        return;
    updateTabName(tabPage);
    if (tabPage == currentPage()) {
        syncWindow();
        refreshDetail();
        refreshStatus();
    }
}

void WorkspaceWidget::syncWindow()
{
    TabPage *tabPage = currentPage();
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(id);
    if (!tabPage || !window || !tabPage->url().isValid())
        return;
    window->setWindowTitle(tabBar->tabText(currentIndex()));
    if (window->currentUrl() != tabPage->url())
        window->cd(tabPage->url());
}

void WorkspaceWidget::refreshDetail()
{
    if (detail->isHidden())
        return;
    TabPage *tabPage = currentPage();
    if (!tabPage)
        return;
    QUrl shown = tabPage->url();
    if (FileView *files = tabPage->fileView(); files && tabPage->currentViewWidget() == files) {
        const QList<QUrl> selected = files->selectedUrls();
        if (!selected.isEmpty())
            shown = selected.first();
    }
    if (shown.isValid())
        detail->showUrl(shown);
}

void WorkspaceWidget::refreshStatus()
{
    TabPage *tabPage = currentPage();
    FileView *files = tabPage ? tabPage->fileView() : nullptr;
    if (!files || tabPage->currentViewWidget() != files) {
        status->clear();
        return;
    }
    const int count = files->fileModel()->rowCount();
    const int selected = files->selectedUrls().size();
    QString text = count == 1 ? tr("1 item") : tr("%1 items").arg(count);
    if (selected > 0)
        text = tr("%1, %2 selected").arg(text).arg(selected);
    if (!files->isLoaded())
        text = tr("%1 (loading)").arg(text);
    status->setText(text);
}

QVariantMap WorkspaceWidget::state() const
{
    QVariantMap map;
    QVariantList tabs;
    for (int i = 0; i < pages->count(); ++i) {
        QVariantMap tab = page(i)->state();
        tab.insert(QStringLiteral("name"), tabBar->tabText(i));
        tab.insert(QStringLiteral("current"), i == currentIndex());
        tabs.append(tab);
    }
    map.insert(QStringLiteral("tabs"), tabs);
    map.insert(QStringLiteral("currentTab"), currentIndex());
    map.insert(QStringLiteral("viewMode"), mode == ViewMode::kList ? QStringLiteral("list") : QStringLiteral("icon"));
    map.insert(QStringLiteral("detailVisible"), isDetailVisible());
    map.insert(QStringLiteral("detailUrl"), isDetailVisible() ? detail->shownUrl().toString() : QString());
    return map;
}

}   // namespace hfmplugin_workspace
