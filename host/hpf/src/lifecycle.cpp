// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/lifecycle.h>

#include "pluginmanager.h"

namespace hpf {
namespace LifeCycle {

void setPluginPaths(const QStringList &paths)
{
    PluginManager::instance()->setPluginPaths(paths);
}

QStringList pluginPaths()
{
    return PluginManager::instance()->pluginPaths();
}

void setBlackList(const QStringList &names)
{
    PluginManager::instance()->setBlackList(names);
}

bool readPlugins()
{
    return PluginManager::instance()->readPlugins();
}

bool loadPlugins()
{
    return PluginManager::instance()->loadPlugins();
}

void shutdownPlugins()
{
    PluginManager::instance()->shutdownPlugins();
}

PluginMetaObjectPointer pluginMetaObj(const QString &name, const QString &version)
{
    return PluginManager::instance()->find(name, version);
}

QList<PluginMetaObjectPointer> pluginMetaObjs()
{
    return PluginManager::instance()->plugins();
}

}   // namespace LifeCycle
}   // namespace hpf
