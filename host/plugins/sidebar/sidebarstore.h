// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sidebaritem.h"

#include <QObject>

namespace hfmplugin_sidebar {

// The places every window's sidebar shows, in display order: by group
// (common, devices, network, tags, then others), then by index. GUI thread.
class SidebarStore : public QObject
{
    Q_OBJECT
public:
    explicit SidebarStore(QObject *parent = nullptr);

    // Refuses a second item with the same URL.
    bool add(const SidebarItem &item);
    // False when no item has this URL.
    bool update(const QUrl &url, const QVariantMap &properties);
    bool remove(const QUrl &url);

    QList<SidebarItem> items() const;
    // By URL text or by display name.
    bool find(const QString &key, SidebarItem *out) const;
    static QString groupTitle(const QString &group);

Q_SIGNALS:
    void changed();

private:
    int indexOf(const QUrl &url) const;

    QList<SidebarItem> list;
};

}   // namespace hfmplugin_sidebar
