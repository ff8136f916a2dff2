// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixcaches.h"

#include "ipc/nubixmessagehandler.h"
#include "nubixglobal.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hpf/event/event.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTimer>
#include <QUrl>

#include <cstring>
#include <mutex>

#include <sys/stat.h>

namespace hfmplugin_nubix {

namespace {
constexpr int kSaveDelayMs = 500;
// How long one turn of the event loop may spend storing entries and asking
// for repaints: an answer of ten thousand entries must not freeze the windows.
constexpr qint64 kStoreBudgetNs = 8 * 1000 * 1000;
// A list this long came in a message that took a while to read already: its
// entries start in the next turn.
constexpr int kLongList = 512;
const QString kWorkspaceSpace = QStringLiteral("hfmplugin_workspace");
const QString kFileUpdateSlot = QStringLiteral("slot_Model_FileUpdate");

const QString kKeyInited = QStringLiteral("Inited");
const QString kKeyIsPublic = QStringLiteral("IsPublic");
const QString kKeySyncRoot = QStringLiteral("SyncRoot");
const QString kKeyQuota = QStringLiteral("Quota");
const QString kKeySizeTotal = QStringLiteral("SizeTotal");
const QString kKeySizeUsed = QStringLiteral("SizeUsed");

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

// The item's URL: "nubix://" and the path, parsed as user input. For text
// that starts with a scheme and "//", user input parsing gives the URL parsed
// tolerantly whenever that is valid, so only other text takes its slower
// route (it also parses the text a second time, behind "http://").
QUrl cloudUrl(const QString &path)
{
    const QString text = QStringLiteral("nubix://") + path;
    const QUrl url(text.trimmed(), QUrl::TolerantMode);
    return url.isValid() ? url : QUrl::fromUserInput(text);
}
// The settings reader turns a value written "@Variant(...)" into whatever
// type its bytes name, and damaged bytes there crash it. This file only ever
// holds plain booleans, numbers and a path, so a file with such a value,
// spelt out or through escapes, is not one we wrote; it is left unread.
// Larger than any file we write: not ours either.
constexpr qint64 kMaxCacheFileBytes = 64 * 1024;

int digitValue(char c, int base)
{
    const int digit = (c >= '0' && c <= '9') ? c - '0'
        : (c >= 'a' && c <= 'f')             ? c - 'a' + 10
        : (c >= 'A' && c <= 'F')             ? c - 'A' + 10
                                             : -1;
    return digit < base ? digit : -1;
}

// The values' text as the reader decodes it, whatever the file's lines: an
// escape that only looks harmless here must not become "@Variant(" there.
// So quotes are dropped, a hex or octal escape takes every digit that
// follows and keeps the low 16 bits, "\x" without digits and unknown escapes
// ("\X" among them) give nothing, and a backslash before a line break joins
// the lines.
bool holdsSerializedValue(const QByteArray &bytes)
{
    QByteArray plain;
    plain.reserve(bytes.size());
    const int size = bytes.size();
    for (int i = 0; i < size; ++i) {
        const char c = bytes.at(i);
        if (c == '"')
            continue;
        if (c != '\\') {
            plain.append(c);
            continue;
        }
        if (++i >= size)
            break;
        const char next = bytes.at(i);
        if (next == 'x' || (next >= '0' && next <= '7')) {
            const int base = next >= '0' && next <= '7' ? 8 : 16;
            int end = base == 8 ? i : i + 1;
            const int start = end;
            quint16 code = 0;
            for (int digit; end < size && (digit = digitValue(bytes.at(end), base)) >= 0; ++end)
                code = quint16(code * base + digit);
            if (end > start)
                plain.append(code < 0x80 ? char(code) : '?');
            i = end - 1;
        } else if (next == '\n' || next == '\r') {
            // "\r\n" and "\n\r" are one line break.
            if (i + 1 < size && (bytes.at(i + 1) == '\n' || bytes.at(i + 1) == '\r') && bytes.at(i + 1) != next)
                ++i;
        } else if (next != '\0' && std::strchr("'\"?\\", next)) {
            plain.append(next);
        } else if (next != '\0' && std::strchr("abfnrtv", next)) {
            plain.append('\a');   // a control character: ends any word
        }
    }
    return plain.contains("@Variant(");
}

// Whether the settings reader may be given the file at all.
bool safeToRead(const QString &path)
{
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return true;   // nothing there: the reader finds no keys
    // A FIFO would block the start, a device never end.
    if (!S_ISREG(info.st_mode))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return true;   // unreadable: so it is for the reader too
    const QByteArray bytes = file.read(kMaxCacheFileBytes + 1);
    return bytes.size() <= kMaxCacheFileBytes && !holdsSerializedValue(bytes);
}
}   // namespace

NubixCaches *NubixCaches::instance()
{
    static NubixCaches caches;
    return &caches;
}

NubixCaches::NubixCaches(QObject *parent) : QObject(parent)
{
    registerSyncRecordTypes();
    saveTimer = new QTimer(this);

    const QString path = cachePath();
    if (!QFile::exists(path)) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            file.close();
    }
    loadCache();
    connectHandler();

