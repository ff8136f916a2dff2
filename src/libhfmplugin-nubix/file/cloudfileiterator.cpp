// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudfileiterator.h"

#include "nubixglobal.h"
#include "utils/nubixutils.h"

#include <hfmbase/infofactory.h>

namespace hfmplugin_nubix {

CloudFileIterator::CloudFileIterator(
    const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags)
    : AbstractDirIterator(url, nameFilters, filters, flags)
{
    const QUrl localUrl = NubixUtils::cloudToLocal(url);
    nubixDebug() << "start iterator" << url << "proxy is:" << localUrl;
    proxy = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(localUrl, nameFilters, filters, flags);
}

CloudFileIterator::~CloudFileIterator() = default;

QUrl CloudFileIterator::next()
{
    // Stays a local URL: the cloud form of the entry comes from fileUrl().
    return proxy ? proxy->next() : QUrl();
}

bool CloudFileIterator::hasNext() const
{
    return proxy && proxy->hasNext();
}

QString CloudFileIterator::fileName() const
{
    return proxy ? proxy->fileName() : QString();
}

QUrl CloudFileIterator::fileUrl() const
{
    return proxy ? NubixUtils::localToCloud(proxy->fileUrl()) : QUrl();
}

QUrl CloudFileIterator::url() const
{
    return proxy ? NubixUtils::localToCloud(proxy->url()) : QUrl();
}

hfmbase::FileInfoPointer CloudFileIterator::fileInfo() const
{
    if (!proxy)
        return {};
    // Made through the factory, so the host's cache rules for "nubix" apply.
    return hfmbase::InfoFactory::create<hfmbase::FileInfo>(NubixUtils::localToCloud(proxy->fileUrl()));
}

}   // namespace hfmplugin_nubix
