// SPDX-License-Identifier: GPL-3.0-or-later
#include "eventshandler.h"

#include "caches/nubixcaches.h"
#include "ipc/nubixmessagehandler.h"
#include "menus/nubixentrymenuscene.h"
#include "menus/nubixfilemenuscene.h"
#include "nubixglobal.h"
#include "utils/nubixutils.h"
#include "widgets/nubixtitlewidget.h"

#include <hfmbase/abstractmenuscene.h>
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/hostcallbacks.h>
#include <hfmbase/metatypes.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QWidget>

namespace hfmplugin_nubix {

namespace {
const QString kWorkspaceSpace = QStringLiteral("hfmplugin_workspace");
const QString kComputerSpace = QStringLiteral("hfmplugin_computer");
const QString kSidebarSpace = QStringLiteral("hfmplugin_sidebar");
const QString kEmblemSpace = QStringLiteral("hfmplugin_emblem");
const QString kTitlebarSpace = QStringLiteral("hfmplugin_titlebar");
const QString kMenuSpace = QStringLiteral("hfmplugin_menu");
// The sidebar item is keyed by the welcome page's URL whatever it shows.
const QString kSidebarItemUrl = QStringLiteral("nubix-login:///");
const QString kTempSuffix = QStringLiteral(".temp");

// The callables travel in QVariants under the names the host's plug-ins look for.
void registerCallbackTypes()
{
    static const bool done = [] {
        qRegisterMetaType<hfmbase::TopWidCreator>("TopWidCreator");
        qRegisterMetaType<hfmbase::TopWidShowFunc>("TopWidShowFunc");
        qRegisterMetaType<hfmbase::SidebarMenuCreator>("SidebarMenuCreator");
        qRegisterMetaType<hfmbase::FindMeCallback>("FindMeCallback");
        qRegisterMetaType<Qt::ItemFlags>("Qt::ItemFlags");
        return true;
    }();
    Q_UNUSED(done)
}

bool isCloud(const QUrl &url)
{
    return url.scheme() == Schemes::kNubix;
}

QList<QUrl> mapLocalToCloud(const QList<QUrl> &urls, bool *changed)
{
    QList<QUrl> result;
    result.reserve(urls.size());
    for (const QUrl &url : urls) {
        const QUrl cloud = NubixUtils::localToCloud(url);
        if (cloud.isValid()) {
            result.append(cloud);
            if (changed)
                *changed = true;
        } else {
            result.append(url);
        }
    }
    return result;
}

hpf::EventDispatcherManager *events()
{
    return hpf::dispatcher();
}
}   // namespace

EventsHandler *EventsHandler::instance()
{
    static EventsHandler handler;
    return &handler;
}

EventsHandler::EventsHandler()
{
    hfmbase::registerMetaTypes();
    registerCallbackTypes();
}

EventsHandler::~EventsHandler() = default;

// ---- registration --------------------------------------------------------

void EventsHandler::subscribeEvents()
{
    events()->subscribe(hfmbase::kChangeCurrentUrl, this, &EventsHandler::onEnterDir);
}

void EventsHandler::installEventsFilter()
{
    events()->installGlobalEventFilter(this, &EventsHandler::workspaceEventFilter);

    events()->installEventFilter(hfmbase::kChangeCurrentUrl, this, &EventsHandler::filterEnter);
    events()->installEventFilter(hfmbase::kOpenNewWindow, this, &EventsHandler::filterEnterInNewWin);
    events()->installEventFilter(hfmbase::kOpenNewWindow, this, &EventsHandler::filterEnterInNewWin2);
    events()->installEventFilter(hfmbase::kOpenNewTab, this, &EventsHandler::filterEnterInNewTab);
    events()->installEventFilter(hfmbase::kDeleteFiles, this, &EventsHandler::filterDelete);
    events()->installEventFilter(hfmbase::kMoveToTrash, this, &EventsHandler::filterMoveToTrash);
    events()->installEventFilter(hfmbase::kWriteUrlsToClipboard, this, &EventsHandler::filterWriteClipbord);
    events()->installEventFilter(hfmbase::kMkdir, this, &EventsHandler::filterMkdir);
    events()->installEventFilter(hfmbase::kOpenFiles, this, &EventsHandler::filterOpenFiles);
    events()->installEventFilter(hfmbase::kOpenFilesByApp, this, &EventsHandler::filterOpenWith);
    events()->installEventFilter(hfmbase::kOpenInTerminal, this, &EventsHandler::filterOpenTerminal);
    events()->installEventFilter(hfmbase::kOpenAsAdmin, this, &EventsHandler::filterOpenAsAdmin);
    events()->installEventFilter(hfmbase::kCreateSymlink, this, &EventsHandler::filterCreateLink);
    events()->installEventFilter(hfmbase::kCopy, this, &EventsHandler::filterCopyFiles);
    events()->installEventFilter(hfmbase::kCutFile, this, &EventsHandler::filterCutFiles);
    events()->installEventFilter(hfmbase::kRenameFileResult, this, &EventsHandler::filterRenameResult);
    events()->installEventFilter(hfmbase::kCopyResult, this, &EventsHandler::filterPasteResult);
    events()->installEventFilter(hfmbase::kCutFileResult, this, &EventsHandler::filterPasteResult);
    events()->installEventFilter(hfmbase::kHideFiles, this, &EventsHandler::filterHiddenFiles);
    events()->installEventFilter(hfmbase::kSetPermission, this, &EventsHandler::filterSetPermission);
}

void EventsHandler::regFileView()
{
    hpf::channel()->push(kWorkspaceSpace, QStringLiteral("slot_RegisterFileView"), Schemes::kNubix);
}

void EventsHandler::regTopWidget()
{
    hfmbase::TopWidCreator creator = []() -> QWidget * { return new NubixTitleWidget; };
    hfmbase::TopWidShowFunc showFunc
        = [](QWidget *widget, const QUrl &) -> bool { return qobject_cast<NubixTitleWidget *>(widget) != nullptr; };

    QVariantMap property;
    property.insert(QStringLiteral("Property_Key_Scheme"), Schemes::kNubix);
    property.insert(QStringLiteral("Property_Key_KeepShow"), false);
    property.insert(QStringLiteral("Property_Key_CreateTopWidgetCallback"), QVariant::fromValue(creator));
    property.insert(QStringLiteral("Property_Key_ShowTopWidgetCallback"), QVariant::fromValue(showFunc));
    hpf::channel()->push(kWorkspaceSpace, QStringLiteral("slot_RegisterCustomTopWidget"), property);
}

void EventsHandler::addToComputer()
{
    // The host's own disk group, in the user's language.
    const QString group = QCoreApplication::translate("hfmplugin_computer::ComputerItemWatcher", "Disks");
    hpf::channel()->push(
        kComputerSpace, QStringLiteral("slot_Item_Add"), group, NubixUtils::computerEntryUrl(), 1, false);
}

void EventsHandler::bindMenuScene()
{
    hpf::EventChannelManager *channel = hpf::channel();
    // The menu plug-in takes ownership of the creators.
    channel->push(kMenuSpace, QStringLiteral("slot_MenuScene_RegisterScene"), QStringLiteral("NubixEntryMenu"),
        static_cast<hfmbase::AbstractSceneCreator *>(new NubixEntryMenuCreator));
    channel->push(kMenuSpace, QStringLiteral("slot_MenuScene_Bind"), QStringLiteral("NubixEntryMenu"),
        QStringLiteral("ComputerMenu"));
    channel->push(kMenuSpace, QStringLiteral("slot_MenuScene_RegisterScene"), QStringLiteral("NubixFileMenu"),
        static_cast<hfmbase::AbstractSceneCreator *>(new NubixFileMenuCreator));
    channel->push(
        kWorkspaceSpace, QStringLiteral("slot_RegisterMenuScene"), Schemes::kNubix, QStringLiteral("NubixFileMenu"));
}

void EventsHandler::hookOperations()
{
    hpf::sequence()->follow(
        kEmblemSpace, QStringLiteral("hook_CustomEmblems_Fetch"), this, &EventsHandler::hookRequestCustomEmblems);
    hpf::sequence()->follow(
        kWorkspaceSpace, QStringLiteral("hook_Tab_SetTabName"), this, &EventsHandler::hookSetTabName);
}

void EventsHandler::disableTitleBarViewType()
{
    QVariantMap property;
    property.insert(QStringLiteral("Property_Key_HideIconViewBtn"), true);
    property.insert(QStringLiteral("Property_Key_HideListViewBtn"), true);
    property.insert(QStringLiteral("Property_Key_HideTreeViewBtn"), true);
    property.insert(QStringLiteral("Property_Key_HideDetailSpaceBtn"), true);
    hpf::channel()->push(kTitlebarSpace, QStringLiteral("slot_Custom_Register"), Schemes::kNubixLogin, property);
}

// ---- navigation ----------------------------------------------------------

QUrl EventsHandler::redirectTarget(const QUrl &url)
{
    if (url.scheme() == Schemes::kNubixLogin && NubixUtils::readyToAccess())
        return NubixUtils::nubixRoot();
    if (url.scheme() == Schemes::kNubix && !NubixUtils::readyToAccess())
        return NubixUtils::loginRoot();
    return QUrl();
}

bool EventsHandler::filterEnter(quint64 windowId, const QUrl &url)
{
    const QUrl target = redirectTarget(url);
    if (target.isEmpty())
        return false;
    events()->publish(hfmbase::kChangeCurrentUrl, windowId, target);
    return true;
}

bool EventsHandler::filterEnterInNewTab(quint64 windowId, const QUrl &url)
{
    const QUrl target = redirectTarget(url);
    if (target.isEmpty())
        return false;
    events()->publish(hfmbase::kOpenNewTab, windowId, target);
    return true;
}

bool EventsHandler::filterEnterInNewWin(const QUrl &url)
{
    const QUrl target = redirectTarget(url);
    if (target.isEmpty())
        return false;
    events()->publish(hfmbase::kOpenNewWindow, target);
    return true;
}

bool EventsHandler::filterEnterInNewWin2(const QUrl &url, bool isNew)
{
    Q_UNUSED(isNew)
    return filterEnterInNewWin(url);
}

void EventsHandler::onEnterDir(quint64 windowId, const QUrl &url)
{
    Q_UNUSED(windowId)
    if (url.scheme() == Schemes::kNubix || url.scheme() == Schemes::kNubixLogin)
        NubixMessageHandler::instance()->tryConnect();
    if (url.scheme() != Schemes::kNubix)
        return;
    const QString path = url.path(QUrl::FullyDecoded);
    NubixMessageHandler::instance()->requestFileStatus(path, true);
    NubixMessageHandler::instance()->requestFileStatus(path, false);
}

bool EventsHandler::hookSetTabName(const QUrl &url, QString *name)
{
    const bool ours
        = url.scheme() == Schemes::kNubixLogin || (url.scheme() == Schemes::kNubix && url.path() == QLatin1String("/"));
    if (!ours)
        return false;
    if (name)
        *name = tr("Kelo Drive");
    return true;
}

void EventsHandler::cdNubixLogin()
{
    const auto &windows = hfmbase::FileManagerWindowsManager::instance();
    for (quint64 id : windows.windowIdList()) {
        hfmbase::FileManagerWindow *window = windows.findWindowById(id);
        if (window && window->currentUrl().scheme() == Schemes::kNubix)
            events()->publish(hfmbase::kChangeCurrentUrl, id, NubixUtils::loginRoot());
    }
}

void EventsHandler::cdNubixRoot()
{
    const auto &windows = hfmbase::FileManagerWindowsManager::instance();
    for (quint64 id : windows.windowIdList()) {
        hfmbase::FileManagerWindow *window = windows.findWindowById(id);
        if (!window)
            continue;
        const QUrl current = window->currentUrl();
        if (current.scheme() == Schemes::kNubixLogin) {
            events()->publish(hfmbase::kChangeCurrentUrl, id, NubixUtils::nubixRoot());
        } else if (current.scheme() == Schemes::kNubix && current.path() == QLatin1String("/")) {
            // The root view was listed against the old sync root.
            hpf::channel()->push(
                kWorkspaceSpace, QStringLiteral("slot_RefreshDir"), QList<QUrl> {NubixUtils::nubixRoot()});
        }
    }
}

void EventsHandler::updateSidebarItem()
{
    const SyncInfo info = NubixCaches::instance()->syncInfo();
    QIcon icon;
    if (info.syncInited && info.isPublicCloud)
        icon = QIcon::fromTheme(
            QStringLiteral("fbnubix_personal"), QIcon::fromTheme(QStringLiteral("nubix-harddisk-individual-symbolic")));
    else if (info.syncInited)
        icon = QIcon::fromTheme(QStringLiteral("fbnubix_enterprise"),
            QIcon::fromTheme(QStringLiteral("nubix-harddisk-enterprise-symbolic")));
    else
        icon = QIcon::fromTheme(
            QStringLiteral("fbnubix-symbolic"), QIcon::fromTheme(QStringLiteral("nubix-harddisk-symbolic")));

    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
    const hfmbase::SidebarMenuCreator menuCreator = &EventsHandler::createSidebarItemMenu;
    const hfmbase::FindMeCallback findMe = &EventsHandler::findSidebarItem;

    QVariantMap property;
    property.insert(QStringLiteral("Property_Key_QtItemFlags"), QVariant::fromValue(flags));
    property.insert(QStringLiteral("Property_Key_DisplayName"), tr("Kelo Drive"));
    property.insert(QStringLiteral("Property_Key_Icon"), icon);
    property.insert(QStringLiteral("Property_Key_CallbackContextMenu"), QVariant::fromValue(menuCreator));
    property.insert(QStringLiteral("Property_Key_CallbackFindMe"), QVariant::fromValue(findMe));
    hpf::channel()->push(kSidebarSpace, QStringLiteral("slot_Item_Update"), QUrl(kSidebarItemUrl), property);
}

void EventsHandler::removeSidebarItem()
{
    hpf::channel()->push(kSidebarSpace, QStringLiteral("slot_Item_Remove"), QUrl(kSidebarItemUrl));
}

bool EventsHandler::findSidebarItem(const QUrl &itemUrl, const QUrl &targetUrl)
{
    Q_UNUSED(itemUrl)
    if (targetUrl.path() != QLatin1String("/"))
        return false;
    return targetUrl.scheme() == Schemes::kNubix || targetUrl.scheme() == Schemes::kNubixLogin;
}

void EventsHandler::createSidebarItemMenu(quint64 windowId, const QUrl &url, const QPoint &pos)
{
    Q_UNUSED(url)
    Q_UNUSED(pos)
    const QVariant sceneVar = hpf::channel()->push(
        kMenuSpace, QStringLiteral("slot_MenuScene_CreateScene"), QStringLiteral("ComputerMenu"));
    auto *scene = sceneVar.value<hfmbase::AbstractMenuScene *>();
    if (!scene) {
        nubixWarning() << "Craete scene for computer failed: ComputerMenu";
        return;
    }

    QVariantHash params;
    params.insert(QStringLiteral("windowId"), windowId);
    params.insert(QStringLiteral("selectFiles"), QVariant::fromValue(QList<QUrl> {NubixUtils::computerEntryUrl()}));
    if (!scene->initialize(params)) {
        delete scene;
        return;
    }

    auto *menu = new QMenu;
    scene->create(menu);
    scene->updateState(menu);
    if (QAction *action = menu->exec(QCursor::pos()))
        scene->triggered(action);
    delete menu;
    delete scene;
}

bool EventsHandler::workspaceEventFilter(int type, const QVariantList &args)
{
    if (type != hfmbase::kTouchFile || args.size() != 6)
        return false;

    const QVariant &dirArg = args.at(1);
    if (dirArg.userType() != QMetaType::QUrl || !isCloud(dirArg.toUrl()))
        return false;
    const QVariant &kindArg = args.at(2);
    if (!kindArg.canConvert<uint>() && !kindArg.canConvert<QUrl>())
        return false;

    QVariantList local = args;
    local[1] = NubixUtils::cloudToLocal(dirArg.toUrl());
    local[5] = QVariant::fromValue(fileCreatedCallbackShell(args.at(5).value<hfmbase::OperatorCallback>()));
    events()->publishList(hfmbase::kTouchFile, local);
    return true;
}

// ---- file operations -----------------------------------------------------

bool EventsHandler::takeHandle(const QList<QUrl> &urls, QList<QUrl> *out)
{
    bool found = false;
    QList<QUrl> result;
    result.reserve(urls.size());
    for (const QUrl &url : urls) {
        if (isCloud(url)) {
            result.append(NubixUtils::cloudToLocal(url));
            found = true;
        } else {
            result.append(url);
        }
    }
    if (out)
        *out = result;
    return found;
}

bool EventsHandler::blockOpenFiles(const QList<QUrl> &urls)
{
    const QString root = NubixCaches::instance()->syncRoot();
    for (const QUrl &url : urls) {
        const QString path = url.path(QUrl::FullyDecoded);
        if (path.endsWith(kTempSuffix) && path.startsWith(root)) {
            showFileIncompleteWarning();
            return true;
        }
    }
    return false;
}

void EventsHandler::showFileIncompleteWarning()
{
    htk::MessageDialog dialog(qApp->activeWindow());
    dialog.setIcon(QIcon::fromTheme(QStringLiteral("kelo-drive")));
    dialog.setTitle(tr("Open failed"));
    dialog.setMessage(tr("The file has not finished synchronization, please keep the Kelo Drive running normally and "
                         "open it after the synchronization is completed."));
    dialog.addButton(tr("Confirm"), false, htk::MessageDialog::ButtonNormal);
    dialog.exec();
}

hfmbase::OperatorCallback EventsHandler::fileCreatedCallbackShell(hfmbase::OperatorCallback callback)
{
    return [callback](hfmbase::CallbackArgus args) {
        if (!callback)
            return;
        if (args) {
            using Key = hfmbase::AbstractJobHandler::JobCallbackKey;
            for (Key key : {Key::kSourceUrlsKey, Key::kTargetUrlsKey}) {
                const QList<QUrl> urls = args->value(key).value<QList<QUrl>>();
                args->insert(key, QVariant::fromValue(mapLocalToCloud(urls, nullptr)));
            }
        }
        callback(args);
    };
}

bool EventsHandler::filterOpenFiles(quint64 windowId, const QList<QUrl> &urls)
{
    // A transfer in progress is refused before anything is translated.
    if (blockOpenFiles(urls))
        return true;
    QList<QUrl> local;
    if (!takeHandle(urls, &local))
        return false;
    events()->publish(hfmbase::kOpenFiles, windowId, local);
    return true;
}

bool EventsHandler::filterOpenWith(quint64 windowId, const QList<QUrl> &urls, const QList<QString> &apps)
{
    Q_UNUSED(windowId)
    Q_UNUSED(apps)
    return blockOpenFiles(urls);
}

bool EventsHandler::filterOpenTerminal(quint64 windowId, const QList<QUrl> &urls)
{
    QList<QUrl> local;
    if (!takeHandle(urls, &local))
        return false;
    events()->publish(hfmbase::kOpenInTerminal, windowId, local);
    return true;
}

bool EventsHandler::filterOpenAsAdmin(const QUrl &url)
{
    if (!isCloud(url))
        return false;
    events()->publish(hfmbase::kOpenAsAdmin, NubixUtils::cloudToLocal(url));
    return true;
}

bool EventsHandler::filterMoveToTrash(quint64 windowId, const QList<QUrl> &urls,
    hfmbase::AbstractJobHandler::JobFlags flags, hfmbase::OperatorHandleCallback callback)
{
    QList<QUrl> local;
    if (!takeHandle(urls, &local))
        return false;
    events()->publish(hfmbase::kMoveToTrash, windowId, local, flags, callback);
    return true;
}

bool EventsHandler::filterDelete(quint64 windowId, const QList<QUrl> &urls, hfmbase::AbstractJobHandler::JobFlags flags,
    hfmbase::OperatorHandleCallback callback)
{
    QList<QUrl> local;
    if (!takeHandle(urls, &local))
        return false;
    events()->publish(hfmbase::kDeleteFiles, windowId, local, flags, callback);
    return true;
}

bool EventsHandler::filterWriteClipbord(quint64 windowId, quint8 action, const QList<QUrl> &urls)
{
    QList<QUrl> local;
    if (!takeHandle(urls, &local))
        return false;
    events()->publish(hfmbase::kWriteUrlsToClipboard, windowId, action, local);
    return true;
}

bool EventsHandler::filterHiddenFiles(quint64 windowId, const QList<QUrl> &urls)
{
    bool changed = false;
    QList<QUrl> local;
    local.reserve(urls.size());
    for (const QUrl &url : urls) {
        const QUrl mapped = NubixUtils::cloudToLocal(url);
        if (mapped.isValid()) {
            local.append(mapped);
            changed = true;
        } else {
            local.append(url);
        }
    }
    if (!changed)
        return false;
    events()->publish(hfmbase::kHideFiles, windowId, local);
    return true;
}

bool EventsHandler::filterCopyFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
    hfmbase::AbstractJobHandler::JobFlags flags, hfmbase::OperatorHandleCallback callback)
{
    // Cloud sources are left to the host, which follows their redirection.
    if (!isCloud(target))
        return false;
    events()->publish(hfmbase::kCopy, windowId, sources, NubixUtils::cloudToLocal(target), flags, callback);
    return true;
}

