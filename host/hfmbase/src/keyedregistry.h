// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbaselog.h"

#include <QHash>
#include <QString>
#include <mutex>
#include <shared_mutex>

namespace hfmbase {

// A thread-safe table of values by key (a scheme or a suffix) that refuses a
// second value for a key. Shared by the factories.
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
        warnAt(where, error);
        if (errorString)
            *errorString = error;
        return false;
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

// Fills an optional error string.
inline void setError(QString *errorString, const QString &text)
{
    if (errorString)
        *errorString = text;
}

}   // namespace hfmbase
