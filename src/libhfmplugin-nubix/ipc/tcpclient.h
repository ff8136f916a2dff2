// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "framesplitter.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QObject>
#include <QThread>

#include <atomic>

class QTcpSocket;
class QTimer;

namespace hfmplugin_nubix {

// One TCP connection to the sync client, carrying text messages each ended by
// a form feed. The socket lives in a worker thread owned by this object; the
// public calls only queue work to it and never block. Signals are emitted in
// the thread of this object (the GUI thread), one messageReceived per
// complete message, in order. Received bytes wait as bytes, in the worker,
// and each complete message is decoded there as UTF-8 whole; every new
// connection starts with an empty buffer, while a disconnection leaves it as
// it is. Many messages arriving at once are handed on a few milliseconds'
// worth per turn of the event loop; messages still waiting are all handed on
// before connected() and disconnected().
//
// Written bytes that the client takes none of for a few seconds (whether they
// wait here or in the kernel) give one warning line, and a line again once it
// has taken them all; the watch runs in the worker, on one timer armed while
// bytes wait.
class TcpClient : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(TcpClient)
public:
    explicit TcpClient(QObject *parent = nullptr);
    ~TcpClient() override;

    // Starts a connection. Asking again for the place it is connecting or
    // connected to does nothing; another place replaces the connection.
    void connectToServer(const QString &host, quint16 port);
    // Sends the UTF-8 text followed by the delimiter; failures show only in the debug log.
    void sendMessage(const QString &message);
    // How long written bytes may wait unsent before the log says so; tests shorten it.
    void setSendWarningMs(int ms) { sendWarningMs.store(qMax(1, ms)); }

Q_SIGNALS:
    void messageReceived(const QString &message);
    void connected();
    void disconnected();
    void errorOccured(QAbstractSocket::SocketError error);

private Q_SLOTS:
    void onConnected();
    void onDisconnected();
    void onError(QAbstractSocket::SocketError error);
    // In the owner's thread: queues complete messages for delivery.
    void onMessages(const QStringList &messages);

private:
    // In the worker thread: cuts the bytes into messages and hands them over.
    void onReadyRead(const QByteArray &chunk);
    // Hands on waiting messages until the time budget is spent, then
    // continues in a later turn; a long message waits for a turn of its own
    // unless this call is one (`freshTurn`).
    void deliver(bool freshTurn);
    void deliverAll();
    // In the worker thread: starts the watch on unsent bytes unless it runs.
    void watchSending();
    // In the worker thread, on the watch's timer: whether the client took
    // any of the waiting bytes since the last look.
    void checkSending();

    QThread thread;
    QTcpSocket *socket = nullptr;
    FrameSplitter buffer;
    // Where the socket was last sent; touched in the socket's thread only.
    QString targetHost;
    quint16 targetPort = 0;
    // Set by the first connectToServer(); both run in the owner's thread.
    bool connectionAsked = false;
    QStringList waiting;
    bool deliveryQueued = false;
    // The watch on unsent bytes; all but the delay are touched in the
    // socket's thread only. The timer is the socket's child and goes with it.
    QTimer *sendWatch = nullptr;
    QElapsedTimer sendProgress;   // since the client last took bytes
    qint64 handedToKernel = 0;   // bytes of this process's writes the kernel took
    qint64 takenByClient = -1;   // of those, what the client had taken at the last look
    bool sendStalled = false;
    std::atomic<int> sendWarningMs;
    // Set by the worker as it finishes, after its last write to the members above.
    std::atomic<bool> workerDone {false};
};

}   // namespace hfmplugin_nubix
