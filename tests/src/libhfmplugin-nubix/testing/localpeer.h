// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

// The far end of a connection on 127.0.0.1: listens, accepts one client and
// collects what it sends. Runs in the test's thread; waiting helpers spin
// the event loop.
class LocalPeer
{
public:
    LocalPeer() { server.listen(QHostAddress::LocalHost); }

    quint16 port() const { return server.serverPort(); }

    bool waitForClient()
    {
        if (!QTest::qWaitFor([this] { return server.hasPendingConnections() || socket; }))
            return false;
        if (!socket)
            socket = server.nextPendingConnection();
        return socket != nullptr;
    }
    // Lets go of the client, so that waitForClient() waits for its next connection.
    void forgetClient()
    {
        socket = nullptr;
        buffer.clear();
    }
    void write(const QByteArray &bytes)
    {
        socket->write(bytes);
        socket->flush();
    }
    void send(const QByteArray &message) { write(message + '\x0c'); }
    // Everything received so far, waiting until at least `size` bytes are there.
    QByteArray received(int size = 0)
    {
        (void)QTest::qWaitFor([this, size] {
            buffer += socket->readAll();
            return buffer.size() >= size;
        });
        return buffer;
    }
    // The next frame the client sent, without its delimiter; empty on time-out.
    QByteArray nextFrame()
    {
        (void)QTest::qWaitFor([this] {
            buffer += socket->readAll();
            return buffer.contains('\x0c');
        });
        const int end = buffer.indexOf('\x0c');
        const QByteArray frame = end < 0 ? QByteArray() : buffer.left(end);
        buffer.remove(0, end + 1);
        return frame;
    }
    // The body ("data") of the next request envelope the client sent; empty
    // when it sent anything else or nothing.
    QJsonObject nextBody()
    {
        const QJsonObject envelope = QJsonDocument::fromJson(nextFrame()).object();
        if (envelope.value(QStringLiteral("type")).toString() != QLatin1String("ping"))
            return QJsonObject();
        return envelope.value(QStringLiteral("data")).toObject();
    }
    void disconnectClient() { socket->disconnectFromHost(); }

    QTcpServer server;
    QPointer<QTcpSocket> socket;
    QByteArray buffer;
};
