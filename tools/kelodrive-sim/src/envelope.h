// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace kelodrive {

// The JSON wrapper of every message: {"type": "ping"|"pong", "data": body}.
namespace envelope {

// A fresh request key: a braced UUID without its closing brace (37 characters).
QString newKey();

// The body the simulator sends, "from" the server "to" the client.
QJsonObject body(const QString &method, const QJsonValue &data, const QString &key);

// The serialised envelope, framed (ends with 0x0C).
QByteArray encode(const QString &type, const QJsonObject &body, bool indented);
QByteArray ping(const QString &method, const QJsonValue &data, bool indented);
QByteArray notification(const QString &name, const QJsonValue &args, bool indented);
QByteArray response(const QString &method, const QString &key, int code, const QJsonValue &result, bool indented);
// The same with "result" given as serialised JSON text, for answers too large to build as objects.
QByteArray rawResponse(
    const QString &method, const QString &key, int code, const QByteArray &resultJson, bool indented);
// A JSON string literal, quotes included.
void appendJsonString(QByteArray &out, const QString &text);

// What a peer sent; ok is false with a reason when the frame cannot be used.
struct Incoming
{
    bool ok = false;
    QString error;
    QJsonObject message;   // the whole envelope
    QString type;   // "ping" or "pong"
    QJsonObject body;   // "data" of the envelope
    QString method;
    QString key;
};
Incoming parse(const QByteArray &frame);

}   // namespace envelope
}   // namespace kelodrive
