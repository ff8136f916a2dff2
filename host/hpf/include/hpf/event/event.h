// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/eventchannel.h>
#include <hpf/event/eventdispatcher.h>
#include <hpf/event/eventsequence.h>

namespace hpf {

// The three process-wide event channels.
class HPF_EXPORT Event
{
    Q_DISABLE_COPY(Event)
public:
    static Event *instance();

    EventChannelManager *channel();
    EventDispatcherManager *dispatcher();
    EventSequenceManager *sequence();

private:
    Event();
    ~Event();
    EventChannelManager m_channel;
    EventDispatcherManager m_dispatcher;
    EventSequenceManager m_sequence;
};

inline EventChannelManager *channel()
{
    return Event::instance()->channel();
}
inline EventDispatcherManager *dispatcher()
{
    return Event::instance()->dispatcher();
}
inline EventSequenceManager *sequence()
{
    return Event::instance()->sequence();
}

}   // namespace hpf