    connect(saveTimer, &QTimer::timeout, this, &NubixCaches::saveCache);
    saveTimer->setSingleShot(true);
    saveTimer->setInterval(kSaveDelayMs);
}

NubixCaches::~NubixCaches()
{
    saveCache();
}

void NubixCaches::connectHandler()
{
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    connect(handler, &NubixMessageHandler::sigResponseUserInfo, this,
        [this](const QString &, const UserInfo &info) { setUserInfo(info); });
    connect(handler, &NubixMessageHandler::sigResponseSyncInfo, this, [this](const QString &, const SyncInfo &info) {
        setSyncInfo(info);
        saveTimer->start();
        // Without a root the client is not set up yet: let it show its set-up page.
        if (info.syncRoot.isEmpty())
            NubixMessageHandler::instance()->requestNavigate(PageType::HomeSync);
    });
    connect(handler, &NubixMessageHandler::sigResponseFileStatus, this,
        [this](const QString &, const QList<FileData> &datas) { cacheFileDatas(datas); });
    connect(handler, &NubixMessageHandler::sigFileSyncStatusChanged, this,
        [this](const FileData &data) { cacheFileDatas({data}); });
    connect(handler, &NubixMessageHandler::sigSyncErrorOccured, this, [this](const SyncError &errors) {
        WriteLock locker(lock);
        sync.syncErrors = errors;
    });
    connect(handler, &NubixMessageHandler::sigSyncQuantityChanged, this, [this](const SyncQuantity &quantity) {
        WriteLock locker(lock);
        sync.syncQuantity = quantity;
    });
    connect(handler, &NubixMessageHandler::sigBanDirsChanged, this, [this](const QStringList &dirs) {
        WriteLock locker(lock);
        sync.banDirs = dirs;
    });
    // The new root is taken over from the answer only; the handler asks for
    // it as well, so two requests go out per notification.
    connect(handler, &NubixMessageHandler::sigSyncRootChanged, this,
        [](const QString &) { NubixMessageHandler::instance()->requestSyncInfo(); });
    connect(handler, &NubixMessageHandler::sigConnected, this, [this] {
        NubixMessageHandler *h = NubixMessageHandler::instance();
        h->requestUserInfo();
        h->requestSyncInfo();
        requestDirStatus();
    });
    connect(handler, &NubixMessageHandler::sigDisconnected, this, [this] {
        {
            WriteLock locker(lock);
            sync.isDisconnected = true;
        }
        Q_EMIT syncInfoUpdated();
    });
}

QString NubixCaches::syncRoot() const
{
    ReadLock locker(lock);
    return sync.syncRoot;
}

SyncInfo NubixCaches::syncInfo() const
{
    ReadLock locker(lock);
    return sync;
}

UserInfo NubixCaches::userInfo() const
{
    ReadLock locker(lock);
    return user;
}

void NubixCaches::setUserInfo(const UserInfo &info)
{
    WriteLock locker(lock);
    user = info;
}

void NubixCaches::setSyncInfo(const SyncInfo &info)
{
    QString oldRoot;
    {
        WriteLock locker(lock);
        oldRoot = sync.syncRoot;
        sync = info;
    }
    if (oldRoot != info.syncRoot)
        Q_EMIT syncRootChanged(info.syncRoot);
    Q_EMIT syncInfoUpdated();
}

FileData NubixCaches::fileData(const QString &path) const
{
    ReadLock locker(lock);
    const auto it = files.constFind(path);
    return it == files.cend() ? FileData() : it.value();
}

void NubixCaches::cacheFileDatas(const QList<FileData> &datas)
{
    if (datas.isEmpty())
        return;
    // Behind whatever still waits, so that a later report always wins.
    waiting.append(datas);
    if (datas.size() < kLongList)
        storeWaiting();
    else
        queueStoring();
}

