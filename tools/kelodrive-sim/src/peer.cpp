// SPDX-License-Identifier: GPL-3.0-or-later
#include "peer.h"

#include "logging.h"

#include <QPointer>
#include <QTcpSocket>

namespace kelodrive {

Peer::Peer(int id, QTcpSocket *socket, QObject *parent) : QObject(parent), m_id(id), m_socket(socket)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &Peer::onReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, [this] {
        if (m_closed)
            return;
        m_closed = true;
        Q_EMIT closed(this);
    });
}

Peer::~Peer()
{
    // The socket dies with this object; its last signals must not reach a half-destroyed peer.
    disconnect(m_socket, nullptr, this, nullptr);
}

bool Peer::isOpen() const
{
    return !m_closed && m_socket->state() == QAbstractSocket::ConnectedState;
}

void Peer::send(const QByteArray &framedBytes)
{
    if (!isOpen())
        return;
    m_socket->write(framedBytes);
}

void Peer::abort()
{
    m_socket->abort();
    if (!m_closed) {
        m_closed = true;
        Q_EMIT closed(this);
    }
}

void Peer::onReadyRead()
{
    bool overflowed = false;
    const QList<QByteArray> frames = m_reader.feed(m_socket->readAll(), &overflowed);
    if (overflowed)
        qCWarning(lcKeloSim) << "Peer::onReadyRead: peer" << m_id << "sent over" << FrameReader::kMaxPending
                             << "bytes without a delimiter; discarded them";
    // A handler may drop this peer; stop delivering once it is gone.
    QPointer<Peer> self(this);
    for (const QByteArray &frame : frames) {
        if (!self || m_closed)
            return;
        Q_EMIT frameReceived(this, frame);
    }
}

}   // namespace kelodrive
