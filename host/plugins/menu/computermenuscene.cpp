// SPDX-License-Identifier: GPL-3.0-or-later
#include "computermenuscene.h"

#include <hfmbase/abstractentryfileentity.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>

#include <QAction>
#include <QMenu>

namespace hfmplugin_menu {

using namespace hdehost;

QString ComputerMenuScene::name() const
{
    return Scene::kComputerMenu;
}

bool ComputerMenuScene::create(QMenu *parent)
{
    if (!parent)
        return false;
    addAction(parent, ActionId::kOpen, tr("Open"));
    addAction(parent, ActionId::kOpenInNewWindow, tr("Open in new window"));
    addAction(parent, ActionId::kOpenInNewTab, tr("Open in new tab"));
    return AbstractMenuScene::create(parent);
}

void ComputerMenuScene::updateState(QMenu *parent)
{
    const bool canOpen = targetUrl().isValid();
    for (QAction *action : qAsConst(predicateAction))
        action->setEnabled(canOpen);
    // Sub-scenes come last so that they may rearrange what this scene made.
    AbstractMenuScene::updateState(parent);
}

QUrl ComputerMenuScene::targetUrl() const
{
    if (selected.isEmpty())
        return QUrl();
    const hfmbase::EntryEntityPointer entity = hfmbase::EntryEntityFactory::create(selected.first());
    return entity ? entity->targetUrl() : QUrl();
}

bool ComputerMenuScene::run(const QString &id)
{
    const QUrl target = targetUrl();
    if (!target.isValid())
        return false;
    if (id == ActionId::kOpen)
        requestChangeUrl(windowId, target);
    else if (id == ActionId::kOpenInNewWindow)
        requestNewWindow(target);
    else if (id == ActionId::kOpenInNewTab)
        requestNewTab(windowId, target);
    else
        return false;
    return true;
}

}   // namespace hfmplugin_menu
