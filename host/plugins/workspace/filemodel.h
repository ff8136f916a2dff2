// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileitem.h"

#include <hfmbase/abstractfilewatcher.h>

#include <QAbstractTableModel>
#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QTimer>
#include <QUrl>

namespace hfmplugin_workspace {

class DirLoader;

// The rows of one directory: listed through DirLoader, kept current through
// the scheme's watcher (changes are gathered for a moment and applied
// together). Columns: name, modified, size, type. Rows are sorted with
// itemLessThan once listing ends and stay sorted. GUI thread only.
class FileModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { kName, kModified, kSize, kType, kColumnCount };
    enum Role { kUrlRole = Qt::UserRole + 1, kIsDirRole };

    explicit FileModel(QObject *parent = nullptr);
    ~FileModel() override;

    void setRootUrl(const QUrl &url);
    QUrl rootUrl() const;
    void reload();
    void setShowHidden(bool show);
    bool showHidden() const;
    bool isLoading() const;
    // The last listing's error, empty when it succeeded.
    QString errorString() const;

    FileItemPointer itemAt(int row) const;
    int rowOf(const QUrl &url) const;
    // Re-reads one row's file info and repaints it. Updates are gathered
    // and applied once per turn of the event loop (at most every 30 ms while
    // they keep coming), with one repaint for all rows, so that a burst of
    // thousands costs one pass.
    void updateFile(const QUrl &url);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

Q_SIGNALS:
    void loadingStarted();
    void loadingFinished(bool ok);
    // The user edited a name; the view asks for the rename.
    void renameRequested(const QUrl &url, const QString &newName);

private:
    void onItemsReady(const QVector<FileItemPointer> &batch);
    void onFinished(bool ok, const QString &error, const QSet<QString> &hidden, const QVector<FileItemPointer> &sorted);
    void flushIncoming();
    void startWatching();
    void queueChange(const QUrl &url, bool removed);
    void applyChanges();
    void insertSorted(const FileItemPointer &item);
    // Puts the rows in this order (the same rows), keeping persistent indexes.
    void applyOrder(const QVector<FileItemPointer> &sorted);
    void removeRow(int row);
    bool isShown(const QUrl &url, const hfmbase::FileInfoPointer &info) const;
    void invalidateIndex();
    int rowOfNormalized(const QUrl &url) const;
    void flushUpdates();

    QUrl root;
    QVector<FileItemPointer> items;
    mutable QHash<QUrl, int> rowIndex;
    mutable bool rowIndexValid = false;
    DirLoader *loader;
    bool loading = false;
    // Rows that arrived after the first batch, shown together a little later
    // so that a large listing does not relayout the view for every batch.
    QVector<FileItemPointer> incoming;
    QTimer incomingTimer;
    bool hiddenShown = false;
    QString error;
    QSet<QString> hiddenNames;
    hfmbase::AbstractFileWatcherPointer watcher;
    QHash<QUrl, bool> pending;   // URL -> removed
    QTimer changeTimer;
    QSet<QUrl> dirty;   // normalised URLs waiting for flushUpdates()
    QTimer updateTimer;
    QElapsedTimer lastUpdate;
};

}   // namespace hfmplugin_workspace
