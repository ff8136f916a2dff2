// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "caches/syncrecords.h"

#include <QHash>
#include <QObject>
#include <QQueue>

#include <shared_mutex>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

namespace hfmplugin_nubix {

// The latest state learnt from the sync client: account, sync summary and
// the status of single files, plus the summary's copy in an INI file.
// Lives in the GUI thread, where its slots and signals run. The host's
// iterators, file infos and watchers call syncRoot() and removeFileCache()
// from their own worker threads, so those and every getter are safe from any
// thread: the state sits behind a lock and getters return copies. Nothing
// blocks beyond that lock.
class NubixCaches : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixCaches)
public:
    static NubixCaches *instance();

    // instance() is the one the plug-in uses; other objects serve tests.
    explicit NubixCaches(QObject *parent = nullptr);
    ~NubixCaches() override;

    QString syncRoot() const;
    SyncInfo syncInfo() const;
    UserInfo userInfo() const;

    // Replaces the account and storage figures; emits nothing, saves nothing.
    void setUserInfo(const UserInfo &info);
    // Replaces the whole summary; emits syncRootChanged when the root text
    // differs, then syncInfoUpdated. GUI thread.
    void setSyncInfo(const SyncInfo &info);

    // The entry stored under exactly this cloud path, or a default record.
    FileData fileData(const QString &path) const;
    // Stores each entry under its path and asks the file view to repaint it
    // (one "slot_Model_FileUpdate" per entry), in the order reported. A long
    // list is worked off a few milliseconds per turn of the event loop, and
    // entries reported meanwhile wait behind it. GUI thread.
    void cacheFileDatas(const QList<FileData> &datas);
    // Drops the entry stored under exactly this cloud path, if any.
    void removeFileCache(const QString &path);

    // Asks the client for the status of every nubix folder an open window
    // shows, and of its children. GUI thread.
    void requestDirStatus();

    // The INI file that keeps the summary between runs.
    static QString cachePath();
    void loadCache();
    void saveCache();

Q_SIGNALS:
    void syncRootChanged(const QString &root);
    void syncInfoUpdated();

private:
    void connectHandler();
    // Puts one entry in place; the caller holds the lock for writing.
    void store(const FileData &data);
    // Works off waiting entries until the turn's budget is spent.
    void storeWaiting();
    void queueStoring();

    // A plain reader-writer lock: cheap when uncontended, and visible to
    // thread checkers. Never held while a signal is emitted.
    mutable std::shared_mutex lock;
    UserInfo user;
    SyncInfo sync;
    // Keyed by the exact cloud path. Nothing needs the entries in order, and
    // a hash keeps the emblem lookups short among many long, alike paths.
    QHash<QString, FileData> files;
    QTimer *saveTimer = nullptr;
    QQueue<FileData> waiting;
    bool storeQueued = false;
};

}   // namespace hfmplugin_nubix
