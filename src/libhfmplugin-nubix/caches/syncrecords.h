// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace hfmplugin_nubix {

// Plain copyable values that mirror the sync client's state. They carry no
// behaviour; defaults are empty strings, zeros and false. Safe to copy
// between threads (implicitly shared Qt members only).

// Counts of files in the sync client's queues.
struct SyncQuantity
{
    qint32 todo = 0;
    qint32 doing = 0;
    qint32 done = 0;
    qint32 error = 0;
};

// The client's error conditions; true means the condition holds.
struct SyncError
{
    bool isPaused = false;
    bool isRemoteSpaceLow = false;
    bool isLocalSpaceLow = false;
    bool isLocalPathExist = false;
    bool isLocalPermitionForbid = false;
    bool isUnknown = false;
    bool isFlowEmpty = false;
    bool isOnline = false;
};

// The sync summary. isDisconnected is never read from the client: it marks a
// summary that no live client has confirmed (loaded from disk, or the
// connection dropped).
struct SyncInfo
{
    QString syncRoot;
    QStringList banDirs;
    SyncQuantity syncQuantity;
    SyncError syncErrors;
    bool syncInited = false;
    bool isPublicCloud = false;
    bool isDisconnected = false;
};

// Who is signed in, as the client sends it.
struct AccountInfo
{
    QString uid;
    QString phone;
    QString nickname;
    QString email;
    QString avatarLink;
    qint32 bookType = 0;
    bool isAdmin = false;
};

// The account and its storage figures, in bytes.
struct UserInfo
{
    AccountInfo account;
    qint64 free = 0;
    qint64 used = 0;
    qint64 total = 0;
    qint64 relative = 0;
    qint64 quota = 0;
};

// Sync status of one item; path is its cloud path ("/" + path below the root).
// planStatus: 1 and 2 syncing, 3 synced, 10 failed, anything else no status.
struct FileData
{
    QString path;
    bool isDir = false;
    qint64 fileId = 0;
    QString plan;
    qint32 planStatus = 0;
    qint32 planError = 0;
};

// Pages of the sync client's own window that it can be asked to show.
enum class PageType : qint32 {
    HomeWelcome = 0,
    HomeFile = 1,
    HomeFileDocs = 2,
    HomeFileRecycle = 3,
    HomeSync = 4,
    SyncList = 5,
    ErrorList = 6,
    Setting = 7,
};

// The fixed "navigate" payload of a page ("type" and, except for Setting,
// "args"); false and an untouched map for a value outside the enumeration.
// Thread-safe: the table is built once and only read.
bool navigatePayload(PageType page, QVariantMap *payload);

// Registers the records, QList<FileData> and PageType for queued signals.
// Idempotent and thread-safe.
void registerSyncRecordTypes();

}   // namespace hfmplugin_nubix

Q_DECLARE_METATYPE(hfmplugin_nubix::SyncQuantity)
Q_DECLARE_METATYPE(hfmplugin_nubix::SyncError)
Q_DECLARE_METATYPE(hfmplugin_nubix::SyncInfo)
Q_DECLARE_METATYPE(hfmplugin_nubix::AccountInfo)
Q_DECLARE_METATYPE(hfmplugin_nubix::UserInfo)
Q_DECLARE_METATYPE(hfmplugin_nubix::FileData)
Q_DECLARE_METATYPE(hfmplugin_nubix::PageType)
