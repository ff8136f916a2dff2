// SPDX-License-Identifier: GPL-3.0-or-later
#include "menus/nubixfilemenuscene.h"

#include "caches/nubixcaches.h"

#include <hpf/event/event.h>

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

using namespace hfmplugin_nubix;

namespace {
const char *const kActionID = hfmbase::ActionPropertyKey::kActionID;
const QString kSelectFiles = QStringLiteral("selectFiles");

// Stands in for the host's file menu and writes down what each instance was asked.
class FakeWorkspaceScene : public hfmbase::AbstractMenuScene
{
public:
    static QStringList log;
    static bool accept;
    // Scenes are numbered from 1 in each test function.
    static int count;

    FakeWorkspaceScene() : serial(++count) { }
    QString name() const override { return QStringLiteral("WorkspaceMenu"); }
    bool initialize(const QVariantHash &params) override
    {
        QStringList urls;
        for (const QUrl &url : params.value(kSelectFiles).value<QList<QUrl>>())
            urls << url.toString();
        log << QStringLiteral("%1 initialize %2 window %3")
                   .arg(serial)
                   .arg(urls.join(QLatin1Char(',')), params.value(QStringLiteral("windowId")).toString());
        return accept;
    }
    bool create(QMenu *parent) override
    {
        log << QStringLiteral("%1 create").arg(serial);
        for (const char *id : {"open", "open-in-new-window", "open-in-new-tab", "copy"}) {
            QAction *action = parent->addAction(QString::fromLatin1(id));
            action->setProperty(kActionID, QString::fromLatin1(id));
            predicateAction.insert(QString::fromLatin1(id), action);
        }
        return true;
    }
    void updateState(QMenu *) override { log << QStringLiteral("%1 updateState").arg(serial); }
    bool triggered(QAction *action) override
    {
        // Only actions of this very scene's menu count.
        const bool own = scene(action) == this;
        log << QStringLiteral("%1 triggered %2%3")
                   .arg(serial)
                   .arg(action->property(kActionID).toString(), own ? QString() : QStringLiteral(" (foreign)"));
        return own;
    }

private:
    int serial;
};
QStringList FakeWorkspaceScene::log;
bool FakeWorkspaceScene::accept = true;
int FakeWorkspaceScene::count = 0;
}   // namespace

