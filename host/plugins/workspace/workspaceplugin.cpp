// SPDX-License-Identifier: GPL-3.0-or-later
#include "workspaceplugin.h"

#include "filemodel.h"
#include "fileview.h"
#include "tabpage.h"
#include "workspacelog.h"
#include "workspaceregistry.h"
#include "workspacewidget.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>
#include <hostcommon/widgetprobe.h>
#include <hpf/event/event.h>

#include <QCoreApplication>
#include <QCursor>
#include <QLoggingCategory>

namespace hfmplugin_workspace {

using namespace hdehost;

namespace {

// Reports windows, tabs and views to the automation mode and acts on the
// current tab of a window as a user would.
class WorkspaceInspector : public QObject
{
    Q_OBJECT
public:
    explicit WorkspaceInspector(WorkspacePlugin *plugin) : plugin(plugin)
    {
        setObjectName(Inspector::kWorkspace);
        setParent(QCoreApplication::instance());
    }

    Q_INVOKABLE QVariantMap windowState(quint64 windowId) const
    {
        WorkspaceWidget *workspace = workspaceOf(windowId);
        return workspace ? workspace->state() : QVariantMap();
    }
    Q_INVOKABLE bool isLoaded(quint64 windowId) const
    {
        TabPage *page = currentPage(windowId);
        return page && page->isLoaded();
    }
    Q_INVOKABLE bool activate(quint64 windowId, const QString &name)
    {
        FileView *files = currentFileView(windowId);
        if (files)
            return files->activate(name);
        QWidget *view = currentCustomView(windowId);
        bool done = false;
        return view && QMetaObject::invokeMethod(view, "hdeActivate", Q_RETURN_ARG(bool, done), Q_ARG(QString, name))
            && done;
    }
    Q_INVOKABLE bool select(quint64 windowId, const QStringList &names)
    {
        FileView *files = currentFileView(windowId);
        return files && files->selectNames(names);
    }
    // An empty name means the empty area of the view.
    Q_INVOKABLE bool contextMenu(quint64 windowId, const QString &name)
    {
        FileView *files = currentFileView(windowId);
        if (files)
            return files->showContextMenu(name, QCursor::pos());
        QWidget *view = currentCustomView(windowId);
        bool done = false;
        return view && QMetaObject::invokeMethod(view, "hdeContextMenu", Q_RETURN_ARG(bool, done), Q_ARG(QString, name))
            && done;
    }
    Q_INVOKABLE bool activateTopLink(quint64 windowId, const QString &link)
    {
        TabPage *page = currentPage(windowId);
        QWidget *top = page ? page->topWidget(page->url().scheme()) : nullptr;
        return top && !top->isHidden() && activateLink(top, link);
    }
    Q_INVOKABLE bool click(quint64 windowId, const QString &text)
    {
        TabPage *page = currentPage(windowId);
        if (!page)
            return false;
        QWidget *top = page->topWidget(page->url().scheme());
        if (top && !top->isHidden() && clickButton(top, text))
            return true;
        return clickButton(page->currentViewWidget(), text);
    }
    Q_INVOKABLE bool setCurrentTab(quint64 windowId, int index)
    {
        WorkspaceWidget *workspace = workspaceOf(windowId);
        return workspace && workspace->setCurrentIndex(index);
    }
    Q_INVOKABLE bool closeTab(quint64 windowId, int index)
    {
        WorkspaceWidget *workspace = workspaceOf(windowId);
        return workspace && workspace->closeTab(index);
    }

private:
    WorkspaceWidget *workspaceOf(quint64 windowId) const { return plugin ? plugin->workspaceOf(windowId) : nullptr; }
    TabPage *currentPage(quint64 windowId) const
    {
        WorkspaceWidget *workspace = workspaceOf(windowId);
        return workspace ? workspace->currentPage() : nullptr;
    }
    FileView *currentFileView(quint64 windowId) const
    {
        TabPage *page = currentPage(windowId);
        if (!page || !page->fileView() || page->currentViewWidget() != page->fileView())
            return nullptr;
        return page->fileView();
    }
    QWidget *currentCustomView(quint64 windowId) const
    {
        TabPage *page = currentPage(windowId);
        return page && page->viewKind() == QLatin1String("custom") ? page->currentViewWidget() : nullptr;
    }