bool EventsHandler::filterCutFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
    hfmbase::AbstractJobHandler::JobFlags flags, hfmbase::OperatorHandleCallback callback)
{
    if (!isCloud(target))
        return false;
    events()->publish(hfmbase::kCutFile, windowId, sources, NubixUtils::cloudToLocal(target), flags, callback);
    return true;
}

bool EventsHandler::filterMkdir(
    quint64 windowId, const QUrl &url, const QVariant &arg, hfmbase::OperatorCallback callback)
{
    if (!isCloud(url))
        return false;
    events()->publish(
        hfmbase::kMkdir, windowId, NubixUtils::cloudToLocal(url), arg, fileCreatedCallbackShell(callback));
    return true;
}

bool EventsHandler::filterCreateLink(quint64 windowId, const QUrl &source, const QUrl &link, bool force, bool silence)
{
    if (!isCloud(source))
        return false;
    events()->publish(hfmbase::kCreateSymlink, windowId, NubixUtils::cloudToLocal(source), link, force, silence);
    return true;
}

bool EventsHandler::filterSetPermission(quint64 windowId, const QUrl &url, QFileDevice::Permissions permissions)
{
    if (!isCloud(url))
        return false;
    events()->publish(hfmbase::kSetPermission, windowId, NubixUtils::cloudToLocal(url), permissions);
    return true;
}