class TestNubixFileMenuScene : public QObject
{
    Q_OBJECT

public:
    bool provide = true;
    QList<QPointer<hfmbase::AbstractMenuScene>> made;
    hfmbase::AbstractMenuScene *createScene(const QString &name)
    {
        if (!provide || name != QLatin1String("WorkspaceMenu"))
            return nullptr;
        made << new FakeWorkspaceScene;
        return made.last();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(root.isValid());
        QVERIFY(QDir(root.path()).mkpath(QStringLiteral("docs/sub")));
        QFile file(root.filePath(QStringLiteral("docs/a b.txt")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        SyncInfo info;
        info.syncRoot = root.path();
        NubixCaches::instance()->setSyncInfo(info);
        hpf::channel()->connect(QStringLiteral("hfmplugin_menu"), QStringLiteral("slot_MenuScene_CreateScene"), this,
            &TestNubixFileMenuScene::createScene);
    }
    void init()
    {
        provide = true;
        FakeWorkspaceScene::accept = true;
        FakeWorkspaceScene::log.clear();
        FakeWorkspaceScene::count = 0;
        made.clear();
    }

    void hostsTheWorkspaceMenu()
    {
        NubixFileMenuScene scene;
        QCOMPARE(scene.name(), QStringLiteral("NubixFileMenu"));
        QVERIFY(scene.initialize(params({"nubix:///docs/a b.txt"})));
        QCOMPARE(scene.subscenes().size(), 1);
        QMenu menu;
        QVERIFY(scene.create(&menu));
        scene.updateState(&menu);
        QCOMPARE(menu.actions().size(), 4);
        // The host's file menu sees the cloud items, as the view shows them.
        QCOMPARE(FakeWorkspaceScene::log,
            (QStringList {QStringLiteral("1 initialize nubix:///docs/a b.txt window 7"), QStringLiteral("1 create"),
                QStringLiteral("1 updateState")}));
    }

    void withoutTheHostsSceneThereIsNoMenu_data()
    {
        QTest::addColumn<bool>("provide");
        QTest::addColumn<bool>("accept");
        QTest::newRow("host made no scene") << false << true;
        QTest::newRow("host scene declined") << true << false;
    }
    void withoutTheHostsSceneThereIsNoMenu()
    {
        QFETCH(bool, provide);
        QFETCH(bool, accept);
        this->provide = provide;
        FakeWorkspaceScene::accept = accept;
        NubixFileMenuScene scene;
        QVERIFY(!scene.initialize(params({"nubix:///docs"})));
        QVERIFY(scene.subscenes().isEmpty());
    }

    void openActionsRunThroughAFreshScene_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QString>("freshSelection");

        const QString local = QUrl::fromLocalFile(root.filePath(QStringLiteral("docs/a b.txt"))).toString();
        QTest::newRow("open a file: the local file")
            << "open" << QStringList {QStringLiteral("nubix:///docs/a b.txt")} << local;
        QTest::newRow("open a folder: stays in the tree")
            << "open" << QStringList {QStringLiteral("nubix:///docs/sub")} << "nubix:///docs/sub";
        QTest::newRow("new window on a folder")
            << "open-in-new-window" << QStringList {QStringLiteral("nubix:///docs")} << "nubix:///docs";
        QTest::newRow("new tab, mixed selection")
            << "open-in-new-tab"
            << QStringList {QStringLiteral("nubix:///docs/sub"), QStringLiteral("nubix:///docs/a b.txt")}
            << QStringLiteral("nubix:///docs/sub,") + local;
        QTest::newRow("a local item stays as it is")
            << "open" << QStringList {QStringLiteral("file:///tmp/x")} << "file:///tmp/x";
    }
    void openActionsRunThroughAFreshScene()
    {
        QFETCH(QString, id);
        QFETCH(QStringList, selected);
        QFETCH(QString, freshSelection);

        NubixFileMenuScene scene;
        QVERIFY(scene.initialize(params(selected)));
        QMenu menu;
        scene.create(&menu);
        scene.updateState(&menu);
        QAction *chosen = findAction(menu, id);
        QVERIFY(chosen);
        FakeWorkspaceScene::log.clear();

        QVERIFY(scene.triggered(chosen));
        QCOMPARE(FakeWorkspaceScene::log,
            (QStringList {QStringLiteral("2 initialize ") + freshSelection + QStringLiteral(" window 7"),
                QStringLiteral("2 create"), QStringLiteral("2 updateState"), QStringLiteral("2 triggered ") + id}));
        // The fresh scene goes once the event loop turns; the menu's own stays.
        QCOMPARE(made.size(), 2);
        QTRY_VERIFY(made.at(1).isNull());
        QVERIFY(!made.at(0).isNull());
    }

    void otherActionsGoToTheHostsScene()
    {
        NubixFileMenuScene scene;
        QVERIFY(scene.initialize(params({"nubix:///docs/a b.txt"})));
        QMenu menu;
        scene.create(&menu);
        scene.updateState(&menu);
        FakeWorkspaceScene::log.clear();
        QVERIFY(scene.triggered(findAction(menu, QStringLiteral("copy"))));
        QCOMPARE(FakeWorkspaceScene::log, QStringList {QStringLiteral("1 triggered copy")});
        QCOMPARE(made.size(), 1);
    }

    void openWithoutAFreshSceneDoesNothing()
    {
        NubixFileMenuScene scene;
        QVERIFY(scene.initialize(params({"nubix:///docs"})));
        QMenu menu;
        scene.create(&menu);
        provide = false;
        FakeWorkspaceScene::log.clear();
        QVERIFY(!scene.triggered(findAction(menu, QStringLiteral("open"))));
        QCOMPARE(FakeWorkspaceScene::log, QStringList());
    }

private:
    QVariantHash params(const QStringList &selected)
    {
        QList<QUrl> urls;
        for (const QString &text : selected)
            urls << QUrl(text);
        return {
            {QStringLiteral("windowId"), QVariant::fromValue<quint64>(7)}, {kSelectFiles, QVariant::fromValue(urls)}};
    }
    QVariantHash params(std::initializer_list<const char *> selected)
    {
        QStringList texts;
        for (const char *text : selected)
            texts << QString::fromUtf8(text);
        return params(texts);
    }
    static QAction *findAction(const QMenu &menu, const QString &id)
    {
        for (QAction *action : menu.actions()) {
            if (action->property(kActionID).toString() == id)
                return action;
        }
        return nullptr;
    }

    QTemporaryDir root;
};

QTEST_MAIN(TestNubixFileMenuScene)
#include "tst_nubixfilemenuscene.moc"
