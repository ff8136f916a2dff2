// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/eventdefaults.h>
#include <hpf/event/eventdispatcher.h>

#include "../hpflog.h"
#include "eventhelper.h"

#include <QHash>
#include <atomic>
#include <mutex>
#include <shared_mutex>

namespace hpf {

namespace {

struct Dispatcher
{
    internal::ReceiverList filters;
    internal::ReceiverList listeners;
};

struct TrailingDefaults
{
    int leading = 0;
    QVariantList defaults;
};

// The long form of a published list, or empty when no form of the
// declaration matches it.
QVariantList completeArguments(const QVariantList &args, const TrailingDefaults &shape)
{
    const int full = shape.leading + shape.defaults.size();
    if (args.size() < shape.leading || args.size() > full)
        return {};
    QVariantList completed = args;
    for (int i = args.size(); i < full; ++i)
        completed.append(shape.defaults.at(i - shape.leading));
    return completed;
}

// Declarations per dispatcher, kept outside it so that its layout stays.
struct ShapeRegistry
{
    std::mutex lock;
    QHash<const void *, QHash<EventType, TrailingDefaults>> shapes;
    std::atomic<bool> any {false};
};

// Never destroyed: dispatchers that are static objects themselves reach it
// from their destructors at exit.
ShapeRegistry &shapeRegistry()
{
    static ShapeRegistry *registry = new ShapeRegistry;
    return *registry;
}

bool shapeOf(const void *dispatcher, EventType type, TrailingDefaults *shape)
{
    ShapeRegistry &registry = shapeRegistry();
    if (!registry.any.load(std::memory_order_relaxed))
        return false;
    std::lock_guard<std::mutex> locker(registry.lock);
    const auto it = registry.shapes.constFind(dispatcher);
    if (it == registry.shapes.cend())
        return false;
    const auto found = it->constFind(type);
    if (found == it->cend())
        return false;
    *shape = *found;
    return true;
}

// Calls a receiver of a declared event with the form it takes: the long
// form first; a receiver that refuses it by count gets the list cut to its
// length, or, when no form fits it, the list as published (and refuses that
// with its own warning).
QVariant invokeShaped(const internal::Receiver &receiver, const QVariantList &args, const QVariantList &completed,
    const TrailingDefaults &shape)
{
    if (completed.isEmpty())
        return internal::invoke(receiver, args);
    int takes = -1;
    QVariant result;
    {
        internal::ProbeScope probe(&takes);
        result = internal::invoke(receiver, completed);
    }
    if (takes < 0)
        return result;
    if (takes >= shape.leading && takes < completed.size())
        return internal::invoke(receiver, completed.mid(0, takes));
    return internal::invoke(receiver, args);
}

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

EventDispatcherManager::~EventDispatcherManager()
{
    ShapeRegistry &registry = shapeRegistry();
    std::lock_guard<std::mutex> locker(registry.lock);
    registry.shapes.remove(this);
}

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

void declareTrailingDefaults(
    EventDispatcherManager *dispatcher, EventType type, int leading, const QVariantList &defaults)
{
    if (!dispatcher)
        return;
    ShapeRegistry &registry = shapeRegistry();
    std::lock_guard<std::mutex> locker(registry.lock);
    if (defaults.isEmpty() || leading < 0) {
        auto it = registry.shapes.find(dispatcher);
        if (it != registry.shapes.end()) {
            it->remove(type);
            if (it->isEmpty())
                registry.shapes.erase(it);
        }
    } else {
        registry.shapes[dispatcher].insert(type, TrailingDefaults {leading, defaults});
        registry.any = true;
    }
}

bool EventDispatcherManager::publishList(EventType type, const QVariantList &args)
{
    internal::ProbeScope notProbed(nullptr);
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

    TrailingDefaults shape;
    const QVariantList completed = shapeOf(this, type, &shape) ? completeArguments(args, shape) : QVariantList();
    if (globals) {
        const QVariantList globalArgs {QVariant(type), QVariant(args)};
        for (const internal::Receiver &filter : *globals) {
            if (internal::invoke(filter, globalArgs).toBool())
                return false;
        }
    }
    if (filters) {
        for (const internal::Receiver &filter : *filters) {
            if (invokeShaped(filter, args, completed, shape).toBool())
                return false;
        }
    }
    if (listeners) {
        for (const internal::Receiver &listener : *listeners)
            invokeShaped(listener, args, completed, shape);
    }
    return true;
}

QString EventDispatcherManager::eventName(EventType type)
{
    return QString::number(type);
}

}   // namespace hpf
