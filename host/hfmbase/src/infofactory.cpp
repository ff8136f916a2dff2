// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/infofactory.h"

#include "infofactory_p.h"
#include "keyedregistry.h"
#include "localfileinfo.h"
#include "urlcache.h"

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

struct InfoCache::Private : UrlCache<FileInfoPointer>
{
    Private() : UrlCache(cacheKey) { }

    // Swaps in a fresher info; the old one goes to `old` so that it is
    // destroyed after the lock is released.
    static bool replace(Table &infos, const QUrl &key, const FileInfoPointer &info, FileInfoPointer *old)
    {
        auto it = infos.find(key);
        if (it == infos.end())
            return false;
        old->swap(it.value());
        it.value() = info;
        return true;
    }
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
    d->setDisabled(scheme, disable);
}

bool InfoCache::cacheDisable(const QString &scheme) const
{
    return d->isDisabled(scheme);
}

FileInfoPointer InfoCache::getCacheInfo(const QUrl &url) const
{
    return d->value(url);
}

void InfoCache::cacheInfo(const QUrl &url, const FileInfoPointer &info)
{
    if (!url.isValid() || !info)
        return;
    FileInfoPointer replaced;
    d->write(url, [&](Private::Table &infos, const QUrl &key) {
        if (Private::replace(infos, key, info, &replaced))
            return;
        if (infos.size() >= kMaxCachedInfos)
            infos.clear();
        infos.insert(key, info);
    });
}

bool InfoCache::updateCacheInfo(const QUrl &url, const FileInfoPointer &info)
{
    if (!info)
        return false;
    FileInfoPointer replaced;
    bool kept = false;
    d->write(
        url, [&](Private::Table &infos, const QUrl &key) { kept = Private::replace(infos, key, info, &replaced); });
    return kept;
}

void InfoCache::removeCacheInfo(const QUrl &url)
{
    d->remove(url);
}

void InfoCache::clear()
{
    d->clear();
}

}   // namespace hfmbase
