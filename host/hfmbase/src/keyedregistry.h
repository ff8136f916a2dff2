// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbase/metatypes.h"
#include "hfmbaselog.h"

#include <QHash>
#include <QString>
#include <mutex>
#include <shared_mutex>

namespace hfmbase {

// A thread-safe table of values by key (a scheme or a suffix) that refuses a
// second value for a key. Shared by the factories and the URL routes.
template <class Value> class KeyedRegistry
{
public:
    // `where` is the "Class::method" prefix of the warning; `what` names the
    // key kind in messages ("scheme", "suffix").
    bool add(const QString &key, Value value, const char *where, const char *what, QString *errorString)
    {
        QString error;
        if (key.isEmpty()) {
            error = QStringLiteral("cannot register an empty %1").arg(QLatin1String(what));
        } else {
            std::unique_lock<std::shared_mutex> locker(lock);
            if (!table.contains(key)) {
                table.insert(key, std::move(value));
                return true;
            }
            error = QStringLiteral("the %1 \"%2\" is already registered").arg(QLatin1String(what), key);
        }
        warnAt(where, error, errorString);
        return false;
    }

    // As add(), but first refuses a value that holds no creator.
    bool addCreator(const QString &key, Value value, const char *where, const char *what, QString *errorString)
    {
        if (!value) {
            warnAt(
                where, QStringLiteral("no creator given for the %1 \"%2\"").arg(QLatin1String(what), key), errorString);
            return false;
        }
        return add(key, std::move(value), where, what, errorString);
    }

    bool find(const QString &key, Value *out) const
    {
        std::shared_lock<std::shared_mutex> locker(lock);
        auto it = table.constFind(key);
        if (it == table.constEnd())
            return false;
        *out = it.value();
        return true;
    }

    bool contains(const QString &key) const
    {
        std::shared_lock<std::shared_mutex> locker(lock);
        return table.contains(key);
    }

    QStringList keys() const
    {
        std::shared_lock<std::shared_mutex> locker(lock);
        return table.keys();
    }

private:
    mutable std::shared_mutex lock;
    QHash<QString, Value> table;
};

// A registry by scheme whose "file" entry is the host's own, made on first
// use. Never destroyed: its creators may live in plug-ins unloaded before exit,
// and late readers at exit still find it.
template <class Value> KeyedRegistry<Value> *makeSchemeRegistry(Value fileEntry, const char *where)
{
    registerMetaTypes();
    auto *registry = new KeyedRegistry<Value>;
    registry->add(QStringLiteral("file"), std::move(fileEntry), where, "scheme", nullptr);
    return registry;
}

// Fills an optional error string.
inline void setError(QString *errorString, const QString &text)
{
    if (errorString)
        *errorString = text;
}

}   // namespace hfmbase
