// SPDX-License-Identifier: GPL-3.0-or-later
// What the plug-in's benchmarks share: a folder's "getFileStatus" answer as
// the client writes it, and the client's end of the plug-in's connection.
#pragma once

#include "benchapp.h"
#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <unistd.h>

namespace nubixbench {

// The cloud path of entry i: 25 folders, the names spread evenly over them.
inline QString cloudPath(int i)
{
    return QStringLiteral("/Documents/Projects/Quarterly Reports/%1/report-%2.docx")
        .arg(2000 + i % 25)
        .arg(i, 6, 10, QLatin1Char('0'));
}

// Compact, as the client writes it.
inline QByteArray fileStatusAnswer(int entries)
{
    QByteArray text = "{\"type\":\"pong\",\"data\":{\"method\":\"getFileStatus\","
                      "\"key\":\"{3f2a8a5e-2c4b-4c7e-9d55-0a1b2c3d4e5f\",\"data\":{\"code\":0,\"result\":[";
    for (int i = 0; i < entries; ++i) {
        if (i)
            text += ',';
        text += "{\"fileid\":" + QByteArray::number(Q_INT64_C(281474976710656) + i) + ",\"isDir\":false,\"path\":\""
            + cloudPath(i).toUtf8() + "\",\"plan\":\"" + (i % 3 ? "upload" : "download")
            + "\",\"plan_error\":0,\"plan_status\":" + QByteArray::number(1 + i % 3) + "}";
    }
    text += "]}}}";
    return text;
}

// The process's message handler connected to a peer that plays the client;
// the requests made on connection are left unanswered.
struct ClientPeer
{
    ClientPeer()
    {
        server.listen(QHostAddress::LocalHost);
        handler->client()->connectToServer(QStringLiteral("127.0.0.1"), server.serverPort());
        spinUntil([this] { return server.hasPendingConnections(); });
        peer = server.nextPendingConnection();
        spinUntil([this] { return handler->isConnected(); });
        descriptor = ::dup(int(peer->socketDescriptor()));
    }
    // Starts writing all of the bytes from a thread of its own.
    std::thread send(const QByteArray &bytes) const { return sendFromThread(descriptor, bytes); }

    QTcpServer server;
    hfmplugin_nubix::NubixMessageHandler *handler = hfmplugin_nubix::NubixMessageHandler::instance();
    QTcpSocket *peer = nullptr;
    int descriptor = -1;
};

}   // namespace nubixbench
