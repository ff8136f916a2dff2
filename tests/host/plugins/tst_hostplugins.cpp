// SPDX-License-Identifier: GPL-3.0-or-later
// The host's six plug-ins loaded in-process with a test plug-in that uses
// only the public SDK: navigation filters, top widgets, live updates, menus,
// the sidebar item from metadata and a custom view with its title-bar
// settings. What the cloud plug-in uses as well (listing, emblems, tab names,
// the computer entry, sidebar menus) its own end-to-end tests drive.
#include "../app/filetestutils.h"
#include "../app/statetestutils.h"
#include "automation/menuinterceptor.h"
#include "automation/statecollector.h"
#include "core/fileoperations.h"
#include "core/hoststartup.h"
#include "core/operationlog.h"

#include <hfmbase/abstractmenuscene.h>
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hostcommon/navigation.h>
#include <hpf/event/event.h>
#include <hpf/lifecycle.h>
#include <hpf/plugin.h>
#include <htk/messagedialog.h>

#include <QAbstractItemView>
#include <QAction>
#include <QJsonArray>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace filetest;
using namespace hdehost;
using statetest::at;

namespace {

// The strings of a JSON array, or the `key` member of its objects.
QStringList strings(const QJsonValue &array, const char *key = "id")
{
    QStringList list;
    const QJsonArray items = array.toArray();
    for (const QJsonValue &item : items)
        list.append(item.isObject() ? item.toObject().value(QLatin1String(key)).toString() : item.toString());
    return list;
}

// The offscreen platform warns about window features it lacks; those lines
// say nothing about the host. Refusals of event calls are counted.
QtMessageHandler previousHandler = nullptr;
QAtomicInt refusals;
void quietPlatform(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.contains(QLatin1String("refused the call")))
        refusals.ref();
    if (!message.startsWith(QLatin1String("This plugin does not support")))
        previousHandler(type, context, message);
}

bool invokeBool(const QString &inspector, const char *method, quint64 windowId, const QString &text)
{
    bool result = false;
    QObject *object = hdeapp::hostInspector(inspector);
    return object
        && QMetaObject::invokeMethod(object, method, Qt::DirectConnection, Q_RETURN_ARG(bool, result),
            Q_ARG(quint64, windowId), Q_ARG(QString, text))
        && result;
}

hfmbase::FileManagerWindow *window(quint64 id)
{
    return hfmbase::FileManagerWindowsManager::instance().findWindowById(id);
}

QUrl testUrl(const char *path)
{
    return QUrl(QStringLiteral("hosttest://") + QLatin1String(path));
}

}   // namespace

// Tests that compare members with raw JSON strings are defined below the
// class: moc cannot read raw strings.
class HostPluginsTest : public QObject
{
    Q_OBJECT

private:
    QJsonObject state() const { return hdeapp::collectState(&log, operations); }
    QJsonObject windowState(quint64 id) const
    {
        return at(state(), QStringLiteral("windows/id=%1").arg(id)).toObject();
    }
    QJsonObject currentTab(quint64 id) const { return at(windowState(id), "tabs/current=true").toObject(); }
    QStringList itemNames(quint64 id) const { return strings(at(currentTab(id), "view/items"), "name"); }
    QString inRoot(const char *relative) const { return root.filePath(QString::fromUtf8(relative)); }

    quint64 openWindow(const QUrl &url)
    {
        const QList<quint64> before = hfmbase::FileManagerWindowsManager::instance().windowIdList();
        requestNewWindow(url);
        for (quint64 id : hfmbase::FileManagerWindowsManager::instance().windowIdList()) {
            if (!before.contains(id))
                return id;
        }
        return 0;
    }

    bool waitLoaded(quint64 id)
    {
        QObject *inspector = hdeapp::hostInspector(Inspector::kWorkspace);
        return QTest::qWaitFor([&] {
            bool loaded = false;
            QMetaObject::invokeMethod(
                inspector, "isLoaded", Qt::DirectConnection, Q_RETURN_ARG(bool, loaded), Q_ARG(quint64, id));
            return loaded;
        });
    }