    QPointer<WorkspacePlugin> plugin;
};

}   // namespace

WorkspacePlugin::WorkspacePlugin() : registry(new WorkspaceRegistry(this)) { }

WorkspacePlugin::~WorkspacePlugin()
{
    delete inspector.data();
}

void WorkspacePlugin::initialize()
{
    registerHostMetaTypes();
    auto *channel = hpf::channel();
    channel->connect(Space::kWorkspace, Topic::kRegisterFileView, this, &WorkspacePlugin::registerFileView);
    channel->connect(
        Space::kWorkspace, Topic::kRegisterCustomTopWidget, this, &WorkspacePlugin::registerCustomTopWidget);
    channel->connect(Space::kWorkspace, Topic::kRegisterMenuScene, this, &WorkspacePlugin::registerMenuScene);
    channel->connect(Space::kWorkspace, Topic::kModelFileUpdate, this, &WorkspacePlugin::fileUpdate);
    channel->connect(Space::kWorkspace, Topic::kRefreshDir, this, &WorkspacePlugin::refreshDir);
    channel->connect(Space::kWorkspace, Topic::kViewSetMode, this, &WorkspacePlugin::setViewMode);
    channel->connect(Space::kWorkspace, Topic::kViewRenameItem, this, &WorkspacePlugin::renameItem);
    channel->connect(Space::kWorkspace, Topic::kDetailSpaceShow, this, &WorkspacePlugin::showDetailSpace);
    channel->connect(Space::kWorkspace, Topic::kNavigateBack, this, &WorkspacePlugin::navigateBack);
    channel->connect(Space::kWorkspace, Topic::kNavigateForward, this, &WorkspacePlugin::navigateForward);
    // Declared now so that plug-ins starting before us can follow it.
    hpf::sequence()->declare(Space::kWorkspace, Topic::kTabSetTabName);

    auto *dispatcher = hpf::dispatcher();
    hdehost::declareNavigationEvents();
    dispatcher->subscribe(hfmbase::kChangeCurrentUrl, this, &WorkspacePlugin::onChangeCurrentUrl);
    dispatcher->subscribe(hfmbase::kOpenNewTab, this, &WorkspacePlugin::onOpenNewTab);
    dispatcher->subscribe(hfmbase::kRenameFileResult, this, &WorkspacePlugin::onRenameResult);
    dispatcher->subscribe(hfmbase::kMkdirResult, this, &WorkspacePlugin::onCreateResult);
    dispatcher->subscribe(hfmbase::kTouchFileResult, this, &WorkspacePlugin::onCreateResult);
    dispatcher->subscribe(hfmbase::kCopyResult, this, &WorkspacePlugin::onPasteResult);
    dispatcher->subscribe(hfmbase::kCutFileResult, this, &WorkspacePlugin::onPasteResult);
    // Event 2 comes as (URL) or as (URL, bool).
    QPointer<WorkspacePlugin> self(this);
    dispatcher->subscribeInvoker(hfmbase::kOpenNewWindow, this, [self](const QVariantList &args) -> QVariant {
        if (!self)
            return QVariant();
        if (args.isEmpty() || args.size() > 2 || !args.first().canConvert<QUrl>()) {
            qCWarning(logWorkspace) << "WorkspacePlugin: ignored a new-window event with the arguments" << args;
            return QVariant();
        }
        self->openNewWindow(args.first().toUrl());
        return QVariant();
    });

    connect(&hfmbase::FileManagerWindowsManager::instance(), &hfmbase::FileManagerWindowsManager::windowCreated, this,
        &WorkspacePlugin::onWindowCreated);
    connect(registry, &WorkspaceRegistry::topWidgetAdded, this, [this](const QString &scheme) {
        forEachPage([&scheme](WorkspaceWidget *, TabPage *page) {
            if (page->url().scheme() == scheme)
                page->applyTopWidgets();
        });
    });
    connect(registry, &WorkspaceRegistry::fileViewSchemeAdded, this, [this](const QString &scheme) {
        forEachPage([&scheme](WorkspaceWidget *, TabPage *page) {
            if (page->url().scheme() == scheme)
                page->setUrl(page->url(), false);
        });
    });
    inspector = new WorkspaceInspector(this);
}

bool WorkspacePlugin::start()
{
    return true;
}

template <class F> void WorkspacePlugin::forEachPage(F func) const
{
    const auto all = workspaces;
    for (const auto &workspace : all) {
        if (!workspace)
            continue;
        for (int i = 0; i < workspace->count(); ++i)
            func(workspace.data(), workspace->page(i));
    }
}

WorkspaceWidget *WorkspacePlugin::workspaceOf(quint64 windowId) const
{
    return workspaces.value(windowId);
}

void WorkspacePlugin::onWindowCreated(quint64 windowId)
{
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(windowId);
    if (!window)
        return;
    auto *workspace = new WorkspaceWidget(windowId, registry);
    workspaces.insert(windowId, workspace);
    connect(workspace, &QObject::destroyed, this, [this, windowId] { workspaces.remove(windowId); });
    window->installWorkSpace(workspace);
    workspace->addTab();
    requestChangeUrl(windowId, window->currentUrl());
}

void WorkspacePlugin::onChangeCurrentUrl(quint64 windowId, const QUrl &url)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    if (!workspace) {
        qCWarning(logWorkspace) << "WorkspacePlugin::onChangeCurrentUrl: no window" << windowId;
        return;
    }
    if (TabPage *page = workspace->currentPage())
        page->setUrl(url);
}

