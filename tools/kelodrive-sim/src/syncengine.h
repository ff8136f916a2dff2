// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <kelodrivesim/simulator.h>

#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QRegularExpression>
#include <QSet>
#include <QTimer>

class QFileInfo;

namespace kelodrive {

// The simulated sync engine: watches a real folder, moves new or changed files through
// statuses 1, 2 and 3 (or 10) one step per pace tick, and writes simulated downloads.
// Runs in its owner's thread from the event loop; never blocks for long.
class SyncEngine : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SyncEngine)

public:
    explicit SyncEngine(QObject *parent = nullptr);
    ~SyncEngine() override;

    bool setRoot(const QString &localDir);
    void clearRoot();
    QString root() const { return m_root; }
    bool hasRoot() const { return !m_root.isEmpty(); }
    bool rootExists() const;

    // Cloud paths; relative ones are taken below the root. Returns the normalised list.
    QStringList setBanDirs(const QStringList &dirs);
    QStringList banDirs() const { return m_banDirs; }
    void setFailPatterns(const QStringList &patterns);
    QStringList failPatterns() const { return m_failPatterns; }
    void setPaceMs(int ms);
    int paceMs() const { return m_paceMs; }
    void setRescanMs(int ms);
    // Uploads and downloads each wait while blocked (paused, offline, out of space...).
    void setBlocked(bool uploads, bool downloads);

    SyncCounts counts() const;
    // Entries for a cloud path: the item itself, or its children when listChildren is set.
    // ok is false for a path that is not a cloud path.
    QList<FileEntry> status(const QString &cloudPath, bool listChildren, bool *ok) const;
    bool startDownload(const QString &cloudPath, qint64 size, int chunks);
    void rescan();

    // "/a/b" from "/a/./b/" etc.; ok false for relative paths or paths leaving the root.
    static QString normalizeCloudPath(const QString &path, bool *ok);

Q_SIGNALS:
    void fileStatusChanged(const kelodrive::FileEntry &entry);
    void countsChanged(const kelodrive::SyncCounts &counts);
    void downloadFinished(const QString &cloudPath);
    void rootPresenceChanged(bool exists);

private:
    enum class Kind { Upload, Download };
    struct Item
    {
        bool isDir = false;
        QString plan;
        int status = 3;
        int planError = 0;
        qint64 size = -1;
        qint64 mtime = -1;
    };
    struct Job
    {
        QString path;
        Kind kind = Kind::Upload;
        qint64 size = 0;
        int chunks = 1;
        int chunksDone = 0;
    };

    QString toLocal(const QString &cloudPath) const;
    QString toCloud(const QString &localPath) const;
    static QString parentOf(const QString &cloudPath);
    static QString childOf(const QString &cloudDir, const QString &name);
    bool isBanned(const QString &cloudPath) const;
    bool shouldFail(const QString &cloudPath) const;
    qint64 idFor(const QString &cloudPath) const;
    FileEntry entryFor(const QString &cloudPath, const QFileInfo &info) const;
    FileEntry itemEntry(const QString &cloudPath, const Item &item) const;

    void resetState();
    void scanDir(const QString &cloudDir, bool recursive);
    void addItem(const QString &cloudPath, const Item &item);
    void removeItem(const QString &cloudPath);
    void setItemStatus(const QString &cloudPath, Item &item, int status);
    void enqueue(const QString &cloudPath, Kind kind, qint64 size = 0, int chunks = 1);
    void dequeue(const QString &cloudPath);
    void adjustAncestors(QHash<QString, int> &counter, const QString &cloudPath, int delta);
    void tick();
    enum class Step { Continue, Finished, Gone };
    Step advanceUpload(Job &job);
    Step advanceDownload(Job &job);
    void emitStatus(const QString &cloudPath);
    void countsDirty();
    void onDirectoryChanged(const QString &localPath);
    void scanDirtyDirs();
    void watch(const QString &localDir);

    QString m_root;
    bool m_rootPresent = false;
    bool m_initialScan = false;
    QStringList m_banDirs;
    QStringList m_failPatterns;
    QList<QRegularExpression> m_failRegexps;
    int m_paceMs = 500;
    int m_rescanMs = 2000;
    bool m_uploadsBlocked = false;
    bool m_downloadsBlocked = false;

    QHash<QString, Item> m_items;   // cloud path -> known file or folder
    QHash<QString, QSet<QString>> m_children;   // cloud folder -> known children
    mutable QHash<QString, qint64> m_ids;   // stable ids for every path ever reported
    mutable qint64 m_nextId = 1;
    QList<Job> m_queue;
    QHash<QString, Kind> m_queued;
    QHash<QString, int> m_activeUnder;   // folder -> queued items below it
    QHash<QString, int> m_failedUnder;   // folder -> failed items below it
    int m_todo = 0;
    int m_doing = 0;
    int m_done = 0;
    int m_failed = 0;

    QFileSystemWatcher m_watcher;
    QSet<QString> m_watched;
    // Folders to look at again; a listing that meets files no scan has seen adds to it.
    mutable QSet<QString> m_dirtyDirs;
    mutable QTimer m_debounce;
    QTimer m_tick;
    QTimer m_rescanTimer;
    QTimer m_countsTimer;
};

}   // namespace kelodrive
