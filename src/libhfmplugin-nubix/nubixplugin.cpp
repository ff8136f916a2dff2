// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixplugin.h"

#include "caches/nubixcaches.h"
#include "events/eventshandler.h"
#include "file/cloudfileiterator.h"
#include "file/cloudfilewatcher.h"
#include "file/cloudproxyfileinfo.h"
#include "ipc/nubixmessagehandler.h"
#include "resources/nubixicons.h"
#include "widgets/nubixentryentity.h"
#include "widgets/nubixloginwidget.h"

#include <hfmbase/abstractbaseview.h>
#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/abstractentryfileentity.h>
#include <hfmbase/abstractfilewatcher.h>
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/infofactory.h>
#include <hfmbase/urlroute.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QIcon>
#include <QLocale>
#include <QProcess>
#include <QTranslator>

#include <dlfcn.h>

namespace hfmplugin_nubix {

namespace {
const QString kMinHostVersion = QStringLiteral("6.0.49.25");
const QString kTranslationsDir = QStringLiteral("/usr/share/sablo-nubix/translations");
constexpr int kVersionCommandTimeout = 30000;

#ifdef NUBIX_TRANSLATIONS_BUILD_RELPATH
// The folder of this module's file, found through one of its own symbols.
QString moduleDir()
{
    Dl_info info {};
    if (!dladdr(reinterpret_cast<void *>(&isHostTooOld), &info) || !info.dli_fname)
        return QString();
    return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absolutePath();
}
#endif

void installTranslations(QObject *owner)
{
    auto *translator = new QTranslator(owner);
    const QString name = QStringLiteral("hfmplugin-nubix");
    if (translator->load(QLocale(), name, QStringLiteral("_"), kTranslationsDir)) {
        QCoreApplication::installTranslator(translator);
        return;
    }
#ifdef NUBIX_TRANSLATIONS_BUILD_RELPATH
    // Not installed: a build tree keeps them at a fixed place beside the module.
    const QString dir = moduleDir();
    if (!dir.isEmpty()
        && translator->load(QLocale(), name, QStringLiteral("_"),
            QDir(dir).filePath(QStringLiteral(NUBIX_TRANSLATIONS_BUILD_RELPATH)))) {
        QCoreApplication::installTranslator(translator);
        return;
    }
#endif
    delete translator;
}
}   // namespace

bool isHostTooOld(const QString &version)
{
    return version.compare(kMinHostVersion, Qt::CaseSensitive) < 0;
}

QString getHfmVersion()
{
    QProcess process;
    process.start(QStringLiteral("bash"),
        {QStringLiteral("-c"), QStringLiteral("hde-file-manager -v | grep '^hde-file-manager' | awk '{print $2}'")});
    if (!process.waitForStarted(kVersionCommandTimeout)) {
        nubixDebug() << "cannot start process!";
        return QString();
    }
    if (!process.waitForFinished(kVersionCommandTimeout)) {
        nubixDebug() << "process execute timeout.";
        process.kill();
        process.waitForFinished();
        return QString();
    }
    const QByteArray output = process.readAllStandardOutput();
    if (output.isNull())
        return QString();
    const QString version = QString::fromUtf8(output).trimmed();
    nubixDebug() << "hde-file-manager version:" << version;
    return version;
}

NubixPlugin::NubixPlugin(QObject *parent) : hpf::Plugin(parent) { }

NubixPlugin::~NubixPlugin() = default;

void NubixPlugin::initialize()
{
    // Made before the gate so that a too old host loses the sidebar item in every new window.
    connect(&hfmbase::FileManagerWindowsManager::instance(), &hfmbase::FileManagerWindowsManager::windowOpened, this,
        &NubixPlugin::onWindowOpened, Qt::DirectConnection);

    hfmVersion = getHfmVersion();
    if (isHostTooOld(hfmVersion)) {
        nubixWarning() << "The Nubix plugin cannot run on File Manager because the File Manager version is lower "
                          "than 6.0.49.25";
        return;
    }

    installIcons();
    const QIcon icon = QIcon::fromTheme(
        QStringLiteral("nubix-harddisk-symbolic"), QIcon::fromTheme(QStringLiteral("fbnubix-symbolic")));
    // A second registration is refused by the host with its own message; nothing to do about it here.
    hfmbase::UrlRoute::regScheme(Schemes::kNubix, QStringLiteral("/"), icon, true, tr("Kelo Drive"));
    hfmbase::UrlRoute::regScheme(Schemes::kNubixLogin, QStringLiteral("/"), icon, true, tr("Kelo Drive"));

    hfmbase::ViewFactory::regClass<NubixLoginWidget>(Schemes::kNubixLogin);

    // The host keeps no "nubix" infos or watchers: what they describe moves
    // whenever the sync root does.
    hfmbase::InfoFactory::regClass<CloudProxyFileInfo>(Schemes::kNubix, hfmbase::InfoFactory::RegOption::kNoCache);
    hfmbase::InfoCache::instance().setCacheDisbale(Schemes::kNubix, true);
    hfmbase::DirIteratorFactory::regClass<CloudFileIterator>(Schemes::kNubix);
    hfmbase::WatcherCache::instance().setCacheDisbale(Schemes::kNubix, true);
    hfmbase::WatcherFactory::regClass<CloudFileWatcher>(Schemes::kNubix);

    hfmbase::EntryEntityFactory::regClass<NubixEntryEntity>(QStringLiteral("nubix"));

    EventsHandler::instance()->installEventsFilter();
    EventsHandler::instance()->subscribeEvents();

    installTranslations(this);
}

bool NubixPlugin::start()
{
    if (isHostTooOld(hfmVersion)) {
        EventsHandler::instance()->removeSidebarItem();
        return false;
    }

    EventsHandler *handler = EventsHandler::instance();
    doRegStuff(QStringLiteral("hfmplugin-workspace"), [handler] {
        handler->regTopWidget();
        handler->regFileView();
    });
    doRegStuff(QStringLiteral("hfmplugin-computer"), [handler] {
        handler->addToComputer();
        handler->bindMenuScene();
    });
    doRegStuff(QStringLiteral("hfmplugin-sidebar"), [handler] { handler->updateSidebarItem(); });
    doRegStuff(QStringLiteral("hfmplugin-emblem"), [handler] { handler->hookOperations(); });
    doRegStuff(QStringLiteral("hfmplugin-titlebar"), [handler] { handler->disableTitleBarViewType(); });

    // The cache first, so that the summary read from disk is in place before
    // the first answer can arrive.
    NubixCaches::instance();
    NubixMessageHandler::instance();

    connect(NubixCaches::instance(), &NubixCaches::syncInfoUpdated, handler, &EventsHandler::updateSidebarItem);
    connect(NubixCaches::instance(), &NubixCaches::syncRootChanged, this, [handler](const QString &root) {
        if (root.isEmpty())
            handler->cdNubixLogin();
        else
            handler->cdNubixRoot();
    });

    NubixMessageHandler::instance()->tryConnect();

    qApp->installEventFilter(this);
    return true;
}

bool NubixPlugin::eventFilter(QObject *watched, QEvent *event)
{
    if (watched && event && event->type() == QEvent::Show
        && qstrcmp(watched->metaObject()->className(), "hfmbase::FileManagerWindow") == 0) {
        nubixDebug() << "window showed, try connect to nubix server.";
        // Every show retries; tryConnect() itself knows whether a connection is up.
        NubixMessageHandler::instance()->tryConnect();
    }
    return false;
}

void NubixPlugin::doRegStuff(const QString &pluginName, std::function<void()> func)
{
    if (!func)
        return;

    const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(pluginName);
    if (meta && meta->pluginState() == hpf::PluginMetaObject::kStarted) {
        func();
        return;
    }

    connect(
        hpf::Listener::instance(), &hpf::Listener::pluginStarted, this,
        [pluginName, func](const QString &, const QString &name) {
            if (name == pluginName)
                func();
        },
        Qt::DirectConnection);
}

void NubixPlugin::onWindowOpened(quint64 windowId)
{
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(windowId);
    if (!window)
        return;

    if (window->sideBar()) {
        refreshSidebarItem();
        return;
    }
    connect(window, &hfmbase::FileManagerWindow::sideBarInstallFinished, this, &NubixPlugin::refreshSidebarItem,
        Qt::DirectConnection);
}

void NubixPlugin::refreshSidebarItem()
{
    if (isHostTooOld(hfmVersion)) {
        EventsHandler::instance()->removeSidebarItem();
        return;
    }
    EventsHandler::instance()->updateSidebarItem();
}

}   // namespace hfmplugin_nubix
