// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosttestplugin.h"

#include "testscheme.h"

#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/hostcallbacks.h>
#include <hfmbase/infofactory.h>
#include <hfmbase/urlroute.h>
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>
#include <htk/messagedialog.h>

#include <QAction>
#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace hosttest {

namespace {

const QString kWorkspace = QStringLiteral("hfmplugin_workspace");
const QString kSidebar = QStringLiteral("hfmplugin_sidebar");
const QString kTitlebar = QStringLiteral("hfmplugin_titlebar");
const QString kMenu = QStringLiteral("hfmplugin_menu");
const QUrl kRoot(QStringLiteral("hosttest:///"));

}   // namespace

void HostTestPlugin::initialize()
{
    setProperty("bannersCreated", 0);
    setProperty("entered", QStringList());
    qRegisterMetaType<hfmbase::TopWidCreator>("TopWidCreator");
    qRegisterMetaType<hfmbase::TopWidShowFunc>("TopWidShowFunc");

    hfmbase::UrlRoute::regScheme(QStringLiteral("hosttest"), QStringLiteral("/"),
        QIcon::fromTheme(QStringLiteral("folder-remote")), true, QStringLiteral("Test Place"));
    hfmbase::UrlRoute::regScheme(
        QStringLiteral("hosttest-page"), QStringLiteral("/"), QIcon(), true, QStringLiteral("Test Page"));
    hfmbase::InfoFactory::regClass<TestFileInfo>(QStringLiteral("hosttest"), hfmbase::InfoFactory::RegOption::kNoCache);
    hfmbase::DirIteratorFactory::regClass<TestDirIterator>(QStringLiteral("hosttest"));
    hfmbase::WatcherFactory::regClass<TestWatcher>(QStringLiteral("hosttest"));
    hfmbase::ViewFactory::regClass<TestPageView>(QStringLiteral("hosttest-page"));

    auto *dispatcher = hpf::dispatcher();
    dispatcher->installEventFilter(hfmbase::kChangeCurrentUrl, this, &HostTestPlugin::filterChangeUrl);
    dispatcher->installEventFilter(hfmbase::kOpenNewWindow, this, &HostTestPlugin::filterNewWindow);
    dispatcher->installEventFilter(hfmbase::kOpenNewWindow, this, &HostTestPlugin::filterNewWindow2);
    dispatcher->installEventFilter(hfmbase::kOpenNewTab, this, &HostTestPlugin::filterNewTab);
    dispatcher->subscribe(hfmbase::kChangeCurrentUrl, this, &HostTestPlugin::onEntered);
}

bool HostTestPlugin::start()
{
    // The sidebar made our item from the metadata before anybody started.
    const bool present
        = hpf::channel()
              ->push(kSidebar, QStringLiteral("slot_Item_Update"), kRoot,
                  QVariantMap {{QStringLiteral("Property_Key_DisplayName"), QStringLiteral("Test Place (started)")}})
              .toBool();
    setProperty("sidebarItemBeforeStart", present);
    whenStarted(QStringLiteral("hfmplugin-workspace"), [this] { registerWithWorkspace(); });
    whenStarted(QStringLiteral("hfmplugin-titlebar"), [] {
        const QVariantMap hidden {{QStringLiteral("Property_Key_HideIconViewBtn"), true},
            {QStringLiteral("Property_Key_HideListViewBtn"), true},
            {QStringLiteral("Property_Key_HideTreeViewBtn"), true},
            {QStringLiteral("Property_Key_HideDetailSpaceBtn"), true}};
        hpf::channel()->push(
            kTitlebar, QStringLiteral("slot_Custom_Register"), QStringLiteral("hosttest-page"), hidden);
    });
    return present;
}

void HostTestPlugin::whenStarted(const QString &plugin, std::function<void()> func)
{
    const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(plugin);
    if (meta && meta->pluginState() == hpf::PluginMetaObject::kStarted) {
        func();
        return;
    }
    connect(hpf::Listener::instance(), &hpf::Listener::pluginStarted, this,
        [plugin, func](const QString &, const QString &name) {
            if (name == plugin)
                func();
        });
}

void HostTestPlugin::registerWithWorkspace()
{
    auto *channel = hpf::channel();
    QVariantMap top;
    top.insert(QStringLiteral("Property_Key_Scheme"), QStringLiteral("hosttest"));
    top.insert(QStringLiteral("Property_Key_KeepShow"), false);
    top.insert(QStringLiteral("Property_Key_CreateTopWidgetCallback"),
        QVariant::fromValue(hfmbase::TopWidCreator([this]() -> QWidget * {
            const int number = property("bannersCreated").toInt() + 1;
            setProperty("bannersCreated", number);
            return new TestBanner(number);
        })));
    top.insert(QStringLiteral("Property_Key_ShowTopWidgetCallback"),
        QVariant::fromValue(hfmbase::TopWidShowFunc([](QWidget *widget, const QUrl &url) {
            return qobject_cast<TestBanner *>(widget) && !url.path().startsWith(QLatin1String("/no-banner"));
        })));
    channel->push(kWorkspace, QStringLiteral("slot_RegisterCustomTopWidget"), top);
    channel->push(kWorkspace, QStringLiteral("slot_RegisterFileView"), QStringLiteral("hosttest"));
    channel->push(kMenu, QStringLiteral("slot_MenuScene_RegisterScene"), QStringLiteral("HostTestFileMenu"),
        static_cast<hfmbase::AbstractSceneCreator *>(new SceneCreator));
    channel->push(kWorkspace, QStringLiteral("slot_RegisterMenuScene"), QStringLiteral("hosttest"),
        QStringLiteral("HostTestFileMenu"));
}

