// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostmenuscene.h"

#include <hostcommon/hostkeys.h>

#include <QAction>
#include <QMenu>

namespace hfmplugin_menu {

using namespace hdehost;

bool HostMenuScene::initialize(const QVariantHash &params)
{
    windowId = params.value(MenuParam::kWindowId).toULongLong();
    selected = params.value(MenuParam::kSelectFiles).value<QList<QUrl>>();
    AbstractMenuScene::initialize(params);
    return !selected.isEmpty();
}

QAction *HostMenuScene::addAction(QMenu *menu, const QString &id, const QString &text)
{
    QAction *action = menu->addAction(text);
    action->setProperty(hfmbase::ActionPropertyKey::kActionID, id);
    predicateAction.insert(id, action);
    return action;
}

bool HostMenuScene::triggered(QAction *action)
{
    if (!action)
        return false;
    if (AbstractMenuScene::scene(action) != this)
        return AbstractMenuScene::triggered(action);
    return run(action->property(hfmbase::ActionPropertyKey::kActionID).toString());
}

}   // namespace hfmplugin_menu
