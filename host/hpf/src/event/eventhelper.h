// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/invoker.h>

#include <QCoreApplication>
#include <QThread>
#include <QVector>

#include <algorithm>
#include <memory>

namespace hpf {
namespace internal {

// One attached receiver. The invoker is shared so that a call can copy the
// list cheaply under the read lock and run it after releasing the lock.
struct Receiver
{
    const void *owner = nullptr;
    std::shared_ptr<const Invoker> invoker;
};
using ReceiverList = QVector<Receiver>;

inline bool onMainThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return !app || QThread::currentThread() == app->thread();
}

void warnOffMainThread(const QString &name);
QString topicName(const QString &space, const QString &topic);

inline QVariant invoke(const Receiver &receiver, const QVariantList &args)
{
    return (*receiver.invoker)(args);
}

// Removes every receiver of `owner`; true when one was removed.
inline bool removeOwner(ReceiverList *list, const void *owner)
{
    const int before = list->size();
    list->erase(std::remove_if(list->begin(), list->end(), [owner](const Receiver &r) { return r.owner == owner; }),
        list->end());
    return list->size() != before;
}

}   // namespace internal
}   // namespace hpf
