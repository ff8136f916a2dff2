// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/invoker.h>

#include "../hpflog.h"
#include "eventhelper.h"

namespace hpf {

namespace detail {

void warnArgumentCount(const QString &where, int expected, int given)
{
    if (internal::countProbe) {
        *internal::countProbe = expected;
        internal::countProbe = nullptr;
        return;
    }
    qCWarning(logHpf).noquote() << "Event receiver" << where << "refused the call: it takes" << expected
                                << "argument(s)," << given << "given";
}

void warnArgumentType(const QString &where, int index, const char *expected, const QVariant &given)
{
    const char *givenType = given.isValid() ? given.typeName() : "an invalid value";
    qCWarning(logHpf).noquote() << "Event receiver" << where << "refused the call: argument" << index << "is"
                                << (givenType ? givenType : "an unknown type") << "and cannot become"
                                << (expected ? expected : "the parameter type");
}

void warnReceiverGone(const QString &where)
{
    qCWarning(logHpf).noquote() << "Event receiver" << where << "refused the call: its object has been destroyed";
}

}   // namespace detail

namespace internal {

thread_local int *countProbe = nullptr;

void warnOffMainThread(const QString &name)
{
    qCWarning(logHpf).noquote() << "[Event Thread]: The event call does not run in the main thread:" << name;
}

QString topicName(const QString &space, const QString &topic)
{
    return space + QLatin1String("::") + topic;
}

}   // namespace internal

}   // namespace hpf
