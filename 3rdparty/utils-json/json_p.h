// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

// State of a Json document and its recursive path operations.
class JsonPrivate
{
public:
    static QJsonValue getValue(const QJsonObject &from, const QString &path);
    static void setValue(QJsonObject &object, const QString &path, const QJsonValue &value);
    static void remove(QJsonObject &object, const QString &path);

    QJsonObject root;
    QJsonDocument document;
    bool valid = true;
    QString error;
};
