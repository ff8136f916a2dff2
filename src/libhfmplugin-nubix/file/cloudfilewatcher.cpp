// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudfilewatcher.h"

#include "caches/nubixcaches.h"
#include "file/cloudfilewatcher_p.h"
#include "utils/nubixutils.h"

namespace hfmplugin_nubix {

CloudFileWatcher::CloudFileWatcher(const QUrl &url, QObject *parent)
    : AbstractFileWatcher(new CloudFileWatcherPrivate(url, this), parent)
{
}

CloudFileWatcher::~CloudFileWatcher() = default;

CloudFileWatcherPrivate::CloudFileWatcherPrivate(const QUrl &url, hfmbase::AbstractFileWatcher *qq)
    : AbstractFileWatcherPrivate(url, qq)
{
    proxy = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(NubixUtils::cloudToLocal(url), true);
    if (!proxy)
        return;
    using Watcher = hfmbase::AbstractFileWatcher;
    connect(proxy.data(), &Watcher::fileDeleted, this, &CloudFileWatcherPrivate::onLocalFileDeleted);
    connect(proxy.data(), &Watcher::fileAttributeChanged, this, &CloudFileWatcherPrivate::onLocalFileAttrChanged);
    connect(proxy.data(), &Watcher::subfileCreated, this, &CloudFileWatcherPrivate::onLocalSubFileCreated);
    connect(proxy.data(), &Watcher::fileRename, this, &CloudFileWatcherPrivate::onLocalFileRenamed);
}

CloudFileWatcherPrivate::~CloudFileWatcherPrivate() = default;

bool CloudFileWatcherPrivate::start()
{
    return proxy && proxy->startWatcher();
}

bool CloudFileWatcherPrivate::stop()
{
    return proxy && proxy->stopWatcher();
}

void CloudFileWatcherPrivate::onLocalFileDeleted(const QUrl &url)
{
    const QUrl cloudUrl = NubixUtils::localToCloud(url);
    Q_EMIT q->fileDeleted(cloudUrl);
    // After the views heard of it, so that they may still read the old status.
    NubixCaches::instance()->removeFileCache(cloudUrl.path(QUrl::FullyDecoded));
}

void CloudFileWatcherPrivate::onLocalFileAttrChanged(const QUrl &url)
{
    Q_EMIT q->fileAttributeChanged(NubixUtils::localToCloud(url));
}

void CloudFileWatcherPrivate::onLocalSubFileCreated(const QUrl &url)
{
    Q_EMIT q->subfileCreated(NubixUtils::localToCloud(url));
}

void CloudFileWatcherPrivate::onLocalFileRenamed(const QUrl &fromUrl, const QUrl &toUrl)
{
    Q_EMIT q->fileRename(NubixUtils::localToCloud(fromUrl), NubixUtils::localToCloud(toUrl));
}

}   // namespace hfmplugin_nubix
