// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractfilewatcher.h"

#include "hfmbase/abstractfilewatcherprivate.h"
#include "keyedregistry.h"
#include "localfilewatcher.h"
#include "urlcache.h"

#include <QWeakPointer>

namespace hfmbase {

AbstractFileWatcherPrivate::AbstractFileWatcherPrivate(const QUrl &fileUrl, AbstractFileWatcher *qq)
    : url(fileUrl), q(qq)
{
}

AbstractFileWatcherPrivate::~AbstractFileWatcherPrivate() = default;

// ---------------------------------------------------------------------------

AbstractFileWatcher::AbstractFileWatcher(AbstractFileWatcherPrivate *dd, QObject *parent) : QObject(parent), d(dd)
{
    // As a child the private part follows the watcher into another thread;
    // the scoped pointer still deletes it first.
    if (d)
        d->setParent(this);
}

AbstractFileWatcher::~AbstractFileWatcher() = default;

QUrl AbstractFileWatcher::url() const
{
    return d ? d->url : QUrl();
}

bool AbstractFileWatcher::startWatcher()
{
    if (!d)
        return false;
    if (d->started)
        return true;
    d->started = d->start();
    return d->started;
}

bool AbstractFileWatcher::stopWatcher()
{
    if (!d)
        return false;
    if (!d->started)
        return true;
    const bool ok = d->stop();
    d->started = false;
    return ok;
}

bool AbstractFileWatcher::isStarted() const
{
    return d && d->started;
}

// ---------------------------------------------------------------------------

namespace {

KeyedRegistry<WatcherFactory::Creator> &registry()
{
    static auto *r = makeSchemeRegistry<WatcherFactory::Creator>(
        [](const QUrl &url) { return AbstractFileWatcherPointer(new hfmio::LocalFileWatcher(url)); },
        "WatcherFactory::regCreator");
    return *r;
}

QUrl watcherKey(const QUrl &url)
{
    return url.adjusted(QUrl::StripTrailingSlash);
}

}   // namespace

bool WatcherFactory::regCreator(const QString &scheme, Creator creator, QString *errorString)
{
    return registry().addCreator(scheme, std::move(creator), "WatcherFactory::regCreator", "scheme", errorString);
}

AbstractFileWatcherPointer WatcherFactory::createWatcher(const QUrl &url, bool cache, QString *errorString)
{
    Creator creator;
    if (!url.isValid() || !registry().find(url.scheme(), &creator)) {
        warnAt("WatcherFactory::createWatcher",
            url.isValid() ? QStringLiteral("no watcher class is registered for the scheme \"%1\"").arg(url.scheme())
                          : QStringLiteral("cannot watch the invalid URL \"%1\"").arg(url.toString()),
            errorString);
        return {};
    }
    WatcherCache &watchers = WatcherCache::instance();
    const bool useCache = cache && !watchers.cacheDisable(url.scheme());
    if (useCache) {
        if (AbstractFileWatcherPointer shared = watchers.getCacheWatcher(url))
            return shared;
    }
    AbstractFileWatcherPointer watcher = creator(url);
    if (!watcher) {
        setError(errorString, QStringLiteral("the creator of the scheme \"%1\" made no watcher").arg(url.scheme()));
        return {};
    }
    if (useCache)
        watchers.cacheWatcher(url, watcher);
    return watcher;
}

bool WatcherFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

// ---------------------------------------------------------------------------

// Holds weak references: a watcher is shared while somebody uses it and goes
// away with its last user.
struct WatcherCache::Private : UrlCache<QWeakPointer<AbstractFileWatcher>>
{
    Private() : UrlCache(watcherKey) { }
};

WatcherCache::WatcherCache() : d(new Private) { }

WatcherCache::~WatcherCache()
{
    delete d;
}

WatcherCache &WatcherCache::instance()
{
    // Never destroyed, so that late users at exit still find it.
    static auto *cache = new WatcherCache;
    return *cache;
}

void WatcherCache::setCacheDisbale(const QString &scheme, bool disable)
{
    d->setDisabled(scheme, disable);
}

bool WatcherCache::cacheDisable(const QString &scheme) const
{
    return d->isDisabled(scheme);
}

AbstractFileWatcherPointer WatcherCache::getCacheWatcher(const QUrl &url) const
{
    return d->value(url).toStrongRef();
}

void WatcherCache::cacheWatcher(const QUrl &url, const AbstractFileWatcherPointer &watcher)
{
    if (!url.isValid() || !watcher)
        return;
    d->write(url, [&watcher](Private::Table &watchers, const QUrl &key) {
        // Forget watchers nobody uses any more before adding one.
        for (auto it = watchers.begin(); it != watchers.end();)
            it = it.value().isNull() ? watchers.erase(it) : std::next(it);
        watchers.insert(key, watcher);
    });
}

void WatcherCache::removeCacheWatcher(const QUrl &url)
{
    d->remove(url);
}

}   // namespace hfmbase
