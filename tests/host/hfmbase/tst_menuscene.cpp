// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractmenuscene.h>

#include <QAction>
#include <QMenu>
#include <QtTest>

using hfmbase::AbstractMenuScene;

namespace {

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

class TestMenuScene : public QObject
{
    Q_OBJECT
private Q_SLOTS:
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
};

QTEST_MAIN(TestMenuScene)
#include "tst_menuscene.moc"
