// SPDX-License-Identifier: GPL-3.0-or-later
#include "sceneregistry.h"

#include <hfmbase/abstractmenuscene.h>

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(logMenu)

namespace hfmplugin_menu {

SceneRegistry::SceneRegistry(QObject *parent) : QObject(parent) { }

SceneRegistry::~SceneRegistry()
{
    for (const auto &creator : qAsConst(creators))
        delete creator.data();
}

bool SceneRegistry::registerScene(const QString &name, hfmbase::AbstractSceneCreator *creator)
{
    if (name.isEmpty() || !creator) {
        qCWarning(logMenu) << "SceneRegistry::registerScene: refused a scene without name or creator" << name;
        return false;
    }
    if (creators.value(name)) {
        qCWarning(logMenu) << "SceneRegistry::registerScene: the scene" << name << "is already registered";
        if (creator != creators.value(name))
            creator->deleteLater();
        return false;
    }
    creator->setParent(nullptr);
    creators.insert(name, creator);
    for (const QString &child : binds.value(name))
        creator->addChild(child);
    return true;
}

bool SceneRegistry::bind(const QString &scene, const QString &parent)
{
    if (scene.isEmpty() || parent.isEmpty() || scene == parent) {
        qCWarning(logMenu) << "SceneRegistry::bind: refused to bind" << scene << "to" << parent;
        return false;
    }
    QStringList &children = binds[parent];
    if (children.contains(scene))
        return true;
    children.append(scene);
    if (hfmbase::AbstractSceneCreator *creator = creators.value(parent))
        creator->addChild(scene);
    return true;
}

hfmbase::AbstractMenuScene *SceneRegistry::createScene(const QString &name)
{
    QStringList chain;
    return createScene(name, &chain);
}

hfmbase::AbstractMenuScene *SceneRegistry::createScene(const QString &name, QStringList *chain)
{
    hfmbase::AbstractSceneCreator *creator = creators.value(name);
    if (!creator) {
        qCWarning(logMenu) << "SceneRegistry::createScene: no scene is registered as" << name;
        return nullptr;
    }
    if (chain->contains(name)) {
        qCWarning(logMenu) << "SceneRegistry::createScene: the scene" << name << "is bound into itself";
        return nullptr;
    }
    hfmbase::AbstractMenuScene *scene = creator->create();
    if (!scene)
        return nullptr;
    chain->append(name);
    // The creator's children: the binds made through the registry and any
    // its author added.
    const QStringList children = creator->getChildren();
    for (const QString &child : children) {
        if (hfmbase::AbstractMenuScene *sub = createScene(child, chain))
            scene->addSubscene(sub);
    }
    chain->removeLast();
    return scene;
}

QStringList SceneRegistry::sceneNames() const
{
    QStringList names;
    for (auto it = creators.cbegin(); it != creators.cend(); ++it) {
        if (it.value())
            names.append(it.key());
    }
    return names;
}

QStringList SceneRegistry::boundScenes(const QString &parent) const
{
    return binds.value(parent);
}

}   // namespace hfmplugin_menu
