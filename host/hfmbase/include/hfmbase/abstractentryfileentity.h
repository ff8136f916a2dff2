// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QIcon>
#include <QObject>
#include <QSharedPointer>
#include <QUrl>
#include <QVariantHash>

#include <functional>

namespace hfmbase {

// One entry of the computer view, made from its entry URL
// ("entry:///name.suffix"). GUI thread; queried each time the view repaints,
// so answers must be cheap.
class HFMBASE_EXPORT AbstractEntryFileEntity : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AbstractEntryFileEntity)
public:
    explicit AbstractEntryFileEntity(const QUrl &url);
    ~AbstractEntryFileEntity() override;

    QUrl entryUrl() const;

    virtual QString displayName() const = 0;
    virtual QIcon icon() const = 0;
    virtual bool exists() const = 0;
    virtual bool showProgress() const = 0;
    virtual bool showTotalSize() const = 0;
    virtual bool showUsageSize() const = 0;
    // Rank inside the entry's group; smaller comes first.
    virtual int order() const = 0;
    virtual qint64 sizeTotal() const;
    virtual qint64 sizeUsage() const;
    virtual QString description() const;
    virtual void refresh();
    virtual QUrl targetUrl() const;
    virtual QVariantHash extraProperties() const;
    virtual void setExtraProperty(const QString &key, const QVariant &value);

protected:
    QUrl entryUrlValue;
    QVariantHash datas;
};

using EntryEntityPointer = QSharedPointer<AbstractEntryFileEntity>;

// Entry classes by the entry URL's suffix: "entry:///nubix.nubix" -> "nubix".
class HFMBASE_EXPORT EntryEntityFactory
{
public:
    using Creator = std::function<AbstractEntryFileEntity *(const QUrl &url)>;

    template <class T> static bool regClass(const QString &suffix, QString *errorString = nullptr)
    {
        return regCreator(
            suffix, [](const QUrl &url) -> AbstractEntryFileEntity * { return new T(url); }, errorString);
    }

    static bool regCreator(const QString &suffix, Creator creator, QString *errorString);
    static EntryEntityPointer create(const QUrl &entryUrl, QString *errorString = nullptr);
    static QString suffixOf(const QUrl &entryUrl);
};

}   // namespace hfmbase
