// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/fileinfo.h>

#include <QDir>
#include <QDirIterator>
#include <QObject>
#include <QStringList>

#include <functional>

namespace hfmbase {

// Lists one directory with QDirIterator semantics. Made by the factory on
// whatever thread lists; driven by one thread at a time. The usual loop is
// hasNext(), next(), then fileUrl()/fileInfo() for the current entry.
class HFMBASE_EXPORT AbstractDirIterator : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractDirIterator)
public:
    AbstractDirIterator(const QUrl &url, const QStringList &nameFilters = QStringList(),
        QDir::Filters filters = QDir::NoFilter, QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags);
    ~AbstractDirIterator() override;

    virtual QUrl next() = 0;
    virtual bool hasNext() const = 0;
    virtual QString fileName() const = 0;
    virtual QUrl fileUrl() const = 0;
    // The listed directory.
    virtual QUrl url() const = 0;
    // Info of the current entry, made through InfoFactory by default.
    virtual FileInfoPointer fileInfo() const;
    virtual void close();
};

using AbstractDirIteratorPointer = QSharedPointer<AbstractDirIterator>;

// Creates iterators by URL scheme. The host's own iterator serves "file".
class HFMBASE_EXPORT DirIteratorFactory
{
public:
    using Creator = std::function<AbstractDirIteratorPointer(
        const QUrl &, const QStringList &, QDir::Filters, QDirIterator::IteratorFlags)>;

    template <class T> static bool regClass(const QString &scheme, QString *errorString = nullptr)
    {
        return regCreator(
            scheme,
            [](const QUrl &url, const QStringList &nameFilters, QDir::Filters filters,
                QDirIterator::IteratorFlags flags) {
                return AbstractDirIteratorPointer(new T(url, nameFilters, filters, flags));
            },
            errorString);
    }
    template <class T = AbstractDirIterator>
    static QSharedPointer<T> create(const QUrl &url, const QStringList &nameFilters = QStringList(),
        QDir::Filters filters = QDir::NoFilter, QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags,
        QString *errorString = nullptr)
    {
        return qSharedPointerDynamicCast<T>(createIterator(url, nameFilters, filters, flags, errorString));
    }

    static bool regCreator(const QString &scheme, Creator creator, QString *errorString);
    static AbstractDirIteratorPointer createIterator(const QUrl &url, const QStringList &nameFilters,
        QDir::Filters filters, QDirIterator::IteratorFlags flags, QString *errorString);
    static bool isRegistered(const QString &scheme);
};

}   // namespace hfmbase
