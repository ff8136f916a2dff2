// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantHash>

class QPoint;
namespace hfmbase {
class AbstractMenuScene;
}   // namespace hfmbase

// Context menus built from the menu plug-in's scenes. GUI thread.
namespace hdehost {

// A new scene of that name from the menu plug-in, or null when the plug-in is
// not loaded or knows no such scene. The caller owns the scene.
hfmbase::AbstractMenuScene *createMenuScene(const QString &name);
// Initialises `scene` with `params`, shows its menu at `globalPos` (blocking
// until it closes), runs the chosen action and deletes the scene. False when
// the scene refused the parameters.
bool execMenuScene(hfmbase::AbstractMenuScene *scene, const QVariantHash &params, const QPoint &globalPos);

}   // namespace hdehost
