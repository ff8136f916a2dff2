// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/invoker.h>

#include <memory>

namespace hpf {

using EventType = int;

// Numbered global events. publish() runs the global filters, then the event's
// filters in installation order; the first that returns true consumes the
// event. Otherwise every listener runs in order. Dispatchers are created on
// first use and kept in a table under a read-write lock; receivers run
// synchronously on the publishing thread.
class HPF_EXPORT EventDispatcherManager
{
    Q_DISABLE_COPY(EventDispatcherManager)
public:
    EventDispatcherManager();
    ~EventDispatcherManager();

    template <class T, class Method> bool subscribe(EventType type, T *obj, Method method)
    {
        return subscribeInvoker(type, obj, makeInvoker(obj, method, eventName(type)));
    }
    // Filters return bool: true consumes the event.
    template <class T, class Method> bool installEventFilter(EventType type, T *obj, Method method)
    {
        return installFilterInvoker(type, obj, makeInvoker(obj, method, eventName(type)));
    }
    // Global filters have the signature bool(EventType, const QVariantList &).
    template <class T, class Method> bool installGlobalEventFilter(T *obj, Method method)
    {
        return installGlobalFilterInvoker(obj, makeInvoker(obj, method, QStringLiteral("global event filter")));
    }

    // `owner` identifies the receiver for the remove/unsubscribe calls.
    bool subscribeInvoker(EventType type, const void *owner, Invoker invoker);
    bool installFilterInvoker(EventType type, const void *owner, Invoker invoker);
    bool installGlobalFilterInvoker(const void *owner, Invoker invoker);
    bool unsubscribe(EventType type, const void *owner);
    bool removeEventFilter(EventType type, const void *owner);
    bool removeGlobalEventFilter(const void *owner);
    bool hasDispatcher(EventType type) const;

    // Returns false when a filter consumed the event, true otherwise.
    template <class... Args> bool publish(EventType type, Args &&...args)
    {
        return publishList(type, makeArgs(std::forward<Args>(args)...));
    }
    bool publishList(EventType type, const QVariantList &args);

    static QString eventName(EventType type);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace hpf
