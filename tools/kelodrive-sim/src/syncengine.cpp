// SPDX-License-Identifier: GPL-3.0-or-later
#include "syncengine.h"

#include "logging.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kelodrive {

namespace {
const QLatin1String kTempSuffix(".temp");
const QLatin1String kUpload("upload");
const QLatin1String kDownload("download");
constexpr int kErrorFailPattern = 1;
constexpr int kErrorLocalWrite = 2;
constexpr int kDebounceMs = 20;

bool isTransferTemp(const QString &path)
{
    return path.endsWith(kTempSuffix);
}

qint64 mtimeOf(const QFileInfo &info)
{
    return info.lastModified().toMSecsSinceEpoch();
}
}   // namespace

SyncEngine::SyncEngine(QObject *parent) : QObject(parent)
{
    m_debounce.setSingleShot(true);
    m_debounce.setInterval(kDebounceMs);
    connect(&m_debounce, &QTimer::timeout, this, &SyncEngine::scanDirtyDirs);
    m_tick.setInterval(m_paceMs);
    connect(&m_tick, &QTimer::timeout, this, &SyncEngine::tick);
    m_rescanTimer.setInterval(m_rescanMs);
    connect(&m_rescanTimer, &QTimer::timeout, this, &SyncEngine::rescan);
    m_countsTimer.setSingleShot(true);
    m_countsTimer.setInterval(0);
    connect(&m_countsTimer, &QTimer::timeout, this, [this] { Q_EMIT countsChanged(counts()); });
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &SyncEngine::onDirectoryChanged);
}

SyncEngine::~SyncEngine() = default;

bool SyncEngine::setRoot(const QString &localDir)
{
    if (localDir.isEmpty())
        return false;
    const QString root = QDir::cleanPath(QDir(localDir).absolutePath());
    if (!QDir().mkpath(root)) {
        qCWarning(lcKeloSim) << "SyncEngine::setRoot: cannot create" << root;
        return false;
    }
    resetState();
    m_root = root;
    m_rootPresent = true;
    m_initialScan = true;
    scanDir(QStringLiteral("/"), true);
    m_initialScan = false;
    if (m_rescanMs > 0)
        m_rescanTimer.start(m_rescanMs);
    qCInfo(lcKeloSim) << "Sync root" << m_root << "with" << m_items.size() << "items";
    countsDirty();
    return true;
}

void SyncEngine::clearRoot()
{
    resetState();
    m_root.clear();
    m_rootPresent = false;
    countsDirty();
}

bool SyncEngine::rootExists() const
{
    return hasRoot() && QFileInfo(m_root).isDir();
}

void SyncEngine::resetState()
{
    if (!m_watched.isEmpty())
        m_watcher.removePaths(m_watched.values());
    m_watched.clear();
    m_items.clear();
    m_children.clear();
    m_ids.clear();
    m_queue.clear();
    m_queued.clear();
    m_activeUnder.clear();
    m_failedUnder.clear();
    m_dirtyDirs.clear();
    m_todo = m_doing = m_done = m_failed = 0;
    m_tick.stop();
    m_rescanTimer.stop();
    m_debounce.stop();
}

QStringList SyncEngine::setBanDirs(const QStringList &dirs)
{
    QStringList normalized;
    for (const QString &dir : dirs) {
        QString path = dir.trimmed();
        if (path.isEmpty())
            continue;
        if (hasRoot() && (path == m_root || path.startsWith(m_root + QLatin1Char('/'))))
            path = toCloud(path);
        else if (!path.startsWith(QLatin1Char('/')))
            path.prepend(QLatin1Char('/'));
        bool ok = false;
        path = normalizeCloudPath(path, &ok);
        if (!ok) {
            qCWarning(lcKeloSim) << "SyncEngine::setBanDirs: ignoring" << dir;
            continue;
        }
        if (!normalized.contains(path))
            normalized.append(path);
    }
    const QStringList previous = m_banDirs;
    m_banDirs = normalized;
    // Banned items leave the engine; their files stay on disk untouched.
    const QStringList known = m_items.keys();
    for (const QString &path : known) {
        if (m_items.contains(path) && isBanned(path))
            removeItem(path);
    }
    // A folder that is no longer banned is met again as new by the next scan.
    if (hasRoot() && previous != m_banDirs) {
        for (const QString &path : previous) {
            if (!isBanned(path))
                m_dirtyDirs.insert(parentOf(path));
        }
        m_debounce.start();
    }
    return m_banDirs;
}

