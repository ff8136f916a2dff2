// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/invoker.h>

#include <memory>

namespace hpf {

// Slot channel: one receiver per (space, topic); topics begin with "slot_".
// connect/disconnect are thread-safe; push runs the receiver synchronously
// on the calling thread and warns when that is not the GUI thread.
class HPF_EXPORT EventChannelManager
{
    Q_DISABLE_COPY(EventChannelManager)
public:
    EventChannelManager();
    ~EventChannelManager();

    template <class T, class Method> bool connect(const QString &space, const QString &topic, T *obj, Method method)
    {
        return connectInvoker(space, topic, makeInvoker(obj, method, space + QLatin1String("::") + topic));
    }
    template <class F> bool connect(const QString &space, const QString &topic, F func)
    {
        return connectInvoker(space, topic, makeInvoker(std::move(func), space + QLatin1String("::") + topic));
    }
    // Replaces an earlier receiver of the same topic.
    bool connectInvoker(const QString &space, const QString &topic, Invoker invoker);
    bool disconnect(const QString &space, const QString &topic);
    bool hasTopic(const QString &space, const QString &topic) const;

    // The receiver's return value; invalid when nobody published the topic.
    template <class... Args> QVariant push(const QString &space, const QString &topic, Args &&...args)
    {
        return pushList(space, topic, makeArgs(std::forward<Args>(args)...));
    }
    QVariant pushList(const QString &space, const QString &topic, const QVariantList &args);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace hpf
