// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/invoker.h>

#include <memory>

namespace hpf {

// Hook sequences: the owning plug-in declares (space, hook); followers are
// appended and run in order until one returns true. Hook names begin with
// "hook_". Thread-safe tables; run() warns off the GUI thread.
class HPF_EXPORT EventSequenceManager
{
    Q_DISABLE_COPY(EventSequenceManager)
public:
    EventSequenceManager();
    ~EventSequenceManager();

    // True once the hook exists; declaring it again keeps its followers.
    // False only for an empty space or hook name.
    bool declare(const QString &space, const QString &hook);
    bool isDeclared(const QString &space, const QString &hook) const;

    // False, with a warning naming the topic as invalid, for an undeclared hook.
    template <class T, class Method> bool follow(const QString &space, const QString &hook, T *obj, Method method)
    {
        return followInvoker(space, hook, obj, makeInvoker(obj, method, space + QLatin1String("::") + hook));
    }
    bool followInvoker(const QString &space, const QString &hook, const void *owner, Invoker invoker);
    bool unfollow(const QString &space, const QString &hook, const void *owner);

    // True when a follower returned true (the rest are then skipped).
    template <class... Args> bool run(const QString &space, const QString &hook, Args &&...args)
    {
        return runList(space, hook, makeArgs(std::forward<Args>(args)...));
    }
    bool runList(const QString &space, const QString &hook, const QVariantList &args);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace hpf
