// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "framereader.h"

#include <QObject>

class QTcpSocket;

namespace kelodrive {

// One accepted plug-in connection: reads frames, writes framed bytes. Owns its socket.
class Peer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Peer)

public:
    Peer(int id, QTcpSocket *socket, QObject *parent = nullptr);
    ~Peer() override;

    int id() const { return m_id; }
    bool isOpen() const;
    void send(const QByteArray &framedBytes);
    // Resets the connection at once, as a crashing client would.
    void abort();

Q_SIGNALS:
    void frameReceived(kelodrive::Peer *peer, const QByteArray &frame);
    void closed(kelodrive::Peer *peer);

private:
    void onReadyRead();

    const int m_id;
    QTcpSocket *m_socket;
    FrameReader m_reader;
    bool m_closed = false;
};

}   // namespace kelodrive
