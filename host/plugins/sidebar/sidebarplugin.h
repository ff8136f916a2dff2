// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QHash>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>

namespace hfmplugin_sidebar {

class SidebarStore;
class SidebarWidget;

// The sidebar plug-in. initialize(), which runs before any plug-in starts,
// fills the store with the host's places and with the QuickAccessDisplay
// entries of every plug-in's metadata; the "hfmplugin_sidebar" space gets
// slot_Item_Update and slot_Item_Remove. Every new window gets a sidebar.
class SidebarPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "sidebar.json")
    Q_INTERFACES(hpf::Plugin)
public:
    SidebarPlugin();
    ~SidebarPlugin() override;

    void initialize() override;
    bool start() override;

    bool updateItem(const QUrl &url, const QVariantMap &properties);
    bool removeItem(const QUrl &url);

    SidebarStore *itemStore() const;
    SidebarWidget *sidebarOf(quint64 windowId) const;

private:
    void addHostItems();
    void addQuickAccessItems();
    void onWindowCreated(quint64 windowId);

    SidebarStore *store;
    QHash<quint64, QPointer<SidebarWidget>> sidebars;
    QPointer<QObject> inspector;
};

}   // namespace hfmplugin_sidebar