bool EventsHandler::filterPasteResult(
    const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &errorMsg)
{
    bool changed = false;
    const QList<QUrl> cloudTargets = mapLocalToCloud(targets, &changed);
    if (!changed)
        return false;
    // Copy and cut results both come here and are answered as a finished paste.
    events()->publish(hfmbase::kCopyResult, sources, cloudTargets, ok, errorMsg);
    return true;
}

bool EventsHandler::cloudRenameMap(const QMap<QUrl, QUrl> &renamed, QMap<QUrl, QUrl> *out)
{
    bool marked = false;
    QMap<QUrl, QUrl> result;
    for (auto it = renamed.cbegin(); it != renamed.cend(); ++it) {
        if (isCloud(it.value()))
            continue;
        marked = true;
        const QUrl cloud = NubixUtils::localToCloud(it.value());
        if (cloud.isValid())
            result.insert(it.key(), cloud);
    }
    if (out)
        *out = result;
    return marked;
}

bool EventsHandler::filterRenameResult(
    quint64 windowId, const QMap<QUrl, QUrl> &renamed, bool ok, const QString &errorMsg)
{
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(windowId);
    if (!window || !isCloud(window->currentUrl()))
        return false;
    QMap<QUrl, QUrl> cloud;
    if (!cloudRenameMap(renamed, &cloud))
        return false;
    events()->publish(hfmbase::kRenameFileResult, windowId, cloud, ok, errorMsg);
    return true;
}

