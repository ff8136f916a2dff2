// SPDX-License-Identifier: GPL-3.0-or-later
// A bare plug-in side for tests: a socket that frames JSON by 0x0C and keeps what it got.
// It builds and reads messages on its own, so that the simulator is never checked by itself.
#pragma once

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTest>
#include <QUuid>

#include <algorithm>
#include <functional>

// QString literals in tests: u"text"_s.
inline QString operator""_s(const char16_t *text, size_t size)
{
    return QString::fromUtf16(text, int(size));
}

// Writes a file, creating its folders; false on failure.
inline bool writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Follows a dotted path (u"account.nickname"_s, u"0.path"_s) into a JSON value; u"#size"_s gives
// the element count of the value reached so far.
inline QJsonValue follow(QJsonValue value, const QString &path)
{
    for (const QString &part : path.split(QLatin1Char('.'))) {
        if (part == u"#size"_s)
            return value.isArray() ? value.toArray().size() : value.toObject().size();
        bool isIndex = false;
        const int index = part.toInt(&isIndex);
        value = isIndex ? value.toArray().at(index) : value.toObject().value(part);
    }
    return value;
}

class RawClient : public QObject
{
public:
    RawClient() { connect(&m_socket, &QTcpSocket::readyRead, this, &RawClient::onReadyRead); }

    bool connectTo(quint16 port)
    {
        m_socket.connectToHost(u"127.0.0.1"_s, port);
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; });
    }
    bool waitForDisconnected()
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; });
    }
    QTcpSocket &socket() { return m_socket; }

    static QByteArray frame(const QString &type, const QJsonObject &body, bool indented = true)
    {
        const QJsonObject env {{u"type"_s, type}, {u"data"_s, body}};
        return QJsonDocument(env).toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact) + '\x0c';
    }
    // A request as the plug-in frames it.
    static QByteArray requestFrame(const QString &method, const QJsonObject &data, const QString &key, bool indented)
    {
        const QJsonObject body {{u"from"_s, u"client"_s}, {u"to"_s, u"server"_s}, {u"method"_s, method},
            {u"data"_s, data}, {u"version"_s, 1}, {u"key"_s, key},
            {u"timestamp"_s, QDateTime::currentMSecsSinceEpoch()}};
        return frame(u"ping"_s, body, indented);
    }
    // Sends a request and returns its key (a fresh one unless given).
    QString request(const QString &method, const QJsonObject &data = {}, bool indented = true, QString key = {})
    {
        if (key.isEmpty())
            key = QUuid::createUuid().toString().chopped(1);
        sendRaw(requestFrame(method, data, key, indented));
        return key;
    }
    // Sends a request and waits: "result" of the answer, undefined on time-out.
    QJsonValue call(const QString &method, const QJsonObject &data = {})
    {
        return follow(waitForResponse(request(method, data)), u"data.result"_s);
    }
    // Answers a ping of the simulator with this "data".
    void reply(QJsonObject question, const QJsonObject &data)
    {
        question.insert(u"from"_s, u"client"_s);
        question.insert(u"to"_s, u"server"_s);
        question.insert(u"data"_s, data);
        sendRaw(frame(u"pong"_s, question));
    }
    void sendRaw(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }

    // The first envelope the predicate accepts, waiting for it; empty on time-out.
    QJsonObject waitForEnvelope(const std::function<bool(const QJsonObject &)> &accept, int timeoutMs = 5000)
    {
        int at = -1;
        const auto find = [&] {
            at = int(std::find_if(envelopes.cbegin(), envelopes.cend(), accept) - envelopes.cbegin());
            return at < envelopes.size();
        };
        return QTest::qWaitFor(find, timeoutMs) ? envelopes.at(at) : QJsonObject();
    }
    // The body ("data" of the envelope) of the answer with this key; empty on time-out.
    QJsonObject waitForResponse(const QString &key, int timeoutMs = 5000)
    {
        return waitForEnvelope(
            [&](const QJsonObject &e) {
                return e.value(u"type"_s) == u"pong"_s && follow(e, u"data.key"_s).toString() == key;
            },
            timeoutMs)
            .value(u"data"_s)
            .toObject();
    }
    // Waits for a notification that the predicate accepts; returns its args (undefined on time-out).
    QJsonValue waitForNotification(const QString &type, const std::function<bool(const QJsonValue &)> &accept = {})
    {
        return argsOf(waitForEnvelope([&](const QJsonObject &env) {
            const QJsonValue args = argsOf(env, type);
            return !args.isUndefined() && (!accept || accept(args));
        }),
            type);
    }
    // Every notification of this type received so far, in order.
    QList<QJsonValue> notifications(const QString &type) const
    {
        QList<QJsonValue> out;
        for (const QJsonObject &env : envelopes) {
            if (const QJsonValue args = argsOf(env, type); !args.isUndefined())
                out.append(args);
        }
        return out;
    }
    // Plan statuses of "fileSyncStatus" notifications for one path, in order; lastStatus -1 when none.
    QList<int> statusesOf(const QString &path) const
    {
        QList<int> out;
        for (const QJsonValue &args : notifications(u"fileSyncStatus"_s)) {
            if (args[u"path"_s] == path)
                out.append(args[u"plan_status"_s].toInt());
        }
        return out;
    }
    int lastStatus(const QString &path) const
    {
        const QList<int> statuses = statusesOf(path);
        return statuses.isEmpty() ? -1 : statuses.last();
    }

    QList<QJsonObject> envelopes;   // every parsed message, in order
    int unparsable = 0;

private:
    // The args of a notification of this type, or undefined.
    static QJsonValue argsOf(const QJsonObject &env, const QString &type)
    {
        if (env.value(u"type"_s) != u"ping"_s || follow(env, u"data.method"_s) != u"notify"_s
            || follow(env, u"data.data.type"_s) != type)
            return QJsonValue(QJsonValue::Undefined);
        return follow(env, u"data.data.args"_s);
    }
    void onReadyRead()
    {
        m_buffer.append(m_socket.readAll());
        for (int pos; (pos = m_buffer.indexOf('\x0c')) >= 0; m_buffer.remove(0, pos + 1)) {
            const QJsonDocument doc = QJsonDocument::fromJson(m_buffer.left(pos));
            if (doc.isObject())
                envelopes.append(doc.object());
            else
                ++unparsable;
        }
    }

    QTcpSocket m_socket;
    QByteArray m_buffer;
};
