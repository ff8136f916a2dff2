// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QObject>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QUrl>

#include <functional>

namespace hfmbase {

class AbstractFileWatcherPrivate;

// Reports changes of one watched directory (or file). Signals are emitted on
// the thread the watcher lives in. startWatcher()/stopWatcher() call the
// private part's start()/stop(); the watcher owns its private part.
class HFMBASE_EXPORT AbstractFileWatcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractFileWatcher)
public:
    ~AbstractFileWatcher() override;

    QUrl url() const;
    bool startWatcher();
    bool stopWatcher();
    bool isStarted() const;

Q_SIGNALS:
    void fileDeleted(const QUrl &url);
    void fileAttributeChanged(const QUrl &url);
    void subfileCreated(const QUrl &url);
    void fileRename(const QUrl &fromUrl, const QUrl &toUrl);

protected:
    explicit AbstractFileWatcher(AbstractFileWatcherPrivate *dd, QObject *parent = nullptr);

    QScopedPointer<AbstractFileWatcherPrivate> d;
};

using AbstractFileWatcherPointer = QSharedPointer<AbstractFileWatcher>;

// Creates watchers by URL scheme ("file" is the host's own). With `cache`
// true, watchers of the same URL are shared unless caching is off for the
// scheme. Thread-safe.
class HFMBASE_EXPORT WatcherFactory
{
public:
    using Creator = std::function<AbstractFileWatcherPointer(const QUrl &url)>;

    template <class T> static bool regClass(const QString &scheme, QString *errorString = nullptr)
    {
        return regCreator(
            scheme, [](const QUrl &url) { return AbstractFileWatcherPointer(new T(url)); }, errorString);
    }
    template <class T = AbstractFileWatcher>
    static QSharedPointer<T> create(const QUrl &url, bool cache = true, QString *errorString = nullptr)
    {
        return qSharedPointerDynamicCast<T>(createWatcher(url, cache, errorString));
    }

    static bool regCreator(const QString &scheme, Creator creator, QString *errorString);
    static AbstractFileWatcherPointer createWatcher(const QUrl &url, bool cache, QString *errorString);
    static bool isRegistered(const QString &scheme);
};

// Shares watchers per URL. Thread-safe.
class HFMBASE_EXPORT WatcherCache
{
public:
    static WatcherCache &instance();

    void setCacheDisbale(const QString &scheme, bool disable = true);
    bool cacheDisable(const QString &scheme) const;
    AbstractFileWatcherPointer getCacheWatcher(const QUrl &url) const;
    void cacheWatcher(const QUrl &url, const AbstractFileWatcherPointer &watcher);
    void removeCacheWatcher(const QUrl &url);

private:
    WatcherCache();
    ~WatcherCache();
    struct Private;
    Private *d;
};

}   // namespace hfmbase
