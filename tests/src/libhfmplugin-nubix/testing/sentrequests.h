// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wire.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

// The plug-in's message handler singleton connected to a peer on 127.0.0.1
// that plays the sync client and lists what the plug-in asked of it. Lists
// end at a fence request sent by drain(), so "nothing was sent" needs no wait.
class SentRequests
{
public:
    bool connect()
    {
        auto *handler = hfmplugin_nubix::NubixMessageHandler::instance();
        if (!writePortFile(QByteArray::number(peer.port())))
            return false;
        handler->tryConnect();
        if (!peer.waitForClient() || !QTest::qWaitFor([handler] { return handler->isConnected(); }))
            return false;
        drain();
        return true;
    }

    // Every request sent since the last drain, as "method {data}".
    QStringList drain()
    {
        hfmplugin_nubix::NubixMessageHandler::instance()->request(QStringLiteral("fence"), QVariantMap());
        QStringList sent;
        for (;;) {
            const QByteArray frame = peer.nextFrame();
            if (frame.isEmpty())
                return sent << QStringLiteral("(fence never came)");
            const QJsonObject body = QJsonDocument::fromJson(frame).object().value(QStringLiteral("data")).toObject();
            const QString method = body.value(QStringLiteral("method")).toString();
            if (method == QLatin1String("fence"))
                return sent;
            sent << method + QLatin1Char(' ')
                    + QString::fromUtf8(
                        QJsonDocument(body.value(QStringLiteral("data")).toObject()).toJson(QJsonDocument::Compact));
        }
    }

    // Waits until a request with this method has come, and lists all up to it.
    QStringList waitFor(const QString &method)
    {
        QStringList sent;
        const auto isIt = [&method](const QString &line) { return line.startsWith(method + QLatin1Char(' ')); };
        (void)QTest::qWaitFor([&] {
            sent += drain();
            return std::any_of(sent.cbegin(), sent.cend(), isIt);
        });
        return sent;
    }

    LocalPeer peer;
};