    QTemporaryDir root;
    hdeapp::OperationLog log;
    hdeapp::FileOperations *operations = nullptr;
    hdeapp::MenuInterceptor *menus = nullptr;
    QObject *testPlugin = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        previousHandler = qInstallMessageHandler(quietPlatform);
        QVERIFY(root.isValid());
        qputenv("HOSTTEST_ROOT", root.path().toUtf8());
        for (const QString &name : words("dir/inner.txt|a-plain.txt"))
            writeFile(root.filePath(name));
        QVERIFY(QDir(root.path()).mkpath(QStringLiteral("empty")));
        QVERIFY(QDir(root.path()).mkpath(QStringLiteral("no-banner")));

        registerHostMetaTypes();
        hdeapp::chooseIconTheme();
        htk::MessageDialog::setAutomationMode(true);
        log.attach();
        operations = new hdeapp::FileOperations(&log, this);
        operations->attach();
        operations->setRecordOnly(true);
        menus = new hdeapp::MenuInterceptor(this);

        hpf::LifeCycle::setPluginPaths({QStringLiteral(HOST_PLUGIN_DIR), QStringLiteral(HOSTTEST_PLUGIN_DIR)});
        hpf::LifeCycle::setBlackList({QStringLiteral("hfmplugin-nubix")});
        QVERIFY(hpf::LifeCycle::readPlugins());
        hpf::LifeCycle::loadPlugins();
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(QStringLiteral("hfmplugin-hosttest"));
        QVERIFY(meta && meta->plugin());
        testPlugin = meta->plugin();
        for (const QString &name : words("hfmplugin-workspace|hfmplugin-computer|hfmplugin-sidebar|hfmplugin-emblem|"
                                         "hfmplugin-titlebar|hfmplugin-menu")) {
            const hpf::PluginMetaObjectPointer host = hpf::LifeCycle::pluginMetaObj(name);
            QVERIFY2(host && host->pluginState() == hpf::PluginMetaObject::kStarted, qPrintable(name));
        }
    }

    void cleanupTestCase() { cleanup(); }

    void cleanup()
    {
        auto &windows = hfmbase::FileManagerWindowsManager::instance();
        for (quint64 id : windows.windowIdList())
            windows.findWindowById(id)->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        htk::MessageDialog::clearRecordedDialogs();
        QTRY_COMPARE(operations->runningJobs(), 0);
    }

    void sidebarItemFromMetadataBeforeStart();

    void navigationFilters_data()
    {
        QTest::addColumn<int>("event");
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("newWindows");
        QTest::addColumn<int>("newTabs");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("announced");   // the last URL event 1 told of

        // Each navigation event passes, is vetoed or is redirected.
        const QString root = QStringLiteral("hosttest:///");
        const QString dir = QStringLiteral("hosttest:///dir");
        // clang-format off
        for (const auto &e : {std::make_tuple(1, "change directory", 0, 0), {3, "new tab", 0, 1}, {2, "new window", 1, 0}}) {
            const int event = std::get<0>(e);
            QTest::addRow("%s passes", std::get<1>(e)) << event << dir << std::get<2>(e) << std::get<3>(e) << dir << dir;
            QTest::addRow("%s vetoed", std::get<1>(e)) << event << "hosttest:///forbidden" << 0 << 0 << root << root;
            QTest::addRow("%s redirected", std::get<1>(e)) << event << "hosttest-redirect:///dir" << std::get<2>(e) << std::get<3>(e) << dir << dir;
        }
        QTest::newRow("no view for the scheme") << 1 << "nosuchscheme:///x" << 0 << 0 << root << "nosuchscheme:///x";
        // clang-format on
    }
    void navigationFilters()
    {
        QFETCH(int, event);
        QFETCH(QString, target);
        QFETCH(int, newWindows);
        QFETCH(QString, shown);

        const quint64 id = openWindow(testUrl("/"));
        const QList<quint64> before = hfmbase::FileManagerWindowsManager::instance().windowIdList();
        const QUrl url(target);
        if (event == hfmbase::kChangeCurrentUrl)
            requestChangeUrl(id, url);
        else if (event == hfmbase::kOpenNewTab)
            requestNewTab(id, url);
        else
            requestNewWindow(url);

        const QList<quint64> after = hfmbase::FileManagerWindowsManager::instance().windowIdList();
        QCOMPARE(after.size() - before.size(), newWindows);
        QTEST(windowState(id).value(QStringLiteral("tabs")).toArray().size() - 1, "newTabs");
        const quint64 showing = newWindows ? after.last() : id;
        QCOMPARE(window(showing)->currentUrl().toString(), shown);
        QCOMPARE(currentTab(showing).value(QStringLiteral("url")).toString(), shown);
        // Event 1 tells of every directory a view was asked to show, and only
        // of those that no filter stopped.
        QTEST(testPlugin->property("entered").toStringList().last(), "announced");
    }

    void newWindowReachesBothFilterForms_data()
    {
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QStringList>("expectedCalls");

        const QUrl dir(QStringLiteral("hosttest:///dir"));
        QTest::newRow("URL alone") << QVariantList {dir} << words("1:hosttest:///dir|2:hosttest:///dir:false");
        QTest::newRow("URL and true") << QVariantList {dir, true} << words("1:hosttest:///dir|2:hosttest:///dir:true");
    }
    void newWindowReachesBothFilterForms()
    {
        QFETCH(QVariantList, args);
        auto &windows = hfmbase::FileManagerWindowsManager::instance();
        const int before = windows.windowIdList().size();
        testPlugin->setProperty("newWindowCalls", QStringList());
        refusals = 0;
        for (int i = 0; i < 2; ++i)
            QVERIFY(hpf::dispatcher()->publishList(hfmbase::kOpenNewWindow, args));

        QFETCH(QStringList, expectedCalls);
        QCOMPARE(testPlugin->property("newWindowCalls").toStringList(), expectedCalls + expectedCalls);
        QCOMPARE(int(refusals), 0);
        QCOMPARE(windows.windowIdList().size() - before, 2);
        QCOMPARE(window(windows.windowIdList().last())->currentUrl(), args.first().toUrl());
    }

    void topWidgetOncePerViewAndShownPerCallback();

    void tabNameHistoryAndEmptyTip()
    {
        const quint64 id = openWindow(testUrl("/"));
        requestChangeUrl(id, testUrl("/dir"));
        QCOMPARE(currentTab(id).value(QStringLiteral("name")).toString(), QStringLiteral("dir"));
        QCOMPARE(window(id)->windowTitle(), QStringLiteral("dir"));
        requestChangeUrl(id, testUrl("/empty"));
        QVERIFY(waitLoaded(id));
        QCOMPARE(at(currentTab(id), "view/tip").toString(), QStringLiteral("Nothing in the test place"));

        auto go = [this, id](const QString &step) {
            hpf::channel()->push(
                Space::kWorkspace, step == QLatin1String("back") ? Topic::kNavigateBack : Topic::kNavigateForward, id);
            return currentTab(id).value(QStringLiteral("url")).toString().mid(QStringLiteral("hosttest://").size());
        };
        QStringList shown;
        for (const QString &step : words("back|back|back|forward|back|forward|forward|forward|back"))
            shown.append(go(step));
        QCOMPARE(shown, words("/dir|/|/|/dir|/|/dir|/empty|/empty|/dir"));
        // Going somewhere new forgets the way forward.
        requestChangeUrl(id, testUrl("/no-banner"));
        QCOMPARE(go(QStringLiteral("forward")), QStringLiteral("/no-banner"));
        QCOMPARE(go(QStringLiteral("back")), QStringLiteral("/dir"));
    }

    void liveUpdatesRepaintAndRefresh()
    {
        const quint64 id = openWindow(testUrl("/dir"));
        QVERIFY(waitLoaded(id));
        writeFile(inRoot("dir/arrived.txt"));
        QTRY_COMPARE(itemNames(id), words("arrived.txt|inner.txt"));
        QVERIFY(QFile::remove(inRoot("dir/arrived.txt")));
        QTRY_COMPARE(itemNames(id), words("inner.txt"));

        auto *view = window(id)->findChild<QAbstractItemView *>(QStringLiteral("icon-view"));
        QVERIFY(view);
        QSignalSpy repaint(view->model(), &QAbstractItemModel::dataChanged);
        hpf::channel()->push(Space::kWorkspace, Topic::kModelFileUpdate, testUrl("/dir/inner.txt"));
        hpf::channel()->push(Space::kWorkspace, Topic::kModelFileUpdate, testUrl("/dir/unknown.txt"));
        QTRY_COMPARE(repaint.count(), 1);
        QCOMPARE(repaint.first().first().value<QModelIndex>().data().toString(), QStringLiteral("inner.txt"));

        QSignalSpy reload(view->model(), &QAbstractItemModel::modelReset);
        hpf::channel()->push(Space::kWorkspace, Topic::kRefreshDir, QList<QUrl> {testUrl("/elsewhere")});
        QCOMPARE(reload.count(), 0);
        hpf::channel()->push(Space::kWorkspace, Topic::kRefreshDir, QList<QUrl> {testUrl("/dir/")});
        QCOMPARE(reload.count(), 1);
        QVERIFY(waitLoaded(id));
        QCOMPARE(itemNames(id), words("inner.txt"));
    }

    void operationResultsSelectNewItems_data()
    {
        QTest::addColumn<int>("event");
        QTest::addColumn<QString>("selected");   // name expected selected in hosttest:///dir

        QTest::newRow("rename") << int(hfmbase::kRenameFile) << "renamed.txt";
        QTest::newRow("new folder") << int(hfmbase::kMkdir) << "made";
        QTest::newRow("copy into the folder") << int(hfmbase::kCopy) << "a-plain.txt";
        QTest::newRow("cut into the folder") << int(hfmbase::kCutFile) << "moved.txt";
    }
    void operationResultsSelectNewItems()
    {
        QFETCH(int, event);
        QFETCH(QString, selected);
        writeFile(inRoot("dir/to-rename.txt"));
        writeFile(inRoot("moved.txt"));
        const quint64 id = openWindow(testUrl("/dir"));
        QVERIFY(waitLoaded(id));

        // The host carries the operation out on the local files of the test
        // scheme; its result names local files, which the view finds as its own.
        auto *dispatcher = hpf::dispatcher();
        const auto flags = hfmbase::AbstractJobHandler::JobFlags(hfmbase::AbstractJobHandler::JobFlag::kNoHint);
        if (event == hfmbase::kRenameFile)
            dispatcher->publish(event, id, testUrl("/dir/to-rename.txt"), testUrl("/dir/renamed.txt"));
        else if (event == hfmbase::kMkdir)
            dispatcher->publish(event, id, testUrl("/dir/made"), QVariant(), hfmbase::OperatorCallback());
        else
            dispatcher->publish(event, id,
                QList<QUrl> {testUrl(event == hfmbase::kCopy ? "/a-plain.txt" : "/moved.txt")}, testUrl("/dir"), flags,
                hfmbase::OperatorHandleCallback());

        auto selectedNames = [this, id] {
            QStringList names;
            for (const QJsonValue &item : at(currentTab(id), "view/items").toArray()) {
                if (item.toObject().value(QStringLiteral("selected")).toBool())
                    names.append(item.toObject().value(QStringLiteral("name")).toString());
            }
            return names;
        };
        QTRY_COMPARE(selectedNames(), QStringList {selected});
        QVERIFY(QFile::exists(inRoot("dir/") + selected));

        // Put the folder back as it was for the other rows and tests.
        for (const char *name : {"dir/renamed.txt", "dir/to-rename.txt", "dir/a-plain.txt", "dir/moved.txt"})
            QFile::remove(inRoot(name));
        QDir(inRoot("dir/made")).removeRecursively();
    }

    void menusListedAndTriggered_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("inspector");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("ids");   // the visible actions
        QTest::addColumn<QString>("action");   // triggered, when given
        QTest::addColumn<QString>("dialog");   // "title: message" of the dialog it shows

        const QString ws = Inspector::kWorkspace;
        const QString pc = Inspector::kComputer;
        const QString side = Inspector::kSidebar;
        const char *fileIds = "open|copy|cut|rename|move-to-trash|delete|hosttest-info";
        const char *open = "open|open-in-new-window|open-in-new-tab";
        // clang-format off
        QTest::newRow("file: host scene and the plug-in's") << "hosttest:///" << ws << "a-plain.txt" << words(fileIds) << "hosttest-info" << "Test info: hosttest:///a-plain.txt";
        QTest::newRow("folder") << "hosttest:///" << ws << "dir" << words("open|open-in-new-window|open-in-new-tab|copy|cut|rename|move-to-trash|delete|hosttest-info") << "" << "";
        QTest::newRow("empty area") << "hosttest:///" << ws << "" << words("new-folder|new-document|paste") << "" << "";
        QTest::newRow("host computer entry") << "computer:///" << pc << "System Disk" << words(open) << "" << "";
        QTest::newRow("host sidebar item") << "computer:///" << side << "Computer" << words("open-in-new-window|open-in-new-tab") << "" << "";
        QTest::newRow("missing action") << "hosttest:///" << ws << "a-plain.txt" << words(fileIds) << "no-such-action" << "";
        // clang-format on
    }
    void menusListedAndTriggered()
    {
        QFETCH(QString, url);
        QFETCH(QString, inspector);
        QFETCH(QString, key);
        QFETCH(QString, action);
        QFETCH(QString, dialog);
        const quint64 id = openWindow(QUrl(url));
        QVERIFY(waitLoaded(id));
        menus->arm(action);
        QVERIFY(invokeBool(inspector, "contextMenu", id, key));
        QVERIFY(menus->menuSeen());
        QStringList shown;
        for (const QVariant &item : menus->actions()) {
            if (item.toMap().value(QStringLiteral("visible")).toBool())
                shown.append(item.toMap().value(QStringLiteral("id")).toString());
        }
        QTEST(shown, "ids");
        // An action that is not there is refused, and nothing happens.
        QCOMPARE(menus->error().isEmpty(), action.isEmpty() || !dialog.isEmpty());
        const QJsonValue last = at(state(), "dialogs/-1");
        QCOMPARE(last.isUndefined()
                ? QString()
                : at(last, "title").toString() + QLatin1String(": ") + at(last, "message").toString(),
            dialog);
    }

    void menuActionsChangeFiles()
    {
        const quint64 id = openWindow(testUrl("/"));
        QVERIFY(waitLoaded(id));
        auto trigger = [this, id](const QString &key, const char *action) {
            menus->arm(QLatin1String(action));
            return invokeBool(Inspector::kWorkspace, "contextMenu", id, key) && menus->error().isEmpty();
        };
        // New folders get free names, through the redirected URLs.
        QVERIFY(trigger(QString(), "new-folder"));
        QVERIFY(trigger(QString(), "new-folder"));
        QVERIFY(QFileInfo(inRoot("New Folder")).isDir());
        QVERIFY(QFileInfo(inRoot("New Folder (1)")).isDir());
        QTRY_VERIFY(itemNames(id).contains(QStringLiteral("New Folder (1)")));

        // Delete asks first (recorded in automation mode, answered "Delete").
        QVERIFY(trigger(QStringLiteral("New Folder (1)"), "delete"));
        QCOMPARE(at(state(), "dialogs/-1/buttons/0").toString(), QStringLiteral("Delete"));
        QTRY_VERIFY(!QFile::exists(inRoot("New Folder (1)")));
        QDir(inRoot("New Folder")).removeRecursively();
    }

    void customViewAndTitleBarSettings();

    void malformedRegistrationsAreRefused_data()
    {
        QTest::addColumn<QString>("space");
        QTest::addColumn<QString>("topic");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QVariant>("result");
        QTest::addColumn<QString>("warning");

        const QVariant no(false);
        const QVariant yes(true);
        auto entry = [](const char *url) {
            return QVariantList {QStringLiteral("Disks"), QUrl(QLatin1String(url)), 1, false};
        };
        // clang-format off
        QTest::newRow("top widget without creator") << Space::kWorkspace << Topic::kRegisterCustomTopWidget << QVariantList {QVariantMap {{PropertyKey::kScheme, QStringLiteral("x")}}}
            << no << "registerCustomTopWidget: refused - Property_Key_CreateTopWidgetCallback is not a TopWidCreator";
        QTest::newRow("top widget without scheme") << Space::kWorkspace << Topic::kRegisterCustomTopWidget << QVariantList {QVariantMap()}
            << no << "refused - no Property_Key_Scheme";
        QTest::newRow("sidebar update of an unknown item") << Space::kSidebar << Topic::kSidebarItemUpdate << QVariantList {QUrl(QStringLiteral("nowhere:///")), QVariantMap()}
            << no << "SidebarStore::update: no item for";
        QTest::newRow("sidebar update with unknown keys") << Space::kSidebar << Topic::kSidebarItemUpdate << QVariantList {QUrl(QStringLiteral("computer:///")), QVariantMap {{QStringLiteral("Colour"), 3}}}
            << yes << "ignored the properties";
        QTest::newRow("computer entry nobody makes") << Space::kComputer << Topic::kComputerItemAdd << entry("entry:///x.nosuchsuffix") << no << "ComputerStore::add: cannot add";
        QTest::newRow("computer entry listed twice") << Space::kComputer << Topic::kComputerItemAdd << entry("entry:///root.localdisk") << no << "is listed already";
        QTest::newRow("menu scene made by nobody") << Space::kMenu << Topic::kMenuCreateScene << QVariantList {QStringLiteral("NoSuchScene")}
            << QVariant::fromValue<hfmbase::AbstractMenuScene *>(nullptr) << "no scene is registered as";
        QTest::newRow("title bar settings without scheme") << Space::kTitlebar << Topic::kTitlebarCustomRegister << QVariantList {QString(), QVariantMap {{PropertyKey::kHideIconViewBtn, true}}}
            << no << "refused settings without a scheme";
        QTest::newRow("title bar key nobody knows") << Space::kTitlebar << Topic::kTitlebarCustomRegister << QVariantList {QStringLiteral("odd"), QVariantMap {{QStringLiteral("Property_Key_Colour"), true}}}
            << yes << "ignored the unknown key";
        // clang-format on
    }
    void malformedRegistrationsAreRefused()
    {
        QFETCH(QString, space);
        QFETCH(QString, topic);
        QFETCH(QVariantList, args);
        QFETCH(QVariant, result);
        QFETCH(QString, warning);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QRegularExpression::escape(warning)));
        const QVariant answer = hpf::channel()->pushList(space, topic, args);
        if (result.userType() == qMetaTypeId<hfmbase::AbstractMenuScene *>())
            QCOMPARE(answer.value<hfmbase::AbstractMenuScene *>(), nullptr);
        else
            QCOMPARE(answer.toBool(), result.toBool());
        // The host keeps working afterwards.
        const quint64 id = openWindow(QUrl(QStringLiteral("computer:///")));
        QCOMPARE(currentTab(id).value(QStringLiteral("name")).toString(), QStringLiteral("Computer"));
    }
};