void NubixCaches::storeWaiting()
{
    QElapsedTimer budget;
    budget.start();
    hpf::EventChannelManager *channel = hpf::channel();
    while (!waiting.isEmpty()) {
        if (budget.nsecsElapsed() >= kStoreBudgetNs) {
            queueStoring();
            return;
        }
        const FileData data = waiting.dequeue();
        // One entry at a time, so that whoever repaints an item reads the
        // status it is being told about, and the lock is never held long.
        {
            WriteLock locker(lock);
            store(data);
        }
        // Every entry repaints its item, changed or not; parents are left alone.
        channel->push(kWorkspaceSpace, kFileUpdateSlot, cloudUrl(data.path));
    }
}

void NubixCaches::queueStoring()
{
    if (storeQueued)
        return;
    storeQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            storeQueued = false;
            storeWaiting();
        },
        Qt::QueuedConnection);
}

void NubixCaches::store(const FileData &data)
{
    auto it = files.find(data.path);
    if (it == files.end()) {
        files.insert(data.path, data);
        return;
    }
    *it = data;
    // Keep one copy of the path text: the value's shares the key's.
    it->path = it.key();
}

void NubixCaches::removeFileCache(const QString &path)
{
    WriteLock locker(lock);
    files.remove(path);
}

void NubixCaches::requestDirStatus()
{
    const auto &windows = hfmbase::FileManagerWindowsManager::instance();
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    const QList<quint64> ids = windows.windowIdList();
    for (quint64 id : ids) {
        const hfmbase::FileManagerWindow *window = windows.findWindowById(id);
        if (!window)
            continue;
        const QUrl url = window->currentUrl();
        if (url.scheme() != Schemes::kNubix)
            continue;
        const QString path = url.path();
        handler->requestFileStatus(path, true);
        handler->requestFileStatus(path, false);
    }
}

QString NubixCaches::cachePath()
{
    return QDir::homePath() + QStringLiteral("/.config/sablo/hde-file-manager/hfm-nubix-config.ini");
}

void NubixCaches::loadCache()
{
    if (!safeToRead(cachePath())) {
        nubixWarning() << "NubixCaches: Ignoring a damaged cache file" << cachePath();
        return;
    }
    QSettings settings(cachePath(), QSettings::IniFormat);
    if (settings.allKeys().isEmpty())
        return;

    const QString root = settings.value(kKeySyncRoot, QString()).toString();
    const bool inited = settings.value(kKeyInited, false).toBool();
    const bool isPublic = settings.value(kKeyIsPublic, false).toBool();
    const qint64 quota = settings.value(kKeyQuota, 0).toLongLong();
    const qint64 total = settings.value(kKeySizeTotal, 0).toLongLong();
    const qint64 used = settings.value(kKeySizeUsed, 0).toLongLong();

    WriteLock locker(lock);
    sync.syncRoot = root;
    sync.syncInited = inited;
    sync.isPublicCloud = isPublic;
    user.quota = quota;
    user.total = total;
    user.used = used;
    // Values from disk count as unconfirmed until the client answers.
    sync.isDisconnected = true;
}

void NubixCaches::saveCache()
{
    SyncInfo syncCopy;
    UserInfo userCopy;
    {
        ReadLock locker(lock);
        syncCopy = sync;
        userCopy = user;
    }
    // The settings object reads the file before it writes it: a damaged one
    // is replaced, not read.
    if (!safeToRead(cachePath()))
        QFile::remove(cachePath());
    // The settings object writes the file when it goes out of scope. It sorts
    // the keys itself, so they do not appear in the order set here; readers go
    // by key, never by position.
    QSettings settings(cachePath(), QSettings::IniFormat);
    settings.setValue(kKeyInited, syncCopy.syncInited);
    settings.setValue(kKeyIsPublic, syncCopy.isPublicCloud);
    settings.setValue(kKeySyncRoot, syncCopy.syncRoot);
    settings.setValue(kKeyQuota, userCopy.quota);
    settings.setValue(kKeySizeTotal, userCopy.total);
    settings.setValue(kKeySizeUsed, userCopy.used);
    // A full or read-only home must not go unnoticed; the state stays in
    // memory and the next save tries again.
    settings.sync();
    if (settings.status() != QSettings::NoError)
        nubixWarning() << "NubixCaches: Cannot write the cache file" << cachePath()
                       << "- keeping the summary in memory";
}

}   // namespace hfmplugin_nubix