void SyncEngine::setFailPatterns(const QStringList &patterns)
{
    m_failPatterns.clear();
    m_failRegexps.clear();
    for (const QString &pattern : patterns) {
        if (pattern.isEmpty())
            continue;
        QRegularExpression re(QRegularExpression::wildcardToRegularExpression(pattern));
        if (!re.isValid()) {
            qCWarning(lcKeloSim) << "SyncEngine::setFailPatterns: ignoring" << pattern;
            continue;
        }
        m_failPatterns.append(pattern);
        m_failRegexps.append(re);
    }
}

void SyncEngine::setPaceMs(int ms)
{
    m_paceMs = qMax(1, ms);
    m_tick.setInterval(m_paceMs);
}

void SyncEngine::setRescanMs(int ms)
{
    m_rescanMs = qMax(0, ms);
    m_rescanTimer.stop();
    if (m_rescanMs > 0 && hasRoot())
        m_rescanTimer.start(m_rescanMs);
}

void SyncEngine::setBlocked(bool uploads, bool downloads)
{
    m_uploadsBlocked = uploads;
    m_downloadsBlocked = downloads;
    if (!m_queue.isEmpty() && !m_tick.isActive())
        m_tick.start();
}

SyncCounts SyncEngine::counts() const
{
    SyncCounts c;
    c.todo = m_todo;
    c.doing = m_doing;
    c.done = m_done;
    c.error = m_failed;
    return c;
}

QString SyncEngine::normalizeCloudPath(const QString &path, bool *ok)
{
    *ok = false;
    if (!path.startsWith(QLatin1Char('/')))
        return QString();
    const QString clean = QDir::cleanPath(path);
    if (clean == QLatin1String("/.."))
        return QString();
    if (clean.startsWith(QLatin1String("/../")) || clean.contains(QLatin1String("/../"))
        || clean.endsWith(QLatin1String("/..")))
        return QString();
    *ok = true;
    return clean;
}

QString SyncEngine::toLocal(const QString &cloudPath) const
{
    return cloudPath == QLatin1String("/") ? m_root : m_root + cloudPath;
}

QString SyncEngine::toCloud(const QString &localPath) const
{
    const QString rest = localPath.mid(m_root.size());
    return rest.isEmpty() ? QStringLiteral("/") : rest;
}

QString SyncEngine::parentOf(const QString &cloudPath)
{
    const int slash = cloudPath.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : cloudPath.left(slash);
}

QString SyncEngine::childOf(const QString &cloudDir, const QString &name)
{
    if (cloudDir == QLatin1String("/"))
        return QLatin1Char('/') + name;
    return cloudDir + QLatin1Char('/') + name;
}

bool SyncEngine::isBanned(const QString &cloudPath) const
{
    for (const QString &ban : m_banDirs) {
        if (ban == QLatin1String("/"))
            return true;
        if (cloudPath.startsWith(ban)
            && (cloudPath.size() == ban.size() || cloudPath.at(ban.size()) == QLatin1Char('/')))
            return true;
    }
    return false;
}

bool SyncEngine::shouldFail(const QString &cloudPath) const
{
    const QString name = cloudPath.mid(cloudPath.lastIndexOf(QLatin1Char('/')) + 1);
    for (const QRegularExpression &re : m_failRegexps) {
        if (re.match(name).hasMatch())
            return true;
    }
    return false;
}

qint64 SyncEngine::idFor(const QString &cloudPath) const
{
    auto it = m_ids.find(cloudPath);
    if (it == m_ids.end())
        it = m_ids.insert(cloudPath, m_nextId++);
    return it.value();
}

