// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/pluginmetaobject.h>

#include <QSet>
#include <QStringList>

namespace hpf {

// Reads, orders, loads and starts the plug-in libraries. The LifeCycle
// functions forward here. GUI thread only.
class PluginManager
{
    Q_DISABLE_COPY(PluginManager)
public:
    static PluginManager *instance();

    void setPluginPaths(const QStringList &paths);
    QStringList pluginPaths() const;
    void setBlackList(const QStringList &names);

    bool readPlugins();
    bool loadPlugins();
    void shutdownPlugins();

    PluginMetaObjectPointer find(const QString &name, const QString &version) const;
    QList<PluginMetaObjectPointer> plugins() const;

private:
    PluginManager() = default;

    static bool parseMetaData(PluginMetaObject &object, const QJsonObject &whole, QString *error);
    PluginMetaObjectPointer readOne(const QString &filePath);
    QList<PluginMetaObjectPointer> dependencyOrder();
    bool loadOne(const PluginMetaObjectPointer &meta);
    void refuse(const PluginMetaObjectPointer &meta, const QString &reason);

    QStringList m_paths;
    QStringList m_blackList;
    QList<PluginMetaObjectPointer> m_plugins;
    QSet<QString> m_seen;
};

}   // namespace hpf
