// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbase/abstractfilewatcherprivate.h"

#include <QByteArray>
#include <QHash>

class QSocketNotifier;

namespace hfmio {

// Watches one local directory (or file) with inotify. A rename inside the
// directory is reported as one fileRename; the watcher's signals come from
// the thread it lives in, and start/stop must be called there too.
class LocalFileWatcher : public hfmbase::AbstractFileWatcher
{
    Q_OBJECT
public:
    explicit LocalFileWatcher(const QUrl &url, QObject *parent = nullptr);
    ~LocalFileWatcher() override;
};

class LocalFileWatcherPrivate : public hfmbase::AbstractFileWatcherPrivate
{
    Q_OBJECT
public:
    LocalFileWatcherPrivate(const QUrl &fileUrl, hfmbase::AbstractFileWatcher *qq);
    ~LocalFileWatcherPrivate() override;

    bool start() override;
    bool stop() override;

private:
    void readEvents();
    void closeWatch();
    QUrl childUrl(const char *name) const;

    QString path;
    int fd = -1;
    int wd = -1;
    QSocketNotifier *notifier = nullptr;
};

}   // namespace hfmio
