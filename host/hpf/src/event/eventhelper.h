// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/invoker.h>

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

namespace hpf {
namespace internal {

// One attached receiver, with the owner that identifies it for removal.
struct Receiver
{
    const void *owner = nullptr;
    std::shared_ptr<const Invoker> invoker;
};

// An immutable list of receivers, taken under the read lock and walked after
// releasing it, so that receivers may publish, push or subscribe themselves.
using Snapshot = std::shared_ptr<const std::vector<Receiver>>;

// The receivers of one event or hook. Writers (under the write lock) replace
// the list instead of changing it, so a snapshot never changes under a reader.
class ReceiverList
{
public:
    Snapshot snapshot() const { return m_list; }

    void append(Receiver receiver)
    {
        auto next
            = m_list ? std::make_shared<std::vector<Receiver>>(*m_list) : std::make_shared<std::vector<Receiver>>();
        next->push_back(std::move(receiver));
        m_list = std::move(next);
    }

    // Removes every receiver of `owner`; true when one was removed.
    bool removeOwner(const void *owner)
    {
        if (!m_list)
            return false;
        auto next = std::make_shared<std::vector<Receiver>>();
        std::copy_if(m_list->cbegin(), m_list->cend(), std::back_inserter(*next),
            [owner](const Receiver &r) { return r.owner != owner; });
        if (next->size() == m_list->size())
            return false;
        m_list = next->empty() ? Snapshot() : Snapshot(std::move(next));
        return true;
    }

private:
    Snapshot m_list;
};

inline bool onMainThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return !app || QThread::currentThread() == app->thread();
}

void warnOffMainThread(const QString &name);

// While a probe slot is set on this thread, the first argument-count refusal
// stores the count the receiver takes there (and clears the slot) instead of
// logging. A refused call has run nothing, so probing with a list is safe.
extern thread_local int *countProbe;

// Sets the probe slot for its lifetime (nullptr: none), restoring the
// previous one; every entry point of a call clears it, so that calls nested
// in a receiver are never probed.
class ProbeScope
{
public:
    explicit ProbeScope(int *slot) : saved(countProbe) { countProbe = slot; }
    ~ProbeScope() { countProbe = saved; }
    ProbeScope(const ProbeScope &) = delete;
    ProbeScope &operator=(const ProbeScope &) = delete;

private:
    int *saved;
};
QString topicName(const QString &space, const QString &topic);

inline QVariant invoke(const Receiver &receiver, const QVariantList &args)
{
    return (*receiver.invoker)(args);
}

}   // namespace internal
}   // namespace hpf
