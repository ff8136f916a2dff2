// SPDX-License-Identifier: GPL-3.0-or-later
#include "tcpclient.h"

#include "nubixglobal.h"

#include <QElapsedTimer>
#include <QMetaObject>
#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_LINUX
#include <linux/sockios.h>
#include <sys/ioctl.h>
#endif

namespace hfmplugin_nubix {

namespace {
// How long one turn of the event loop may spend handing on messages: a
// client sending thousands of notifications at once must not freeze the
// windows for the whole lot.
constexpr qint64 kDeliveryBudgetNs = 8 * 1000 * 1000;
// A message this long (in characters) takes a turn to handle by itself, so
// that parsing it never comes on top of the messages before it.
constexpr int kLongMessage = 64 * 1024;
// How long written bytes may wait without the client taking any before the
// log says so: a client that stopped reading would otherwise go unnoticed
// while the requests pile up in this process.
constexpr int kSendWarningMs = 5000;

// Bytes of the socket's send queue in the kernel that the other end has not
// taken yet; 0 when unknown.
qint64 kernelQueued(qintptr descriptor)
{
#ifdef Q_OS_LINUX
    int queued = 0;
    if (descriptor >= 0 && ::ioctl(int(descriptor), SIOCOUTQ, &queued) == 0)
        return queued;
#endif
    Q_UNUSED(descriptor)
    return 0;
}
}   // namespace

TcpClient::TcpClient(QObject *parent) : QObject(parent), thread(), sendWarningMs(kSendWarningMs)
{
    qRegisterMetaType<QAbstractSocket::SocketError>("QAbstractSocket::SocketError");
    nubixInfo() << "TcpClient: Initializing";

    socket = new QTcpSocket;
    sendWatch = new QTimer(socket);
    sendWatch->setTimerType(Qt::CoarseTimer);
    socket->moveToThread(&thread);

    // Deleted right in the worker as it finishes: a deleteLater() posted
    // there is never delivered once the application object is gone, as at
    // exit, where the last owner of the socket goes away. The worker's own
    // buffers are freed there too, in the thread that filled them.
    QTcpSocket *const owned = socket;
    connect(
        &thread, &QThread::finished, owned,
        [this, owned] {
            delete owned;
            buffer.clear();
            targetHost.clear();
            workerDone.store(true, std::memory_order_release);
        },
        Qt::DirectConnection);
    // The socket is read and its bytes cut into messages in its own thread,
    // so that neither a huge message nor endless bytes without a delimiter
    // hold the GUI thread; only complete messages travel to ours, in the
    // order they arrived. The buffer belongs to the worker alone.
    QTcpSocket *const reader = socket;
    connect(socket, &QTcpSocket::readyRead, socket, [this, reader] { onReadyRead(reader->readAll()); });
    // Whatever a dead connection left half sent belongs to no message of
    // the next one; emptied before the new connection's first read.
    connect(socket, &QTcpSocket::connected, socket, [this] { buffer.clear(); });
    connect(socket, &QTcpSocket::connected, this, &TcpClient::onConnected);
    connect(socket, &QTcpSocket::disconnected, this, &TcpClient::onDisconnected);
    connect(socket, &QTcpSocket::errorOccurred, this, &TcpClient::onError);
    // Counted, not timed: the watch's timer looks at the count now and then.
    connect(socket, &QTcpSocket::bytesWritten, socket, [this](qint64 bytes) { handedToKernel += bytes; });
    connect(sendWatch, &QTimer::timeout, socket, [this] { checkSending(); });

    thread.start(QThread::InheritPriority);
    nubixInfo() << "TcpClient: Initialization complete, thread started";
}

TcpClient::~TcpClient()
{
    nubixInfo() << "TcpClient: Destroying";
    thread.quit();
    thread.wait();
    // Pairs with the worker's last writes: the wait alone orders them only
    // inside Qt, which thread checkers do not see.
    workerDone.load(std::memory_order_acquire);
    nubixInfo() << "TcpClient: Thread stopped, destruction complete";
}

void TcpClient::connectToServer(const QString &host, quint16 port)
{
    nubixInfo() << "TcpClient: Connecting to server" << host << port;
    connectionAsked = true;
    QTcpSocket *const target = socket;
    QMetaObject::invokeMethod(
        socket,
        [this, target, host, port] {
            // Start-up and every shown window ask to connect; a second request
            // for the same place while the first is under way or done would
            // only make the socket report an error. Another place (the client
            // restarted on a new port) replaces the current connection.
            if (target->state() != QAbstractSocket::UnconnectedState) {
                if (targetHost == host && targetPort == port) {
                    nubixDebug() << "TcpClient: Already connecting or connected to" << host << port;
                    return;
                }
                target->abort();
            }
            targetHost = host;
            targetPort = port;
            target->connectToHost(host, port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
        },
        Qt::QueuedConnection);
}

void TcpClient::sendMessage(const QString &message)
{
    // Until a connection is first asked for, the socket can take nothing: a
    // message is dropped here rather than handed to the worker to fail there.
    if (!connectionAsked) {
        nubixDebug() << "TcpClient: Not connected, dropped message:" << message;
        return;
    }
    nubixDebug() << "TcpClient: Sending message:" << message;
    QTcpSocket *const target = socket;
    QMetaObject::invokeMethod(
        socket,
        [this, target, message] {
            QByteArray data = message.toUtf8();
            data.append(FrameSplitter::kDelimiter);
            const qint64 written = target->write(data);
            nubixDebug() << "TcpClient: Sent" << written << "bytes" << target->error();
            watchSending();
        },
        Qt::QueuedConnection);
}

void TcpClient::watchSending()
{
    // Armed once, not per message: the timer runs while bytes wait and stops
    // itself when none do.
    if (sendWatch->isActive())
        return;
    sendProgress.start();
    takenByClient = handedToKernel - kernelQueued(socket->socketDescriptor());
    sendWatch->start(qMax(1, sendWarningMs.load() / 2));
}

void TcpClient::checkSending()
{
    const bool connectedNow = socket->state() == QAbstractSocket::ConnectedState;
    const qint64 inKernel = connectedNow ? kernelQueued(socket->socketDescriptor()) : 0;
    const qint64 unsent = socket->bytesToWrite() + inKernel;
    if (unsent == 0 || socket->state() == QAbstractSocket::UnconnectedState) {
        // Everything was taken, or the connection went with whatever it held.
        if (sendStalled && connectedNow)
            nubixInfo() << "TcpClient: The client takes data again, nothing waits unsent";
        sendStalled = false;
        sendWatch->stop();
        return;
    }
    // A stall lasts until everything is taken: a kernel that makes room for
    // a few more bytes now and then is no client reading again. Still
    // connecting counts as progress, as nothing could be taken yet.
    const qint64 taken = handedToKernel - inKernel;
    if (taken != takenByClient || !connectedNow) {
        takenByClient = taken;
        sendProgress.start();
        return;
    }
    if (!sendStalled && sendProgress.elapsed() >= sendWarningMs.load()) {
        sendStalled = true;
        nubixWarning().nospace() << "TcpClient: The client takes no data: " << unsent << " bytes unsent for "
                                 << sendProgress.elapsed() / 1000 << " s";
    }
}

void TcpClient::onConnected()
{
    deliverAll();
    nubixInfo() << "TcpClient: Connected to server";
    Q_EMIT connected();
}

void TcpClient::onDisconnected()
{
    nubixInfo() << "TcpClient: Disconnected from server";
    deliverAll();
    Q_EMIT disconnected();
}

void TcpClient::onError(QAbstractSocket::SocketError error)
{
    nubixWarning() << "TcpClient: Error occurred:" << error;
    Q_EMIT errorOccured(error);
}

void TcpClient::onReadyRead(const QByteArray &chunk)
{
    nubixDebug() << "TcpClient: Received raw data:" << chunk;
    const QStringList messages = buffer.feed(chunk);
    if (!messages.isEmpty())
        QMetaObject::invokeMethod(this, "onMessages", Qt::QueuedConnection, Q_ARG(QStringList, messages));
}

void TcpClient::onMessages(const QStringList &messages)
{
    waiting += messages;
    deliver(false);
}

void TcpClient::deliver(bool freshTurn)
{
    QElapsedTimer budget;
    budget.start();
    bool first = freshTurn;
    // One message at a time off the front: a receiver that runs a nested
    // event loop may come back here, and order must hold then too.
    while (!waiting.isEmpty()) {
        const bool longNext = waiting.first().size() >= kLongMessage;
        if (budget.nsecsElapsed() >= kDeliveryBudgetNs || (longNext && !first)) {
            if (!deliveryQueued) {
                deliveryQueued = true;
                QMetaObject::invokeMethod(
                    this,
                    [this] {
                        deliveryQueued = false;
                        deliver(true);
                    },
                    Qt::QueuedConnection);
            }
            return;
        }
        first = false;
        const QString message = waiting.takeFirst();
        nubixDebug() << "TcpClient: Parsed complete message:" << message;
        Q_EMIT messageReceived(message);
    }
}

void TcpClient::deliverAll()
{
    while (!waiting.isEmpty()) {
        const QString message = waiting.takeFirst();
        nubixDebug() << "TcpClient: Parsed complete message:" << message;
        Q_EMIT messageReceived(message);
    }
}

}   // namespace hfmplugin_nubix
