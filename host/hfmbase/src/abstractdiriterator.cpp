// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractdiriterator.h"

#include "hfmbase/infofactory.h"
#include "hfmbase/metatypes.h"
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

class IteratorRegistry : public KeyedRegistry<DirIteratorFactory::Creator>
{
public:
    IteratorRegistry()
    {
        registerMetaTypes();
        add(
            QStringLiteral("file"),
            [](const QUrl &url, const QStringList &nameFilters, QDir::Filters filters,
                QDirIterator::IteratorFlags flags) {
                return AbstractDirIteratorPointer(new hfmio::LocalDirIterator(url, nameFilters, filters, flags));
            },
            "DirIteratorFactory::regCreator", "scheme", nullptr);
    }
};

IteratorRegistry &registry()
{
    // Never destroyed: its creators may live in plug-ins unloaded before exit.
    static auto *r = new IteratorRegistry;
    return *r;
}

}   // namespace

bool DirIteratorFactory::regCreator(const QString &scheme, Creator creator, QString *errorString)
{
    if (!creator) {
        const QString error = QStringLiteral("no creator given for the scheme \"%1\"").arg(scheme);
        warnAt("DirIteratorFactory::regCreator", error);
        setError(errorString, error);
        return false;
    }
    return registry().add(scheme, std::move(creator), "DirIteratorFactory::regCreator", "scheme", errorString);
}

AbstractDirIteratorPointer DirIteratorFactory::createIterator(const QUrl &url, const QStringList &nameFilters,
    QDir::Filters filters, QDirIterator::IteratorFlags flags, QString *errorString)
{
    Creator creator;
    if (!url.isValid() || !registry().find(url.scheme(), &creator)) {
        const QString error = url.isValid()
            ? QStringLiteral("no iterator class is registered for the scheme \"%1\"").arg(url.scheme())
            : QStringLiteral("cannot list the invalid URL \"%1\"").arg(url.toString());
        warnAt("DirIteratorFactory::createIterator", error);
        setError(errorString, error);
        return {};
    }
    return creator(url, nameFilters, filters, flags);
}

bool DirIteratorFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

}   // namespace hfmbase
