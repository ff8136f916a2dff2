// SPDX-License-Identifier: GPL-3.0-or-later
#include "localfilewatcher.h"

#include "hfmbase/infofactory.h"
#include "hfmbaselog.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace hfmio {

namespace {

constexpr uint32_t kWatchMask = IN_CREATE | IN_DELETE | IN_ATTRIB | IN_CLOSE_WRITE | IN_MODIFY | IN_MOVED_FROM
    | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;

enum class Change { Created, Deleted, Changed, Renamed };

struct Report
{
    Change change;
    QUrl url;
    QUrl toUrl;
};

QString errnoText()
{
    return QString::fromLocal8Bit(strerror(errno));
}

}   // namespace

LocalFileWatcher::LocalFileWatcher(const QUrl &url, QObject *parent)
    : AbstractFileWatcher(new LocalFileWatcherPrivate(url, this), parent)
{
}

LocalFileWatcher::~LocalFileWatcher()
{
    stopWatcher();
}

LocalFileWatcherPrivate::LocalFileWatcherPrivate(const QUrl &fileUrl, hfmbase::AbstractFileWatcher *qq)
    : AbstractFileWatcherPrivate(fileUrl, qq),
      path(fileUrl.isLocalFile() ? QDir::cleanPath(fileUrl.toLocalFile()) : QString())
{
}

LocalFileWatcherPrivate::~LocalFileWatcherPrivate()
{
    closeWatch();
}

bool LocalFileWatcherPrivate::start()
{
    if (fd >= 0)
        return true;
    if (path.isEmpty()) {
        hfmbase::warnAt(
            "LocalFileWatcher::startWatcher", QStringLiteral("not a local file: \"%1\"").arg(url.toString()));
        return false;
    }
    if (QThread::currentThread() != thread()) {
        hfmbase::warnAt(
            "LocalFileWatcher::startWatcher", QStringLiteral("must be started in the thread the watcher lives in"));
        return false;
    }
    fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0) {
        hfmbase::warnAt("LocalFileWatcher::startWatcher", QStringLiteral("inotify_init1: %1").arg(errnoText()));
        return false;
    }
    wd = inotify_add_watch(fd, QFile::encodeName(path).constData(), kWatchMask);
    if (wd < 0) {
        hfmbase::warnAt(
            "LocalFileWatcher::startWatcher", QStringLiteral("cannot watch \"%1\": %2").arg(path, errnoText()));
        closeWatch();
        return false;
    }
    notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &LocalFileWatcherPrivate::readEvents);
    return true;
}

bool LocalFileWatcherPrivate::stop()
{
    closeWatch();
    return true;
}

void LocalFileWatcherPrivate::closeWatch()
{
    if (notifier) {
        // May run inside the notifier's own signal: let it go later.
        notifier->setEnabled(false);
        notifier->deleteLater();
        notifier = nullptr;
    }
    if (fd >= 0) {
        ::close(fd);   // also drops the watch
        fd = -1;
    }
    wd = -1;
}

QUrl LocalFileWatcherPrivate::childUrl(const char *name) const
{
    return QUrl::fromLocalFile(path + QLatin1Char('/') + QFile::decodeName(name));
}

void LocalFileWatcherPrivate::readEvents()
{
    QList<Report> reports;
    QHash<uint32_t, QUrl> movedAway;   // by cookie, waiting for their other half
    bool selfGone = false;
    bool overflow = false;

    // Read until the queue is empty so that the two halves of a rename that
    // straddle one buffer still meet.
    alignas(inotify_event) char buffer[64 * 1024];
    while (fd >= 0) {
        const ssize_t length = ::read(fd, buffer, sizeof(buffer));
        if (length <= 0) {
            if (length < 0 && errno == EINTR)
                continue;
            break;
        }
        for (ssize_t offset = 0; offset + ssize_t(sizeof(inotify_event)) <= length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + offset);
            offset += sizeof(inotify_event) + event->len;
            if (offset > length)
                break;   // a truncated record cannot be trusted

            if (event->mask & IN_Q_OVERFLOW) {
                overflow = true;
                continue;
            }
            if (event->wd != wd)
                continue;
            const bool named = event->len > 0 && event->name[0] != '\0';
            if (!named) {
                if (event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED))
                    selfGone = true;
                else if (event->mask & (IN_ATTRIB | IN_CLOSE_WRITE | IN_MODIFY))
                    reports.append({Change::Changed, url, QUrl()});
                continue;
            }

            const QUrl child = childUrl(event->name);
            if (event->mask & IN_MOVED_FROM) {
                movedAway.insert(event->cookie, child);
                reports.append({Change::Deleted, child, QUrl()});   // becomes a rename if its pair arrives
            } else if (event->mask & IN_MOVED_TO) {
                auto from = movedAway.find(event->cookie);
                if (from == movedAway.end()) {
                    reports.append({Change::Created, child, QUrl()});
                } else {
                    for (Report &r : reports) {
                        if (r.change == Change::Deleted && r.url == from.value() && r.toUrl.isEmpty()) {
                            r = {Change::Renamed, from.value(), child};
                            break;
                        }
                    }
                    movedAway.erase(from);
                }
            } else if (event->mask & IN_CREATE) {
                reports.append({Change::Created, child, QUrl()});
            } else if (event->mask & IN_DELETE) {
                reports.append({Change::Deleted, child, QUrl()});
            } else if (event->mask & (IN_ATTRIB | IN_CLOSE_WRITE | IN_MODIFY)) {
                // A long write modifies many times; one report per batch is enough.
                bool known = false;
                for (const Report &r : reports)
                    known = known || (r.change == Change::Changed && r.url == child);
                if (!known)
                    reports.append({Change::Changed, child, QUrl()});
            }
        }
    }

    if (overflow) {
        hfmbase::warnAt("LocalFileWatcher::readEvents",
            QStringLiteral("events of \"%1\" were lost; reporting the directory as changed").arg(path));
        reports.append({Change::Changed, url, QUrl()});
    }
    if (selfGone) {
        reports.append({Change::Deleted, url, QUrl()});
        closeWatch();
        started = false;
    }

    // A receiver may delete the watcher while we emit.
    QPointer<LocalFileWatcherPrivate> alive(this);
    hfmbase::AbstractFileWatcher *watcher = q;
    hfmbase::InfoCache &infos = hfmbase::InfoCache::instance();
    for (const Report &r : qAsConst(reports)) {
        if (!alive)
            return;
        infos.removeCacheInfo(r.url);
        switch (r.change) {
        case Change::Created:
            Q_EMIT watcher->subfileCreated(r.url);
            break;
        case Change::Deleted:
            Q_EMIT watcher->fileDeleted(r.url);
            break;
        case Change::Changed:
            Q_EMIT watcher->fileAttributeChanged(r.url);
            break;
        case Change::Renamed:
            infos.removeCacheInfo(r.toUrl);
            Q_EMIT watcher->fileRename(r.url, r.toUrl);
            break;
        }
    }
}

}   // namespace hfmio
