// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QSet>
#include <QUrl>
#include <mutex>
#include <shared_mutex>

namespace hfmbase {

// Values kept by URL, with keeping switched off per scheme; thread-safe. The
// info cache and the watcher cache are built on it. `keyOf` folds the URLs
// that name one file into one key.
template <class Value> class UrlCache
{
public:
    using Table = QHash<QUrl, Value>;

    explicit UrlCache(QUrl (*keyOf)(const QUrl &)) : keyOf(keyOf) { }

    void setDisabled(const QString &scheme, bool disable)
    {
        std::unique_lock<std::shared_mutex> locker(lock);
        if (!disable) {
            disabledSchemes.remove(scheme);
            return;
        }
        // Drop what was kept so far: nothing of the scheme is served any more.
        disabledSchemes.insert(scheme);
        for (auto it = table.begin(); it != table.end();)
            it = it.key().scheme() == scheme ? table.erase(it) : std::next(it);
    }

    bool isDisabled(const QString &scheme) const
    {
        std::shared_lock<std::shared_mutex> locker(lock);
        return disabledSchemes.contains(scheme);
    }

    // Empty when nothing is kept for `url` or its scheme is off.
    Value value(const QUrl &url) const
    {
        std::shared_lock<std::shared_mutex> locker(lock);
        return disabledSchemes.contains(url.scheme()) ? Value() : table.value(keyOf(url));
    }

    // Runs `change(table, key)` under the write lock unless the scheme of
    // `url` is off.
    template <class Change> void write(const QUrl &url, Change change)
    {
        const QUrl key = keyOf(url);
        std::unique_lock<std::shared_mutex> locker(lock);
        if (!disabledSchemes.contains(url.scheme()))
            change(table, key);
    }

    void remove(const QUrl &url)
    {
        const QUrl key = keyOf(url);
        std::unique_lock<std::shared_mutex> locker(lock);
        table.remove(key);
    }

    void clear()
    {
        std::unique_lock<std::shared_mutex> locker(lock);
        table.clear();
    }

private:
    QUrl (*const keyOf)(const QUrl &);
    mutable std::shared_mutex lock;
    QSet<QString> disabledSchemes;
    Table table;
};

}   // namespace hfmbase
