// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractdiriterator.h>

namespace hfmplugin_nubix {

// Lists a "nubix" directory by driving the host's own iterator of the local
// folder behind it. Entries keep their local URL in next(); fileUrl(), url()
// and fileInfo() speak in cloud terms. Made by the host's iterator factory on
// the listing thread and driven by one thread at a time. When the host has no
// iterator for the local folder it lists nothing.
class CloudFileIterator : public hfmbase::AbstractDirIterator
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudFileIterator)
public:
    CloudFileIterator(const QUrl &url, const QStringList &nameFilters = QStringList(),
        QDir::Filters filters = QDir::NoFilter, QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags);
    ~CloudFileIterator() override;

    QUrl next() override;
    bool hasNext() const override;
    QString fileName() const override;
    QUrl fileUrl() const override;
    QUrl url() const override;
    hfmbase::FileInfoPointer fileInfo() const override;

private:
    hfmbase::AbstractDirIteratorPointer proxy;
};

}   // namespace hfmplugin_nubix
