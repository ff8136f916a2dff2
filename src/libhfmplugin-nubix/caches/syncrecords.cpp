// SPDX-License-Identifier: GPL-3.0-or-later
#include "syncrecords.h"

#include <QHash>

namespace hfmplugin_nubix {

namespace {

QVariantMap page(const char *type, const char *args)
{
    QVariantMap payload {{QStringLiteral("type"), QString::fromLatin1(type)}};
    if (args)
        payload.insert(QStringLiteral("args"), QString::fromLatin1(args));
    return payload;
}

}   // namespace

bool navigatePayload(PageType pageType, QVariantMap *payload)
{
    static const QHash<qint32, QVariantMap> table {
        {qint32(PageType::HomeWelcome), page("home", "welcome")},
        {qint32(PageType::HomeFile), page("home", "file")},
        {qint32(PageType::HomeFileDocs), page("home", "fileDocs")},
        {qint32(PageType::HomeFileRecycle), page("home", "fileRecycle")},
        {qint32(PageType::HomeSync), page("home", "sync")},
        {qint32(PageType::SyncList), page("sync", "syncList")},
        {qint32(PageType::ErrorList), page("sync", "errorList")},
        {qint32(PageType::Setting), page("setting", nullptr)},
    };
    const auto it = table.constFind(qint32(pageType));
    if (it == table.constEnd())
        return false;
    if (payload)
        *payload = it.value();
    return true;
}

void registerSyncRecordTypes()
{
    static const bool registered = [] {
        qRegisterMetaType<SyncQuantity>("SyncQuantity");
        qRegisterMetaType<SyncError>("SyncError");
        qRegisterMetaType<SyncInfo>("SyncInfo");
        qRegisterMetaType<AccountInfo>("AccountInfo");
        qRegisterMetaType<UserInfo>("UserInfo");
        qRegisterMetaType<FileData>("FileData");
        qRegisterMetaType<QList<FileData>>("QList<FileData>");
        qRegisterMetaType<PageType>("PageType");
        return true;
    }();
    Q_UNUSED(registered)
}

}   // namespace hfmplugin_nubix
