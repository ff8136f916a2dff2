// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hostcallbacks.h>

#include <QIcon>
#include <QJsonObject>
#include <QUrl>
#include <QVariantMap>

namespace hfmplugin_sidebar {

// One place in the sidebar, keyed by its URL.
struct SidebarItem
{
    QUrl url;
    QString group;
    int index = 0;
    QString name;
    QIcon icon;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
    QString reportName;
    QString visibleControl;
    QString markName;
    QString pluginName;
    hfmbase::SidebarMenuCreator contextMenu;
    hfmbase::FindMeCallback findMe;

    // Whether this item stands for the window URL `target`.
    bool matches(const QUrl &target) const;
    // Applies a "Property_Key_..." map; returns the keys it did not know.
    QStringList apply(const QVariantMap &properties);
    QVariantMap toVariantMap() const;

    // An item from one QuickAccessDisplay entry of a plug-in's metadata;
    // false, with a reason, for a malformed entry.
    static bool fromQuickAccess(const QJsonObject &entry, const QString &pluginName, SidebarItem *out, QString *error);
};

}   // namespace hfmplugin_sidebar
