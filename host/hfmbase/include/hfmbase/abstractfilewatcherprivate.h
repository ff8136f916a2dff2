// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractfilewatcher.h>

namespace hfmbase {

// State of a watcher: the watched URL and the public object. Subclasses
// implement start()/stop(); the public watcher owns this object.
class HFMBASE_EXPORT AbstractFileWatcherPrivate : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractFileWatcherPrivate)
public:
    AbstractFileWatcherPrivate(const QUrl &fileUrl, AbstractFileWatcher *qq);
    ~AbstractFileWatcherPrivate() override;

    virtual bool start() = 0;
    virtual bool stop() = 0;

    QUrl url;
    AbstractFileWatcher *q = nullptr;
    bool started = false;
};

}   // namespace hfmbase
