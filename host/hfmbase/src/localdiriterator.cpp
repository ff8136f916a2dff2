// SPDX-License-Identifier: GPL-3.0-or-later
#include "localdiriterator.h"

#include "hfmbaselog.h"
#include "infofactory_p.h"

namespace hfmio {

LocalDirIterator::LocalDirIterator(
    const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags)
    : AbstractDirIterator(url, nameFilters, filters, flags), dirUrl(url)
{
    const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
    // An empty path would make QDirIterator list the working directory.
    if (path.isEmpty()) {
        hfmbase::warnAt(
            "LocalDirIterator::LocalDirIterator", QStringLiteral("not a local directory: \"%1\"").arg(url.toString()));
        return;
    }
    iterator = std::make_unique<QDirIterator>(path, nameFilters, filters, flags);
}

LocalDirIterator::~LocalDirIterator() = default;

QUrl LocalDirIterator::next()
{
    if (!hasNext()) {
        current = QUrl();
        return current;
    }
    current = QUrl::fromLocalFile(iterator->next());
    return current;
}

bool LocalDirIterator::hasNext() const
{
    return !closed && iterator && iterator->hasNext();
}

QString LocalDirIterator::fileName() const
{
    return iterator && !current.isEmpty() ? iterator->fileName() : QString();
}

QUrl LocalDirIterator::fileUrl() const
{
    return current;
}

QUrl LocalDirIterator::url() const
{
    return dirUrl;
}

hfmbase::FileInfoPointer LocalDirIterator::fileInfo() const
{
    if (!iterator || current.isEmpty())
        return {};
    return hfmbase::createLocalEntryInfo(current, iterator->fileInfo());
}

void LocalDirIterator::close()
{
    closed = true;
}

}   // namespace hfmio
