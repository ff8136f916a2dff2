// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractmenuscene.h"

#include <QAction>
#include <QMenu>

namespace hfmbase {

AbstractMenuScene::AbstractMenuScene(QObject *parent) : QObject(parent) { }

AbstractMenuScene::~AbstractMenuScene() = default;

bool AbstractMenuScene::initialize(const QVariantHash &params)
{
    // A sub-scene that declines has nothing to add to this menu.
    const QList<AbstractMenuScene *> scenes = subScene;
    for (AbstractMenuScene *scene : scenes) {
        if (!scene->initialize(params)) {
            removeSubscene(scene);
            delete scene;
        }
    }
    return true;
}

bool AbstractMenuScene::create(QMenu *parent)
{
    if (!parent)
        return false;
    const QList<AbstractMenuScene *> scenes = subScene;
    for (AbstractMenuScene *scene : scenes)
        scene->create(parent);
    return true;
}

void AbstractMenuScene::updateState(QMenu *parent)
{
    if (!parent)
        return;
    const QList<AbstractMenuScene *> scenes = subScene;
    for (AbstractMenuScene *scene : scenes)
        scene->updateState(parent);
}

bool AbstractMenuScene::triggered(QAction *action)
{
    if (!action)
        return false;
    const QList<AbstractMenuScene *> scenes = subScene;
    for (AbstractMenuScene *scene : scenes) {
        if (scene->scene(action))
            return scene->triggered(action);
    }
    return false;
}

AbstractMenuScene *AbstractMenuScene::scene(QAction *action) const
{
    if (!action)
        return nullptr;
    for (QAction *own : predicateAction) {
        if (own == action)
            return const_cast<AbstractMenuScene *>(this);
    }
    for (AbstractMenuScene *sub : subScene) {
        if (AbstractMenuScene *owner = sub->scene(action))
            return owner;
    }
    return nullptr;
}

bool AbstractMenuScene::addSubscene(AbstractMenuScene *scene)
{
    if (!scene || scene == this || subScene.contains(scene))
        return false;
    scene->setParent(this);
    subScene.append(scene);
    // Whoever deletes a sub-scene must not leave a dangling entry behind.
    connect(scene, &QObject::destroyed, this, [this, scene] { subScene.removeAll(scene); });
    return true;
}

void AbstractMenuScene::removeSubscene(AbstractMenuScene *scene)
{
    subScene.removeAll(scene);
}

QList<AbstractMenuScene *> AbstractMenuScene::subscenes() const
{
    return subScene;
}

// ---------------------------------------------------------------------------

AbstractSceneCreator::AbstractSceneCreator() = default;

AbstractSceneCreator::~AbstractSceneCreator() = default;

bool AbstractSceneCreator::addChild(const QString &scene)
{
    if (scene.isEmpty() || children.contains(scene))
        return false;
    children.append(scene);
    return true;
}

void AbstractSceneCreator::removeChild(const QString &scene)
{
    children.removeAll(scene);
}

QStringList AbstractSceneCreator::getChildren() const
{
    return children;
}

}   // namespace hfmbase
