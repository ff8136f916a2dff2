// SPDX-License-Identifier: GPL-3.0-or-later
#include "workspaceregistry.h"

#include <hostcommon/hostkeys.h>

#include <QUrl>

namespace hfmplugin_workspace {

using namespace hdehost;

bool TopWidgetRegistration::shouldShow(QWidget *widget, const QUrl &url) const
{
    if (url.scheme() != scheme)
        return false;
    if (keepShow || !show)
        return true;
    return show(widget, url);
}

WorkspaceRegistry::WorkspaceRegistry(QObject *parent) : QObject(parent)
{
    fileViewSchemesSet.insert(QStringLiteral("file"));
}

bool WorkspaceRegistry::addFileViewScheme(const QString &scheme)
{
    if (scheme.isEmpty() || fileViewSchemesSet.contains(scheme))
        return !scheme.isEmpty();
    fileViewSchemesSet.insert(scheme);
    Q_EMIT fileViewSchemeAdded(scheme);
    return true;
}

bool WorkspaceRegistry::isFileViewScheme(const QString &scheme) const
{
    return fileViewSchemesSet.contains(scheme);
}

QStringList WorkspaceRegistry::fileViewSchemes() const
{
    QStringList list = fileViewSchemesSet.values();
    list.sort();
    return list;
}

bool WorkspaceRegistry::addTopWidget(const QVariantMap &properties, QString *error)
{
    TopWidgetRegistration reg;
    reg.scheme = properties.value(PropertyKey::kScheme).toString();
    if (reg.scheme.isEmpty()) {
        *error = QStringLiteral("no %1").arg(PropertyKey::kScheme);
        return false;
    }
    const QVariant create = properties.value(PropertyKey::kCreateTopWidgetCallback);
    if (create.userType() != qMetaTypeId<hfmbase::TopWidCreator>() || !create.value<hfmbase::TopWidCreator>()) {
        *error = QStringLiteral("%1 is not a TopWidCreator").arg(PropertyKey::kCreateTopWidgetCallback);
        return false;
    }
    reg.create = create.value<hfmbase::TopWidCreator>();
    const QVariant show = properties.value(PropertyKey::kShowTopWidgetCallback);
    if (show.isValid()) {
        if (show.userType() != qMetaTypeId<hfmbase::TopWidShowFunc>()) {
            *error = QStringLiteral("%1 is not a TopWidShowFunc").arg(PropertyKey::kShowTopWidgetCallback);
            return false;
        }
        reg.show = show.value<hfmbase::TopWidShowFunc>();
    }
    reg.keepShow = properties.value(PropertyKey::kKeepShow).toBool();
    topWidgets.insert(reg.scheme, reg);
    Q_EMIT topWidgetAdded(reg.scheme);
    return true;
}

bool WorkspaceRegistry::hasTopWidget(const QString &scheme) const
{
    return topWidgets.contains(scheme);
}

TopWidgetRegistration WorkspaceRegistry::topWidget(const QString &scheme) const
{
    return topWidgets.value(scheme);
}

bool WorkspaceRegistry::setMenuScene(const QString &scheme, const QString &scene)
{
    if (scheme.isEmpty() || scene.isEmpty())
        return false;
    menuScenes.insert(scheme, scene);
    return true;
}

QString WorkspaceRegistry::menuSceneFor(const QString &scheme) const
{
    return menuScenes.value(scheme, Scene::kWorkspaceMenu);
}

}   // namespace hfmplugin_workspace
