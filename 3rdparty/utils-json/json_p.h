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
    static void setValue(QJsonObject &object, QStringView path, const QJsonValue &value);
    static void remove(QJsonObject &object, QStringView path);
    template <typename Change> static void change(QJsonObject &root, QStringView path, Change change);
    // Whether the path has more keys than set() and remove() take; logs why.
    static bool refused(const QString &path, const char *operation);

    QJsonObject root;
    QJsonDocument document;
    bool valid = true;
    QString error;
};
