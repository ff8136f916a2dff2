// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QPointer>

namespace hfmbase {
class AbstractMenuScene;
class AbstractSceneCreator;
}   // namespace hfmbase

namespace hfmplugin_menu {

class SceneRegistry;

// The host's menu plug-in: publishes the scene registry in the
// "hfmplugin_menu" space and provides "ComputerMenu" and "WorkspaceMenu".
class MenuPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "menu.json")
    Q_INTERFACES(hpf::Plugin)
public:
    MenuPlugin();
    ~MenuPlugin() override;

    void initialize() override;
    bool start() override;

    bool registerScene(const QString &name, hfmbase::AbstractSceneCreator *creator);
    bool bindScene(const QString &scene, const QString &parent);
    hfmbase::AbstractMenuScene *createScene(const QString &name);

private:
    SceneRegistry *registry = nullptr;
    QPointer<QObject> inspector;
};

}   // namespace hfmplugin_menu
