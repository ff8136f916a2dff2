// SPDX-License-Identifier: GPL-3.0-or-later
#include "json.h"
#include "json_p.h"

#include <QFile>
#include <QJsonParseError>
#include <QLoggingCategory>
#include <QTextStream>

namespace {
Q_LOGGING_CATEGORY(logJson, "org.sablo.hde.filemanager.plugin.hfmplugin_nubix")

const QLatin1Char kSeparator('.');
}   // namespace

QJsonValue JsonPrivate::getValue(const QJsonObject &from, const QString &path)
{
    const QStringList keys = path.split(kSeparator);
    QJsonObject current = from;
    for (int i = 0; i < keys.size() - 1; ++i)
        current = current.value(keys.at(i)).toObject();
    return current.value(keys.last());
}

void JsonPrivate::setValue(QJsonObject &object, const QString &path, const QJsonValue &value)
{
    const int dot = path.indexOf(kSeparator);
    if (dot < 0) {
        object.insert(path, value);
        return;
    }
    const QString key = path.left(dot);
    QJsonObject child = object.value(key).toObject();
    setValue(child, path.mid(dot + 1), value);
    object.insert(key, child);
}

void JsonPrivate::remove(QJsonObject &object, const QString &path)
{
    const int dot = path.indexOf(kSeparator);
    if (dot < 0) {
        object.remove(path);
        return;
    }
    // The same walk as setValue(): a missing or non-object step becomes an
    // empty object, and every object on the way is stored back.
    const QString key = path.left(dot);
    QJsonObject child = object.value(key).toObject();
    remove(child, path.mid(dot + 1));
    object.insert(key, child);
}

Json::Json(const QString &jsonOrFilePath, bool fromFile) : d(new JsonPrivate)
{
    QByteArray bytes("{}");
    if (fromFile) {
        QFile file(jsonOrFilePath);
        if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            bytes = file.readAll();
        } else {
            d->valid = false;
            d->error = QStringLiteral("Cannot open the file: %1").arg(jsonOrFilePath);
            qCDebug(logJson) << d->error;
        }
    } else if (!jsonOrFilePath.isEmpty()) {
        bytes = jsonOrFilePath.toUtf8();
    }

    QJsonParseError parseError;
    d->document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        d->valid = false;
        d->error = QStringLiteral("%1\nOffset: %2").arg(parseError.errorString()).arg(parseError.offset);
    }
    d->root = d->document.object();
}

Json::~Json()
{
    delete d;
}

bool Json::isValid() const
{
    return d->valid;
}

QString Json::errorString() const
{
    return d->error;
}

QJsonValue Json::getJsonValue(const QString &path, const QJsonObject &from) const
{
    return JsonPrivate::getValue(from.isEmpty() ? d->root : from, path);
}

int Json::getInt(const QString &path, int def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toInt(def);
}

bool Json::getBool(const QString &path, bool def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toBool(def);
}

double Json::getDouble(const QString &path, double def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toDouble(def);
}

QString Json::getString(const QString &path, const QString &def, const QJsonObject &from) const
{
    return getJsonValue(path, from).toString(def);
}

QJsonObject Json::getJsonObject(const QString &path, const QJsonObject &from) const
{
    return getJsonValue(path, from).toObject();
}

QJsonArray Json::getJsonArray(const QString &path, const QJsonObject &from) const
{
    if ((path.isEmpty() || path == QLatin1String(".")) && from.isEmpty())
        return d->document.array();
    return getJsonValue(path, from).toArray();
}

QStringList Json::getStringList(const QString &path, const QJsonObject &from) const
{
    const QJsonArray array = getJsonArray(path, from);
    QStringList list;
    list.reserve(array.size());
    for (const QJsonValue &value : array)
        list.append(value.toString());
    return list;
}

void Json::set(const QString &path, const QJsonValue &value)
{
    JsonPrivate::setValue(d->root, path, value);
}

void Json::set(const QString &path, const QStringList &list)
{
    set(path, QJsonArray::fromStringList(list));
}

void Json::remove(const QString &path)
{
    JsonPrivate::remove(d->root, path);
}

QString Json::toString(bool pretty) const
{
    return QString::fromUtf8(QJsonDocument(d->root).toJson(pretty ? QJsonDocument::Indented : QJsonDocument::Compact));
}

bool Json::save(const QString &path, bool pretty) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return false;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << toString(pretty);
    stream.flush();
    const bool ok = stream.status() == QTextStream::Ok;
    file.close();
    return ok && file.error() == QFileDevice::NoError;
}