void WorkspacePlugin::onOpenNewTab(quint64 windowId, const QUrl &url)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    if (!workspace) {
        qCWarning(logWorkspace) << "WorkspacePlugin::onOpenNewTab: no window" << windowId;
        return;
    }
    TabPage *page = workspace->addTab();
    QPointer<TabPage> guard(page);
    requestChangeUrl(windowId, url);
    // Nothing to show (vetoed, or no view for it): the tab goes again.
    if (guard && !guard->url().isValid()) {
        for (int i = 0; i < workspace->count(); ++i) {
            if (workspace->page(i) == guard)
                workspace->closeTab(i);
        }
    }
}

void WorkspacePlugin::openNewWindow(const QUrl &url)
{
    QString error;
    auto &windows = hfmbase::FileManagerWindowsManager::instance();
    hfmbase::FileManagerWindow *window = windows.createWindow(url, &error);
    if (!window) {
        qCWarning(logWorkspace).noquote() << "WorkspacePlugin::openNewWindow:" << error;
        return;
    }
    windows.showWindow(window);
}

bool WorkspacePlugin::registerFileView(const QString &scheme)
{
    return registry->addFileViewScheme(scheme);
}

bool WorkspacePlugin::registerCustomTopWidget(const QVariantMap &properties)
{
    QString error;
    if (!registry->addTopWidget(properties, &error)) {
        qCWarning(logWorkspace).noquote() << "WorkspacePlugin::registerCustomTopWidget: refused -" << error;
        return false;
    }
    return true;
}

bool WorkspacePlugin::registerMenuScene(const QString &scheme, const QString &scene)
{
    return registry->setMenuScene(scheme, scene);
}

void WorkspacePlugin::fileUpdate(const QUrl &url)
{
    forEachPage([&url](WorkspaceWidget *, TabPage *page) {
        if (FileView *files = page->fileView())
            files->fileModel()->updateFile(url);
    });
}

void WorkspacePlugin::onRenameResult(quint64 windowId, const QMap<QUrl, QUrl> &renamed, bool ok, const QString &)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    TabPage *page = workspace ? workspace->currentPage() : nullptr;
    if (ok && page && page->fileView())
        page->fileView()->selectWhenShown(renamed.values());
}

void WorkspacePlugin::onCreateResult(quint64 windowId, const QList<QUrl> &created, bool ok, const QString &)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    TabPage *page = workspace ? workspace->currentPage() : nullptr;
    if (ok && page && page->fileView())
        page->fileView()->selectWhenShown(created);
}

void WorkspacePlugin::onPasteResult(const QList<QUrl> &, const QList<QUrl> &targets, bool, const QString &)
{
    // The result names no window: every current tab showing the target
    // folder selects what arrived (also after a partial failure).
    for (const auto &workspace : qAsConst(workspaces)) {
        TabPage *page = workspace ? workspace->currentPage() : nullptr;
        if (page && page->fileView())
            page->fileView()->selectWhenShown(targets);
    }
}

void WorkspacePlugin::refreshDir(const QList<QUrl> &urls)
{
    forEachPage([&urls](WorkspaceWidget *workspace, TabPage *page) {
        for (const QUrl &url : urls) {
            if (sameUrl(url, page->url())) {
                page->reload();
                workspace->updateTabName(page);
                break;
            }
        }
    });
}

bool WorkspacePlugin::setViewMode(quint64 windowId, int mode)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    if (!workspace || (mode != int(ViewMode::kIcon) && mode != int(ViewMode::kList)))
        return false;
    workspace->setViewMode(ViewMode(mode));
    return true;
}

bool WorkspacePlugin::renameItem(quint64 windowId, const QUrl &url)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    TabPage *page = workspace ? workspace->currentPage() : nullptr;
    return page && page->fileView() && page->fileView()->startRename(url);
}

bool WorkspacePlugin::showDetailSpace(quint64 windowId, bool visible)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    if (!workspace)
        return false;
    workspace->setDetailVisible(visible);
    return true;
}

bool WorkspacePlugin::navigateBack(quint64 windowId)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    return workspace && workspace->currentPage() && workspace->currentPage()->back();
}

bool WorkspacePlugin::navigateForward(quint64 windowId)
{
    WorkspaceWidget *workspace = workspaceOf(windowId);
    return workspace && workspace->currentPage() && workspace->currentPage()->forward();
}

}   // namespace hfmplugin_workspace

#include "workspaceplugin.moc"
