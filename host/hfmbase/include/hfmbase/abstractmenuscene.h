// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QMap>
#include <QObject>
#include <QVariantHash>

class QMenu;
class QAction;

namespace hfmbase {

namespace ActionPropertyKey {
// Name of the QAction property holding an action's id.
inline constexpr char kActionID[] = "actionID";
}   // namespace ActionPropertyKey

// A piece of a context menu. The base class forwards initialize, create and
// updateState to its sub-scenes, and triggered() to the sub-scene that owns
// the action. Sub-scenes are children of their scene. GUI thread only.
class HFMBASE_EXPORT AbstractMenuScene : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractMenuScene)
public:
    explicit AbstractMenuScene(QObject *parent = nullptr);
    ~AbstractMenuScene() override;

    virtual QString name() const = 0;
    // False keeps the scene out of the menu.
    virtual bool initialize(const QVariantHash &params);
    virtual bool create(QMenu *parent);
    virtual void updateState(QMenu *parent);
    virtual bool triggered(QAction *action);
    // The scene (this or a sub-scene) that made the action, or null.
    virtual AbstractMenuScene *scene(QAction *action) const;

    virtual bool addSubscene(AbstractMenuScene *scene);
    virtual void removeSubscene(AbstractMenuScene *scene);
    QList<AbstractMenuScene *> subscenes() const;

protected:
    QList<AbstractMenuScene *> subScene;
    // Actions made by this scene, by id; scene() looks here.
    QMap<QString, QAction *> predicateAction;
};

// Makes a new scene each time a menu is built; the caller owns the scene.
class HFMBASE_EXPORT AbstractSceneCreator : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractSceneCreator)
public:
    AbstractSceneCreator();
    ~AbstractSceneCreator() override;

    virtual AbstractMenuScene *create() = 0;

    // Names of scenes bound to this one; they become its sub-scenes.
    bool addChild(const QString &scene);
    void removeChild(const QString &scene);
    QStringList getChildren() const;

protected:
    QStringList children;
};

}   // namespace hfmbase