FileEntry SyncEngine::itemEntry(const QString &cloudPath, const Item &item) const
{
    FileEntry e;
    e.fileId = idFor(cloudPath);
    e.isDir = item.isDir;
    e.path = cloudPath;
    e.plan = item.plan;
    e.planError = item.planError;
    e.planStatus = item.status;
    if (item.isDir) {
        // A folder shows the busiest state of what lies below it.
        e.planStatus = m_activeUnder.value(cloudPath) > 0 ? 2 : (m_failedUnder.value(cloudPath) > 0 ? 10 : 3);
        e.plan.clear();
        e.planError = 0;
    }
    return e;
}

FileEntry SyncEngine::entryFor(const QString &cloudPath, const QFileInfo &info) const
{
    FileEntry e;
    e.fileId = idFor(cloudPath);
    e.isDir = info.isDir();
    e.path = cloudPath;
    if (isBanned(cloudPath))
        return e;
    if (!e.isDir && isTransferTemp(cloudPath)) {
        const QString target = cloudPath.chopped(kTempSuffix.size());
        if (m_queued.value(target, Kind::Upload) == Kind::Download && m_queued.contains(target)) {
            e.plan = kDownload;
            e.planStatus = m_items.value(target).status;
        }
        return e;
    }
    const auto it = m_items.constFind(cloudPath);
    if (it != m_items.constEnd())
        return itemEntry(cloudPath, it.value());
    if (e.isDir) {
        e.planStatus = 3;
    } else {
        // On disk but not met by a scan yet: it is about to be queued.
        e.plan = kUpload;
        e.planStatus = 1;
        m_dirtyDirs.insert(parentOf(cloudPath));
        m_debounce.start();
    }
    return e;
}

QList<FileEntry> SyncEngine::status(const QString &cloudPath, bool listChildren, bool *ok) const
{
    QList<FileEntry> result;
    const QString path = normalizeCloudPath(cloudPath, ok);
    if (!*ok || !hasRoot())
        return result;
    const QString local = toLocal(path);
    if (!listChildren) {
        const QFileInfo info(local);
        if (info.exists() || (path == QLatin1String("/") && rootExists())) {
            result.append(entryFor(path, info));
        } else if (m_queued.contains(path)) {
            result.append(itemEntry(path, m_items.value(path)));
        }
        return result;
    }
    const QDir dir(local);
    if (!dir.exists())
        return result;
    const QFileInfoList children
        = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
    result.reserve(children.size());
    for (const QFileInfo &info : children)
        result.append(entryFor(childOf(path, info.fileName()), info));
    return result;
}

void SyncEngine::watch(const QString &localDir)
{
    if (m_watched.contains(localDir))
        return;
    if (m_watcher.addPath(localDir))
        m_watched.insert(localDir);
    else
        qCDebug(lcKeloSim) << "SyncEngine::watch: cannot watch" << localDir << "- the periodic rescan covers it";
}

void SyncEngine::addItem(const QString &cloudPath, const Item &item)
{
    m_items.insert(cloudPath, item);
    if (cloudPath != QLatin1String("/"))
        m_children[parentOf(cloudPath)].insert(cloudPath);
    if (item.status == 10) {
        ++m_failed;
        adjustAncestors(m_failedUnder, cloudPath, 1);
    }
}

void SyncEngine::removeItem(const QString &cloudPath)
{
    auto it = m_items.find(cloudPath);
    if (it == m_items.end())
        return;
    if (it->isDir) {
        const QSet<QString> children = m_children.take(cloudPath);
        for (const QString &child : children)
            removeItem(child);
        const QString local = toLocal(cloudPath);
        if (m_watched.remove(local))
            m_watcher.removePath(local);
    }
    dequeue(cloudPath);
    it = m_items.find(cloudPath);
    if (it == m_items.end())
        return;
    setItemStatus(cloudPath, it.value(), 0);
    m_items.erase(it);
    if (cloudPath != QLatin1String("/")) {
        auto parent = m_children.find(parentOf(cloudPath));
        if (parent != m_children.end())
            parent->remove(cloudPath);
    }
}

