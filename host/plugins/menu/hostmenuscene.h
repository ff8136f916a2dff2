// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractmenuscene.h>

#include <QUrl>

namespace hfmplugin_menu {

// What the host's menu scenes share: the window and the selection from the
// "windowId" and "selectFiles" parameters, actions that carry their id, and
// actions of sub-scenes handed on. GUI thread only.
class HostMenuScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
public:
    // False without a selection.
    bool initialize(const QVariantHash &params) override;
    bool triggered(QAction *action) override;

protected:
    QAction *addAction(QMenu *menu, const QString &id, const QString &text);
    // Carries out one of this scene's own actions; false when it cannot.
    virtual bool run(const QString &id) = 0;

    quint64 windowId = 0;
    QList<QUrl> selected;
};

// Makes a new `Scene` for every menu.
template <class Scene> class SceneCreator : public hfmbase::AbstractSceneCreator
{
public:
    hfmbase::AbstractMenuScene *create() override { return new Scene; }
};

}   // namespace hfmplugin_menu
