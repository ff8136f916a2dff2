// SPDX-License-Identifier: GPL-3.0-or-later
// In-process simulator of the Kelo Drive sync client: a framed JSON server on localhost.
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace kelodrive {

// Who is signed in; sent as "account" of the "getUserInfo" answer.
struct Account
{
    QString uid = QStringLiteral("10001");
    QString phone = QStringLiteral("+10000000000");
    QString nickname = QStringLiteral("Sim User");
    QString email = QStringLiteral("sim.user@example.com");
    QString avatarLink = QStringLiteral("https://example.com/avatar/sim-user.png");
    int bookType = 1;
    bool isAdmin = false;
};

// Cloud storage figures in bytes; sent as "storage". A quota of -3 means "no fixed quota".
struct Storage
{
    qint64 free = 9LL << 30;
    qint64 used = 1LL << 30;
    qint64 total = 10LL << 30;
    qint64 relative = 0;
    qint64 quota = 10LL << 30;
};

// Error conditions of the client; each true flag holds. "isLocalPathExist" is not here:
// it is computed from the sync root on every report.
struct SyncFlags
{
    bool isPaused = false;
    bool isRemoteSpaceLow = false;
    bool isLocalSpaceLow = false;
    bool isLocalPermitionForbid = false;
    bool isUnknown = false;
    bool isFlowEmpty = false;
    bool isOnline = true;
};

// Queue counts as sent in "syncQuantity": done and error count this session's transfers.
struct SyncCounts
{
    int todo = 0;
    int doing = 0;
    int done = 0;
    int error = 0;
};

// Status of one item, as sent in "getFileStatus" answers and "fileSyncStatus" notifications.
// planStatus: 1 queued, 2 transferring, 3 synced, 10 failed, 0 none (banned or unknown).
struct FileEntry
{
    qint64 fileId = 0;
    bool isDir = false;
    QString path;   // cloud path, "/" followed by the path below the sync root
    QString plan;   // "upload", "download" or empty
    int planError = 0;
    int planStatus = 0;
};

class SimulatorPrivate;

// A TCP server on 127.0.0.1 that speaks the client's side of the plug-in protocol, with a
// simulated sync engine over a real folder. Lives in the thread that creates it and never
// blocks: all work runs from that thread's event loop. Peers' sockets are owned by it.
class Simulator : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Simulator)

