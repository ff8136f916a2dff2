// SPDX-License-Identifier: GPL-3.0-or-later
#include "jsonpath.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace hdeapp {

namespace {

bool splitPath(const QString &path, QStringList *steps, QString *error)
{
    QString step;
    int depth = 0;
    for (const QChar c : path) {
        if (c == QLatin1Char('[') && step.isEmpty() && depth == 0) {
            depth = 1;
            continue;
        }
        if (depth > 0) {
            if (c == QLatin1Char(']')) {
                depth = 0;
                continue;
            }
            step.append(c);
            continue;
        }
        if (c == QLatin1Char('/')) {
            if (!step.isEmpty())
                steps->append(step);
            step.clear();
            continue;
        }
        step.append(c);
    }
    if (depth > 0) {
        *error = QStringLiteral("unterminated '[' in the path");
        return false;
    }
    if (!step.isEmpty())
        steps->append(step);
    return true;
}

QString scalarText(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Double: {
        const double d = value.toDouble();
        if (d == double(qint64(d)))
            return QString::number(qint64(d));
        return QString::number(d);
    }
    case QJsonValue::Null:
        return QStringLiteral("null");
    default:
        return QString();
    }
}

}   // namespace

bool evaluateJsonPath(const QJsonValue &root, const QString &path, QJsonValue *out, QString *error)
{
    QStringList steps;
    if (!splitPath(path, &steps, error))
        return false;
    QJsonValue current = root;
    for (int i = 0; i < steps.size(); ++i) {
        const QString &step = steps.at(i);
        if (step == QLatin1String("#")) {
            if (i != steps.size() - 1) {
                *error = QStringLiteral("'#' must be the last step");
                return false;
            }
            if (current.isArray())
                current = current.toArray().size();
            else if (current.isObject())
                current = current.toObject().size();
            else {
                *error = QStringLiteral("'#' needs an array or an object");
                return false;
            }
            continue;
        }
        if (current.isArray()) {
            const QJsonArray array = current.toArray();
            bool isIndex = false;
            const int index = step.toInt(&isIndex);
            if (isIndex) {
                const int real = index < 0 ? array.size() + index : index;
                if (real < 0 || real >= array.size()) {
                    *error
                        = QStringLiteral("no element %1 in \"%2\"").arg(step, steps.mid(0, i).join(QLatin1Char('/')));
                    return false;
                }
                current = array.at(real);
                continue;
            }
            const int eq = step.indexOf(QLatin1Char('='));
            if (eq <= 0) {
                *error = QStringLiteral("\"%1\" is neither an index nor a key=value selector").arg(step);
                return false;
            }
            const QString key = step.left(eq);
            const QString wanted = step.mid(eq + 1);
            bool found = false;
            for (const QJsonValue &element : array) {
                if (element.isObject() && element.toObject().contains(key)
                    && scalarText(element.toObject().value(key)) == wanted) {
                    current = element;
                    found = true;
                    break;
                }
            }
            if (!found) {
                *error = QStringLiteral("no element with %1").arg(step);
                return false;
            }
            continue;
        }
        if (current.isObject()) {
            const QJsonObject object = current.toObject();
            if (!object.contains(step)) {
                *error = QStringLiteral("no member \"%1\"").arg(step);
                return false;
            }
            current = object.value(step);
            continue;
        }
        *error = QStringLiteral("cannot step into a scalar at \"%1\"").arg(step);
        return false;
    }
    *out = current;
    return true;
}

QJsonValue parseJsonValueText(const QString &text)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(QByteArray("[") + text.toUtf8() + QByteArray("]"), &parseError);
    if (parseError.error == QJsonParseError::NoError && doc.isArray() && doc.array().size() == 1)
        return doc.array().at(0);
    return QJsonValue(text);
}

QString jsonValueText(const QJsonValue &value)
{
    const QByteArray wrapped = QJsonDocument(QJsonArray {value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(wrapped.mid(1, wrapped.size() - 2));
}

}   // namespace hdeapp
