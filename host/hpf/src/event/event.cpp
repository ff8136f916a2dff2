// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/event/event.h>

namespace hpf {

Event::Event() = default;
Event::~Event() = default;

Event *Event::instance()
{
    static Event event;
    return &event;
}

EventChannelManager *Event::channel()
{
    return &m_channel;
}

EventDispatcherManager *Event::dispatcher()
{
    return &m_dispatcher;
}

EventSequenceManager *Event::sequence()
{
    return &m_sequence;
}

}   // namespace hpf
