// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "caches/syncrecords.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

namespace hfmplugin_nubix {

class TcpClient;

// The plug-in's one conversation with the sync client: wraps requests and
// answers in JSON envelopes, and routes incoming messages to their handlers.
// GUI thread only; nothing here blocks. The singleton lives until exit and
// owns its TcpClient.
//
// Requests made while connected are watched for their answers: when one has
// had none for a few seconds, one warning line says so, and one line more
// when answers come back. The watch only logs; requests wait on as before.
class NubixMessageHandler : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixMessageHandler)
public:
    static NubixMessageHandler *instance();

    // instance() is the one the plug-in uses; other objects serve tests.
    explicit NubixMessageHandler(QObject *parent = nullptr);
    ~NubixMessageHandler() override;

    // Sends a request whether or not connected; returns its key, which the answer repeats.
    QString request(const QString &method, const QVariantMap &data);

    enum class SyncResult { Answered, TimedOut, Disconnected };
    // Sends a request and waits up to timeoutMs (without limit when negative)
    // for its answer, running a local event loop meanwhile, so that the GUI
    // and every other message are handled while it waits; the answer also
    // reaches its parser and signal as usual. Returns the answer's "data";
    // on time-out, and when the connection is down or goes down before the
    // answer, it returns an empty map (without sending when already down)
    // and says which through result. A late answer is handled like any
    // other. Re-entrant: waits nested in each other end independently.
    QVariantMap requestSync(
        const QString &method, const QVariantMap &data, int timeoutMs, SyncResult *result = nullptr);
    QString buildReqeustMessage(const QString &method, const QVariantMap &data, const QString &key);
    QString buildResponseMessage(const QString &method, const QVariantMap &data, const QString &key);
    // A fresh request key: "{" and the 36 characters of a new UUID.
    static QString createKey();
    // How long a request may go unanswered before the log says so; tests shorten it.
    void setAnswerWarningMs(int ms);

    bool isConnected() const { return connected; }
    TcpClient *client() const { return tcpClient; }

    // Connection: everybody calls tryConnect(); it does nothing while
    // connected, otherwise connects to the port the client wrote in the
    // home directory. A refused connection is retried every 3 s while the
    // client's process runs. isProcessRunning() blocks while "pgrep" runs.
    void tryConnect();
    void connectServer();
    // The client's port from its port file; 0 when there is none or it is invalid.
    quint16 readPort();
    static QString portFilePath();
    // The first bytes of the port file, read without ever blocking; false
    // when it cannot be opened or is not a regular file (a FIFO, a device,
    // a directory), which counts as an unreadable port file.
    static bool readPortFileHead(const QString &path, QByteArray *head);
    // The port on the first line of those bytes, trimmed; false when that
    // line is not a decimal number up to 65535. line gets the trimmed text.
    static bool parsePortLine(const QByteArray &head, quint16 *port, QString *line);
    static bool isProcessRunning(const QString &name);
    // Starts the client detached; does not connect.
    static void launchApp();

    // Requests to the client; each is sent whether or not connected.
    QString requestUserInfo();
    QString requestSyncInfo();
    // isDir: the status of everything in the directory, else of the one item.
    QString requestFileStatus(const QString &path, bool isDir);
    void requestSyncPause();
    void requestSyncResume();
    void requestSyncStart();
    // Asks the client to show one of its pages; an invalid page is only logged.
    void requestNavigate(PageType page);

public Q_SLOTS:
    void handleMessage(const QString &message);
    void onTcpError(QAbstractSocket::SocketError error);

Q_SIGNALS:
    void sigConnected();
    void sigDisconnected();
    void sigSyncInited(bool inited);
    void sigSyncRootChanged(const QString &root);
    void sigBanDirsChanged(const QStringList &dirs);
    void sigSyncQuantityChanged(const SyncQuantity &quantity);
    void sigSyncErrorOccured(const SyncError &errors);
    void sigFileSyncStatusChanged(const FileData &data);
    void sigResponseUserInfo(const QString &key, const UserInfo &info);
    void sigResponseSyncInfo(const QString &key, const SyncInfo &info);
    void sigResponseFileStatus(const QString &key, const QList<FileData> &datas);

private Q_SLOTS:
    void handleRequest(const QJsonObject &body);
    void handleResponse(const QJsonObject &body);
    void handleSignals(const QJsonObject &body);
    void onRequestPluginInfo(const QString &key);

private:
    // Notification parsers: each checks the kind of "args" first.
    void parseSigSyncInited(const QVariant &args);
    void parseSigSyncRootChanged(const QVariant &args);
    void parseSigBannedDirChanged(const QVariant &args);
    void parseSigSyncQuantityChanged(const QVariant &args);
    void parseSigSyncErrorOccured(const QVariant &args);
    void parseSigFileSyncStatusChanged(const QVariant &args);
    // Response parsers, given the answer's "data": values are read with the
    // variant conversions, so absent or mistyped values become defaults.
    void parseResponseUserInfo(const QString &key, const QJsonObject &answer);
    void parseResponseSyncInfo(const QString &key, const QJsonObject &answer);
    void parseResponseFileStatus(const QString &key, const QJsonObject &answer);

    using ResponseParser = void (NubixMessageHandler::*)(const QString &key, const QJsonObject &answer);
    using SignalParser = void (NubixMessageHandler::*)(const QVariant &args);
    static const QMap<QString, ResponseParser> &responseParsers();
    static const QMap<QString, SignalParser> &signalParsers();

    QString buildMessage(const QString &type, const QString &method, const QVariantMap &data, const QString &key);

    struct PendingAnswer;

    // The watch on unanswered requests.
    void watchAnswer(const QString &key);
    void answerArrived(const QString &key);
    void checkAnswers();
    void forgetAnswers();

    TcpClient *tcpClient = nullptr;
    bool connected = false;
    // Keys of the requestSync() calls waiting for their answers.
    QHash<QString, PendingAnswer *> pendingAnswers;
    // When each request made while connected and not answered yet was sent
    // (on answerClock), and one timer that looks at them while there are any.
    QHash<QString, qint64> unanswered;
    QElapsedTimer answerClock;
    QTimer answerWatch;
    int answerWarningMs;
    bool answersStalled = false;
};

}   // namespace hfmplugin_nubix
