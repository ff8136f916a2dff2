// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/eventsequence.h>

#include "../hpflog.h"
#include "eventhelper.h"

#include <QHash>
#include <mutex>
#include <shared_mutex>

namespace hpf {

struct EventSequenceManager::Private
{
    mutable std::shared_mutex lock;
    // A declared hook has an entry, possibly with no followers yet.
    QHash<QString, QHash<QString, internal::ReceiverList>> spaces;
};

EventSequenceManager::EventSequenceManager() : d(new Private) { }

EventSequenceManager::~EventSequenceManager() = default;

bool EventSequenceManager::declare(const QString &space, const QString &hook)
{
    if (space.isEmpty() || hook.isEmpty()) {
        qCWarning(logHpf).noquote() << "EventSequenceManager::declare: refused an empty space or hook for"
                                    << internal::topicName(space, hook);
        return false;
    }
    std::unique_lock<std::shared_mutex> locker(d->lock);
    auto &hooks = d->spaces[space];
    if (!hooks.contains(hook))
        hooks.insert(hook, internal::ReceiverList());
    return true;
}

bool EventSequenceManager::isDeclared(const QString &space, const QString &hook) const
{
    std::shared_lock<std::shared_mutex> locker(d->lock);
    const auto it = d->spaces.constFind(space);
    return it != d->spaces.cend() && it->contains(hook);
}

bool EventSequenceManager::followInvoker(const QString &space, const QString &hook, const void *owner, Invoker invoker)
{
    if (!invoker) {
        qCWarning(logHpf).noquote() << "EventSequenceManager::follow: refused an empty receiver for"
                                    << internal::topicName(space, hook);
        return false;
    }
    internal::Receiver receiver {owner, std::make_shared<const Invoker>(std::move(invoker))};
    std::unique_lock<std::shared_mutex> locker(d->lock);
    auto it = d->spaces.find(space);
    if (it != d->spaces.end()) {
        auto followers = it->find(hook);
        if (followers != it->end()) {
            followers->append(std::move(receiver));
            return true;
        }
    }
    locker.unlock();
    qCWarning(logHpf).noquote() << "EventSequenceManager::follow: invalid topic" << internal::topicName(space, hook)
                                << "- the hook has not been declared";
    return false;
}

bool EventSequenceManager::unfollow(const QString &space, const QString &hook, const void *owner)
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    auto it = d->spaces.find(space);
    if (it == d->spaces.end())
        return false;
    auto followers = it->find(hook);
    return followers != it->end() && followers->removeOwner(owner);
}

bool EventSequenceManager::runList(const QString &space, const QString &hook, const QVariantList &args)
{
    // Calls nested in a probed receiver are never probed themselves.
    internal::ProbeScope notProbed(nullptr);
    if (Q_UNLIKELY(!internal::onMainThread()))
        internal::warnOffMainThread(internal::topicName(space, hook));

    internal::Snapshot followers;
    {
        std::shared_lock<std::shared_mutex> locker(d->lock);
        const auto it = d->spaces.constFind(space);
        if (it == d->spaces.cend())
            return false;
        const auto list = it->constFind(hook);
        if (list == it->cend())
            return false;
        followers = list->snapshot();
    }
    if (!followers)
        return false;
    for (const internal::Receiver &follower : *followers) {
        if (internal::invoke(follower, args).toBool())
            return true;
    }
    return false;
}

}   // namespace hpf
