// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Reading the host's state document in tests: values by state path, and
// several members of an object checked at once.
#include "automation/jsonpath.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace statetest {

// The value at a state path ("windows/0/tabs/name=x/url"), or undefined.
inline QJsonValue at(const QJsonValue &root, const QString &path)
{
    QJsonValue value;
    QString error;
    return hdeapp::evaluateJsonPath(root, path, &value, &error) ? value : QJsonValue(QJsonValue::Undefined);
}

inline QJsonValue at(const QJsonValue &root, const char *path)
{
    return at(root, QString::fromUtf8(path));
}

// `json` (an object) in compact form; a marker that matches nothing when it does not parse.
inline QByteArray compact(const char *json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    return document.isObject() ? document.toJson(QJsonDocument::Compact) : QByteArray("<not a JSON object>");
}

// The members of `object` named in the JSON object `like`, in compact form;
// a member it lacks is left out.
inline QByteArray membersLike(const QJsonObject &object, const char *like)
{
    const QJsonObject wanted = QJsonDocument::fromJson(like).object();
    QJsonObject found;
    for (auto it = wanted.begin(); it != wanted.end(); ++it)
        found.insert(it.key(), object.value(it.key()));
    return QJsonDocument(found).toJson(QJsonDocument::Compact);
}

}   // namespace statetest

// Compares the members of `object` that `json` names with their values there.
// (Hidden from moc, whose macro expansion stumbles over raw strings.)
#ifndef Q_MOC_RUN
#define COMPARE_MEMBERS(object, json) QCOMPARE(statetest::membersLike(object, json), statetest::compact(json))
#endif
