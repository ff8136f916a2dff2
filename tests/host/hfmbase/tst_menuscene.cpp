// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractmenuscene.h>

#include <QAction>
#include <QMenu>
#include <QtTest>

using hfmbase::AbstractMenuScene;

namespace {

// A scene that adds one action and logs what the base class asks of it.
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
        *log << sceneName + QStringLiteral(".initialize ") + params.value(QStringLiteral("key")).toString();
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
        *log << sceneName + QStringLiteral(".updateState");
        AbstractMenuScene::updateState(parent);
    }
    bool triggered(QAction *action) override
    {
        if (action
            && predicateAction.value(action->property(hfmbase::ActionPropertyKey::kActionID).toString()) == action) {
            *log << sceneName + QStringLiteral(".triggered");
            return true;
        }
        return AbstractMenuScene::triggered(action);
    }

    QString sceneName;
    QStringList *log;
    bool accepts;
};

QStringList strings(std::initializer_list<const char *> items)
{
    QStringList list;
    for (const char *item : items)
        list << QString::fromLatin1(item);
    return list;
}

QAction *actionNamed(QMenu &menu, const QString &id)
{
    for (QAction *action : menu.actions()) {
        if (action->property(hfmbase::ActionPropertyKey::kActionID).toString() == id)
            return action;
    }
    return nullptr;
}

}   // namespace

class TestMenuScene : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void triggeredReachesTheOwner_data()
    {
        // Each scene's action has the scene's name as its id.
        QTest::addColumn<QString>("owner");
        QTest::newRow("own action") << "root";
        QTest::newRow("first sub-scene") << "a";
        QTest::newRow("nested sub-scene") << "b1";
    }
    void triggeredReachesTheOwner()
    {
        QFETCH(QString, owner);

        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        auto *a = new LoggingScene(QStringLiteral("a"), &log);
        auto *b = new LoggingScene(QStringLiteral("b"), &log);
        auto *b1 = new LoggingScene(QStringLiteral("b1"), &log);
        QVERIFY(root.addSubscene(a));
        QVERIFY(root.addSubscene(b));
        QVERIFY(b->addSubscene(b1));
        QVERIFY(!root.addSubscene(a));   // once only
        QCOMPARE(a->parent(), &root);
        QCOMPARE(b1->parent(), b);

        QMenu menu;
        QVERIFY(root.initialize({{QStringLiteral("key"), QStringLiteral("v")}}));
        QVERIFY(root.create(&menu));
        root.updateState(&menu);
        QCOMPARE(log,
            strings(
                {"root.initialize v", "a.initialize v", "b.initialize v", "b1.initialize v", "root.create", "a.create",
                    "b.create", "b1.create", "root.updateState", "a.updateState", "b.updateState", "b1.updateState"}));

        QAction *action = actionNamed(menu, owner);
        QVERIFY(action);
        QCOMPARE(root.scene(action)->name(), owner);
        log.clear();
        QVERIFY(root.triggered(action));
        QCOMPARE(log, QStringList {owner + QStringLiteral(".triggered")});
    }

    void foreignActionIsNotClaimed()
    {
        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        root.addSubscene(new LoggingScene(QStringLiteral("a"), &log));
        QMenu menu;
        root.create(&menu);
        QAction stranger(QStringLiteral("stranger"));
        QVERIFY(!root.scene(&stranger));
        QVERIFY(!root.scene(nullptr));
        log.clear();
        QVERIFY(!root.triggered(&stranger));
        QVERIFY(!root.triggered(nullptr));
        QVERIFY(log.isEmpty());
    }

    void declinedSubsceneIsDropped()
    {
        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        auto *keep = new LoggingScene(QStringLiteral("keep"), &log);
        QPointer<LoggingScene> decline = new LoggingScene(QStringLiteral("decline"), &log, false);
        root.addSubscene(decline);
        root.addSubscene(keep);
        QVERIFY(root.initialize({}));
        QVERIFY(decline.isNull());
        QCOMPARE(root.subscenes(), QList<AbstractMenuScene *> {keep});

        QMenu menu;
        log.clear();
        root.create(&menu);
        QCOMPARE(log, strings({"root.create", "keep.create"}));
    }

    void deletedSubsceneLeavesTheList()
    {
        QStringList log;
        LoggingScene root(QStringLiteral("root"), &log);
        auto *gone = new LoggingScene(QStringLiteral("gone"), &log);
        root.addSubscene(gone);
        delete gone;
        QVERIFY(root.subscenes().isEmpty());
        QMenu menu;
        QVERIFY(root.create(&menu));   // no dangling sub-scene to call
    }
};

QTEST_MAIN(TestMenuScene)
#include "tst_menuscene.moc"
