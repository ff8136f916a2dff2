// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/pluginmetaobject.h>

namespace hpf {
namespace LifeCycle {

// Sets the directories searched for plug-in libraries (replacing earlier ones).
HPF_EXPORT void setPluginPaths(const QStringList &paths);
HPF_EXPORT QStringList pluginPaths();
// Plug-ins whose Name is listed here are skipped when reading.
HPF_EXPORT void setBlackList(const QStringList &names);

// Reads the metadata of every library in the plug-in paths. Libraries with
// another IID or broken metadata are refused with a warning. Each library is
// judged once, so calling again only picks up new files. Returns false when
// nothing usable was found. GUI thread only, as is everything here.
HPF_EXPORT bool readPlugins();
// Loads every read plug-in, calls initialize() on all and then start() on
// all, dependencies first. Returns false when any plug-in failed.
HPF_EXPORT bool loadPlugins();
// Stops the started plug-ins in reverse order.
HPF_EXPORT void shutdownPlugins();

// The meta object of a read plug-in, or null. An empty version matches any.
HPF_EXPORT PluginMetaObjectPointer pluginMetaObj(const QString &name, const QString &version = QString());
// All read plug-ins in load order.
HPF_EXPORT QList<PluginMetaObjectPointer> pluginMetaObjs();

}   // namespace LifeCycle
}   // namespace hpf