bool HostTestPlugin::filter(const QUrl &url, const std::function<void(const QUrl &)> &republish)
{
    if (url.path().contains(QLatin1String("forbidden")))
        return true;
    if (url.scheme() != QLatin1String("hosttest-redirect"))
        return false;
    QUrl target(url);
    target.setScheme(QStringLiteral("hosttest"));
    republish(target);
    return true;
}

bool HostTestPlugin::filterChangeUrl(quint64 windowId, const QUrl &url)
{
    return filter(url,
        [windowId](const QUrl &target) { hpf::dispatcher()->publish(hfmbase::kChangeCurrentUrl, windowId, target); });
}

bool HostTestPlugin::filterNewWindow(const QUrl &url)
{
    setProperty("newWindowCalls", property("newWindowCalls").toStringList() << QStringLiteral("1:") + url.toString());
    return filter(url, [](const QUrl &target) { hpf::dispatcher()->publish(hfmbase::kOpenNewWindow, target); });
}

bool HostTestPlugin::filterNewWindow2(const QUrl &url, bool flag)
{
    setProperty("newWindowCalls",
        property("newWindowCalls").toStringList()
            << QStringLiteral("2:%1:%2").arg(url.toString(), flag ? QStringLiteral("true") : QStringLiteral("false")));
    return false;
}

bool HostTestPlugin::filterNewTab(quint64 windowId, const QUrl &url)
{
    return filter(
        url, [windowId](const QUrl &target) { hpf::dispatcher()->publish(hfmbase::kOpenNewTab, windowId, target); });
}

void HostTestPlugin::onEntered(quint64, const QUrl &url)
{
    setProperty("entered", property("entered").toStringList() << url.toString());
}

TestBanner::TestBanner(int number) : text(new QLabel(this))
{
    setProperty("iconName", QStringLiteral("dialog-information"));
    text->setText(QStringLiteral("Test banner #%1 <a href=\"refresh\">Refresh</a>").arg(number));
    (new QHBoxLayout(this))->addWidget(text);
    connect(text, &QLabel::linkActivated, this, [this, number](const QString &link) {
        text->setText(QStringLiteral("Test banner #%1 %2 done").arg(number).arg(link));
    });
}

TestPageView::TestPageView(const QUrl &url, QWidget *parent) : QWidget(parent), root(url), label(new QLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    label->setText(QStringLiteral("Welcome to the test page"));
    auto *button = new QPushButton(QStringLiteral("Press me"), this);
    connect(button, &QPushButton::clicked, this, [this] { label->setText(QStringLiteral("Pressed")); });
    layout->addWidget(label);
    layout->addWidget(button);
}

bool FileScene::initialize(const QVariantHash &params)
{
    selected = params.value(QStringLiteral("selectFiles")).value<QList<QUrl>>();
    auto *host = hpf::channel()
                     ->push(kMenu, QStringLiteral("slot_MenuScene_CreateScene"), QStringLiteral("WorkspaceMenu"))
                     .value<hfmbase::AbstractMenuScene *>();
    if (host)
        addSubscene(host);
    return AbstractMenuScene::initialize(params);
}

bool FileScene::create(QMenu *parent)
{
    AbstractMenuScene::create(parent);
    if (!selected.isEmpty()) {
        QAction *action = parent->addAction(QStringLiteral("Test info"));
        action->setProperty(hfmbase::ActionPropertyKey::kActionID, QStringLiteral("hosttest-info"));
        predicateAction.insert(QStringLiteral("hosttest-info"), action);
    }
    return true;
}

bool FileScene::triggered(QAction *action)
{
    if (action->property(hfmbase::ActionPropertyKey::kActionID).toString() != QLatin1String("hosttest-info"))
        return AbstractMenuScene::triggered(action);
    QStringList names;
    for (const QUrl &url : qAsConst(selected))
        names.append(url.toString());
    htk::MessageDialog dialog;
    dialog.setTitle(QStringLiteral("Test info"));
    dialog.setMessage(names.join(QLatin1Char(' ')));
    dialog.addButton(QStringLiteral("Close"), true);
    dialog.exec();
    return true;
}

}   // namespace hosttest
