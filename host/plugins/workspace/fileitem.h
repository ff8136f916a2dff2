// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/fileinfo.h>

#include <QDateTime>
#include <QSharedPointer>

namespace hfmplugin_workspace {

// One row of a file view. Made on the listing thread with everything
// sorting and hiding need; icon and type name are filled lazily on the GUI
// thread when a view first shows the row.
struct FileItem
{
    FileItem(const hfmbase::FileInfoPointer &info, const QUrl &url);

    hfmbase::FileInfoPointer info;
    QUrl url;
    QString name;
    bool isDir = false;
    qint64 size = 0;
    QDateTime modified;
    // The name case folded with its numbers padded: compared as plain text
    // it gives the reading order, in any locale, cheaply.
    QString key;

    // GUI thread only.
    QIcon icon() const;
    QString typeName() const;

private:
    mutable QIcon iconCache;
    mutable QString typeCache;
    mutable bool iconKnown = false;
    mutable bool typeKnown = false;
};

using FileItemPointer = QSharedPointer<FileItem>;

// Folders first, then by name as people read numbers ("2" before "10").
bool itemLessThan(const FileItemPointer &a, const FileItemPointer &b);
// Made from a file info (and its URL); null when there is no info.
FileItemPointer makeItem(const hfmbase::FileInfoPointer &info, const QUrl &url);

}   // namespace hfmplugin_workspace
