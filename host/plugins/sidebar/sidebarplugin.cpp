// SPDX-License-Identifier: GPL-3.0-or-later
#include "sidebarplugin.h"

#include "sidebarstore.h"
#include "sidebarwidget.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hostcommon/standardplaces.h>
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>

#include <QCoreApplication>
#include <QCursor>
#include <QDir>
#include <QJsonArray>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(logSidebar, "org.sablo.hde.filemanager.plugin.sidebar")

namespace hfmplugin_sidebar {

using namespace hdehost;

namespace {

// Reports the places to the automation mode and acts on them as a click would.
class SidebarInspector : public QObject
{
    Q_OBJECT
public:
    explicit SidebarInspector(SidebarPlugin *plugin) : plugin(plugin)
    {
        setObjectName(Inspector::kSidebar);
        setParent(QCoreApplication::instance());
    }

    Q_INVOKABLE QVariantMap state() const
    {
        QVariantList items;
        if (plugin) {
            const QList<SidebarItem> all = plugin->itemStore()->items();
            for (const SidebarItem &item : all)
                items.append(item.toVariantMap());
        }
        return QVariantMap {{QStringLiteral("items"), items}};
    }
    Q_INVOKABLE QVariantMap windowState(quint64 windowId) const
    {
        SidebarWidget *sidebar = plugin ? plugin->sidebarOf(windowId) : nullptr;
        if (!sidebar)
            return QVariantMap();
        return QVariantMap {{QStringLiteral("highlighted"), sidebar->highlightedUrl().toString()}};
    }
    Q_INVOKABLE bool activate(quint64 windowId, const QString &key)
    {
        SidebarItem item;
        SidebarWidget *sidebar = plugin ? plugin->sidebarOf(windowId) : nullptr;
        return sidebar && plugin->itemStore()->find(key, &item) && sidebar->activate(item.url);
    }
    Q_INVOKABLE bool contextMenu(quint64 windowId, const QString &key)
    {
        SidebarItem item;
        SidebarWidget *sidebar = plugin ? plugin->sidebarOf(windowId) : nullptr;
        return sidebar && plugin->itemStore()->find(key, &item) && sidebar->showContextMenu(item.url, QCursor::pos());
    }

private:
    QPointer<SidebarPlugin> plugin;
};

}   // namespace

SidebarPlugin::SidebarPlugin() : store(new SidebarStore(this)) { }

SidebarPlugin::~SidebarPlugin()
{
    delete inspector.data();
}

void SidebarPlugin::initialize()
{
    registerHostMetaTypes();
    hpf::channel()->connect(Space::kSidebar, Topic::kSidebarItemUpdate, this, &SidebarPlugin::updateItem);
    hpf::channel()->connect(Space::kSidebar, Topic::kSidebarItemRemove, this, &SidebarPlugin::removeItem);
    addHostItems();
    addQuickAccessItems();
    connect(&hfmbase::FileManagerWindowsManager::instance(), &hfmbase::FileManagerWindowsManager::windowCreated, this,
        &SidebarPlugin::onWindowCreated);
    inspector = new SidebarInspector(this);
}

bool SidebarPlugin::start()
{
    return true;
}

void SidebarPlugin::addHostItems()
{
    int index = 0;
    for (const StandardPlace &place : standardPlaces()) {
        const QString path = place.existingPath();
        if (path.isEmpty())
            continue;
        SidebarItem item;
        item.url = QUrl::fromLocalFile(path);
        item.group = QStringLiteral("Group_Common");
        item.index = index++;
        item.name = place.isHome() ? tr("Home") : QDir(path).dirName();
        item.icon = place.themeIcon();
        store->add(item);
    }

    SidebarItem computer;
    computer.url = QUrl(QStringLiteral("computer:///"));
    computer.group = QStringLiteral("Group_Device");
    computer.index = 0;
    computer.name = tr("Computer");
    computer.icon = QIcon::fromTheme(QStringLiteral("computer"));
    store->add(computer);

    SidebarItem root;
    root.url = QUrl::fromLocalFile(QStringLiteral("/"));
    root.group = QStringLiteral("Group_Device");
    root.index = 1;
    root.name = tr("System Disk");
    root.icon = QIcon::fromTheme(QStringLiteral("drive-harddisk"));
    store->add(root);
}

void SidebarPlugin::addQuickAccessItems()
{
    const QList<hpf::PluginMetaObjectPointer> plugins = hpf::LifeCycle::pluginMetaObjs();
    for (const hpf::PluginMetaObjectPointer &meta : plugins) {
        if (!meta || meta->pluginState() == hpf::PluginMetaObject::kInvalid)
            continue;
        const QJsonValue quick = meta->customData().value(QStringLiteral("QuickAccessDisplay"));
        if (quick.isUndefined() || quick.isNull())
            continue;
        const QJsonArray entries = quick.isArray() ? quick.toArray() : QJsonArray {quick};
        for (const QJsonValue &entry : entries) {
            SidebarItem item;
            QString error;
            if (!entry.isObject() || !SidebarItem::fromQuickAccess(entry.toObject(), meta->name(), &item, &error)) {
                qCWarning(logSidebar).noquote()
                    << "SidebarPlugin::addQuickAccessItems: ignored an entry of" << meta->name() << "-"
                    << (error.isEmpty() ? QStringLiteral("not an object") : error);
                continue;
            }
            store->add(item);
        }
    }
}

bool SidebarPlugin::updateItem(const QUrl &url, const QVariantMap &properties)
{
    return store->update(url, properties);
}

bool SidebarPlugin::removeItem(const QUrl &url)
{
    return store->remove(url);
}

SidebarStore *SidebarPlugin::itemStore() const
{
    return store;
}

SidebarWidget *SidebarPlugin::sidebarOf(quint64 windowId) const
{
    return sidebars.value(windowId);
}

void SidebarPlugin::onWindowCreated(quint64 windowId)
{
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(windowId);
    if (!window)
        return;
    auto *sidebar = new SidebarWidget(windowId, store);
    sidebars.insert(windowId, sidebar);
    sidebar->setCurrentUrl(window->currentUrl());
    connect(window, &hfmbase::FileManagerWindow::currentUrlChanged, sidebar, &SidebarWidget::setCurrentUrl);
    connect(sidebar, &QObject::destroyed, this, [this, windowId] { sidebars.remove(windowId); });
    window->installSideBar(sidebar);
}

}   // namespace hfmplugin_sidebar

#include "sidebarplugin.moc"
