// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileitem.h"

#include <QObject>
#include <QSet>
#include <QUrl>
#include <QVector>

#include <atomic>
#include <memory>

namespace hfmplugin_workspace {

// Lists a directory through the iterator factory on a worker thread and
// hands the rows to the GUI thread in batches, then all of them sorted, so
// the GUI thread neither waits on the file system nor sorts. Starting again or destroying
// the loader cancels the listing in progress; its late batches are dropped.
// Lives on and signals on the GUI thread.
class DirLoader : public QObject
{
    Q_OBJECT
public:
    explicit DirLoader(QObject *parent = nullptr);
    ~DirLoader() override;

    void start(const QUrl &url, bool showHidden);
    void cancel();
    bool isRunning() const;

Q_SIGNALS:
    void itemsReady(const QVector<hfmplugin_workspace::FileItemPointer> &items);
    // `sorted` holds every row of the batches in itemLessThan order;
    // `hiddenNames` are the names the folder's ".hidden" file lists.
    void finished(bool ok, const QString &error, const QSet<QString> &hiddenNames,
        const QVector<hfmplugin_workspace::FileItemPointer> &sorted);

private:
    struct Job;

    quint64 generation = 0;
    bool running = false;
    std::shared_ptr<std::atomic<bool>> cancelled;
};

// Names listed in the ".hidden" file of a directory, read through its local
// URL; empty when there is none. Any thread.
QSet<QString> readHiddenNames(const QUrl &dirUrl);

}   // namespace hfmplugin_workspace
