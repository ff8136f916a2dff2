// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/pluginmetaobject.h>

#include "pluginmetaobject_p.h"

namespace hpf {

PluginMetaObject::PluginMetaObject() : d(new Private) { }

PluginMetaObject::~PluginMetaObject() = default;

// Each accessor hands out one field the framework filled in.
#define META_FIELD(Type, name, field)                                                                                  \
    Type PluginMetaObject::name() const                                                                                \
    {                                                                                                                  \
        return d->field;                                                                                               \
    }

META_FIELD(QString, fileName, fileName)
META_FIELD(QString, iid, iid)
META_FIELD(QString, name, name)
META_FIELD(QString, version, version)
META_FIELD(QString, compatVersion, compatVersion)
META_FIELD(QString, category, category)
META_FIELD(QString, description, description)
META_FIELD(QStringList, license, license)
META_FIELD(QList<PluginMetaObject::Depend>, depends, depends)
META_FIELD(QJsonObject, customData, customData)
META_FIELD(QJsonObject, metaData, metaData)
META_FIELD(PluginMetaObject::State, pluginState, state)
META_FIELD(QString, errorString, errorString)
META_FIELD(Plugin *, plugin, plugin)

#undef META_FIELD

}   // namespace hpf
