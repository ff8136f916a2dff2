// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractfilewatcher.h>

namespace hfmplugin_nubix {

// Watches a "nubix" directory through the host's own watcher of the local
// folder behind it and relays its changes with cloud URLs; a deleted file
// also loses its sync status. Signals come from the thread the watcher lives
// in; start and stop it there. The host owns it through its factory.
class CloudFileWatcher : public hfmbase::AbstractFileWatcher
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudFileWatcher)
public:
    explicit CloudFileWatcher(const QUrl &url, QObject *parent = nullptr);
    ~CloudFileWatcher() override;
};

}   // namespace hfmplugin_nubix
