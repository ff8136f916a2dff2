// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <kelodrivesim/simulator.h>

#include "envelope.h"
#include "syncengine.h"

#include <QMap>
#include <QTcpServer>
#include <QTimer>

#include <memory>

namespace kelodrive {

class Peer;

class SimulatorPrivate
{
public:
    explicit SimulatorPrivate(Simulator *q);
    ~SimulatorPrivate();

    bool listenOn(quint16 port);
    void adoptServer(std::unique_ptr<QTcpServer> server);
    void onNewConnection();
    void onPeerClosed(Peer *peer);
    void onFrame(Peer *peer, const QByteArray &frame);
    void handleRequest(Peer *peer, const envelope::Incoming &in);
    void handlePong(Peer *peer, const envelope::Incoming &in);
    void respond(Peer *peer, const envelope::Incoming &in, int code, const QJsonValue &result);
    void send(Peer *peer, const QByteArray &bytes);
    void closeAllPeers();
    void writePortFile();
    void broadcast(const QByteArray &framedBytes, bool isNotification);
    void applyFlags(const SyncFlags &flags, bool forcePush);
    // Changes one flag; pushes "syncErrors" when it changed or when forced.
    void setFlag(bool SyncFlags::*flag, bool on, bool forcePush = false);
    void updateBlocked();
    void startSync();

    QJsonObject userInfoJson() const;
    QJsonObject syncInfoJson() const;
    QJsonObject syncErrorsJson() const;
    QJsonObject countsJson() const;
    QJsonValue payloadFor(const QString &type) const;
    static QJsonObject entryJson(const FileEntry &entry);
    static QByteArray entriesJson(const QList<FileEntry> &entries);

    Simulator *const q;
    std::unique_ptr<QTcpServer> server;
    quint16 port = 0;
    bool started = false;
    QString portFilePath;
    quint16 portFilePort = 0;   // the port written to the port file, 0 when none
    QMap<int, Peer *> peers;
    int nextPeerId = 1;

    Account account;
    Storage storage;
    bool isPublicCloud = true;
    SyncFlags flags;
    SyncEngine engine;

    bool answering = true;
    int responseDelayMs = 0;
    bool askPluginInfo = true;
    bool indented = false;
    QString pluginVersion;
    QJsonObject lastNavigation;

    int totalConnections = 0;
    int messagesReceived = 0;
    int malformedReceived = 0;
    qint64 notificationsSent = 0;
    int malformedCursor = 0;
    QTimer relistenTimer;
};

}   // namespace kelodrive