void HostPluginsTest::sidebarItemFromMetadataBeforeStart()
{
    // The test plug-in's start() updated the item and would have failed
    // without it.
    QCOMPARE(testPlugin->property("sidebarItemBeforeStart").toBool(), true);
    COMPARE_MEMBERS(at(state(), "sidebar/items/[url=hosttest:///]").toObject(),
        R"j({"name": "Test Place (started)", "reportName": "TestPlace", "visibleControl": "hosttest",)j"
        R"("group": "Group_Common", "plugin": "hfmplugin-hosttest"})");
    // The two malformed entries of the same metadata made no item.
    QCOMPARE(strings(at(state(), "sidebar/items"), "plugin").count(QStringLiteral("hfmplugin-hosttest")), 1);
}

void HostPluginsTest::topWidgetOncePerViewAndShownPerCallback()
{
    const int createdBefore = testPlugin->property("bannersCreated").toInt();
    const quint64 id = openWindow(testUrl("/"));
    auto topOf = [this, id] { return currentTab(id).value(QStringLiteral("top")).toObject(); };
    COMPARE_MEMBERS(topOf(), R"({"created": 1, "visible": true, "icon": "dialog-information", "links": ["refresh"]})");
    requestChangeUrl(id, testUrl("/no-banner"));
    QCOMPARE(at(topOf(), "visible").toBool(), false);

    // Another scheme has no top widget; coming back reuses the first one.
    requestChangeUrl(id, QUrl::fromLocalFile(root.path()));
    QVERIFY(currentTab(id).value(QStringLiteral("top")).isNull());
    requestChangeUrl(id, testUrl("/dir"));
    COMPARE_MEMBERS(topOf(), R"({"created": 1, "visible": true})");
    QCOMPARE(testPlugin->property("bannersCreated").toInt() - createdBefore, 1);

    QVERIFY(invokeBool(Inspector::kWorkspace, "activateTopLink", id, QStringLiteral("refresh")));
    QVERIFY(topOf().value(QStringLiteral("text")).toString().contains(QLatin1String("refresh done")));
    QVERIFY(!invokeBool(Inspector::kWorkspace, "activateTopLink", id, QStringLiteral("no-such-link")));

    // A new tab is a new view with a widget of its own.
    requestNewTab(id, testUrl("/"));
    QCOMPARE(testPlugin->property("bannersCreated").toInt() - createdBefore, 2);
}

