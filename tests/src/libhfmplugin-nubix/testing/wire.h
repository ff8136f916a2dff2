// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ipc/nubixmessagehandler.h"
#include "ipc/tcpclient.h"

#include "localpeer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

// A notification as the sync client writes it, without the delimiter.
inline QByteArray notification(const QByteArray &type, const QByteArray &argsJson)
{
    return R"({"type":"ping","data":{"method":"notify","key":"n","data":{"type":")" + type + R"(","args":)" + argsJson
        + "}}}";
}

// An answer as the sync client writes it, without the delimiter.
inline QByteArray response(const QByteArray &method, const QByteArray &key, const QByteArray &dataJson)
{
    return R"({"type":"pong","data":{"method":")" + method + R"(","key":")" + key + R"(","data":)" + dataJson + "}}";
}

// Puts the client's port file in place, as the client writes it.
inline bool writePortFile(const QByteArray &content)
{
    const QString path = hfmplugin_nubix::NubixMessageHandler::portFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

// A message handler of its own, connected to a peer on 127.0.0.1 that plays
// the sync client.
class Wire
{
public:
    bool connect()
    {
        QSignalSpy connected(&handler, &hfmplugin_nubix::NubixMessageHandler::sigConnected);
        handler.client()->connectToServer(QStringLiteral("127.0.0.1"), peer.port());
        return peer.waitForClient() && (connected.count() == 1 || connected.wait()) && handler.isConnected();
    }

    LocalPeer peer;
    hfmplugin_nubix::NubixMessageHandler handler;
};
