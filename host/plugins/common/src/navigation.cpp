// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/navigation.h"

#include <hfmbase/globaleventtype.h>
#include <hpf/event/event.h>
#include <hpf/event/eventdefaults.h>

namespace hdehost {

void declareNavigationEvents()
{
    hpf::declareTrailingDefaults(hpf::dispatcher(), hfmbase::kOpenNewWindow, 1, QVariantList {false});
}

bool requestChangeUrl(quint64 windowId, const QUrl &url)
{
    return hpf::dispatcher()->publish(hfmbase::kChangeCurrentUrl, windowId, url);
}

bool requestNewWindow(const QUrl &url)
{
    return hpf::dispatcher()->publish(hfmbase::kOpenNewWindow, url);
}

bool requestNewTab(quint64 windowId, const QUrl &url)
{
    return hpf::dispatcher()->publish(hfmbase::kOpenNewTab, windowId, url);
}

}   // namespace hdehost
