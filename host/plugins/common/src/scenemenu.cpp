// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/scenemenu.h"

#include "hostcommon/hostkeys.h"

#include <hfmbase/abstractmenuscene.h>
#include <hpf/event/event.h>

#include <QMenu>

namespace hdehost {

hfmbase::AbstractMenuScene *createMenuScene(const QString &name)
{
    return hpf::channel()->push(Space::kMenu, Topic::kMenuCreateScene, name).value<hfmbase::AbstractMenuScene *>();
}

bool execMenuScene(hfmbase::AbstractMenuScene *scene, const QVariantHash &params, const QPoint &globalPos)
{
    if (!scene->initialize(params)) {
        delete scene;
        return false;
    }
    QMenu menu;
    scene->create(&menu);
    scene->updateState(&menu);
    if (QAction *chosen = menu.exec(globalPos))
        scene->triggered(chosen);
    delete scene;
    return true;
}

}   // namespace hdehost
