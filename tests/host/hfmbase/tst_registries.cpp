// SPDX-License-Identifier: GPL-3.0-or-later
// What plug-ins register and the host keeps: URL routes, computer entries,
// views, menu scenes and the windows.
#include <hfmbase/abstractbaseview.h>
#include <hfmbase/abstractentryfileentity.h>
#include <hfmbase/abstractmenuscene.h>
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/urlroute.h>

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QtTest>

using hfmbase::AbstractMenuScene;
using hfmbase::EntryEntityFactory;
using hfmbase::FileManagerWindow;
using hfmbase::FileManagerWindowsManager;
using hfmbase::UrlRoute;

namespace {

class Entry : public hfmbase::AbstractEntryFileEntity
{
public:
    explicit Entry(const QUrl &url) : AbstractEntryFileEntity(url) { }
    QString displayName() const override { return QStringLiteral("Entry"); }
    QIcon icon() const override { return QIcon(); }
    bool exists() const override { return true; }
    bool showProgress() const override { return false; }
    bool showTotalSize() const override { return false; }
    bool showUsageSize() const override { return false; }
    int order() const override { return 3; }
};

class View : public hfmbase::AbstractBaseView
{
public:
    View(const QUrl &url, QWidget *parent) : label(new QLabel(parent)), root(url) { }
    QWidget *widget() const override { return label; }
    QUrl rootUrl() const override { return root; }
    bool setRootUrl(const QUrl &url) override
    {
        root = url;
        return true;
    }
    QLabel *label;
    QUrl root;
};

// A scene that adds one action, with its name as id, and logs what the base
// class asks of it.
class LoggingScene : public AbstractMenuScene
{
public:
    LoggingScene(const QString &name, QStringList *log, bool accepts = true)
        : sceneName(name), log(log), accepts(accepts)
    {
    }
    QString name() const override { return sceneName; }
    bool initialize(const QVariantHash &params) override
    {
        *log << sceneName + QStringLiteral(".init:") + params.value(QStringLiteral("key")).toString();
        return accepts && AbstractMenuScene::initialize(params);
    }
    bool create(QMenu *parent) override
    {
        *log << sceneName + QStringLiteral(".create");
        QAction *action = parent->addAction(sceneName);
        action->setProperty(hfmbase::ActionPropertyKey::kActionID, sceneName);
        predicateAction.insert(sceneName, action);
        return AbstractMenuScene::create(parent);
    }
    void updateState(QMenu *parent) override
    {
        *log << sceneName + QStringLiteral(".update");
        AbstractMenuScene::updateState(parent);
    }
    bool triggered(QAction *action) override
    {
        if (!action || predicateAction.value(sceneName) != action)
            return AbstractMenuScene::triggered(action);
        *log << sceneName + QStringLiteral(".triggered");
        return true;
    }

    QString sceneName;
    QStringList *log;
    bool accepts;
};

}   // namespace

