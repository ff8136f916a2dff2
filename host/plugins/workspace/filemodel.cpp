// SPDX-License-Identifier: GPL-3.0-or-later
#include "filemodel.h"
#include "workspacelog.h"

#include "dirloader.h"

#include <hfmbase/infofactory.h>
#include <hostcommon/urlhelpers.h>

#include <QElapsedTimer>
#include <QLocale>
#include <QLoggingCategory>

#include <algorithm>

namespace hfmplugin_workspace {

namespace {

constexpr int kChangeDelayMs = 40;
constexpr int kIncomingDelayMs = 250;
// Up to this many arrivals go in one by one; more are sorted in at once.
constexpr int kFewArrivals = 32;
// A flush of file updates gives the event loop back after this long.
constexpr qint64 kUpdateBudgetNs = 15 * 1000 * 1000;
// Refreshes that keep coming (a plug-in working off thousands of them a few
// at a time) repaint at most this often, not once per turn.
constexpr qint64 kUpdateIntervalMs = 30;

}   // namespace

FileModel::FileModel(QObject *parent) : QAbstractTableModel(parent), loader(new DirLoader(this))
{
    connect(loader, &DirLoader::itemsReady, this, &FileModel::onItemsReady);
    connect(loader, &DirLoader::finished, this, &FileModel::onFinished);
    changeTimer.setSingleShot(true);
    changeTimer.setInterval(kChangeDelayMs);
    connect(&changeTimer, &QTimer::timeout, this, &FileModel::applyChanges);
    incomingTimer.setSingleShot(true);
    incomingTimer.setInterval(kIncomingDelayMs);
    connect(&incomingTimer, &QTimer::timeout, this, &FileModel::flushIncoming);
    updateTimer.setSingleShot(true);
    updateTimer.setInterval(0);
    connect(&updateTimer, &QTimer::timeout, this, &FileModel::flushUpdates);
}

FileModel::~FileModel() = default;

void FileModel::setRootUrl(const QUrl &url)
{
    root = url;
    reload();
}

QUrl FileModel::rootUrl() const
{
    return root;
}

void FileModel::reload()
{
    beginResetModel();
    items.clear();
    invalidateIndex();
    endResetModel();
    pending.clear();
    changeTimer.stop();
    dirty.clear();
    updateTimer.stop();
    incoming.clear();
    incomingTimer.stop();
    error.clear();
    loading = true;
    if (watcher)
        watcher->disconnect(this);
    watcher.reset();
    Q_EMIT loadingStarted();
    loader->start(root, hiddenShown);
    startWatching();
}

void FileModel::setShowHidden(bool show)
{
    if (hiddenShown == show)
        return;
    hiddenShown = show;
    if (root.isValid())
        reload();
}

bool FileModel::showHidden() const
{
    return hiddenShown;
}

bool FileModel::isLoading() const
{
    return loading;
}

QString FileModel::errorString() const
{
    return error;
}

void FileModel::startWatching()
{
    QString watchError;
    watcher = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(root, true, &watchError);
    if (!watcher) {
        qCInfo(logWorkspace).noquote() << "FileModel: no live updates for" << root.toString() << "-" << watchError;
        return;
    }
    connect(watcher.data(), &hfmbase::AbstractFileWatcher::subfileCreated, this,
        [this](const QUrl &url) { queueChange(url, false); });
    connect(watcher.data(), &hfmbase::AbstractFileWatcher::fileAttributeChanged, this,
        [this](const QUrl &url) { queueChange(url, false); });
    connect(watcher.data(), &hfmbase::AbstractFileWatcher::fileDeleted, this,
        [this](const QUrl &url) { queueChange(url, true); });
    connect(watcher.data(), &hfmbase::AbstractFileWatcher::fileRename, this, [this](const QUrl &from, const QUrl &to) {
        queueChange(from, true);
        queueChange(to, false);
    });
    if (!watcher->isStarted())
        watcher->startWatcher();
}

void FileModel::onItemsReady(const QVector<FileItemPointer> &batch)
{
    if (batch.isEmpty())
        return;
    if (!items.isEmpty() || !incoming.isEmpty()) {
        incoming += batch;
        if (!incomingTimer.isActive())
            incomingTimer.start();
        return;
    }
    // The first rows show at once.
    beginInsertRows(QModelIndex(), 0, batch.size() - 1);
    items = batch;
    invalidateIndex();
    endInsertRows();
}

void FileModel::flushIncoming()
{
    if (incoming.isEmpty())
        return;
    beginInsertRows(QModelIndex(), items.size(), items.size() + incoming.size() - 1);
    items += incoming;
    incoming.clear();
    invalidateIndex();
    endInsertRows();
}

void FileModel::onFinished(
    bool ok, const QString &message, const QSet<QString> &hidden, const QVector<FileItemPointer> &sorted)
{
    loading = false;
    error = ok ? QString() : message;
    hiddenNames = hidden;
    if (!ok)
        qCWarning(logWorkspace).noquote() << "FileModel: listing" << root.toString() << "failed -" << message;
    incomingTimer.stop();
    flushIncoming();
    // The worker sorted every row; put them in that order, keeping what
    // selections and current items point at.
    applyOrder(sorted);
    Q_EMIT loadingFinished(ok);
    if (!pending.isEmpty())
        changeTimer.start();
}

void FileModel::queueChange(const QUrl &url, bool removed)
{
    if (!url.isValid())
        return;
    pending.insert(url, removed);
    if (!loading && !changeTimer.isActive())
        changeTimer.start();
}

bool FileModel::isShown(const QUrl &url, const hfmbase::FileInfoPointer &info) const
{
    if (hiddenShown)
        return true;
    const QString name = url.fileName(QUrl::FullyDecoded);
    return !name.startsWith(QLatin1Char('.')) && !hiddenNames.contains(name) && !(info && info->isHidden());
}

void FileModel::applyChanges()
{
    if (loading)
        return;
    const QHash<QUrl, bool> changes = pending;
    pending.clear();
    // Rows are found with one index, removed in runs from the bottom, and
    // arrivals are sorted in together, so that a folder where thousands of
    // files change at once costs no more than listing it again.
    QVector<int> gone;
    QVector<FileItemPointer> arrived;
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        const QUrl &url = it.key();
        if (hdehost::sameUrl(url, root)) {
            // The folder itself went away: list it again.
            if (it.value()) {
                reload();
                return;
            }
            continue;
        }
        if (url.fileName(QUrl::FullyDecoded) == QLatin1String(".hidden")) {
            reload();
            return;
        }
        if (!hdehost::sameUrl(hdehost::parentUrl(url), root))
            continue;
        const int row = rowOf(url);
        if (row >= 0)
            gone.append(row);
        if (it.value())
            continue;
        hfmbase::FileInfoPointer info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(url);
        if (info)
            info->refresh();
        if (info && info->exists() && isShown(url, info))
            arrived.append(makeItem(info, url));
    }
    std::sort(gone.begin(), gone.end(), std::greater<int>());
    gone.erase(std::unique(gone.begin(), gone.end()), gone.end());
    for (int i = 0; i < gone.size();) {
        int last = gone.at(i);
        int first = last;
        while (i + 1 < gone.size() && gone.at(i + 1) == first - 1)
            first = gone.at(++i);
        ++i;
        beginRemoveRows(QModelIndex(), first, last);
        items.remove(first, last - first + 1);
        invalidateIndex();
        endRemoveRows();
    }
    if (arrived.size() <= kFewArrivals) {
        for (const FileItemPointer &item : qAsConst(arrived))
            insertSorted(item);
        return;
    }
    beginInsertRows(QModelIndex(), items.size(), items.size() + arrived.size() - 1);
    items += arrived;
    invalidateIndex();
    endInsertRows();
    QVector<FileItemPointer> sorted = items;
    std::stable_sort(sorted.begin(), sorted.end(), itemLessThan);
    applyOrder(sorted);
}

