// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/infofactory.h"

#include "infofactory_p.h"
#include "keyedregistry.h"
#include "localfileinfo.h"

#include <QSet>

namespace hfmbase {

namespace {

struct InfoEntry
{
    InfoFactory::Creator creator;
    InfoFactory::RegOptions options;
    explicit operator bool() const { return bool(creator); }
};

FileInfoPointer createLocalInfo(const QUrl &url)
{
    return FileInfoPointer(new hfmio::LocalFileInfo(url));
}

KeyedRegistry<InfoEntry> &registry()
{
    static auto *r = makeSchemeRegistry(InfoEntry {createLocalInfo, {}}, "InfoFactory::regCreator");
    return *r;
}

// Cache keys ignore a trailing slash: "file:///a/" and "file:///a" are one file.
QUrl cacheKey(const QUrl &url)
{
    const QString path = url.path();
    if (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        return url.adjusted(QUrl::StripTrailingSlash);
    return url;
}

// An upper bound so that a long session does not keep every file it ever saw.
constexpr int kMaxCachedInfos = 100000;

}   // namespace

bool InfoFactory::regCreator(const QString &scheme, Creator creator, RegOptions options, QString *errorString)
{
    return registry().addCreator(
        scheme, InfoEntry {std::move(creator), options}, "InfoFactory::regCreator", "scheme", errorString);
}

FileInfoPointer InfoFactory::createInfo(const QUrl &url, CreateType type, QString *errorString)
{
    if (!url.isValid() || url.scheme().isEmpty()) {
        warnAt("InfoFactory::createInfo",
            QStringLiteral("cannot make an info for the invalid URL \"%1\"").arg(url.toString()), errorString);
        return {};
    }
    const QString scheme = url.scheme();
    InfoEntry entry;
    if (!registry().find(scheme, &entry)) {
        warnAt("InfoFactory::createInfo",
            QStringLiteral("no info class is registered for the scheme \"%1\"").arg(scheme), errorString);
        return {};
    }

    const bool useCache = type != CreateType::kCreateNoCache && !(entry.options & RegOption::kNoCache)
        && !InfoCache::instance().cacheDisable(scheme);
    if (useCache) {
        if (FileInfoPointer cached = InfoCache::instance().getCacheInfo(url))
            return cached;
    }
    FileInfoPointer info = entry.creator(url);
    if (!info) {
        setError(errorString, QStringLiteral("the creator of the scheme \"%1\" made no info").arg(scheme));
        return {};
    }
    if (useCache)
        InfoCache::instance().cacheInfo(url, info);
    return info;
}

bool InfoFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

FileInfoPointer createLocalEntryInfo(const QUrl &url, const QFileInfo &entry)
{
    // "file" always belongs to the host's own info (a second registration is
    // refused), so the entry's status can be handed over as it is. Listing
    // does not fill the cache (that would cost more than the listing's own
    // overhead), but an info the cache already holds is replaced by the
    // fresh one so that nobody is served stale status afterwards.
    FileInfoPointer info(new hfmio::LocalFileInfo(url, entry));
    InfoCache::instance().updateCacheInfo(url, info);
    return info;
}

// ---------------------------------------------------------------------------

struct InfoCache::Private
{
    mutable std::shared_mutex lock;
    QSet<QString> disabledSchemes;
    QHash<QUrl, FileInfoPointer> infos;
};

InfoCache::InfoCache() : d(new Private) { }

InfoCache::~InfoCache()
{
    delete d;
}

InfoCache &InfoCache::instance()
{
    // Never destroyed: kept infos may be of classes from plug-ins unloaded
    // before exit, and late users at exit still find it.
    static auto *cache = new InfoCache;
    return *cache;
}

void InfoCache::setCacheDisbale(const QString &scheme, bool disable)
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    if (disable) {
        d->disabledSchemes.insert(scheme);
        // Drop what was kept so far: nothing of the scheme is served any more.
        for (auto it = d->infos.begin(); it != d->infos.end();) {
            if (it.key().scheme() == scheme)
                it = d->infos.erase(it);
            else
                ++it;
        }
    } else {
        d->disabledSchemes.remove(scheme);
    }
}

bool InfoCache::cacheDisable(const QString &scheme) const
{
    std::shared_lock<std::shared_mutex> locker(d->lock);
    return d->disabledSchemes.contains(scheme);
}

FileInfoPointer InfoCache::getCacheInfo(const QUrl &url) const
{
    std::shared_lock<std::shared_mutex> locker(d->lock);
    if (d->disabledSchemes.contains(url.scheme()))
        return {};
    return d->infos.value(cacheKey(url));
}

void InfoCache::cacheInfo(const QUrl &url, const FileInfoPointer &info)
{
    if (!url.isValid() || !info)
        return;
    const QUrl key = cacheKey(url);
    FileInfoPointer replaced;   // destroyed after the lock is released
    std::unique_lock<std::shared_mutex> locker(d->lock);
    if (d->disabledSchemes.contains(url.scheme()))
        return;
    auto it = d->infos.find(key);
    if (it != d->infos.end()) {
        replaced.swap(it.value());
        it.value() = info;
        return;
    }
    if (d->infos.size() >= kMaxCachedInfos)
        d->infos.clear();
    d->infos.insert(key, info);
}

bool InfoCache::updateCacheInfo(const QUrl &url, const FileInfoPointer &info)
{
    if (!info)
        return false;
    const QUrl key = cacheKey(url);
    FileInfoPointer replaced;   // destroyed after the lock is released
    std::unique_lock<std::shared_mutex> locker(d->lock);
    auto it = d->infos.find(key);
    if (it == d->infos.end())
        return false;
    replaced.swap(it.value());
    it.value() = info;
    return true;
}

void InfoCache::removeCacheInfo(const QUrl &url)
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    d->infos.remove(cacheKey(url));
}

void InfoCache::clear()
{
    std::unique_lock<std::shared_mutex> locker(d->lock);
    d->infos.clear();
}

}   // namespace hfmbase