void HostPluginsTest::customViewAndTitleBarSettings()
{
    const quint64 id = openWindow(QUrl(QStringLiteral("hosttest-page:///")));
    const QJsonObject view = at(currentTab(id), "view").toObject();
    QCOMPARE(view.value(QStringLiteral("kind")).toString(), QStringLiteral("custom"));
    QCOMPARE(view.value(QStringLiteral("class")).toString(), QStringLiteral("hosttest::TestPageView"));
    QVERIFY(strings(view.value(QStringLiteral("texts"))).contains(QStringLiteral("Welcome to the test page")));
    COMPARE_MEMBERS(windowState(id).value(QStringLiteral("titlebar")).toObject(),
        R"({"iconViewBtn": false, "listViewBtn": false, "detailSpaceBtn": false, "address": "hosttest-page:///"})");
    QCOMPARE(at(state(), "titlebar/schemes/hosttest-page/Property_Key_HideTreeViewBtn").toBool(), true);

    QVERIFY(invokeBool(Inspector::kWorkspace, "click", id, QStringLiteral("Press me")));
    QVERIFY(strings(at(currentTab(id), "view/texts")).contains(QStringLiteral("Pressed")));

    requestChangeUrl(id, testUrl("/"));
    COMPARE_MEMBERS(windowState(id).value(QStringLiteral("titlebar")).toObject(),
        R"({"iconViewBtn": true, "listViewBtn": true, "address": "hosttest:///"})");

    // The address's clear button shows while there is text, and empties it.
    auto *address = window(id)->findChild<QLineEdit *>(QStringLiteral("address"));
    QVERIFY(address);
    auto *clear = address->findChild<QAction *>(QStringLiteral("clear"));
    QVERIFY(clear && clear->isVisible());
    clear->trigger();
    QCOMPARE(address->text(), QString());
    QVERIFY(!clear->isVisible());
}

QTEST_MAIN(HostPluginsTest)
#include "tst_hostplugins.moc"