class TestRegistries : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(
            UrlRoute::regScheme(QStringLiteral("cloud"), QStringLiteral("/"), QIcon(), true, QStringLiteral("Cloud")));
        QVERIFY(UrlRoute::regScheme(QStringLiteral("deep"), QStringLiteral("/base/dir")));
    }

    void rootUrlHasAnEmptyHost_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("expected");
        QTest::newRow("virtual scheme") << QStringLiteral("cloud") << QStringLiteral("cloud:///");
        QTest::newRow("root below slash") << QStringLiteral("deep") << QStringLiteral("deep:///base/dir");
        QTest::newRow("file, registered by nobody") << QStringLiteral("file") << QStringLiteral("file:///");
        QTest::newRow("unknown scheme") << QStringLiteral("nowhere") << QString();
    }
    void rootUrlHasAnEmptyHost()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, expected);
        const QUrl root = UrlRoute::rootUrl(scheme);
        QCOMPARE(root.toString(), expected);
        QCOMPARE(UrlRoute::isRootUrl(root), !expected.isEmpty());
        QVERIFY(UrlRoute::urlParent(root).isEmpty());
    }

    void urlParent_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QUrl>("parent");
        QTest::newRow("file below root") << QUrl(QStringLiteral("file:///home/a"))
                                         << QUrl(QStringLiteral("file:///home"));
        QTest::newRow("trailing slash") << QUrl(QStringLiteral("file:///home/a/"))
                                        << QUrl(QStringLiteral("file:///home"));
        QTest::newRow("virtual scheme") << QUrl(QStringLiteral("cloud:///a/b c")) << QUrl(QStringLiteral("cloud:///a"));
        QTest::newRow("below deep root") << QUrl(QStringLiteral("deep:///base/dir/x"))
                                         << QUrl(QStringLiteral("deep:///base/dir"));
        QTest::newRow("outside deep root") << QUrl(QStringLiteral("deep:///else/x")) << QUrl();
        QTest::newRow("empty") << QUrl() << QUrl();
        QTest::newRow("query dropped") << QUrl(QStringLiteral("file:///a/b?x=1")) << QUrl(QStringLiteral("file:///a"));
    }
    void urlParent()
    {
        QFETCH(QUrl, url);
        QTEST(UrlRoute::urlParent(url), "parent");
    }

    void entrySuffix_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("last dot wins") << QUrl(QStringLiteral("entry:///a.b.block")) << "block";
        QTest::newRow("no dot") << QUrl(QStringLiteral("entry:///plain")) << "";
        QTest::newRow("dot in a folder only") << QUrl(QStringLiteral("entry:///dir.x/plain")) << "";
        QTest::newRow("encoded characters")
            << QUrl(QStringLiteral("entry:///my%20disk.u%C3%A9")) << QString::fromUtf8("u\xC3\xA9");
        QTest::newRow("empty url") << QUrl() << "";
    }
    void entrySuffix()
    {
        QFETCH(QUrl, url);
        QTEST(EntryEntityFactory::suffixOf(url), "suffix");
    }

    void factoriesMakeByKey()
    {
        QVERIFY(EntryEntityFactory::regClass<Entry>(QStringLiteral("nubix")));
        const QUrl url(QStringLiteral("entry:///nubix.nubix"));
        auto entity = EntryEntityFactory::create(url);
        QVERIFY(entity);
        QCOMPARE(entity->entryUrl(), url);
        QString error;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^EntryEntityFactory::create: ")));
        QVERIFY(!EntryEntityFactory::create(QUrl(QStringLiteral("entry:///other.unknown")), &error));
        QVERIFY(!error.isEmpty());

        QVERIFY(hfmbase::ViewFactory::regClass<View>(QStringLiteral("page")));
        QWidget parent;
        std::unique_ptr<hfmbase::AbstractBaseView> view(
            hfmbase::ViewFactory::create(QUrl(QStringLiteral("page:///")), &parent));
        QVERIFY(view);
        QCOMPARE(view->rootUrl(), QUrl(QStringLiteral("page:///")));
        QCOMPARE(view->widget()->parent(), &parent);
        error.clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^ViewFactory::create: ")));
        QVERIFY(!hfmbase::ViewFactory::create(QUrl(QStringLiteral("nowhere:///")), &parent, &error));
        QVERIFY(!error.isEmpty());
    }

    void triggeredReachesTheOwner_data()
    {
        QTest::addColumn<QString>("owner");   // empty: an action of no scene
        QTest::newRow("own action") << "root";
        QTest::newRow("first sub-scene") << "a";
        QTest::newRow("nested sub-scene") << "b1";
        QTest::newRow("foreign action") << "";
    }
    void triggeredReachesTheOwner()
    {
        QFETCH(QString, owner);

        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        auto *a = new LoggingScene(QStringLiteral("a"), &log);
        auto *b = new LoggingScene(QStringLiteral("b"), &log);
        QVERIFY(root.addSubscene(a));
        QVERIFY(root.addSubscene(b));
        QVERIFY(b->addSubscene(new LoggingScene(QStringLiteral("b1"), &log)));
        QVERIFY(!root.addSubscene(a));   // once only

        QMenu menu;
        QVERIFY(root.initialize({{QStringLiteral("key"), QStringLiteral("v")}}));
        QVERIFY(root.create(&menu));
        root.updateState(&menu);
        QCOMPARE(log.join(QLatin1Char(' ')),
            QStringLiteral("root.init:v a.init:v b.init:v b1.init:v root.create a.create b.create b1.create "
                           "root.update a.update b.update b1.update"));

        QAction stranger;
        QAction *action = &stranger;
        for (QAction *candidate : menu.actions()) {
            if (candidate->property(hfmbase::ActionPropertyKey::kActionID).toString() == owner)
                action = candidate;
        }
        log.clear();
        QCOMPARE(root.triggered(action), !owner.isEmpty());
        QCOMPARE(log, owner.isEmpty() ? QStringList() : QStringList {owner + QStringLiteral(".triggered")});
        QCOMPARE(root.scene(action) ? root.scene(action)->name() : QString(), owner);
    }

    void subscenesThatGoAway()
    {
        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        auto *keep = new LoggingScene(QStringLiteral("keep"), &log);
        QPointer<LoggingScene> decline = new LoggingScene(QStringLiteral("decline"), &log, false);
        auto *gone = new LoggingScene(QStringLiteral("gone"), &log);
        root.addSubscene(decline);
        root.addSubscene(keep);
        root.addSubscene(gone);
        delete gone;
        // A scene that declines at initialize() is dropped, a deleted one leaves the list.
        QVERIFY(root.initialize({}));
        QVERIFY(decline.isNull());
        QCOMPARE(root.subscenes(), QList<AbstractMenuScene *> {keep});
        QMenu menu;
        log.clear();
        QVERIFY(root.create(&menu));
        QCOMPARE(log, (QStringList {QStringLiteral("root.create"), QStringLiteral("keep.create")}));
        QVERIFY(!root.triggered(nullptr));
    }

    void idsGrowAndWindowOpenedOnce()
    {
        auto &manager = FileManagerWindowsManager::instance();
        QSignalSpy created(&manager, &FileManagerWindowsManager::windowCreated);
        QSignalSpy opened(&manager, &FileManagerWindowsManager::windowOpened);

        FileManagerWindow *first = manager.createWindow(QUrl(QStringLiteral("file:///")));
        FileManagerWindow *second = manager.createWindow(QUrl(QStringLiteral("file:///")));
        QVERIFY(first && second);
        const quint64 id1 = manager.findWindowId(first);
        const quint64 id2 = manager.findWindowId(second);
        QCOMPARE((QList<quint64> {id1, id2}), (QList<quint64> {1, 2}));
        QCOMPARE(created.size(), 2);
        QCOMPARE(manager.findWindowById(id2), second);
        QVERIFY(opened.isEmpty());   // created, not yet shown

        manager.showWindow(first);
        manager.showWindow(first);
        manager.showWindow(second);
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened.at(0).at(0).value<quint64>(), id1);
        QCOMPARE(opened.at(1).at(0).value<quint64>(), id2);

        // A widget inside a window belongs to it.
        auto *inner = new QLabel(first);
        QCOMPARE(manager.findWindowId(inner), id1);
        // Going elsewhere is relayed with the window's id.
        QSignalSpy relayed(&manager, &FileManagerWindowsManager::currentUrlChanged);
        second->cd(QUrl(QStringLiteral("file:///tmp")));
        QCOMPARE(second->currentUrl(), QUrl(QStringLiteral("file:///tmp")));
        QCOMPARE(relayed.size(), 1);
        QCOMPARE(relayed.at(0).at(0).value<quint64>(), id2);
        QCOMPARE(relayed.at(0).at(1).toUrl(), QUrl(QStringLiteral("file:///tmp")));

        QSignalSpy closed(&manager, &FileManagerWindowsManager::windowClosed);
        QSignalSpy last(&manager, &FileManagerWindowsManager::lastWindowClosed);
        QPointer<FileManagerWindow> guard(first);
        QVERIFY(first->close());
        QCOMPARE(closed.size(), 1);
        QCOMPARE(closed.at(0).at(0).value<quint64>(), id1);
        QVERIFY(last.isEmpty());
        QCOMPARE(manager.windowIdList(), QList<quint64> {id2});
        QTRY_VERIFY(guard.isNull());   // deleted on close

        QVERIFY(second->close());
        QCOMPARE(last.size(), 1);
        QCOMPARE(last.at(0).at(0).value<quint64>(), id2);
        QVERIFY(manager.windowIdList().isEmpty());

        // Ids are never reused.
        FileManagerWindow *third = manager.createWindow(QUrl(QStringLiteral("file:///")));
        QCOMPARE(manager.findWindowId(third), quint64(3));
        delete third;   // deleted without closing: still leaves the list
        QVERIFY(manager.windowIdList().isEmpty());
    }

    void unknownIdsAndBadUrls()
    {
        auto &manager = FileManagerWindowsManager::instance();
        QVERIFY(!manager.findWindowById(987654));
        QCOMPARE(manager.findWindowId(nullptr), quint64(0));
        QString error;
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(QStringLiteral("^FileManagerWindowsManager::createWindow: ")));
        QVERIFY(!manager.createWindow(QUrl(), &error));
        QVERIFY(!error.isEmpty());
        FileManagerWindow stray(QUrl(QStringLiteral("file:///")));
        QTest::ignoreMessage(QtWarningMsg, "FileManagerWindowsManager::showWindow: the window is not one of ours");
        manager.showWindow(&stray);
        QVERIFY(!stray.isVisible());
    }
};

QTEST_MAIN(TestRegistries)
#include "tst_registries.moc"