void FileModel::applyOrder(const QVector<FileItemPointer> &sorted)
{
    if (sorted.size() != items.size() || sorted.isEmpty() || sorted == items)
        return;
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    QVector<FileItem *> beforeItems;
    beforeItems.reserve(before.size());
    for (const QModelIndex &index : before)
        beforeItems.append(items.value(index.row()).data());
    items = sorted;
    invalidateIndex();
    if (!before.isEmpty()) {
        QHash<const FileItem *, int> rows;
        rows.reserve(items.size());
        for (int i = 0; i < items.size(); ++i)
            rows.insert(items.at(i).data(), i);
        QModelIndexList after;
        for (int i = 0; i < before.size(); ++i) {
            const int row = rows.value(beforeItems.at(i), -1);
            after.append(row < 0 ? QModelIndex() : index(row, before.at(i).column()));
        }
        changePersistentIndexList(before, after);
    }
    Q_EMIT layoutChanged();
}

void FileModel::insertSorted(const FileItemPointer &item)
{
    const auto pos = std::lower_bound(items.begin(), items.end(), item, itemLessThan);
    const int row = int(pos - items.begin());
    beginInsertRows(QModelIndex(), row, row);
    items.insert(row, item);
    invalidateIndex();
    endInsertRows();
}

void FileModel::removeRow(int row)
{
    beginRemoveRows(QModelIndex(), row, row);
    items.remove(row);
    invalidateIndex();
    endRemoveRows();
}

