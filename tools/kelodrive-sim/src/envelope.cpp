// SPDX-License-Identifier: GPL-3.0-or-later
#include "envelope.h"

#include "framereader.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QUuid>

namespace kelodrive {
namespace envelope {

QString newKey()
{
    QString key = QUuid::createUuid().toString();
    key.chop(1);
    return key;
}

QJsonObject body(const QString &method, const QJsonValue &data, const QString &key)
{
    QJsonObject b;
    b.insert(QLatin1String("from"), QLatin1String("server"));
    b.insert(QLatin1String("to"), QLatin1String("client"));
    b.insert(QLatin1String("method"), method);
    b.insert(QLatin1String("data"), data);
    b.insert(QLatin1String("version"), 1);
    b.insert(QLatin1String("key"), key);
    b.insert(QLatin1String("timestamp"), QDateTime::currentMSecsSinceEpoch());
    return b;
}

QByteArray encode(const QString &type, const QJsonObject &body, bool indented)
{
    QJsonObject env;
    env.insert(QLatin1String("type"), type);
    env.insert(QLatin1String("data"), body);
    return FrameReader::frame(QJsonDocument(env).toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact));
}

QByteArray ping(const QString &method, const QJsonValue &data, bool indented)
{
    return encode(QStringLiteral("ping"), body(method, data, newKey()), indented);
}

QByteArray notification(const QString &name, const QJsonValue &args, bool indented)
{
    QJsonObject data;
    data.insert(QLatin1String("type"), name);
    data.insert(QLatin1String("args"), args);
    return ping(QStringLiteral("notify"), data, indented);
}

QByteArray response(const QString &method, const QString &key, int code, const QJsonValue &result, bool indented)
{
    QJsonObject data;
    data.insert(QLatin1String("code"), code);
    data.insert(QLatin1String("result"), result);
    return encode(QStringLiteral("pong"), body(method, data, key), indented);
}

QByteArray rawResponse(const QString &method, const QString &key, int code, const QByteArray &resultJson, bool indented)
{
    QJsonObject data;
    data.insert(QLatin1String("code"), code);
    data.insert(QLatin1String("result"), QJsonValue::Null);
    QByteArray bytes = encode(QStringLiteral("pong"), body(method, data, key), indented);
    // Keys are sorted, so the first "result" is ours: "data" comes before anything a peer
    // chose, and inside it "code" before "result". Quotes inside strings are escaped, so a
    // peer's key cannot imitate the placeholder.
    const QByteArray placeholder = indented ? QByteArray("\"result\": null") : QByteArray("\"result\":null");
    const int at = bytes.indexOf(placeholder);
    if (at < 0)
        return bytes;
    const int valueAt = at + placeholder.size() - 4;
    bytes.replace(valueAt, 4, resultJson);
    return bytes;
}

void appendJsonString(QByteArray &out, const QString &text)
{
    static const char hex[] = "0123456789abcdef";
    out.append('"');
    const QByteArray utf8 = text.toUtf8();
    for (const char c : utf8) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out.append('\\');
            out.append(c);
        } else if (u < 0x20) {
            out.append("\\u00");
            out.append(hex[u >> 4]);
            out.append(hex[u & 0xf]);
        } else {
            out.append(c);
        }
    }
    out.append('"');
}

Incoming parse(const QByteArray &frame)
{
    Incoming in;
    if (frame.trimmed().isEmpty()) {
        in.error = QStringLiteral("empty frame");
        return in;
    }
    QJsonParseError err;
    const QJsonDocument doc = QJsonDocument::fromJson(frame, &err);
    if (err.error != QJsonParseError::NoError) {
        in.error = QStringLiteral("not JSON (%1 at offset %2)").arg(err.errorString()).arg(err.offset);
        return in;
    }
    if (!doc.isObject()) {
        in.error = QStringLiteral("not a JSON object");
        return in;
    }
    in.message = doc.object();
    const QJsonValue type = in.message.value(QLatin1String("type"));
    in.type = type.toString();
    if (in.type != QLatin1String("ping") && in.type != QLatin1String("pong")) {
        in.error = QStringLiteral("\"type\" is neither \"ping\" nor \"pong\"");
        return in;
    }
    const QJsonValue data = in.message.value(QLatin1String("data"));
    if (!data.isObject() || data.toObject().isEmpty()) {
        in.error = QStringLiteral("\"data\" is not a non-empty object");
        return in;
    }
    in.body = data.toObject();
    in.method = in.body.value(QLatin1String("method")).toString();
    if (in.method.isEmpty()) {
        in.error = QStringLiteral("no \"method\"");
        return in;
    }
    in.key = in.body.value(QLatin1String("key")).toString();
    in.ok = true;
    return in;
}

}   // namespace envelope
}   // namespace kelodrive
