// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/eventchannel.h>

#include "../hpflog.h"
#include "eventhelper.h"

#include <QHash>
#include <mutex>
#include <shared_mutex>

namespace hpf {

struct EventChannelManager::Private
{
    mutable std::shared_mutex lock;
    QHash<QString, QHash<QString, std::shared_ptr<const Invoker>>> spaces;
};

EventChannelManager::EventChannelManager() : d(new Private) { }

EventChannelManager::~EventChannelManager() = default;

bool EventChannelManager::connectInvoker(const QString &space, const QString &topic, Invoker invoker)
{
    if (space.isEmpty() || topic.isEmpty() || !invoker) {
        qCWarning(logHpf).noquote() << "EventChannelManager::connect: refused an empty space, topic or receiver for"
                                    << internal::topicName(space, topic);
        return false;
    }
    auto shared = std::make_shared<const Invoker>(std::move(invoker));
    std::unique_lock<std::shared_mutex> locker(d->lock);
    d->spaces[space].insert(topic, std::move(shared));
    return true;
}

bool EventChannelManager::disconnect(const QString &space, const QString &topic)
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    auto it = d->spaces.find(space);
    if (it == d->spaces.end())
        return false;
    const bool removed = it->remove(topic) > 0;
    if (it->isEmpty())
        d->spaces.erase(it);
    return removed;
}

bool EventChannelManager::hasTopic(const QString &space, const QString &topic) const
{
    std::shared_lock<std::shared_mutex> locker(d->lock);
    const auto it = d->spaces.constFind(space);
    return it != d->spaces.cend() && it->contains(topic);
}

QVariant EventChannelManager::pushList(const QString &space, const QString &topic, const QVariantList &args)
{
    // Calls nested in a probed receiver are never probed themselves.
    internal::ProbeScope notProbed(nullptr);
    if (Q_UNLIKELY(!internal::onMainThread()))
        internal::warnOffMainThread(internal::topicName(space, topic));

    std::shared_ptr<const Invoker> invoker;
    {
        std::shared_lock<std::shared_mutex> locker(d->lock);
        const auto it = d->spaces.constFind(space);
        if (it == d->spaces.cend())
            return QVariant();
        const auto receiver = it->constFind(topic);
        if (receiver == it->cend())
            return QVariant();
        invoker = *receiver;
    }
    return (*invoker)(args);
}

}   // namespace hpf
