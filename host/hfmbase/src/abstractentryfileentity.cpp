// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractentryfileentity.h"

#include "keyedregistry.h"

namespace hfmbase {

AbstractEntryFileEntity::AbstractEntryFileEntity(const QUrl &url) : entryUrlValue(url) { }

AbstractEntryFileEntity::~AbstractEntryFileEntity() = default;

QUrl AbstractEntryFileEntity::entryUrl() const
{
    return entryUrlValue;
}

qint64 AbstractEntryFileEntity::sizeTotal() const
{
    return 0;
}

qint64 AbstractEntryFileEntity::sizeUsage() const
{
    return 0;
}

QString AbstractEntryFileEntity::description() const
{
    return QString();
}

void AbstractEntryFileEntity::refresh() { }

QUrl AbstractEntryFileEntity::targetUrl() const
{
    return QUrl();
}

QVariantHash AbstractEntryFileEntity::extraProperties() const
{
    return datas;
}

void AbstractEntryFileEntity::setExtraProperty(const QString &key, const QVariant &value)
{
    datas.insert(key, value);
}

// ---------------------------------------------------------------------------

namespace {

KeyedRegistry<EntryEntityFactory::Creator> &registry()
{
    // Never destroyed: its creators may live in plug-ins unloaded before exit.
    static auto *r = new KeyedRegistry<EntryEntityFactory::Creator>;
    return *r;
}

}   // namespace

bool EntryEntityFactory::regCreator(const QString &suffix, Creator creator, QString *errorString)
{
    return registry().addCreator(suffix, std::move(creator), "EntryEntityFactory::regCreator", "suffix", errorString);
}

EntryEntityPointer EntryEntityFactory::create(const QUrl &entryUrl, QString *errorString)
{
    const QString suffix = suffixOf(entryUrl);
    Creator creator;
    if (suffix.isEmpty() || !registry().find(suffix, &creator)) {
        warnAt("EntryEntityFactory::create",
            QStringLiteral("no entry class is registered for \"%1\"").arg(entryUrl.toString()), errorString);
        return {};
    }
    return EntryEntityPointer(creator(entryUrl));
}

QString EntryEntityFactory::suffixOf(const QUrl &entryUrl)
{
    const QString path = entryUrl.path(QUrl::FullyDecoded);
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

}   // namespace hfmbase
