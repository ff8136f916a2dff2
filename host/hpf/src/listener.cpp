// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/listener.h>

namespace hpf {

Listener::Listener() = default;

Listener *Listener::instance()
{
    static Listener listener;
    return &listener;
}

}   // namespace hpf
