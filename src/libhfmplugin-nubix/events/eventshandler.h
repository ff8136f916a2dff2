// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace hfmplugin_nubix {

// Ties the plug-in into the host's other plug-ins through the host's event
// channels. GUI thread only; every call returns at once. A process-wide
// singleton that lives until exit.
class EventsHandler : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(EventsHandler)
public:
    static EventsHandler *instance();

    // Takes the plug-in's item (the one the host made from the metadata) out of the sidebar.
    void removeSidebarItem();

private:
    EventsHandler();
    ~EventsHandler() override;
};

}   // namespace hfmplugin_nubix
