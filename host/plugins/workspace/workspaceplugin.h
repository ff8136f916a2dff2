// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QHash>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>

namespace hfmplugin_workspace {

class WorkspaceRegistry;
class WorkspaceWidget;

// The workspace plug-in: installs a workspace into every window, navigates
// on events 1 (change directory), 2 (new window) and 3 (new tab), and
// publishes its slots and the hook_Tab_SetTabName hook in the
// "hfmplugin_workspace" space. A window enters its first URL through event 1
// too, so navigation filters see every URL a view shows. GUI thread.
class WorkspacePlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "workspace.json")
    Q_INTERFACES(hpf::Plugin)
public:
    WorkspacePlugin();
    ~WorkspacePlugin() override;

    void initialize() override;
    bool start() override;

    WorkspaceWidget *workspaceOf(quint64 windowId) const;

    // Slots of the "hfmplugin_workspace" space.
    bool registerFileView(const QString &scheme);
    bool registerCustomTopWidget(const QVariantMap &properties);
    bool registerMenuScene(const QString &scheme, const QString &scene);
    void fileUpdate(const QUrl &url);
    void refreshDir(const QList<QUrl> &urls);
    bool setViewMode(quint64 windowId, int mode);
    bool renameItem(quint64 windowId, const QUrl &url);
    bool showDetailSpace(quint64 windowId, bool visible);
    bool navigateBack(quint64 windowId);
    bool navigateForward(quint64 windowId);

    // Listeners of the navigation events.
    void onChangeCurrentUrl(quint64 windowId, const QUrl &url);
    void onOpenNewTab(quint64 windowId, const QUrl &url);
    void openNewWindow(const QUrl &url);
    // Listeners of the operation results: the new items get selected.
    void onRenameResult(quint64 windowId, const QMap<QUrl, QUrl> &renamed, bool ok, const QString &error);
    void onCreateResult(quint64 windowId, const QList<QUrl> &created, bool ok, const QString &error);
    void onPasteResult(const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &error);

private:
    void onWindowCreated(quint64 windowId);
    template <class F> void forEachPage(F func) const;

    WorkspaceRegistry *registry;
    QHash<quint64, QPointer<WorkspaceWidget>> workspaces;
    QPointer<QObject> inspector;
};

}   // namespace hfmplugin_workspace
