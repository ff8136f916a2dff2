// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>

namespace hfmbase {
class AbstractMenuScene;
class AbstractSceneCreator;
}   // namespace hfmbase

namespace hfmplugin_menu {

// Scene creators by name, and which scenes are bound under which. Owns the
// creators; the caller of createScene() owns the scene. GUI thread only.
class SceneRegistry : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SceneRegistry)
public:
    explicit SceneRegistry(QObject *parent = nullptr);
    ~SceneRegistry() override;

    // Takes the creator; a second creator for a name is refused and deleted.
    bool registerScene(const QString &name, hfmbase::AbstractSceneCreator *creator);
    // `scene` becomes a sub-scene of every `parent` created from now on. The
    // parent need not be registered yet.
    bool bind(const QString &scene, const QString &parent);
    // A new scene with its bound sub-scenes, or null for an unknown name.
    hfmbase::AbstractMenuScene *createScene(const QString &name);

    QStringList sceneNames() const;
    QStringList boundScenes(const QString &parent) const;

private:
    hfmbase::AbstractMenuScene *createScene(const QString &name, QStringList *chain);

    QMap<QString, QPointer<hfmbase::AbstractSceneCreator>> creators;
    QMap<QString, QStringList> binds;
};

}   // namespace hfmplugin_menu
