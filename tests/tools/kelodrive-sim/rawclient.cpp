// SPDX-License-Identifier: GPL-3.0-or-later
#include "rawclient.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QUuid>

#include <algorithm>

bool writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonValue follow(QJsonValue value, const QString &path)
{
    const QStringList parts = path.split(QLatin1Char('.'));
    for (const QString &part : parts) {
        if (part == u"#size"_s)
            return value.isArray() ? value.toArray().size() : value.toObject().size();
        bool isIndex = false;
        const int index = part.toInt(&isIndex);
        value = isIndex ? value.toArray().at(index) : value.toObject().value(part);
    }
    return value;
}

RawClient::RawClient(QObject *parent) : QObject(parent)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &RawClient::onReadyRead);
}

bool RawClient::connectTo(quint16 port, int timeoutMs)
{
    m_socket.connectToHost(u"127.0.0.1"_s, port);
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, timeoutMs);
}

bool RawClient::waitForDisconnected(int timeoutMs)
{
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, timeoutMs);
}

static QByteArray frame(const QString &type, const QJsonObject &body, bool indented)
{
    const QJsonObject env {{u"type"_s, type}, {u"data"_s, body}};
    return QJsonDocument(env).toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact) + '\x0c';
}

void RawClient::sendEnvelope(const QString &type, const QJsonObject &body, bool indented)
{
    sendRaw(frame(type, body, indented));
}

QByteArray RawClient::requestFrame(const QString &method, const QJsonObject &data, const QString &key, bool indented)
{
    const QJsonObject body {{u"from"_s, u"client"_s}, {u"to"_s, u"server"_s}, {u"method"_s, method}, {u"data"_s, data},
        {u"version"_s, 1}, {u"key"_s, key}, {u"timestamp"_s, QDateTime::currentMSecsSinceEpoch()}};
    return frame(u"ping"_s, body, indented);
}

QString RawClient::request(const QString &method, const QJsonObject &data, bool indented, const QString &key)
{
    const QString k = key.isEmpty() ? QUuid::createUuid().toString().chopped(1) : key;
    sendRaw(requestFrame(method, data, k, indented));
    return k;
}

QJsonValue RawClient::call(const QString &method, const QJsonObject &data)
{
    return follow(waitForResponse(request(method, data)), u"data.result"_s);
}

void RawClient::reply(const QJsonObject &question, const QJsonObject &data)
{
    QJsonObject body = question;
    body.insert(u"from"_s, u"client"_s);
    body.insert(u"to"_s, u"server"_s);
    body.insert(u"data"_s, data);
    sendEnvelope(u"pong"_s, body);
}

void RawClient::sendRaw(const QByteArray &bytes)
{
    m_socket.write(bytes);
    m_socket.flush();
}

void RawClient::onReadyRead()
{
    m_buffer.append(m_socket.readAll());
    int pos;
    while ((pos = m_buffer.indexOf('\x0c')) >= 0) {
        const QJsonDocument doc = QJsonDocument::fromJson(m_buffer.left(pos));
        m_buffer.remove(0, pos + 1);
        if (doc.isObject())
            envelopes.append(doc.object());
        else
            ++unparsable;
    }
}

QJsonObject RawClient::waitForEnvelope(const std::function<bool(const QJsonObject &)> &accept, int timeoutMs)
{
    QJsonObject found;
    const bool seen = QTest::qWaitFor(
        [&] {
            const auto it = std::find_if(envelopes.cbegin(), envelopes.cend(), accept);
            found = it == envelopes.cend() ? QJsonObject() : *it;
            return it != envelopes.cend();
        },
        timeoutMs);
    return seen ? found : QJsonObject();
}

QJsonObject RawClient::waitForResponse(const QString &key, int timeoutMs)
{
    const QJsonObject env = waitForEnvelope(
        [&](const QJsonObject &e) {
            return e.value(u"type"_s).toString() == u"pong"_s && follow(e, u"data.key"_s).toString() == key;
        },
        timeoutMs);
    return env.value(u"data"_s).toObject();
}

// The args of a notification of this type, or undefined.
static QJsonValue argsOf(const QJsonObject &env, const QString &type)
{
    if (env.value(u"type"_s).toString() != u"ping"_s || follow(env, u"data.method"_s).toString() != u"notify"_s
        || follow(env, u"data.data.type"_s).toString() != type)
        return QJsonValue(QJsonValue::Undefined);
    return follow(env, u"data.data.args"_s);
}

QList<QJsonValue> RawClient::notifications(const QString &type) const
{
    QList<QJsonValue> out;
    for (const QJsonObject &env : envelopes) {
        if (const QJsonValue args = argsOf(env, type); !args.isUndefined())
            out.append(args);
    }
    return out;
}

QJsonValue RawClient::waitForNotification(
    const QString &type, const std::function<bool(const QJsonValue &)> &accept, int timeoutMs)
{
    const auto wanted = [&](const QJsonObject &env) {
        const QJsonValue args = argsOf(env, type);
        return !args.isUndefined() && (!accept || accept(args));
    };
    return argsOf(waitForEnvelope(wanted, timeoutMs), type);
}

QList<int> RawClient::statusesOf(const QString &path) const
{
    QList<int> out;
    for (const QJsonValue &args : notifications(u"fileSyncStatus"_s)) {
        if (args.toObject().value(u"path"_s).toString() == path)
            out.append(args.toObject().value(u"plan_status"_s).toInt());
    }
    return out;
}

int RawClient::lastStatus(const QString &path) const
{
    const QList<int> statuses = statusesOf(path);
    return statuses.isEmpty() ? -1 : statuses.last();
}
