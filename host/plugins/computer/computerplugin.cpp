// SPDX-License-Identifier: GPL-3.0-or-later
#include "computerplugin.h"

#include "computerstore.h"
#include "computerview.h"
#include "entrytile.h"
#include "hostentities.h"

#include <hfmbase/abstractbaseview.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/urlroute.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QCoreApplication>
#include <QCursor>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(logComputer, "org.sablo.hde.filemanager.plugin.computer")

namespace hfmplugin_computer {

using namespace hdehost;

namespace {

// The group names plug-ins join, in the translation context they use.
QString groupName(const char *text)
{
    return QCoreApplication::translate("hfmplugin_computer::ComputerItemWatcher", text);
}

// Reports the entries to the automation mode and acts on their tiles.
class ComputerInspector : public QObject
{
    Q_OBJECT
public:
    ComputerInspector()
    {
        setObjectName(Inspector::kComputer);
        setParent(QCoreApplication::instance());
    }

    Q_INVOKABLE QVariantMap state() const
    {
        QVariantList groups;
        ComputerStore *store = ComputerStore::instance();
        const QStringList names = store->groups();
        for (const QString &name : names) {
            QVariantList entries;
            const QList<ComputerEntry> list = store->entries(name);
            for (const ComputerEntry &entry : list)
                entries.append(entry.toVariantMap());
            groups.append(QVariantMap {{QStringLiteral("name"), name}, {QStringLiteral("entries"), entries}});
        }
        return QVariantMap {{QStringLiteral("groups"), groups}};
    }
    Q_INVOKABLE bool activate(quint64 windowId, const QString &key)
    {
        EntryTile *tile = tileFor(windowId, key);
        return tile && tile->activate();
    }
    Q_INVOKABLE bool contextMenu(quint64 windowId, const QString &key)
    {
        EntryTile *tile = tileFor(windowId, key);
        return tile && tile->showContextMenu(QCursor::pos());
    }

private:
    static EntryTile *tileFor(quint64 windowId, const QString &key)
    {
        ComputerView *view = ComputerPlugin::viewOf(windowId);
        return view ? view->tileFor(key) : nullptr;
    }
};

}   // namespace

ComputerPlugin::~ComputerPlugin()
{
    delete inspector.data();
}

void ComputerPlugin::initialize()
{
    registerHostMetaTypes();
    hfmbase::UrlRoute::regScheme(QStringLiteral("computer"), QStringLiteral("/"),
        QIcon::fromTheme(QStringLiteral("computer")), true, tr("Computer"));
    hfmbase::ViewFactory::regClass<ComputerView>(QStringLiteral("computer"));
    hfmbase::EntryEntityFactory::regClass<LocalDiskEntity>(QStringLiteral("localdisk"));
    hfmbase::EntryEntityFactory::regClass<UserDirEntity>(QStringLiteral("userdir"));
    hpf::channel()->connect(Space::kComputer, Topic::kComputerItemAdd, this, &ComputerPlugin::addItem);

    ComputerStore *store = ComputerStore::instance();
    const QString folders = groupName(QT_TRANSLATE_NOOP("hfmplugin_computer::ComputerItemWatcher", "My Directories"));
    const QList<QUrl> userDirs = UserDirEntity::existingEntries();
    for (const QUrl &url : userDirs)
        store->add(folders, url, ComputerEntry::kSmall, false);
    store->add(groupName(QT_TRANSLATE_NOOP("hfmplugin_computer::ComputerItemWatcher", "Disks")),
        QUrl(QStringLiteral("entry:///root.localdisk")), ComputerEntry::kLarge, false);
    // Entities of other plug-ins go while every library is still whole.
    connect(qApp, &QCoreApplication::aboutToQuit, store, &ComputerStore::clear);
    inspector = new ComputerInspector;
}

bool ComputerPlugin::start()
{
    return true;
}

bool ComputerPlugin::addItem(const QString &group, const QUrl &entryUrl, int shape, bool appendAtEnd)
{
    return ComputerStore::instance()->add(group, entryUrl, shape, appendAtEnd);
}

ComputerView *ComputerPlugin::viewOf(quint64 windowId)
{
    ComputerView *found = nullptr;
    const QList<ComputerView *> views = ComputerView::views();
    for (ComputerView *view : views) {
        if (hfmbase::FileManagerWindowsManager::instance().findWindowId(view) != windowId)
            continue;
        if (view->isVisible())
            return view;
        if (!found)
            found = view;
    }
    return found;
}

}   // namespace hfmplugin_computer

#include "computerplugin.moc"
