// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/eventdispatcher.h>

namespace hpf {

// Declares that event `type` of `dispatcher` takes `leading` required
// arguments followed by optional ones whose defaults are `defaults`. The
// event may then be published in any form from the short to the long one,
// and each filter and listener gets the form it takes: the published list
// completed from the defaults, cut to the receiver's length. A list that no
// form serves is refused as before. Global filters see the list as
// published. Declaring again replaces the declaration; empty `defaults`
// removes it.
HPF_EXPORT void declareTrailingDefaults(
    EventDispatcherManager *dispatcher, EventType type, int leading, const QVariantList &defaults);

}   // namespace hpf
