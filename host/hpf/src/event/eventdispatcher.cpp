// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/eventdispatcher.h>

#include "../hpflog.h"
#include "eventhelper.h"

#include <QHash>
#include <mutex>
#include <shared_mutex>

namespace hpf {

namespace {

struct Dispatcher
{
    internal::ReceiverList filters;
    internal::ReceiverList listeners;
};

}   // namespace

struct EventDispatcherManager::Private
{
    mutable std::shared_mutex lock;
    QHash<EventType, Dispatcher> table;
    internal::ReceiverList globalFilters;

    bool add(const char *method, EventType type, const void *owner, Invoker invoker,
        internal::ReceiverList Dispatcher::*list)
    {
        if (!invoker) {
            qCWarning(logHpf).nospace() << "EventDispatcherManager::" << method << ": refused an empty receiver for "
                                        << type;
            return false;
        }
        internal::Receiver receiver {owner, std::make_shared<const Invoker>(std::move(invoker))};
        std::unique_lock<std::shared_mutex> locker(lock);
        (table[type].*list).append(std::move(receiver));
        return true;
    }

    bool remove(EventType type, const void *owner, internal::ReceiverList Dispatcher::*list)
    {
        std::unique_lock<std::shared_mutex> locker(lock);
        auto it = table.find(type);
        return it != table.end() && ((*it).*list).removeOwner(owner);
    }
};

EventDispatcherManager::EventDispatcherManager() : d(new Private) { }

EventDispatcherManager::~EventDispatcherManager() = default;

bool EventDispatcherManager::subscribeInvoker(EventType type, const void *owner, Invoker invoker)
{
    return d->add("subscribe", type, owner, std::move(invoker), &Dispatcher::listeners);
}

bool EventDispatcherManager::installFilterInvoker(EventType type, const void *owner, Invoker invoker)
{
    return d->add("installEventFilter", type, owner, std::move(invoker), &Dispatcher::filters);
}

bool EventDispatcherManager::installGlobalFilterInvoker(const void *owner, Invoker invoker)
{
    if (!invoker) {
        qCWarning(logHpf) << "EventDispatcherManager::installGlobalEventFilter: refused an empty receiver";
        return false;
    }
    internal::Receiver receiver {owner, std::make_shared<const Invoker>(std::move(invoker))};
    std::unique_lock<std::shared_mutex> locker(d->lock);
    d->globalFilters.append(std::move(receiver));
    return true;
}

bool EventDispatcherManager::unsubscribe(EventType type, const void *owner)
{
    return d->remove(type, owner, &Dispatcher::listeners);
}

bool EventDispatcherManager::removeEventFilter(EventType type, const void *owner)
{
    return d->remove(type, owner, &Dispatcher::filters);
}

bool EventDispatcherManager::removeGlobalEventFilter(const void *owner)
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    return d->globalFilters.removeOwner(owner);
}

bool EventDispatcherManager::hasDispatcher(EventType type) const
{
    std::shared_lock<std::shared_mutex> locker(d->lock);
    return d->table.contains(type);
}

bool EventDispatcherManager::publishList(EventType type, const QVariantList &args)
{
    if (Q_UNLIKELY(!internal::onMainThread()))
        internal::warnOffMainThread(eventName(type));

    internal::Snapshot globals;
    internal::Snapshot filters;
    internal::Snapshot listeners;
    {
        std::shared_lock<std::shared_mutex> locker(d->lock);
        globals = d->globalFilters.snapshot();
        const auto it = d->table.constFind(type);
        if (it != d->table.cend()) {
            filters = it->filters.snapshot();
            listeners = it->listeners.snapshot();
        }
    }

    if (globals) {
        const QVariantList globalArgs {QVariant(type), QVariant(args)};
        for (const internal::Receiver &filter : *globals) {
            if (internal::invoke(filter, globalArgs).toBool())
                return false;
        }
    }
    if (filters) {
        for (const internal::Receiver &filter : *filters) {
            if (internal::invoke(filter, args).toBool())
                return false;
        }
    }
    if (listeners) {
        for (const internal::Receiver &listener : *listeners)
            internal::invoke(listener, args);
    }
    return true;
}

QString EventDispatcherManager::eventName(EventType type)
{
    return QString::number(type);
}

}   // namespace hpf
