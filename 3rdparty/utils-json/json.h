// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

class JsonPrivate;

// A JSON object document addressed by dotted paths ("a.b.c"): typed getters
// with defaults, set and remove, compact or indented output. Not thread-safe;
// every call is synchronous (only the file constructor and save() touch disk).
// A key that itself contains a dot cannot be addressed.
class Json
{
public:
    // With fromFile the argument is a file path, otherwise the JSON text.
    // An empty text gives an empty, valid object.
    explicit Json(const QString &jsonOrFilePath = QString(), bool fromFile = false);
    ~Json();
    Json(const Json &) = delete;
    Json &operator=(const Json &) = delete;

    // False when the file could not be read or the text did not parse.
    bool isValid() const;
    // Why isValid() is false; empty otherwise.
    QString errorString() const;

    // The value at path, looked up in `from`, or in the root when `from` is empty.
    QJsonValue getJsonValue(const QString &path, const QJsonObject &from = QJsonObject()) const;
    int getInt(const QString &path, int def = 0, const QJsonObject &from = QJsonObject()) const;
    bool getBool(const QString &path, bool def = false, const QJsonObject &from = QJsonObject()) const;
    double getDouble(const QString &path, double def = 0.0, const QJsonObject &from = QJsonObject()) const;
    QString getString(
        const QString &path, const QString &def = QString(), const QJsonObject &from = QJsonObject()) const;
    QJsonObject getJsonObject(const QString &path, const QJsonObject &from = QJsonObject()) const;
    // With path "." or empty and no `from`: the top-level array of an array document.
    QJsonArray getJsonArray(const QString &path, const QJsonObject &from = QJsonObject()) const;
    QStringList getStringList(const QString &path, const QJsonObject &from = QJsonObject()) const;

    // set() and remove() leave the document alone, with a warning, for a path
    // of more keys than this: Qt reads a document back only up to 1024 levels
    // deep, values nested in the last key included.
    static constexpr int kMaxPathKeys = 512;

    // Missing or non-object intermediate values become empty objects.
    void set(const QString &path, const QJsonValue &value);
    void set(const QString &path, const QStringList &list);
    // Removes the last key of path, walking the way as set() does: missing or
    // non-object intermediate values become empty objects.
    void remove(const QString &path);

    // The offset of the first key that an object of the JSON text repeats
    // while its earlier value is an object or an array, or -1. Qt 5.15's
    // parser never frees such an earlier value, so text like that must not
    // reach it. Nothing else is checked; one pass, no allocation for usual text.
    static int repeatedContainerKeyAt(const QByteArray &text);

    QString toString(bool pretty = false) const;
    // Writes toString(pretty) to path, replacing the file; false when it cannot be written.
    bool save(const QString &path, bool pretty = false) const;

private:
    JsonPrivate *d;
};
