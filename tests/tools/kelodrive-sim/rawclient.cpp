// SPDX-License-Identifier: GPL-3.0-or-later
#include "rawclient.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QTest>
#include <QUuid>

RawClient::RawClient(QObject *parent) : QObject(parent)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &RawClient::onReadyRead);
}

bool RawClient::connectTo(quint16 port, int timeoutMs)
{
    m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, timeoutMs);
}

bool RawClient::waitForDisconnected(int timeoutMs)
{
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, timeoutMs);
}

void RawClient::sendEnvelope(const QString &type, const QJsonObject &body, bool indented)
{
    QJsonObject env;
    env.insert(QStringLiteral("type"), type);
    env.insert(QStringLiteral("data"), body);
    sendRaw(QJsonDocument(env).toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact) + '\x0c');
}

QString RawClient::request(const QString &method, const QJsonObject &data, bool indented)
{
    QString key = QUuid::createUuid().toString();
    key.chop(1);
    QJsonObject body;
    body.insert(QStringLiteral("from"), QStringLiteral("client"));
    body.insert(QStringLiteral("to"), QStringLiteral("server"));
    body.insert(QStringLiteral("method"), method);
    body.insert(QStringLiteral("data"), data);
    body.insert(QStringLiteral("version"), 1);
    body.insert(QStringLiteral("key"), key);
    body.insert(QStringLiteral("timestamp"), QDateTime::currentMSecsSinceEpoch());
    sendEnvelope(QStringLiteral("ping"), body, indented);
    return key;
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

QJsonObject RawClient::waitForResponse(const QString &key, int timeoutMs)
{
    QJsonObject found;
    const bool answered = QTest::qWaitFor(
        [&] {
            for (const QJsonObject &env : qAsConst(envelopes)) {
                const QJsonObject body = env.value(QStringLiteral("data")).toObject();
                if (env.value(QStringLiteral("type")).toString() == QStringLiteral("pong")
                    && body.value(QStringLiteral("key")).toString() == key) {
                    found = body;
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    return answered ? found : QJsonObject();
}

QList<QJsonValue> RawClient::notifications(const QString &type) const
{
    QList<QJsonValue> out;
    for (const QJsonObject &env : envelopes) {
        const QJsonObject body = env.value(QStringLiteral("data")).toObject();
        if (env.value(QStringLiteral("type")).toString() != QStringLiteral("ping")
            || body.value(QStringLiteral("method")).toString() != QStringLiteral("notify"))
            continue;
        const QJsonObject data = body.value(QStringLiteral("data")).toObject();
        if (data.value(QStringLiteral("type")).toString() == type)
            out.append(data.value(QStringLiteral("args")));
    }
    return out;
}

QJsonValue RawClient::waitForNotification(
    const QString &type, const std::function<bool(const QJsonValue &)> &accept, int timeoutMs)
{
    QJsonValue found = QJsonValue(QJsonValue::Undefined);
    const bool arrived = QTest::qWaitFor(
        [&] {
            const QList<QJsonValue> all = notifications(type);
            for (const QJsonValue &args : all) {
                if (!accept || accept(args)) {
                    found = args;
                    return true;
                }
            }
            return false;
        },
        timeoutMs);
    return arrived ? found : QJsonValue(QJsonValue::Undefined);
}

QList<int> RawClient::statusesOf(const QString &path) const
{
    QList<int> out;
    const QList<QJsonValue> all = notifications(QStringLiteral("fileSyncStatus"));
    for (const QJsonValue &args : all) {
        if (args.toObject().value(QStringLiteral("path")).toString() == path)
            out.append(args.toObject().value(QStringLiteral("plan_status")).toInt());
    }
    return out;
}
