// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractfilewatcherprivate.h>

namespace hfmplugin_nubix {

// The state of a CloudFileWatcher: the host's watcher of the local folder
// (the proxy, possibly shared with other users through the host's cache)
// and the slots that translate its reports. Without a proxy it cannot start.
class CloudFileWatcherPrivate : public hfmbase::AbstractFileWatcherPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudFileWatcherPrivate)
public:
    CloudFileWatcherPrivate(const QUrl &url, hfmbase::AbstractFileWatcher *qq);
    ~CloudFileWatcherPrivate() override;

    bool start() override;
    bool stop() override;

private Q_SLOTS:
    void onLocalFileDeleted(const QUrl &url);
    void onLocalFileAttrChanged(const QUrl &url);
    void onLocalSubFileCreated(const QUrl &url);
    void onLocalFileRenamed(const QUrl &fromUrl, const QUrl &toUrl);

private:
    hfmbase::AbstractFileWatcherPointer proxy;
};

}   // namespace hfmplugin_nubix
