// SPDX-License-Identifier: GPL-3.0-or-later
#include <kelodrivesim/simulator.h>

#include "logging.h"
#include "malformedframes.h"
#include "peer.h"
#include "portfile.h"
#include "simulator_p.h"

#include <QJsonArray>
#include <QPointer>
#include <QTcpSocket>

namespace kelodrive {

namespace {
const QLatin1String kNotifySyncInited("syncInited");
const QLatin1String kNotifySyncRoot("syncRoot");
const QLatin1String kNotifyBanDirs("banDirs");
const QLatin1String kNotifySyncQuantity("syncQuantity");
const QLatin1String kNotifySyncErrors("syncErrors");
const QLatin1String kNotifyFileSyncStatus("fileSyncStatus");

bool sameFlags(const SyncFlags &a, const SyncFlags &b)
{
    return a.isPaused == b.isPaused && a.isRemoteSpaceLow == b.isRemoteSpaceLow
        && a.isLocalSpaceLow == b.isLocalSpaceLow && a.isLocalPermitionForbid == b.isLocalPermitionForbid
        && a.isUnknown == b.isUnknown && a.isFlowEmpty == b.isFlowEmpty && a.isOnline == b.isOnline;
}
}   // namespace

// ---------------------------------------------------------------------------------------------
// SimulatorPrivate

SimulatorPrivate::SimulatorPrivate(Simulator *q) : q(q), portFilePath(portfile::defaultPath())
{
    relistenTimer.setSingleShot(true);
}

SimulatorPrivate::~SimulatorPrivate() = default;

bool SimulatorPrivate::listenOn(quint16 wanted)
{
    auto fresh = std::make_unique<QTcpServer>();
    if (!fresh->listen(QHostAddress::LocalHost, wanted)) {
        qCWarning(lcKeloSim).noquote() << QStringLiteral("Simulator::start: cannot listen on 127.0.0.1:%1: %2")
                                              .arg(wanted)
                                              .arg(fresh->errorString());
        return false;
    }
    adoptServer(std::move(fresh));
    return true;
}

void SimulatorPrivate::adoptServer(std::unique_ptr<QTcpServer> fresh)
{
    if (server)
        server->close();
    server = std::move(fresh);
    QObject::connect(server.get(), &QTcpServer::newConnection, q, [this] { onNewConnection(); });
    port = server->serverPort();
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: listening on 127.0.0.1:%1").arg(port);
    writePortFile();
    Q_EMIT q->listening(port);
}

void SimulatorPrivate::writePortFile()
{
    if (portFilePath.isEmpty())
        return;
    if (portfile::write(portFilePath, port))
        portFilePort = port;
}

void SimulatorPrivate::onNewConnection()
{
    while (server && server->hasPendingConnections()) {
        QTcpSocket *socket = server->nextPendingConnection();
        const int id = nextPeerId++;
        auto *peer = new Peer(id, socket);
        QObject::connect(peer, &Peer::frameReceived, q, [this](Peer *p, const QByteArray &f) { onFrame(p, f); });
        QObject::connect(peer, &Peer::closed, q, [this](Peer *p) { onPeerClosed(p); });
        peers.insert(id, peer);
        ++totalConnections;
        qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: peer %1 connected").arg(id);
        Q_EMIT q->peerConnected(id);
        if (askPluginInfo && peers.contains(id))
            peer->send(envelope::ping(QStringLiteral("getPluginInfo"), QJsonObject(), indented));
    }
}

void SimulatorPrivate::onPeerClosed(Peer *peer)
{
    const int id = peer->id();
    if (peers.value(id) != peer)
        return;
    peers.remove(id);
    peer->deleteLater();
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: peer %1 disconnected").arg(id);
    Q_EMIT q->peerDisconnected(id);
}

void SimulatorPrivate::closeAllPeers()
{
    const QList<Peer *> all = peers.values();
    for (Peer *peer : all)
        peer->abort();   // emits closed, which removes and schedules the deletion
}

void SimulatorPrivate::onFrame(Peer *peer, const QByteArray &frame)
{
    const int id = peer->id();
    qCDebug(lcKeloSim).noquote() << QStringLiteral("Simulator: peer %1 sent:").arg(id) << QString::fromUtf8(frame);
    const envelope::Incoming in = envelope::parse(frame);
    if (!in.ok) {
        ++malformedReceived;
        qCWarning(lcKeloSim).noquote()
            << QStringLiteral("Simulator: dropped a malformed frame from peer %1: %2").arg(id).arg(in.error);
        Q_EMIT q->malformedFrameReceived(id, frame);
        return;
    }
    ++messagesReceived;
    QPointer<Peer> guard(peer);
    Q_EMIT q->messageReceived(id, in.message);
    if (!guard)
        return;
    if (in.type == QLatin1String("pong"))
        handlePong(peer, in);
    else
        handleRequest(peer, in);
}

void SimulatorPrivate::handlePong(Peer *peer, const envelope::Incoming &in)
{
    if (in.method != QLatin1String("getPluginInfo")) {
        qCDebug(lcKeloSim).noquote() << QStringLiteral("Simulator: ignoring an answer to \"%1\"").arg(in.method);
        return;
    }
    const QJsonObject data = in.body.value(QLatin1String("data")).toObject();
    QJsonValue version = data.value(QLatin1String("version"));
    if (version.isUndefined())
        version = data.value(QLatin1String("result")).toObject().value(QLatin1String("version"));
    if (!version.isString()) {
        qCWarning(lcKeloSim).noquote()
            << QStringLiteral("Simulator: peer %1 answered getPluginInfo without a version").arg(peer->id());
        return;
    }
    pluginVersion = version.toString();
    qCInfo(lcKeloSim).noquote()
        << QStringLiteral("Simulator: peer %1 runs plug-in version %2").arg(peer->id()).arg(pluginVersion);
    Q_EMIT q->pluginVersionReceived(peer->id(), pluginVersion);
}

void SimulatorPrivate::respond(Peer *peer, const envelope::Incoming &in, int code, const QJsonValue &result)
{
    send(peer, envelope::response(in.method, in.key, code, result, indented));
}

void SimulatorPrivate::send(Peer *peer, const QByteArray &bytes)
{
    if (responseDelayMs <= 0) {
        peer->send(bytes);
        return;
    }
    QTimer::singleShot(responseDelayMs, peer, [peer, bytes] { peer->send(bytes); });
}

void SimulatorPrivate::handleRequest(Peer *peer, const envelope::Incoming &in)
{
    if (!answering) {
        qCDebug(lcKeloSim).noquote() << QStringLiteral("Simulator: not answering \"%1\"").arg(in.method);
        return;
    }
    const QString &method = in.method;
    const QJsonValue argsValue = in.body.value(QLatin1String("data"));
    const QJsonObject args = argsValue.toObject();
    if (method == QLatin1String("getUserInfo")) {
        respond(peer, in, Simulator::Ok, userInfoJson());
    } else if (method == QLatin1String("getSyncInfo")) {
        respond(peer, in, Simulator::Ok, syncInfoJson());
    } else if (method == QLatin1String("getFileStatus")) {
        const QJsonValue basedir = args.value(QLatin1String("basedir"));
        const QString type = args.value(QLatin1String("type")).toString();
        bool ok = basedir.isString() && (type == QLatin1String("dir") || type == QLatin1String("file"));
        QList<FileEntry> entries;
        if (ok)
            entries = engine.status(basedir.toString(), type == QLatin1String("dir"), &ok);
        if (!ok)
            qCWarning(lcKeloSim).noquote()
                << QStringLiteral("Simulator: bad getFileStatus arguments from peer %1").arg(peer->id()) << args;
        // Folders can hold many thousands of entries: write them as text, not as objects.
        send(peer,
            envelope::rawResponse(
                in.method, in.key, ok ? Simulator::Ok : Simulator::BadArguments, entriesJson(entries), indented));
    } else if (method == QLatin1String("setSyncPause")) {
        respond(peer, in, Simulator::Ok, QJsonObject());
        q->setPaused(true);
    } else if (method == QLatin1String("setSyncResume")) {
        respond(peer, in, Simulator::Ok, QJsonObject());
        q->setPaused(false);
    } else if (method == QLatin1String("setSyncStart")) {
        respond(peer, in, Simulator::Ok, QJsonObject());
        startSync();
    } else if (method == QLatin1String("navigate")) {
        const bool ok = args.value(QLatin1String("type")).isString();
        if (ok) {
            lastNavigation = args;
            qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: navigate to page type=%1 args=%2")
                                               .arg(args.value(QLatin1String("type")).toString(),
                                                   args.value(QLatin1String("args")).toString());
        } else {
            qCWarning(lcKeloSim).noquote()
                << QStringLiteral("Simulator: navigate without a page type from peer %1").arg(peer->id());
        }
        respond(peer, in, ok ? Simulator::Ok : Simulator::BadArguments, QJsonObject());
        if (ok)
            Q_EMIT q->navigated(args);
    } else {
        qCWarning(lcKeloSim).noquote()
            << QStringLiteral("Simulator: unknown method \"%1\" from peer %2").arg(method).arg(peer->id());
        QJsonObject result;
        result.insert(QLatin1String("message"), QStringLiteral("unknown method"));
        respond(peer, in, Simulator::UnknownMethod, result);
    }
}

void SimulatorPrivate::broadcast(const QByteArray &framedBytes, bool isNotification)
{
    for (Peer *peer : qAsConst(peers)) {
        peer->send(framedBytes);
        if (isNotification)
            ++notificationsSent;
    }
}

void SimulatorPrivate::updateBlocked()
{
    const bool stopped = flags.isPaused || !flags.isOnline || flags.isFlowEmpty || flags.isLocalPermitionForbid;
    engine.setBlocked(stopped || flags.isRemoteSpaceLow, stopped || flags.isLocalSpaceLow);
}

void SimulatorPrivate::applyFlags(const SyncFlags &newFlags, bool forcePush)
{
    const bool changed = !sameFlags(flags, newFlags);
    flags = newFlags;
    updateBlocked();
    if (changed || forcePush)
        q->notify(kNotifySyncErrors, syncErrorsJson());
}

void SimulatorPrivate::setFlag(bool SyncFlags::*flag, bool on, bool forcePush)
{
    SyncFlags f = flags;
    f.*flag = on;
    applyFlags(f, forcePush);
}

void SimulatorPrivate::startSync()
{
    setFlag(&SyncFlags::isPaused, false, true);
    engine.rescan();
    q->notify(kNotifySyncInited, engine.hasRoot());
    q->notify(kNotifySyncQuantity, countsJson());
}

QJsonObject SimulatorPrivate::userInfoJson() const
{
    QJsonObject acc;
    acc.insert(QLatin1String("uid"), account.uid);
    acc.insert(QLatin1String("phone"), account.phone);
    acc.insert(QLatin1String("nickname"), account.nickname);
    acc.insert(QLatin1String("email"), account.email);
    acc.insert(QLatin1String("avatarLink"), account.avatarLink);
    acc.insert(QLatin1String("bookType"), account.bookType);
    acc.insert(QLatin1String("isAdmin"), account.isAdmin);
    QJsonObject st;
    st.insert(QLatin1String("free"), double(storage.free));
    st.insert(QLatin1String("used"), double(storage.used));
    st.insert(QLatin1String("total"), double(storage.total));
    st.insert(QLatin1String("relative"), double(storage.relative));
    st.insert(QLatin1String("quota"), double(storage.quota));
    QJsonObject result;
    result.insert(QLatin1String("account"), acc);
    result.insert(QLatin1String("storage"), st);
    return result;
}

QJsonObject SimulatorPrivate::countsJson() const
{
    const SyncCounts c = engine.counts();
    QJsonObject o;
    o.insert(QLatin1String("todo"), c.todo);
    o.insert(QLatin1String("doing"), c.doing);
    o.insert(QLatin1String("done"), c.done);
    o.insert(QLatin1String("error"), c.error);
    return o;
}

QJsonObject SimulatorPrivate::syncErrorsJson() const
{
    QJsonObject o;
    o.insert(QLatin1String("isPaused"), flags.isPaused);
    o.insert(QLatin1String("isRemoteSpaceLow"), flags.isRemoteSpaceLow);
    o.insert(QLatin1String("isLocalSpaceLow"), flags.isLocalSpaceLow);
    o.insert(QLatin1String("isLocalPathExist"), engine.rootExists());
    o.insert(QLatin1String("isLocalPermitionForbid"), flags.isLocalPermitionForbid);
    o.insert(QLatin1String("isUnknown"), flags.isUnknown);
    o.insert(QLatin1String("isFlowEmpty"), flags.isFlowEmpty);
    o.insert(QLatin1String("isOnline"), flags.isOnline);
    return o;
}

QJsonObject SimulatorPrivate::syncInfoJson() const
{
    QJsonObject o;
    o.insert(QLatin1String("syncInited"), engine.hasRoot());
    o.insert(QLatin1String("syncRoot"), engine.root());
    o.insert(QLatin1String("banDirs"), QJsonArray::fromStringList(engine.banDirs()));
    o.insert(QLatin1String("isPublicCloud"), isPublicCloud);
    o.insert(QLatin1String("syncQuantity"), countsJson());
    o.insert(QLatin1String("syncErrors"), syncErrorsJson());
    return o;
}

QJsonObject SimulatorPrivate::entryJson(const FileEntry &e)
{
    QJsonObject o;
    o.insert(QLatin1String("fileid"), double(e.fileId));
    o.insert(QLatin1String("isDir"), e.isDir);
    o.insert(QLatin1String("path"), e.path);
    o.insert(QLatin1String("plan"), e.plan);
    o.insert(QLatin1String("plan_error"), e.planError);
    o.insert(QLatin1String("plan_status"), e.planStatus);
    return o;
}

QByteArray SimulatorPrivate::entriesJson(const QList<FileEntry> &entries)
{
    QByteArray out;
    out.reserve(entries.size() * 96 + 2);
    out.append('[');
    for (int i = 0; i < entries.size(); ++i) {
        const FileEntry &e = entries.at(i);
        if (i > 0)
            out.append(',');
        out.append("{\"fileid\":");
        out.append(QByteArray::number(e.fileId));
        out.append(",\"isDir\":");
        out.append(e.isDir ? "true" : "false");
        out.append(",\"path\":");
        envelope::appendJsonString(out, e.path);
        out.append(",\"plan\":");
        envelope::appendJsonString(out, e.plan);
        out.append(",\"plan_error\":");
        out.append(QByteArray::number(e.planError));
        out.append(",\"plan_status\":");
        out.append(QByteArray::number(e.planStatus));
        out.append('}');
    }
    out.append(']');
    return out;
}

QJsonValue SimulatorPrivate::payloadFor(const QString &type) const
{
    if (type == kNotifySyncInited)
        return engine.hasRoot();
    if (type == kNotifySyncRoot)
        return engine.root();
    if (type == kNotifyBanDirs)
        return QJsonArray::fromStringList(engine.banDirs());
    if (type == kNotifySyncQuantity)
        return countsJson();
    if (type == kNotifySyncErrors)
        return syncErrorsJson();
    if (type == kNotifyFileSyncStatus) {
        bool ok = false;
        const QList<FileEntry> root = engine.status(QStringLiteral("/"), false, &ok);
        return root.isEmpty() ? QJsonObject() : entryJson(root.first());
    }
    return QJsonValue();
}

// ---------------------------------------------------------------------------------------------
// Simulator

Simulator::Simulator(QObject *parent) : QObject(parent), d(std::make_unique<SimulatorPrivate>(this))
{
    qRegisterMetaType<kelodrive::FileEntry>("kelodrive::FileEntry");
    qRegisterMetaType<kelodrive::SyncCounts>("kelodrive::SyncCounts");
    connect(&d->relistenTimer, &QTimer::timeout, this, [this] {
        if (!d->started)
            return;
        if (!d->listenOn(d->port) && !d->listenOn(0))
            qCWarning(lcKeloSim) << "Simulator::stopListening: cannot listen again";
    });
    connect(&d->engine, &SyncEngine::fileStatusChanged, this, [this](const FileEntry &entry) {
        notify(kNotifyFileSyncStatus, SimulatorPrivate::entryJson(entry));
        Q_EMIT fileStatusChanged(entry);
    });
    connect(&d->engine, &SyncEngine::countsChanged, this, [this](const SyncCounts &counts) {
        notify(kNotifySyncQuantity, d->countsJson());
        Q_EMIT syncCountsChanged(counts);
    });
    connect(&d->engine, &SyncEngine::downloadFinished, this, &Simulator::downloadFinished);
    connect(
        &d->engine, &SyncEngine::rootPresenceChanged, this, [this] { notify(kNotifySyncErrors, d->syncErrorsJson()); });
}

Simulator::~Simulator()
{
    stop();
    d->engine.disconnect(this);
}

bool Simulator::start(quint16 port)
{
    if (d->started)
        stop();
    if (!d->listenOn(port))
        return false;
    d->started = true;
    return true;
}

void Simulator::stop()
{
    if (!d->started)
        return;
    d->started = false;
    d->relistenTimer.stop();
    const QList<Peer *> all = d->peers.values();
    d->peers.clear();
    for (Peer *peer : all) {
        peer->disconnect(this);
        const int id = peer->id();
        delete peer;
        Q_EMIT peerDisconnected(id);
    }
    if (d->server)
        d->server->close();
    d->server.reset();
    if (d->portFilePort != 0 && !d->portFilePath.isEmpty())
        portfile::removeIfOurs(d->portFilePath, d->portFilePort);
    d->portFilePort = 0;
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: stopped (was on port %1)").arg(d->port);
    d->port = 0;
}

bool Simulator::isListening() const
{
    return d->server && d->server->isListening();
}

quint16 Simulator::port() const
{
    return d->port;
}

void Simulator::setPortFilePath(const QString &path)
{
    d->portFilePath = path;
}

QString Simulator::portFilePath() const
{
    return d->portFilePath;
}

QString Simulator::defaultPortFilePath()
{
    return portfile::defaultPath();
}

void Simulator::setAccount(const Account &account)
{
    d->account = account;
}

Account Simulator::account() const
{
    return d->account;
}

void Simulator::setStorage(const Storage &storage)
{
    d->storage = storage;
}

Storage Simulator::storage() const
{
    return d->storage;
}

void Simulator::setPublicCloud(bool isPublic)
{
    if (d->isPublicCloud == isPublic)
        return;
    d->isPublicCloud = isPublic;
    // No notification carries the kind of cloud; "syncRoot" makes the plug-in ask again.
    notify(kNotifySyncRoot, d->engine.root());
}

bool Simulator::isPublicCloud() const
{
    return d->isPublicCloud;
}

void Simulator::setFlags(const SyncFlags &flags)
{
    d->applyFlags(flags, false);
}

SyncFlags Simulator::flags() const
{
    return d->flags;
}

void Simulator::setOnline(bool online)
{
    d->setFlag(&SyncFlags::isOnline, online);
}

void Simulator::setPaused(bool paused)
{
    d->setFlag(&SyncFlags::isPaused, paused);
}

void Simulator::setLocalSpaceLow(bool low)
{
    d->setFlag(&SyncFlags::isLocalSpaceLow, low);
}

void Simulator::setRemoteSpaceLow(bool low)
{
    d->setFlag(&SyncFlags::isRemoteSpaceLow, low);
}

void Simulator::setFlowEmpty(bool empty)
{
    d->setFlag(&SyncFlags::isFlowEmpty, empty);
}

void Simulator::setLocalPermissionForbidden(bool forbidden)
{
    d->setFlag(&SyncFlags::isLocalPermitionForbid, forbidden);
}

void Simulator::setUnknownError(bool unknown)
{
    d->setFlag(&SyncFlags::isUnknown, unknown);
}

SyncCounts Simulator::counts() const
{
    return d->engine.counts();
}

bool Simulator::setSyncRoot(const QString &localDir)
{
    if (!d->engine.setRoot(localDir))
        return false;
    notify(kNotifySyncInited, true);
    notify(kNotifySyncRoot, d->engine.root());
    return true;
}

void Simulator::clearSyncRoot()
{
    d->engine.clearRoot();
    notify(kNotifySyncInited, false);
    notify(kNotifySyncRoot, QString());
}

QString Simulator::syncRoot() const
{
    return d->engine.root();
}

bool Simulator::isSyncInited() const
{
    return d->engine.hasRoot();
}

void Simulator::setBanDirs(const QStringList &dirs)
{
    d->engine.setBanDirs(dirs);
    notify(kNotifyBanDirs, QJsonArray::fromStringList(d->engine.banDirs()));
}

QStringList Simulator::banDirs() const
{
    return d->engine.banDirs();
}

void Simulator::setFailPatterns(const QStringList &patterns)
{
    d->engine.setFailPatterns(patterns);
}

QStringList Simulator::failPatterns() const
{
    return d->engine.failPatterns();
}

void Simulator::setPaceMs(int ms)
{
    d->engine.setPaceMs(ms);
}

int Simulator::paceMs() const
{
    return d->engine.paceMs();
}

void Simulator::setRescanMs(int ms)
{
    d->engine.setRescanMs(ms);
}

FileEntry Simulator::fileStatus(const QString &cloudPath) const
{
    bool ok = false;
    return d->engine.status(cloudPath, false, &ok).value(0);
}

void Simulator::rescan()
{
    d->engine.rescan();
}

bool Simulator::startDownload(const QString &cloudPath, qint64 size, int chunks)
{
    return d->engine.startDownload(cloudPath, size, chunks);
}

void Simulator::setAnswering(bool answering)
{
    d->answering = answering;
}

bool Simulator::isAnswering() const
{
    return d->answering;
}

void Simulator::setResponseDelayMs(int ms)
{
    d->responseDelayMs = qMax(0, ms);
}

void Simulator::setAskPluginInfo(bool ask)
{
    d->askPluginInfo = ask;
}

void Simulator::setIndentedOutput(bool indented)
{
    d->indented = indented;
}

QString Simulator::pluginVersion() const
{
    return d->pluginVersion;
}

QJsonObject Simulator::lastNavigation() const
{
    return d->lastNavigation;
}

void Simulator::notify(const QString &type, const QJsonValue &args)
{
    if (d->peers.isEmpty())
        return;
    d->broadcast(envelope::notification(type, args, d->indented), true);
}

void Simulator::notifyAll()
{
    for (const QLatin1String type :
        {kNotifySyncInited, kNotifySyncRoot, kNotifyBanDirs, kNotifySyncQuantity, kNotifySyncErrors})
        notify(type, d->payloadFor(type));
}

void Simulator::sendRawFrame(const QByteArray &payload)
{
    d->broadcast(FrameReader::frame(payload), false);
}

void Simulator::dropConnections()
{
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: dropping %1 connection(s)").arg(d->peers.size());
    d->closeAllPeers();
}

void Simulator::stopListening(int seconds)
{
    if (!d->started)
        return;
    if (d->server)
        d->server->close();
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: not listening for %1 s").arg(seconds);
    d->relistenTimer.start(qMax(0, seconds) * 1000);
}

bool Simulator::restartOnNewPort()
{
    if (!d->started)
        return false;
    d->relistenTimer.stop();
    d->closeAllPeers();
    // Bind the new port while the old one is still held, so that the two differ.
    auto fresh = std::make_unique<QTcpServer>();
    for (int attempt = 0; attempt < 10; ++attempt) {
        if (fresh->listen(QHostAddress::LocalHost, 0) && fresh->serverPort() != d->port)
            break;
        fresh->close();
    }
    if (!fresh->isListening()) {
        qCWarning(lcKeloSim) << "Simulator::restartOnNewPort: cannot listen on a new port:" << fresh->errorString();
        return false;
    }
    const quint16 old = d->port;
    d->adoptServer(std::move(fresh));
    qCInfo(lcKeloSim).noquote() << QStringLiteral("Simulator: moved from port %1 to %2").arg(old).arg(d->port);
    return true;
}

void Simulator::sendMalformedFrames(int count)
{
    const QList<QByteArray> &frames = malformedFrames();
    if (count < 0)
        count = frames.size();
    for (int i = 0; i < count; ++i)
        sendRawFrame(frames.at(d->malformedCursor++ % frames.size()));
}

void Simulator::sendBurst(int count, const QString &type)
{
    const QString name = type.isEmpty() ? QString(kNotifySyncQuantity) : type;
    const QJsonValue payload = d->payloadFor(name);
    for (int i = 0; i < count; ++i)
        notify(name, payload);
}

int Simulator::connectionCount() const
{
    return d->peers.size();
}

int Simulator::totalConnections() const
{
    return d->totalConnections;
}

int Simulator::messagesReceived() const
{
    return d->messagesReceived;
}

int Simulator::malformedReceived() const
{
    return d->malformedReceived;
}

qint64 Simulator::notificationsSent() const
{
    return d->notificationsSent;
}

QJsonObject Simulator::describe() const
{
    QJsonObject o;
    o.insert(QLatin1String("port"), d->port);
    o.insert(QLatin1String("listening"), isListening());
    o.insert(QLatin1String("portFile"), d->portFilePath);
    o.insert(QLatin1String("connections"), connectionCount());
    o.insert(QLatin1String("totalConnections"), d->totalConnections);
    o.insert(QLatin1String("messagesReceived"), d->messagesReceived);
    o.insert(QLatin1String("malformedReceived"), d->malformedReceived);
    o.insert(QLatin1String("notificationsSent"), double(d->notificationsSent));
    o.insert(QLatin1String("answering"), d->answering);
    o.insert(QLatin1String("paceMs"), d->engine.paceMs());
    o.insert(QLatin1String("failPatterns"), QJsonArray::fromStringList(d->engine.failPatterns()));
    o.insert(QLatin1String("pluginVersion"), d->pluginVersion);
    o.insert(QLatin1String("lastNavigation"), d->lastNavigation);
    o.insert(QLatin1String("userInfo"), d->userInfoJson());
    o.insert(QLatin1String("syncInfo"), d->syncInfoJson());
    return o;
}

}   // namespace kelodrive
