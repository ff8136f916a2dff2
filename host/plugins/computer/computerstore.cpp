// SPDX-License-Identifier: GPL-3.0-or-later
#include "computerstore.h"

#include <QLoggingCategory>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(logComputer)

namespace hfmplugin_computer {

QVariantMap ComputerEntry::toVariantMap() const
{
    QVariantMap map;
    map.insert(QStringLiteral("url"), url.toString());
    map.insert(QStringLiteral("group"), group);
    map.insert(QStringLiteral("shape"), shape);
    if (!entity)
        return map;
    map.insert(QStringLiteral("name"), entity->displayName());
    map.insert(QStringLiteral("description"), entity->description());
    map.insert(QStringLiteral("icon"), entity->icon().name());
    map.insert(QStringLiteral("exists"), entity->exists());
    map.insert(QStringLiteral("order"), entity->order());
    map.insert(QStringLiteral("sizeTotal"), entity->sizeTotal());
    map.insert(QStringLiteral("sizeUsage"), entity->sizeUsage());
    map.insert(QStringLiteral("showProgress"), entity->showProgress());
    map.insert(QStringLiteral("showTotalSize"), entity->showTotalSize());
    map.insert(QStringLiteral("showUsageSize"), entity->showUsageSize());
    map.insert(QStringLiteral("target"), entity->targetUrl().toString());
    return map;
}

ComputerStore::ComputerStore() = default;

ComputerStore *ComputerStore::instance()
{
    // Never destroyed: entities of other plug-ins must not outlive their
    // libraries' static data, so clear() runs before the application ends.
    static ComputerStore *store = new ComputerStore;
    return store;
}

void ComputerStore::clear()
{
    list.clear();
    groupOrder.clear();
    Q_EMIT changed();
}

bool ComputerStore::add(const QString &group, const QUrl &url, int shape, bool appendAtEnd)
{
    if (group.isEmpty() || !url.isValid()) {
        qCWarning(logComputer) << "ComputerStore::add: refused an entry without group or URL" << group << url;
        return false;
    }
    for (const ComputerEntry &entry : qAsConst(list)) {
        if (entry.url == url) {
            qCWarning(logComputer) << "ComputerStore::add: the entry" << url << "is listed already";
            return false;
        }
    }
    QString error;
    const hfmbase::EntryEntityPointer entity = hfmbase::EntryEntityFactory::create(url, &error);
    if (!entity) {
        qCWarning(logComputer).noquote() << "ComputerStore::add: cannot add" << url.toString() << "-" << error;
        return false;
    }
    ComputerEntry entry;
    entry.url = url;
    entry.group = group;
    entry.shape = shape == ComputerEntry::kSmall ? ComputerEntry::kSmall : ComputerEntry::kLarge;
    entry.appendAtEnd = appendAtEnd;
    entry.entity = entity;
    entry.sequence = nextSequence++;
    list.append(entry);
    if (!groupOrder.contains(group))
        groupOrder.append(group);
    Q_EMIT changed();
    return true;
}

bool ComputerStore::remove(const QUrl &url)
{
    for (int i = 0; i < list.size(); ++i) {
        if (list.at(i).url == url) {
            list.removeAt(i);
            Q_EMIT changed();
            return true;
        }
    }
    return false;
}

QStringList ComputerStore::groups() const
{
    return groupOrder;
}

QList<ComputerEntry> ComputerStore::entries(const QString &group) const
{
    QList<ComputerEntry> result;
    for (const ComputerEntry &entry : list) {
        if (entry.group == group && entry.entity && entry.entity->exists())
            result.append(entry);
    }
    std::stable_sort(result.begin(), result.end(), [](const ComputerEntry &a, const ComputerEntry &b) {
        if (a.appendAtEnd != b.appendAtEnd)
            return !a.appendAtEnd;
        if (!a.appendAtEnd && a.entity->order() != b.entity->order())
            return a.entity->order() < b.entity->order();
        return a.sequence < b.sequence;
    });
    return result;
}

bool ComputerStore::find(const QString &key, ComputerEntry *out) const
{
    for (const ComputerEntry &entry : list) {
        if (entry.url.toString() == key || (entry.entity && entry.entity->displayName() == key)) {
            *out = entry;
            return true;
        }
    }
    return false;
}

}   // namespace hfmplugin_computer