public:
    // Response codes of the simulator.
    enum Code { Ok = 0, UnknownMethod = 1, BadArguments = 2 };

    explicit Simulator(QObject *parent = nullptr);
    ~Simulator() override;

    // --- Transport -------------------------------------------------------------------------
    // Listens on 127.0.0.1 (0: an ephemeral port) and writes the port file. False on failure.
    bool start(quint16 port = 0);
    // Closes every connection and the server, and removes the port file if it is still ours.
    void stop();
    bool isListening() const;
    quint16 port() const;
    // Default: $HOME/.config/kelodrive/App Data/ipc. An empty path disables the port file.
    void setPortFilePath(const QString &path);
    QString portFilePath() const;
    static QString defaultPortFilePath();

    // --- Account and state -----------------------------------------------------------------
    void setAccount(const Account &account);
    Account account() const;
    void setStorage(const Storage &storage);   // pushes nothing: the plug-in asks for it
    Storage storage() const;
    void setPublicCloud(bool isPublic);
    bool isPublicCloud() const;
    void setFlags(const SyncFlags &flags);   // pushes "syncErrors" when anything changed
    SyncFlags flags() const;
    void setOnline(bool online);
    void setPaused(bool paused);
    void setLocalSpaceLow(bool low);
    void setRemoteSpaceLow(bool low);
    void setFlowEmpty(bool empty);
    void setLocalPermissionForbidden(bool forbidden);
    void setUnknownError(bool unknown);
    SyncCounts counts() const;

    // --- Sync engine -----------------------------------------------------------------------
    // Sets the local sync root (created when missing), scans it, watches it and pushes
    // "syncRoot" and "syncInited". Files present at that moment count as synced.
    bool setSyncRoot(const QString &localDir);
    // Forgets the root: pushes an empty "syncRoot" and "syncInited" false.
    void clearSyncRoot();
    QString syncRoot() const;
    bool isSyncInited() const;
    // Cloud paths ("/Private") or paths relative to the root; pushes "banDirs".
    void setBanDirs(const QStringList &dirs);
    QStringList banDirs() const;
    // Wildcards matched against file names; a matching file ends in status 10.
    void setFailPatterns(const QStringList &patterns);
    QStringList failPatterns() const;
    // Time per status step of a transfer and per download chunk (ms, at least 1).
    void setPaceMs(int ms);
    int paceMs() const;
    // Period of the full rescan that catches changes the watcher misses; 0 turns it off.
    void setRescanMs(int ms);
    // Status of one item, by cloud path; a default entry (empty path) when unknown.
    FileEntry fileStatus(const QString &cloudPath) const;
    // Looks at the root again now instead of waiting for the watcher.
    void rescan();
    // Writes cloudPath + ".temp" in chunks at the pace, then renames it to cloudPath.
    bool startDownload(const QString &cloudPath, qint64 size = 64 * 1024, int chunks = 4);

    // --- Protocol behaviour ----------------------------------------------------------------
    // When false, requests are recorded and signalled but never answered.
    void setAnswering(bool answering);
    bool isAnswering() const;
    // Delay before each answer (ms); 0 answers at once.
    void setResponseDelayMs(int ms);
    // Ask every new peer for "getPluginInfo" (default true).
    void setAskPluginInfo(bool ask);
    // Serialise outgoing JSON indented instead of compact.
    void setIndentedOutput(bool indented);
    QString pluginVersion() const;   // last version a peer answered, empty if none
    QJsonObject lastNavigation() const;   // "data" of the last "navigate" request

    // Pushes one notification {"type": type, "args": args} to every peer.
    void notify(const QString &type, const QJsonValue &args);
    // Pushes the current state: "syncInited", "syncRoot", "banDirs", "syncQuantity", "syncErrors".
    void notifyAll();
    // Sends raw bytes followed by the 0x0C delimiter to every peer.
    void sendRawFrame(const QByteArray &payload);

    // --- Faults ----------------------------------------------------------------------------
    void dropConnections();
    // Refuses new connections for the given time; existing ones stay. The port file stays.
    void stopListening(int seconds);
    // Drops every peer and listens on a new ephemeral port; rewrites the port file.
    bool restartOnNewPort();
    // Sends count frames drawn in turn from a set of malformed ones (default: the whole set).
    void sendMalformedFrames(int count = -1);
    // Sends count notifications at once (type "syncQuantity" unless given).
    void sendBurst(int count, const QString &type = QString());

    // Runs one text command (the syntax of stdin and --script files). Returns false and
    // fills error for an unknown or malformed command. "quit" emits quitRequested().
    bool execute(const QString &commandLine, QString *error = nullptr);
    static QStringList commandHelp();
    // A snapshot of the whole state as JSON (port, peers, root, flags, counts...).
    QJsonObject describe() const;

    // --- Counters --------------------------------------------------------------------------
    int connectionCount() const;   // peers connected now
    int totalConnections() const;   // peers accepted since construction
    int messagesReceived() const;   // well-formed messages from peers
    int malformedReceived() const;   // frames dropped as malformed
    qint64 notificationsSent() const;

Q_SIGNALS:
    void listening(quint16 port);
    void peerConnected(int peerId);
    void peerDisconnected(int peerId);
    // Every well-formed message from a peer, the whole envelope as parsed.
    void messageReceived(int peerId, const QJsonObject &message);
    void malformedFrameReceived(int peerId, const QByteArray &frame);
    void pluginVersionReceived(int peerId, const QString &version);
    void navigated(const QJsonObject &page);
    void fileStatusChanged(const kelodrive::FileEntry &entry);
    void syncCountsChanged(const kelodrive::SyncCounts &counts);
    void downloadFinished(const QString &cloudPath);
    void quitRequested();

private:
    std::unique_ptr<SimulatorPrivate> d;
};

}   // namespace kelodrive

Q_DECLARE_METATYPE(kelodrive::FileEntry)
Q_DECLARE_METATYPE(kelodrive::SyncCounts)
