// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractentryfileentity.h>

#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace hfmplugin_computer {

struct ComputerEntry
{
    enum Shape { kSmall = 0, kLarge = 1 };

    QUrl url;
    QString group;
    int shape = kLarge;
    // Kept at the end of its group instead of sorted by the entity's order().
    bool appendAtEnd = false;
    hfmbase::EntryEntityPointer entity;
    int sequence = 0;

    QVariantMap toVariantMap() const;
};

// The entries of the computer view by group. Entities come from the
// entry-entity factory by the URL's suffix. GUI thread only.
class ComputerStore : public QObject
{
    Q_OBJECT
public:
    static ComputerStore *instance();

    // False when the factory has no class for the URL or the URL is listed.
    bool add(const QString &group, const QUrl &url, int shape, bool appendAtEnd);
    bool remove(const QUrl &url);
    void clear();

    // Groups in the order they were first used.
    QStringList groups() const;
    // Existing entries of a group in display order.
    QList<ComputerEntry> entries(const QString &group) const;
    // By entry URL text or by display name.
    bool find(const QString &key, ComputerEntry *out) const;

Q_SIGNALS:
    void changed();

private:
    ComputerStore();

    QStringList groupOrder;
    QList<ComputerEntry> list;
    int nextSequence = 0;
};

}   // namespace hfmplugin_computer