// ---- emblems -------------------------------------------------------------

QString EventsHandler::emblemName(const QString &cloudPath)
{
    QString path = cloudPath;
    // A transfer's temporary file shows the state of the file it becomes.
    if (path.endsWith(kTempSuffix))
        path.remove(kTempSuffix);

    if (NubixCaches::instance()->syncInfo().isDisconnected)
        return QString();

    QString name;
    switch (NubixCaches::instance()->fileData(path).planStatus) {
    case 1:
    case 2:
        name = QStringLiteral("fbnubix_file_syncing");
        break;
    case 3:
        name = QStringLiteral("fbnubix_file_done");
        break;
    case 10:
        name = QStringLiteral("fbnubix_file_error");
        break;
    default:
        break;
    }
    if (NubixCaches::instance()->syncInfo().banDirs.contains(path))
        name = QStringLiteral("fbnubix_file_ban");
    return name;
}

bool EventsHandler::hookRequestCustomEmblems(const QUrl &url, QList<QIcon> *emblems)
{
    if (!isCloud(url))
        return false;
    const QString name = emblemName(url.path(QUrl::FullyDecoded));
    if (name.isEmpty())
        return false;
    const QIcon icon = QIcon::fromTheme(QString(), QIcon::fromTheme(name));
    if (!emblems || icon.isNull())
        return false;
    emblems->append(icon);
    return true;
}

}   // namespace hfmplugin_nubix
