// SPDX-License-Identifier: GPL-3.0-or-later
// A bare plug-in side for tests: a socket that frames JSON by 0x0C and keeps what it got.
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QObject>
#include <QTcpSocket>

#include <functional>

// QString literals in tests: u"text"_s.
inline QString operator""_s(const char16_t *text, size_t size)
{
    return QString::fromUtf16(text, int(size));
}

class RawClient : public QObject
{
    Q_OBJECT

public:
    explicit RawClient(QObject *parent = nullptr);

    bool connectTo(quint16 port, int timeoutMs = 5000);
    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
    bool waitForDisconnected(int timeoutMs = 5000);
    QTcpSocket &socket() { return m_socket; }

    // Sends a request as the plug-in builds it and returns its key.
    QString request(const QString &method, const QJsonObject &data = {}, bool indented = true);
    void sendEnvelope(const QString &type, const QJsonObject &body, bool indented = true);
    void sendRaw(const QByteArray &bytes);

    // The body ("data" of the envelope) of the answer with this key; empty on time-out.
    QJsonObject waitForResponse(const QString &key, int timeoutMs = 5000);
    // Waits for a notification that the predicate accepts; returns its args (undefined on time-out).
    QJsonValue waitForNotification(
        const QString &type, const std::function<bool(const QJsonValue &)> &accept = {}, int timeoutMs = 5000);
    // Every notification of this type received so far, in order.
    QList<QJsonValue> notifications(const QString &type) const;
    // Plan statuses of "fileSyncStatus" notifications for one path, in order.
    QList<int> statusesOf(const QString &path) const;

    QList<QJsonObject> envelopes;   // every parsed message, in order
    int unparsable = 0;

private:
    void onReadyRead();

    QTcpSocket m_socket;
    QByteArray m_buffer;
};
