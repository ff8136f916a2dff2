// SPDX-License-Identifier: GPL-3.0-or-later
#include "sidebarstore.h"

#include <hostcommon/urlhelpers.h>

#include <QLoggingCategory>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(logSidebar)

namespace hfmplugin_sidebar {

namespace {

const QStringList &knownGroups()
{
    static const QStringList groups {QStringLiteral("Group_Common"), QStringLiteral("Group_Device"),
        QStringLiteral("Group_Network"), QStringLiteral("Group_Tag")};
    return groups;
}

}   // namespace

SidebarStore::SidebarStore(QObject *parent) : QObject(parent) { }

int SidebarStore::indexOf(const QUrl &url) const
{
    for (int i = 0; i < list.size(); ++i) {
        if (hdehost::sameUrl(list.at(i).url, url))
            return i;
    }
    return -1;
}

bool SidebarStore::add(const SidebarItem &item)
{
    if (!item.url.isValid()) {
        qCWarning(logSidebar) << "SidebarStore::add: refused an item without URL";
        return false;
    }
    if (indexOf(item.url) >= 0) {
        qCWarning(logSidebar) << "SidebarStore::add: an item for" << item.url << "exists already";
        return false;
    }
    list.append(item);
    Q_EMIT changed();
    return true;
}

bool SidebarStore::update(const QUrl &url, const QVariantMap &properties)
{
    const int i = indexOf(url);
    if (i < 0) {
        qCWarning(logSidebar) << "SidebarStore::update: no item for" << url;
        return false;
    }
    const QStringList unknown = list[i].apply(properties);
    if (!unknown.isEmpty())
        qCWarning(logSidebar) << "SidebarStore::update: ignored the properties" << unknown << "of" << url;
    Q_EMIT changed();
    return true;
}

bool SidebarStore::remove(const QUrl &url)
{
    const int i = indexOf(url);
    if (i < 0)
        return false;
    list.removeAt(i);
    Q_EMIT changed();
    return true;
}

QList<SidebarItem> SidebarStore::items() const
{
    QStringList groups = knownGroups();
    for (const SidebarItem &item : list) {
        if (!groups.contains(item.group))
            groups.append(item.group);
    }
    QList<SidebarItem> sorted = list;
    // Stable: items of equal rank keep the order in which they came.
    std::stable_sort(sorted.begin(), sorted.end(), [&groups](const SidebarItem &a, const SidebarItem &b) {
        const int ga = groups.indexOf(a.group);
        const int gb = groups.indexOf(b.group);
        if (ga != gb)
            return ga < gb;
        const int ia = a.index < 0 ? INT_MAX : a.index;
        const int ib = b.index < 0 ? INT_MAX : b.index;
        return ia < ib;
    });
    return sorted;
}

bool SidebarStore::find(const QString &key, SidebarItem *out) const
{
    const QUrl url(key);
    for (const SidebarItem &item : list) {
        if ((url.isValid() && !url.scheme().isEmpty() && hdehost::sameUrl(item.url, url)) || item.name == key) {
            *out = item;
            return true;
        }
    }
    return false;
}

QString SidebarStore::groupTitle(const QString &group)
{
    if (group == QLatin1String("Group_Common"))
        return tr("Places");
    if (group == QLatin1String("Group_Device"))
        return tr("Devices");
    if (group == QLatin1String("Group_Network"))
        return tr("Network");
    if (group == QLatin1String("Group_Tag"))
        return tr("Tags");
    return group;
}

}   // namespace hfmplugin_sidebar
