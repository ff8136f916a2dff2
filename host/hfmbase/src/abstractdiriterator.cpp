// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractdiriterator.h"

#include "hfmbase/infofactory.h"
#include "keyedregistry.h"
#include "localdiriterator.h"

namespace hfmbase {

AbstractDirIterator::AbstractDirIterator(
    const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags)
{
    Q_UNUSED(url)
    Q_UNUSED(nameFilters)
    Q_UNUSED(filters)
    Q_UNUSED(flags)
}

AbstractDirIterator::~AbstractDirIterator() = default;

FileInfoPointer AbstractDirIterator::fileInfo() const
{
    const QUrl current = fileUrl();
    if (current.isEmpty())
        return {};
    return InfoFactory::create<FileInfo>(current);
}

void AbstractDirIterator::close() { }

// ---------------------------------------------------------------------------

namespace {

KeyedRegistry<DirIteratorFactory::Creator> &registry()
{
    static auto *r = makeSchemeRegistry<DirIteratorFactory::Creator>(
        [](const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags) {
            return AbstractDirIteratorPointer(new hfmio::LocalDirIterator(url, nameFilters, filters, flags));
        },
        "DirIteratorFactory::regCreator");
    return *r;
}

}   // namespace

bool DirIteratorFactory::regCreator(const QString &scheme, Creator creator, QString *errorString)
{
    return registry().addCreator(scheme, std::move(creator), "DirIteratorFactory::regCreator", "scheme", errorString);
}

AbstractDirIteratorPointer DirIteratorFactory::createIterator(const QUrl &url, const QStringList &nameFilters,
    QDir::Filters filters, QDirIterator::IteratorFlags flags, QString *errorString)
{
    Creator creator;
    if (!url.isValid() || !registry().find(url.scheme(), &creator)) {
        warnAt("DirIteratorFactory::createIterator",
            url.isValid() ? QStringLiteral("no iterator class is registered for the scheme \"%1\"").arg(url.scheme())
                          : QStringLiteral("cannot list the invalid URL \"%1\"").arg(url.toString()),
            errorString);
        return {};
    }
    return creator(url, nameFilters, filters, flags);
}

bool DirIteratorFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

}   // namespace hfmbase
