// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/pluginmetaobject.h>

#include <QPluginLoader>

namespace hpf {

struct PluginMetaObject::Private
{
    QString fileName;
    QString iid;
    QString name;
    QString version;
    QString compatVersion;
    QString category;
    QString description;
    QStringList license;
    QList<Depend> depends;
    QJsonObject customData;
    QJsonObject metaData;
    State state = kInvalid;
    QString errorString;
    Plugin *plugin = nullptr;
    std::unique_ptr<QPluginLoader> loader;
};

}   // namespace hpf
