// SPDX-License-Identifier: GPL-3.0-or-later
#include "menuplugin.h"

#include "computermenuscene.h"
#include "sceneregistry.h"
#include "workspacemenuscene.h"

#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QVariantMap>

Q_LOGGING_CATEGORY(logMenu, "org.sablo.hde.filemanager.plugin.menu")

namespace hfmplugin_menu {

using namespace hdehost;

namespace {

// Reports the registry to the automation mode.
class MenuInspector : public QObject
{
    Q_OBJECT
public:
    explicit MenuInspector(SceneRegistry *registry) : registry(registry)
    {
        setObjectName(Inspector::kMenu);
        setParent(QCoreApplication::instance());
    }

    Q_INVOKABLE QVariantMap state() const
    {
        QVariantMap map;
        QVariantMap binds;
        const QStringList names = registry->sceneNames();
        for (const QString &name : names) {
            const QStringList children = registry->boundScenes(name);
            if (!children.isEmpty())
                binds.insert(name, children);
        }
        map.insert(QStringLiteral("scenes"), names);
        map.insert(QStringLiteral("binds"), binds);
        return map;
    }

private:
    QPointer<SceneRegistry> registry;
};

}   // namespace

MenuPlugin::MenuPlugin() : registry(new SceneRegistry(this)) { }

MenuPlugin::~MenuPlugin()
{
    delete inspector.data();
}

void MenuPlugin::initialize()
{
    registerHostMetaTypes();
    auto *channel = hpf::channel();
    channel->connect(Space::kMenu, Topic::kMenuRegisterScene, this, &MenuPlugin::registerScene);
    channel->connect(Space::kMenu, Topic::kMenuBind, this, &MenuPlugin::bindScene);
    channel->connect(Space::kMenu, Topic::kMenuCreateScene, this, &MenuPlugin::createScene);
    registry->registerScene(Scene::kComputerMenu, new SceneCreator<ComputerMenuScene>);
    registry->registerScene(Scene::kWorkspaceMenu, new SceneCreator<WorkspaceMenuScene>);
    inspector = new MenuInspector(registry);
}

bool MenuPlugin::start()
{
    return true;
}

bool MenuPlugin::registerScene(const QString &name, hfmbase::AbstractSceneCreator *creator)
{
    return registry->registerScene(name, creator);
}

bool MenuPlugin::bindScene(const QString &scene, const QString &parent)
{
    return registry->bind(scene, parent);
}

hfmbase::AbstractMenuScene *MenuPlugin::createScene(const QString &name)
{
    return registry->createScene(name);
}

}   // namespace hfmplugin_menu

#include "menuplugin.moc"