void SyncEngine::adjustAncestors(QHash<QString, int> &counter, const QString &cloudPath, int delta)
{
    QString dir = cloudPath;
    while (dir != QLatin1String("/")) {
        dir = parentOf(dir);
        int &value = counter[dir];
        value += delta;
        if (value <= 0)
            counter.remove(dir);
    }
}

void SyncEngine::setItemStatus(const QString &cloudPath, Item &item, int status)
{
    const int old = item.status;
    if (old == status)
        return;
    if (old == 1)
        --m_todo;
    else if (old == 2)
        --m_doing;
    else if (old == 10) {
        --m_failed;
        adjustAncestors(m_failedUnder, cloudPath, -1);
    }
    if (status == 1)
        ++m_todo;
    else if (status == 2)
        ++m_doing;
    else if (status == 10) {
        ++m_failed;
        adjustAncestors(m_failedUnder, cloudPath, 1);
    }
    item.status = status;
    countsDirty();
}

void SyncEngine::enqueue(const QString &cloudPath, Kind kind, qint64 size, int chunks)
{
    if (m_queued.contains(cloudPath))
        return;
    auto it = m_items.find(cloudPath);
    if (it == m_items.end()) {
        Item item;
        item.status = 0;
        addItem(cloudPath, item);
        it = m_items.find(cloudPath);
    }
    it->plan = kind == Kind::Upload ? QString(kUpload) : QString(kDownload);
    it->planError = 0;
    setItemStatus(cloudPath, it.value(), 1);
    Job job;
    job.path = cloudPath;
    job.kind = kind;
    job.size = size;
    job.chunks = qMax(1, chunks);
    m_queue.append(job);
    m_queued.insert(cloudPath, kind);
    adjustAncestors(m_activeUnder, cloudPath, 1);
    emitStatus(cloudPath);
    if (!m_tick.isActive())
        m_tick.start();
}

void SyncEngine::dequeue(const QString &cloudPath)
{
    if (!m_queued.remove(cloudPath))
        return;
    for (int i = 0; i < m_queue.size(); ++i) {
        if (m_queue.at(i).path == cloudPath) {
            m_queue.removeAt(i);
            break;
        }
    }
    adjustAncestors(m_activeUnder, cloudPath, -1);
    auto it = m_items.find(cloudPath);
    if (it != m_items.end() && (it->status == 1 || it->status == 2))
        setItemStatus(cloudPath, it.value(), 0);
}

void SyncEngine::emitStatus(const QString &cloudPath)
{
    const auto it = m_items.constFind(cloudPath);
    if (it != m_items.constEnd())
        Q_EMIT fileStatusChanged(itemEntry(cloudPath, it.value()));
}

void SyncEngine::countsDirty()
{
    if (!m_countsTimer.isActive())
        m_countsTimer.start();
}

