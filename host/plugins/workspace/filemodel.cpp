// SPDX-License-Identifier: GPL-3.0-or-later
#include "filemodel.h"
#include "workspacelog.h"

#include "dirloader.h"

#include <hfmbase/infofactory.h>
#include <hostcommon/urlhelpers.h>

#include <QLocale>
#include <QLoggingCategory>

#include <algorithm>

namespace hfmplugin_workspace {

namespace {

constexpr int kChangeDelayMs = 40;

}   // namespace

FileModel::FileModel(QObject *parent)
    : QAbstractTableModel(parent), loader(new DirLoader(this)), collator(makeCollator())
{
    connect(loader, &DirLoader::itemsReady, this, &FileModel::onItemsReady);
    connect(loader, &DirLoader::finished, this, &FileModel::onFinished);
    changeTimer.setSingleShot(true);
    changeTimer.setInterval(kChangeDelayMs);
    connect(&changeTimer, &QTimer::timeout, this, &FileModel::applyChanges);
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
    error.clear();
    loading = true;
    sortedSinceLoad = true;
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
    if (!items.isEmpty())
        sortedSinceLoad = false;
    // Rows go to the end while listing; one sort when it ends keeps the
    // cost per batch small.
    beginInsertRows(QModelIndex(), items.size(), items.size() + batch.size() - 1);
    items += batch;
    invalidateIndex();
    endInsertRows();
}

void FileModel::onFinished(bool ok, const QString &message, const QSet<QString> &hidden)
{
    loading = false;
    error = ok ? QString() : message;
    hiddenNames = hidden;
    if (!ok)
        qCWarning(logWorkspace).noquote() << "FileModel: listing" << root.toString() << "failed -" << message;
    if (!sortedSinceLoad) {
        Q_EMIT layoutAboutToBeChanged();
        const QModelIndexList before = persistentIndexList();
        QList<QUrl> beforeUrls;
        for (const QModelIndex &index : before)
            beforeUrls.append(items.value(index.row()) ? items.at(index.row())->url : QUrl());
        std::stable_sort(items.begin(), items.end(), itemLessThan);
        invalidateIndex();
        QModelIndexList after;
        for (int i = 0; i < before.size(); ++i) {
            const int row = rowOf(beforeUrls.at(i));
            after.append(row < 0 ? QModelIndex() : index(row, before.at(i).column()));
        }
        changePersistentIndexList(before, after);
        Q_EMIT layoutChanged();
        sortedSinceLoad = true;
    }
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
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        const QUrl &url = it.key();
        if (hdehost::sameUrl(url, root)) {
            // The folder itself went away or changed: list it again.
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
        if (it.value()) {
            if (row >= 0)
                removeRow(row);
            continue;
        }
        hfmbase::FileInfoPointer info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(url);
        if (info)
            info->refresh();
        if (!info || !info->exists() || !isShown(url, info)) {
            if (row >= 0)
                removeRow(row);
            continue;
        }
        const FileItemPointer item = makeItem(info, url, collator);
        if (row >= 0)
            removeRow(row);
        insertSorted(item);
    }
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
    if (!rowIndexValid) {
        rowIndex.clear();
        rowIndex.reserve(items.size());
        for (int i = 0; i < items.size(); ++i)
            rowIndex.insert(hdehost::normalizedUrl(items.at(i)->url), i);
        rowIndexValid = true;
    }
    return rowIndex.value(hdehost::normalizedUrl(url), -1);
}

void FileModel::updateFile(const QUrl &url)
{
    const int row = rowOf(url);
    if (row < 0)
        return;
    // A changed name would also change the row's place: go the long way.
    const FileItemPointer &item = items.at(row);
    item->info->refresh();
    const FileItemPointer fresh = makeItem(item->info, item->url, collator);
    if (fresh->name != item->name || fresh->isDir != item->isDir) {
        removeRow(row);
        insertSorted(fresh);
        return;
    }
    items[row] = fresh;
    Q_EMIT dataChanged(index(row, 0), index(row, kColumnCount - 1));
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
