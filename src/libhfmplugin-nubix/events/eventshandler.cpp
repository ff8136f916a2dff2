// SPDX-License-Identifier: GPL-3.0-or-later
#include "eventshandler.h"

#include "nubixglobal.h"

#include <hpf/event/event.h>

#include <QUrl>

namespace hfmplugin_nubix {

namespace {
const QString kSidebarSpace = QStringLiteral("hfmplugin_sidebar");
// The sidebar item is keyed by the welcome page's URL whatever it shows.
const QString kSidebarItemUrl = QStringLiteral("nubix-login:///");
}   // namespace

EventsHandler *EventsHandler::instance()
{
    static EventsHandler handler;
    return &handler;
}

EventsHandler::EventsHandler() = default;

EventsHandler::~EventsHandler() = default;

void EventsHandler::removeSidebarItem()
{
    hpf::channel()->push(kSidebarSpace, QStringLiteral("slot_Item_Remove"), QUrl(kSidebarItemUrl));
}

}   // namespace hfmplugin_nubix