void SyncEngine::scanDir(const QString &cloudDir, bool recursive)
{
    if (!hasRoot() || isBanned(cloudDir))
        return;
    const QString local = toLocal(cloudDir);
    const QDir dir(local);
    if (!dir.exists()) {
        if (cloudDir == QLatin1String("/")) {
            if (m_rootPresent) {
                qCWarning(lcKeloSim) << "SyncEngine::scanDir: the sync root" << m_root << "is gone";
                m_rootPresent = false;
                const QSet<QString> children = m_children.value(cloudDir);
                for (const QString &child : children)
                    removeItem(child);
                Q_EMIT rootPresenceChanged(false);
            }
        } else {
            removeItem(cloudDir);
        }
        return;
    }
    if (cloudDir == QLatin1String("/") && !m_rootPresent) {
        m_rootPresent = true;
        Q_EMIT rootPresenceChanged(true);
    }
    if (cloudDir == QLatin1String("/") && !m_items.contains(cloudDir)) {
        Item rootItem;
        rootItem.isDir = true;
        addItem(cloudDir, rootItem);
    }
    watch(local);

    QSet<QString> seen;
    const QFileInfoList children
        = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &info : children) {
        const QString path = childOf(cloudDir, info.fileName());
        if (isBanned(path))
            continue;
        if (info.isDir()) {
            seen.insert(path);
            const bool known = m_items.contains(path);
            if (!known) {
                Item item;
                item.isDir = true;
                addItem(path, item);
            }
            // Links to folders are listed but not followed, so a loop cannot trap the scan.
            if ((!known || recursive) && !info.isSymLink())
                scanDir(path, recursive);
            continue;
        }
        if (isTransferTemp(path))
            continue;
        seen.insert(path);
        const qint64 size = info.size();
        const qint64 mtime = mtimeOf(info);
        auto it = m_items.find(path);
        if (it == m_items.end() && m_initialScan) {
            Item item;
            item.size = size;
            item.mtime = mtime;
            if (shouldFail(path)) {
                item.plan = kUpload;
                item.status = 10;
                item.planError = kErrorFailPattern;
            }
            addItem(path, item);
        } else if (it == m_items.end()) {
            enqueue(path, Kind::Upload);
        } else if ((it->size != size || it->mtime != mtime) && !m_queued.contains(path)) {
            enqueue(path, Kind::Upload);
        }
    }
    // Whatever is known here but no longer on disk is gone, except downloads: one in flight
    // has only its temporary file, and a failed one stays listed as failed.
    const QSet<QString> known = m_children.value(cloudDir);
    for (const QString &path : known) {
        if (!seen.contains(path) && m_items.value(path).plan != kDownload)
            removeItem(path);
    }
}

void SyncEngine::rescan()
{
    if (hasRoot())
        scanDir(QStringLiteral("/"), true);
}

void SyncEngine::onDirectoryChanged(const QString &localPath)
{
    if (!hasRoot() || (localPath != m_root && !localPath.startsWith(m_root + QLatin1Char('/'))))
        return;
    m_dirtyDirs.insert(toCloud(localPath));
    m_debounce.start();
}

void SyncEngine::scanDirtyDirs()
{
    const QSet<QString> dirs = std::exchange(m_dirtyDirs, {});
    for (const QString &dir : dirs) {
        // The watcher drops a folder that was removed and recreated; the scan adds it again.
        const QString local = toLocal(dir);
        if (m_watched.contains(local) && !QFileInfo(local).isDir()) {
            m_watched.remove(local);
            m_watcher.removePath(local);
        }
        scanDir(dir, false);
    }
}

bool SyncEngine::startDownload(const QString &cloudPath, qint64 size, int chunks)
{
    bool ok = false;
    const QString path = normalizeCloudPath(cloudPath, &ok);
    if (!ok || !hasRoot() || path == QLatin1String("/") || isTransferTemp(path)) {
        qCWarning(lcKeloSim) << "SyncEngine::startDownload: not a file path under the root:" << cloudPath;
        return false;
    }
    if (isBanned(path)) {
        qCWarning(lcKeloSim) << "SyncEngine::startDownload: banned path" << path;
        return false;
    }
    if (m_queued.contains(path)) {
        qCWarning(lcKeloSim) << "SyncEngine::startDownload: already transferring" << path;
        return false;
    }
    if (QFileInfo(toLocal(path)).isDir()) {
        qCWarning(lcKeloSim) << "SyncEngine::startDownload: a folder is in the way:" << path;
        return false;
    }
    enqueue(path, Kind::Download, qMax<qint64>(0, size), chunks);
    return true;
}