void FileModel::invalidateIndex()
{
    rowIndexValid = false;
}

FileItemPointer FileModel::itemAt(int row) const
{
    return items.value(row);
}

int FileModel::rowOf(const QUrl &url) const
{
    return rowOfNormalized(hdehost::normalizedUrl(url));
}

int FileModel::rowOfNormalized(const QUrl &url) const
{
    if (!rowIndexValid) {
        rowIndex.clear();
        rowIndex.reserve(items.size());
        for (int i = 0; i < items.size(); ++i)
            rowIndex.insert(hdehost::normalizedUrl(items.at(i)->url), i);
        rowIndexValid = true;
    }
    return rowIndex.value(url, -1);
}

void FileModel::updateFile(const QUrl &url)
{
    // Called thousands of times in a row when a plug-in repaints a folder's
    // items: one normalisation and one lookup, the rest waits for the flush.
    const QUrl key = hdehost::normalizedUrl(url);
    if (rowOfNormalized(key) < 0)
        return;
    dirty.insert(key);
    if (!updateTimer.isActive()) {
        const qint64 since = lastUpdate.isValid() ? lastUpdate.elapsed() : kUpdateIntervalMs;
        updateTimer.start(int(qMax<qint64>(0, kUpdateIntervalMs - since)));
    }
}

void FileModel::flushUpdates()
{
    QElapsedTimer budget;
    budget.start();
    int first = -1;
    int last = -1;
    QVector<FileItemPointer> renamed;
    for (auto it = dirty.begin(); it != dirty.end();) {
        const int row = rowOfNormalized(*it);
        it = dirty.erase(it);
        if (row >= 0) {
            const FileItemPointer &item = items.at(row);
            item->info->refresh();
            // While listing the rows are still being put in order: repaint only.
            const FileItemPointer fresh = loading ? item : makeItem(item->info, item->url);
            if (fresh->name != item->name || fresh->isDir != item->isDir) {
                renamed.append(fresh);
            } else {
                // An unchanged row keeps its item and with it the icon and
                // type already looked up; it is repainted all the same.
                if (fresh->size != item->size || fresh->modified != item->modified)
                    items[row] = fresh;
                first = first < 0 ? row : qMin(first, row);
                last = qMax(last, row);
            }
        }
        if (budget.nsecsElapsed() >= kUpdateBudgetNs)
            break;
    }
    if (last >= 0)
        Q_EMIT dataChanged(index(first, 0), index(last, kColumnCount - 1));
    // A changed name also changes the row's place: go the long way.
    for (const FileItemPointer &fresh : qAsConst(renamed)) {
        const int row = rowOf(fresh->url);
        if (row < 0)
            continue;
        removeRow(row);
        insertSorted(fresh);
    }
    lastUpdate.start();
    // What the budget left over follows at once: it was asked for before.
    if (!dirty.isEmpty())
        updateTimer.start(0);
}

int FileModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : items.size();
}

int FileModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant FileModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= items.size())
        return QVariant();
    const FileItemPointer &item = items.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case kName:
            return item->name;
        case kModified:
            return item->modified.isValid() ? item->modified.toString(QStringLiteral("yyyy-MM-dd hh:mm")) : QString();
        case kSize:
            return item->isDir ? QStringLiteral("-") : QLocale().formattedDataSize(item->size);
        case kType:
            return item->isDir ? tr("Folder") : item->typeName();
        }
        break;
    case Qt::EditRole:
        return index.column() == kName ? QVariant(item->name) : QVariant();
    case Qt::DecorationRole:
        return index.column() == kName ? QVariant(item->icon()) : QVariant();
    case Qt::ToolTipRole:
        return index.column() == kName ? QVariant(item->name) : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == kSize ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    case kUrlRole:
        return item->url;
    case kIsDirRole:
        return item->isDir;
    }
    return QVariant();
}

QVariant FileModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case kName:
        return tr("Name");
    case kModified:
        return tr("Time modified");
    case kSize:
        return tr("Size");
    case kType:
        return tr("Type");
    }
    return QVariant();
}

Qt::ItemFlags FileModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    // Whether the rename may happen is the operation's to say; asking the
    // file system here would cost a stat for every painted row.
    if (index.isValid() && index.column() == kName)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool FileModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.column() != kName || index.row() >= items.size())
        return false;
    const QString newName = value.toString().trimmed();
    const FileItemPointer &item = items.at(index.row());
    if (newName.isEmpty() || newName == item->name || newName.contains(QLatin1Char('/')))
        return false;
    // The row changes when the watcher reports the rename.
    Q_EMIT renameRequested(item->url, newName);
    return false;
}

}   // namespace hfmplugin_workspace
