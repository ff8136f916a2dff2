// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "caches/syncrecords.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

// The records as maps, so that a test compares whole records and a failure
// shows the differing field. Keys are the field names.
namespace recordmaps {

using namespace hfmplugin_nubix;

inline QVariantMap toMap(const SyncQuantity &q)
{
    return {{QStringLiteral("todo"), q.todo}, {QStringLiteral("doing"), q.doing}, {QStringLiteral("done"), q.done},
        {QStringLiteral("error"), q.error}};
}

inline QVariantMap toMap(const SyncError &e)
{
    return {{QStringLiteral("isPaused"), e.isPaused}, {QStringLiteral("isRemoteSpaceLow"), e.isRemoteSpaceLow},
        {QStringLiteral("isLocalSpaceLow"), e.isLocalSpaceLow},
        {QStringLiteral("isLocalPathExist"), e.isLocalPathExist},
        {QStringLiteral("isLocalPermitionForbid"), e.isLocalPermitionForbid},
        {QStringLiteral("isUnknown"), e.isUnknown}, {QStringLiteral("isFlowEmpty"), e.isFlowEmpty},
        {QStringLiteral("isOnline"), e.isOnline}};
}

inline QVariantMap toMap(const SyncInfo &s)
{
    return {{QStringLiteral("syncRoot"), s.syncRoot}, {QStringLiteral("banDirs"), s.banDirs},
        {QStringLiteral("syncQuantity"), toMap(s.syncQuantity)}, {QStringLiteral("syncErrors"), toMap(s.syncErrors)},
        {QStringLiteral("syncInited"), s.syncInited}, {QStringLiteral("isPublicCloud"), s.isPublicCloud},
        {QStringLiteral("isDisconnected"), s.isDisconnected}};
}

inline QVariantMap toMap(const AccountInfo &a)
{
    return {{QStringLiteral("uid"), a.uid}, {QStringLiteral("phone"), a.phone},
        {QStringLiteral("nickname"), a.nickname}, {QStringLiteral("email"), a.email},
        {QStringLiteral("avatarLink"), a.avatarLink}, {QStringLiteral("bookType"), a.bookType},
        {QStringLiteral("isAdmin"), a.isAdmin}};
}

inline QVariantMap toMap(const UserInfo &u)
{
    return {{QStringLiteral("account"), toMap(u.account)}, {QStringLiteral("free"), u.free},
        {QStringLiteral("used"), u.used}, {QStringLiteral("total"), u.total}, {QStringLiteral("relative"), u.relative},
        {QStringLiteral("quota"), u.quota}};
}

inline QVariantMap toMap(const FileData &f)
{
    return {{QStringLiteral("path"), f.path}, {QStringLiteral("isDir"), f.isDir}, {QStringLiteral("fileId"), f.fileId},
        {QStringLiteral("plan"), f.plan}, {QStringLiteral("planStatus"), f.planStatus},
        {QStringLiteral("planError"), f.planError}};
}

// A field of a record map with changes laid over it: nested records are
// merged field by field, other values take the field's type.
inline QVariant merged(const QVariant &base, const QVariant &change)
{
    if (base.userType() == QMetaType::QVariantMap) {
        QVariantMap map = base.toMap();
        const QVariantMap changes = change.toMap();
        for (auto it = changes.cbegin(); it != changes.cend(); ++it)
            map.insert(it.key(), merged(map.value(it.key()), it.value()));
        return map;
    }
    QVariant value = change;
    if (base.isValid())
        value.convert(base.userType());
    return value;
}

// The map of a default record with the fields of a JSON object replaced.
template <class Record> QVariantMap defaultsWith(const QByteArray &json)
{
    return merged(toMap(Record()), QJsonDocument::fromJson(json).object().toVariantMap()).toMap();
}

}   // namespace recordmaps
