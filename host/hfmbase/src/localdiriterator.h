// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbase/abstractdiriterator.h"

#include <memory>

namespace hfmio {

// Lists a local directory with QDirIterator: name filters, QDir filters and
// iterator flags mean exactly what they mean there. The info of an entry is
// made from the status the listing already read.
class LocalDirIterator : public hfmbase::AbstractDirIterator
{
    Q_OBJECT
public:
    LocalDirIterator(const QUrl &url, const QStringList &nameFilters = QStringList(),
        QDir::Filters filters = QDir::NoFilter, QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags);
    ~LocalDirIterator() override;

    QUrl next() override;
    bool hasNext() const override;
    QString fileName() const override;
    QUrl fileUrl() const override;
    QUrl url() const override;
    hfmbase::FileInfoPointer fileInfo() const override;
    void close() override;

private:
    QUrl dirUrl;
    QUrl current;
    std::unique_ptr<QDirIterator> iterator;
    bool closed = false;
};

}   // namespace hfmio
