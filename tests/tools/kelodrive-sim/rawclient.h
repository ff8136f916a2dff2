// SPDX-License-Identifier: GPL-3.0-or-later
// A bare plug-in side for tests: a socket that frames JSON by 0x0C and keeps what it got.
// It builds and reads messages on its own, so that the simulator is never checked by itself.
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

// Writes a file, creating its folders; false on failure.
bool writeFile(const QString &path, const QByteArray &content);
// The whole file; empty when it cannot be read.
QByteArray readFile(const QString &path);
// Follows a dotted path (u"account.nickname"_s, u"0.path"_s) into a JSON value; u"#size"_s gives
// the element count of the value reached so far.
QJsonValue follow(QJsonValue value, const QString &path);

class RawClient : public QObject
{
    Q_OBJECT

public:
    explicit RawClient(QObject *parent = nullptr);

    bool connectTo(quint16 port, int timeoutMs = 5000);
    bool waitForDisconnected(int timeoutMs = 5000);
    QTcpSocket &socket() { return m_socket; }

    // A request as the plug-in frames it.
    static QByteArray requestFrame(const QString &method, const QJsonObject &data, const QString &key, bool indented);
    // Sends a request and returns its key (a fresh one unless given).
    QString request(
        const QString &method, const QJsonObject &data = {}, bool indented = true, const QString &key = QString());
    // Sends a request and waits: "result" of the answer, undefined on time-out.
    QJsonValue call(const QString &method, const QJsonObject &data = {});
    // Answers a ping of the simulator with this "data".
    void reply(const QJsonObject &question, const QJsonObject &data);
    void sendEnvelope(const QString &type, const QJsonObject &body, bool indented = true);
    void sendRaw(const QByteArray &bytes);

    // The first envelope the predicate accepts, waiting for it; empty on time-out.
    QJsonObject waitForEnvelope(const std::function<bool(const QJsonObject &)> &accept, int timeoutMs = 5000);
    // The body ("data" of the envelope) of the answer with this key; empty on time-out.
    QJsonObject waitForResponse(const QString &key, int timeoutMs = 5000);
    // Waits for a notification that the predicate accepts; returns its args (undefined on time-out).
    QJsonValue waitForNotification(
        const QString &type, const std::function<bool(const QJsonValue &)> &accept = {}, int timeoutMs = 5000);
    // Every notification of this type received so far, in order.
    QList<QJsonValue> notifications(const QString &type) const;
    // Plan statuses of "fileSyncStatus" notifications for one path, in order; lastStatus -1 when none.
    QList<int> statusesOf(const QString &path) const;
    int lastStatus(const QString &path) const;

    QList<QJsonObject> envelopes;   // every parsed message, in order
    int unparsable = 0;

private:
    void onReadyRead();

    QTcpSocket m_socket;
    QByteArray m_buffer;
};
