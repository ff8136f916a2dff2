// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/pluginmetaobject.h>

#include "pluginmetaobject_p.h"

namespace hpf {

PluginMetaObject::PluginMetaObject() : d(new Private) { }

PluginMetaObject::~PluginMetaObject() = default;

QString PluginMetaObject::fileName() const
{
    return d->fileName;
}

QString PluginMetaObject::iid() const
{
    return d->iid;
}

QString PluginMetaObject::name() const
{
    return d->name;
}

QString PluginMetaObject::version() const
{
    return d->version;
}

QString PluginMetaObject::compatVersion() const
{
    return d->compatVersion;
}

QString PluginMetaObject::category() const
{
    return d->category;
}

QString PluginMetaObject::description() const
{
    return d->description;
}

QStringList PluginMetaObject::license() const
{
    return d->license;
}

QList<PluginMetaObject::Depend> PluginMetaObject::depends() const
{
    return d->depends;
}

QJsonObject PluginMetaObject::customData() const
{
    return d->customData;
}

QJsonObject PluginMetaObject::metaData() const
{
    return d->metaData;
}

PluginMetaObject::State PluginMetaObject::pluginState() const
{
    return d->state;
}

QString PluginMetaObject::errorString() const
{
    return d->errorString;
}

Plugin *PluginMetaObject::plugin() const
{
    return d->plugin;
}

}   // namespace hpf
