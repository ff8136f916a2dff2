// SPDX-License-Identifier: GPL-3.0-or-later
#include "sidebaritem.h"

#include <hostcommon/hostkeys.h>
#include <hostcommon/urlhelpers.h>

namespace hfmplugin_sidebar {

using namespace hdehost;

bool SidebarItem::matches(const QUrl &target) const
{
    if (!target.isValid())
        return false;
    if (findMe)
        return findMe(url, target);
    return sameUrl(url, target);
}

QStringList SidebarItem::apply(const QVariantMap &properties)
{
    QStringList unknown;
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        const QVariant &value = it.value();
        if (it.key() == PropertyKey::kQtItemFlags) {
            if (value.userType() == qMetaTypeId<Qt::ItemFlags>())
                flags = value.value<Qt::ItemFlags>();
            else if (value.canConvert<int>())
                flags = Qt::ItemFlags(value.toInt());
            else
                unknown.append(it.key());
        } else if (it.key() == PropertyKey::kDisplayName) {
            name = value.toString();
        } else if (it.key() == PropertyKey::kIcon) {
            if (value.userType() == QMetaType::QIcon)
                icon = value.value<QIcon>();
            else if (value.canConvert<QString>())
                icon = QIcon::fromTheme(value.toString());
        } else if (it.key() == PropertyKey::kCallbackContextMenu) {
            if (value.userType() == qMetaTypeId<hfmbase::SidebarMenuCreator>())
                contextMenu = value.value<hfmbase::SidebarMenuCreator>();
            else
                unknown.append(it.key());
        } else if (it.key() == PropertyKey::kCallbackFindMe) {
            if (value.userType() == qMetaTypeId<hfmbase::FindMeCallback>())
                findMe = value.value<hfmbase::FindMeCallback>();
            else
                unknown.append(it.key());
        } else {
            unknown.append(it.key());
        }
    }
    return unknown;
}

QVariantMap SidebarItem::toVariantMap() const
{
    QVariantMap map;
    map.insert(QStringLiteral("url"), url.toString());
    map.insert(QStringLiteral("name"), name);
    map.insert(QStringLiteral("group"), group);
    map.insert(QStringLiteral("index"), index);
    map.insert(QStringLiteral("icon"), icon.name());
    map.insert(QStringLiteral("enabled"), bool(flags & Qt::ItemIsEnabled));
    map.insert(QStringLiteral("flags"), int(flags));
    map.insert(QStringLiteral("reportName"), reportName);
    map.insert(QStringLiteral("visibleControl"), visibleControl);
    map.insert(QStringLiteral("plugin"), pluginName);
    map.insert(QStringLiteral("customMenu"), bool(contextMenu));
    map.insert(QStringLiteral("customFindMe"), bool(findMe));
    return map;
}

bool SidebarItem::fromQuickAccess(const QJsonObject &entry, const QString &pluginName, SidebarItem *out, QString *error)
{
    const QUrl url(entry.value(QStringLiteral("Url")).toString());
    if (!url.isValid() || url.scheme().isEmpty()) {
        *error = QStringLiteral("no valid \"Url\"");
        return false;
    }
    const QJsonValue infoValue = entry.value(QStringLiteral("SidebarInfo"));
    if (!infoValue.isObject()) {
        *error = QStringLiteral("no \"SidebarInfo\" object");
        return false;
    }
    const QJsonObject info = infoValue.toObject();
    SidebarItem item;
    item.url = url;
    item.index = entry.value(QStringLiteral("DefaultIndex")).toInt(-1);
    item.markName = entry.value(QStringLiteral("MarkName")).toString();
    item.group = info.value(QStringLiteral("Group")).toString(QStringLiteral("Group_Common"));
    item.name = info.value(QStringLiteral("Name")).toString(item.markName);
    item.icon = QIcon::fromTheme(info.value(QStringLiteral("Icon")).toString());
    item.reportName = info.value(QStringLiteral("ReportName")).toString();
    item.visibleControl = info.value(QStringLiteral("VisiableControl")).toString();
    item.pluginName = pluginName;
    if (item.name.isEmpty())
        item.name = defaultTabName(url);
    *out = item;
    return true;
}

}   // namespace hfmplugin_sidebar