void SyncEngine::tick()
{
    for (int i = 0; i < m_queue.size(); ++i) {
        const Kind kind = m_queue.at(i).kind;
        if (kind == Kind::Upload ? m_uploadsBlocked : m_downloadsBlocked)
            continue;
        const QString path = m_queue.at(i).path;
        const int before = m_items.value(path).status;
        const Step step = kind == Kind::Upload ? advanceUpload(m_queue[i]) : advanceDownload(m_queue[i]);
        if (step != Step::Continue) {
            m_queue.removeAt(i);
            m_queued.remove(path);
            adjustAncestors(m_activeUnder, path, -1);
        }
        if (step == Step::Gone) {
            removeItem(path);
        } else {
            // Download chunks change nothing the plug-in can see.
            if (m_items.value(path).status != before)
                emitStatus(path);
            if (step == Step::Finished && kind == Kind::Download && m_items.value(path).status == 3)
                Q_EMIT downloadFinished(path);
        }
        break;
    }
    if (m_queue.isEmpty())
        m_tick.stop();
}

SyncEngine::Step SyncEngine::advanceUpload(Job &job)
{
    Item &item = m_items[job.path];
    if (item.status != 2) {
        setItemStatus(job.path, item, 2);
        return Step::Continue;
    }
    const QFileInfo info(toLocal(job.path));
    if (!info.exists())
        return Step::Gone;   // removed while queued; the next scan of its folder agrees
    // Remember what was sent, so that only a later change queues the file again.
    item.size = info.size();
    item.mtime = mtimeOf(info);
    if (shouldFail(job.path)) {
        item.planError = kErrorFailPattern;
        setItemStatus(job.path, item, 10);
        qCInfo(lcKeloSim) << "Upload failed (fail pattern):" << job.path;
    } else {
        item.plan.clear();
        item.planError = 0;
        setItemStatus(job.path, item, 3);
        ++m_done;
        qCDebug(lcKeloSim) << "Uploaded" << job.path;
    }
    return Step::Finished;
}

SyncEngine::Step SyncEngine::advanceDownload(Job &job)
{
    Item &item = m_items[job.path];
    const QString target = toLocal(job.path);
    const QString temp = target + kTempSuffix;
    auto fail = [&](const QString &why) {
        qCWarning(lcKeloSim) << "SyncEngine::advanceDownload:" << job.path << why;
        QFile::remove(temp);
        item.planError = kErrorLocalWrite;
        setItemStatus(job.path, item, 10);
        return Step::Finished;
    };
    if (item.status != 2) {
        setItemStatus(job.path, item, 2);
        if (!QDir().mkpath(QFileInfo(target).absolutePath()))
            return fail(QStringLiteral("cannot create its folder"));
        QFile file(temp);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fail(file.errorString());
        return Step::Continue;
    }
    if (job.chunksDone < job.chunks) {
        const qint64 from = job.size * job.chunksDone / job.chunks;
        const qint64 to = job.size * (job.chunksDone + 1) / job.chunks;
        QFile file(temp);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
            return fail(file.errorString());
        static const QByteArray pattern("kelodrive-sim download\n");
        QByteArray chunk;
        chunk.reserve(int(to - from));
        for (qint64 i = from; i < to; ++i)
            chunk.append(pattern.at(int(i % pattern.size())));
        if (file.write(chunk) != chunk.size())
            return fail(file.errorString());
        ++job.chunksDone;
        return Step::Continue;
    }
    if (shouldFail(job.path)) {
        QFile::remove(temp);
        item.planError = kErrorFailPattern;
        setItemStatus(job.path, item, 10);
        qCInfo(lcKeloSim) << "Download failed (fail pattern):" << job.path;
        return Step::Finished;
    }
    if (QFileInfo::exists(target) && !QFile::remove(target))
        return fail(QStringLiteral("cannot replace the old file"));
    if (!QFile::rename(temp, target))
        return fail(QStringLiteral("cannot rename the temporary file"));
    const QFileInfo info(target);
    item.size = info.size();
    item.mtime = mtimeOf(info);
    item.plan.clear();
    item.planError = 0;
    setItemStatus(job.path, item, 3);
    ++m_done;
    qCInfo(lcKeloSim) << "Downloaded" << job.path << info.size() << "bytes";
    return Step::Finished;
}

}   // namespace kelodrive
