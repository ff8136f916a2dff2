// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixmessagehandler.h"

#include "nubixglobal.h"
#include "tcpclient.h"

#include <json.h>

#include <QCborArray>
#include <QCborMap>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QProcess>
#include <QTimer>
#include <QUuid>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hfmplugin_nubix {

namespace {
const QString kTypeRequest = QStringLiteral("ping");
const QString kTypeResponse = QStringLiteral("pong");
const QString kMethodPluginInfo = QStringLiteral("getPluginInfo");
const QString kMethodNotify = QStringLiteral("notify");
const QString kPluginVersion = QStringLiteral("1.0.7");
const QString kServerHost = QStringLiteral("localhost");
constexpr int kRetryDelayMs = 3000;
constexpr int kPgrepTimeoutMs = 30000;
// Only the first line of the port file is used, and a port takes five digits.
constexpr int kMaxPortFileBytes = 256;
// How long a request may go without its answer before the log says so: the
// client has stopped answering, and the windows show what they last knew.
constexpr int kAnswerWarningMs = 5000;
// Requests watched at most; far more than a working client ever leaves
// waiting, and enough to see that one does not answer.
constexpr int kMaxWatchedRequests = 10000;

// Whether a notification's "args" converts to T; warns in the parser's name when not.
template <class T> bool argsConvert(const QVariant &args, const char *parser)
{
    if (args.canConvert<T>())
        return true;
    nubixWarning().noquote() << "NubixMessageHandler: Unexpected argument type for method" << QLatin1String(parser);
    return false;
}

// Values of a parsed answer read as its variant map would give them: a value
// of the wanted kind is taken as it is, any other goes through the variant
// conversion of the JSON value it came from.
QVariant variantOf(const QCborValue &value)
{
    return value.toJsonValue().toVariant();
}

QString stringOf(const QCborValue &value)
{
    return value.isString() ? value.toString() : variantOf(value).toString();
}

bool boolOf(const QCborValue &value)
{
    return value.isBool() ? value.toBool() : variantOf(value).toBool();
}

qint64 int64Of(const QCborValue &value)
{
    return value.isInteger() ? value.toInteger() : variantOf(value).toLongLong();
}

qint32 int32Of(const QCborValue &value)
{
    // Cut to 32 bits as the variant conversion does.
    return value.isInteger() ? qint32(value.toInteger()) : variantOf(value).toInt();
}

SyncQuantity toSyncQuantity(const QVariantMap &map)
{
    SyncQuantity quantity;
    quantity.todo = map.value(QStringLiteral("todo"), 0).toInt();
    quantity.doing = map.value(QStringLiteral("doing"), 0).toInt();
    quantity.done = map.value(QStringLiteral("done"), 0).toInt();
    quantity.error = map.value(QStringLiteral("error"), 0).toInt();
    return quantity;
}

SyncError toSyncError(const QVariantMap &map)
{
    SyncError errors;
    errors.isPaused = map.value(QStringLiteral("isPaused"), false).toBool();
    errors.isRemoteSpaceLow = map.value(QStringLiteral("isRemoteSpaceLow"), false).toBool();
    errors.isLocalSpaceLow = map.value(QStringLiteral("isLocalSpaceLow"), false).toBool();
    errors.isLocalPathExist = map.value(QStringLiteral("isLocalPathExist"), false).toBool();
    errors.isLocalPermitionForbid = map.value(QStringLiteral("isLocalPermitionForbid"), false).toBool();
    errors.isUnknown = map.value(QStringLiteral("isUnknown"), false).toBool();
    errors.isFlowEmpty = map.value(QStringLiteral("isFlowEmpty"), false).toBool();
    errors.isOnline = map.value(QStringLiteral("isOnline"), false).toBool();
    return errors;
}
}   // namespace

struct NubixMessageHandler::PendingAnswer
{
    QEventLoop loop;
    QVariantMap data;
    SyncResult result = SyncResult::TimedOut;
};

NubixMessageHandler *NubixMessageHandler::instance()
{
    static NubixMessageHandler handler;
    return &handler;
}

NubixMessageHandler::NubixMessageHandler(QObject *parent)
    : QObject(parent), tcpClient(new TcpClient(this)), answerWarningMs(kAnswerWarningMs)
{
    registerSyncRecordTypes();
    nubixInfo() << "NubixMessageHandler: Initializing";
    answerClock.start();
    answerWatch.setTimerType(Qt::CoarseTimer);
    answerWatch.setInterval(answerWarningMs / 2);
    connect(&answerWatch, &QTimer::timeout, this, &NubixMessageHandler::checkAnswers);

    connect(tcpClient, &TcpClient::connected, this, [this] {
        nubixInfo() << "NubixMessageHandler: Connected to server";
        connected = true;
        Q_EMIT sigConnected();
    });
    connect(tcpClient, &TcpClient::disconnected, this, [this] {
        nubixInfo() << "NubixMessageHandler: Disconnected from server";
        connected = false;
        forgetAnswers();
        // Nothing will answer the requests still waiting.
        for (PendingAnswer *pending : qAsConst(pendingAnswers)) {
            pending->result = SyncResult::Disconnected;
            pending->loop.quit();
        }
        Q_EMIT sigDisconnected();
    });
    connect(tcpClient, &TcpClient::errorOccured, this, &NubixMessageHandler::onTcpError);
    connect(tcpClient, &TcpClient::messageReceived, this, &NubixMessageHandler::handleMessage);

    nubixInfo() << "NubixMessageHandler: Initialization complete";
}

NubixMessageHandler::~NubixMessageHandler()
{
    nubixInfo() << "NubixMessageHandler: Destroying";
}

QString NubixMessageHandler::createKey()
{
    QString key = QUuid::createUuid().toString();
    key.remove(QChar(0x0001));
    // The client compares keys as they are, so the closing brace stays cut off.
    key.chop(1);
    return key;
}

QString NubixMessageHandler::request(const QString &method, const QVariantMap &data)
{
    const QString key = createKey();
    nubixDebug() << "NubixMessageHandler: Creating request. Method:" << method << "Key:" << key;
    tcpClient->sendMessage(buildReqeustMessage(method, data, key));
    watchAnswer(key);
    return key;
}

void NubixMessageHandler::setAnswerWarningMs(int ms)
{
    answerWarningMs = qMax(1, ms);
    answerWatch.setInterval(qMax(1, answerWarningMs / 2));
}

void NubixMessageHandler::watchAnswer(const QString &key)
{
    // A request made while down has nobody to answer it; the disconnection
    // has already been told.
    if (!connected || unanswered.size() >= kMaxWatchedRequests)
        return;
    unanswered.insert(key, answerClock.elapsed());
    // Started once and left running while requests wait, not per request.
    if (!answerWatch.isActive())
        answerWatch.start();
}

void NubixMessageHandler::answerArrived(const QString &key)
{
    if (!unanswered.remove(key) || !answersStalled)
        return;
    // Requests that waited through the silence count as lost, so that one
    // the client never answers does not warn again at once.
    const qint64 before = answerClock.elapsed() - answerWarningMs;
    int lost = 0;
    for (auto it = unanswered.begin(); it != unanswered.end();) {
        if (it.value() <= before) {
            it = unanswered.erase(it);
            ++lost;
        } else {
            ++it;
        }
    }
    answersStalled = false;
    nubixInfo().nospace() << "NubixMessageHandler: The client answers again (" << lost
                          << " earlier requests went unanswered)";
}

void NubixMessageHandler::checkAnswers()
{
    if (unanswered.isEmpty()) {
        answerWatch.stop();
        return;
    }
    if (answersStalled)
        return;
    const qint64 now = answerClock.elapsed();
    qint64 oldest = now;
    for (const qint64 sent : qAsConst(unanswered))
        oldest = qMin(oldest, sent);
    if (now - oldest < answerWarningMs)
        return;
    answersStalled = true;
    nubixWarning().nospace() << "NubixMessageHandler: No answer from the client for " << (now - oldest) / 1000 << " s ("
                             << unanswered.size() << " requests waiting)";
}

void NubixMessageHandler::forgetAnswers()
{
    unanswered.clear();
    answersStalled = false;
    answerWatch.stop();
}

QVariantMap NubixMessageHandler::requestSync(
    const QString &method, const QVariantMap &data, int timeoutMs, SyncResult *result)
{
    SyncResult ignored;
    SyncResult &outcome = result ? *result : ignored;
    if (!connected) {
        nubixWarning() << "NubixMessageHandler: Not connected, not waiting for an answer. Method:" << method;
        outcome = SyncResult::Disconnected;
        return QVariantMap();
    }

    PendingAnswer pending;
    const QString key = request(method, data);
    pendingAnswers.insert(key, &pending);
    QTimer timer;
    if (timeoutMs >= 0) {
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, &pending.loop, &QEventLoop::quit);
        timer.start(timeoutMs);
    }
    pending.loop.exec();
    pendingAnswers.remove(key);

    outcome = pending.result;
    if (outcome == SyncResult::TimedOut)
        nubixWarning() << "NubixMessageHandler: Request timed out. Method:" << method << "Key:" << key;
    else if (outcome == SyncResult::Disconnected)
        nubixWarning() << "NubixMessageHandler: Disconnected before the answer. Method:" << method << "Key:" << key;
    return pending.data;
}

QString NubixMessageHandler::buildReqeustMessage(const QString &method, const QVariantMap &data, const QString &key)
{
    nubixDebug() << "NubixMessageHandler: Building request message. Method:" << method << "Key:" << key;
    return buildMessage(kTypeRequest, method, data, key);
}

QString NubixMessageHandler::buildResponseMessage(const QString &method, const QVariantMap &data, const QString &key)
{
    nubixDebug() << "NubixMessageHandler: Building response message. Method:" << method << "Key:" << key;
    return buildMessage(kTypeResponse, method, data, key);
}

QString NubixMessageHandler::buildMessage(
    const QString &type, const QString &method, const QVariantMap &data, const QString &key)
{
    const QJsonObject body {
        {QStringLiteral("from"), QStringLiteral("client")},
        {QStringLiteral("to"), QStringLiteral("server")},
        {QStringLiteral("method"), method},
        {QStringLiteral("data"), QJsonObject::fromVariantMap(data)},
        {QStringLiteral("version"), 1},
        {QStringLiteral("key"), key},
        {QStringLiteral("timestamp"), QDateTime::currentMSecsSinceEpoch()},
    };
    const QJsonObject envelope {
        {QStringLiteral("type"), type},
        {QStringLiteral("data"), body},
    };
    return QString::fromUtf8(QJsonDocument(envelope).toJson());
}

void NubixMessageHandler::handleMessage(const QString &message)
{
    nubixDebug() << "NubixMessageHandler: Received message:" << message;

    // Back to the wire's UTF-8: the locale's encoding would lose or garble
    // every name it cannot represent.
    const QByteArray text = message.toUtf8();
    // A key repeated over an object or array would leak inside the parser.
    if (Json::repeatedContainerKeyAt(text) >= 0) {
        nubixWarning() << "NubixMessageHandler: Invalid message format";
        return;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        nubixWarning() << "NubixMessageHandler: Invalid message format";
        return;
    }

    const QJsonObject envelope = document.object();
    const QJsonObject body = envelope.value(QStringLiteral("data")).toObject();
    const QString type = envelope.value(QStringLiteral("type")).toString();
    if (type == kTypeRequest)
        handleRequest(body);
    else if (type == kTypeResponse)
        handleResponse(body);
    else
        nubixWarning() << "NubixMessageHandler: Invalid message type:" << type;
}

void NubixMessageHandler::handleRequest(const QJsonObject &body)
{
    if (body.isEmpty()) {
        nubixWarning() << "NubixMessageHandler: Invalid data object";
        return;
    }

    const QString method = body.value(QStringLiteral("method")).toString();
    const QString key = body.value(QStringLiteral("key")).toString();
    nubixDebug() << "NubixMessageHandler: Handling request. Method:" << method << "Key:" << key;

    if (method == kMethodPluginInfo)
        onRequestPluginInfo(key);
    else if (method == kMethodNotify)
        handleSignals(body);
    else
        nubixWarning() << "NubixMessageHandler: Unsupported request method:" << method;
}

void NubixMessageHandler::onRequestPluginInfo(const QString &key)
{
    if (!connected) {
        nubixWarning() << "NubixMessageHandler: Not connected.";
        return;
    }
    nubixDebug() << "NubixMessageHandler: Responding to plugin info request with key:" << key;
    const QVariantMap data {{QStringLiteral("version"), kPluginVersion}};
    tcpClient->sendMessage(buildResponseMessage(kMethodPluginInfo, data, key));
}

void NubixMessageHandler::handleResponse(const QJsonObject &body)
{
    nubixDebug() << "NubixMessageHandler: Handling response:" << body;
    if (body.isEmpty()) {
        nubixWarning() << "NubixMessageHandler: Invalid data object";
        return;
    }

    const QString method = body.value(QStringLiteral("method")).toString();
    const QString key = body.value(QStringLiteral("key")).toString();
    const QJsonObject data = body.value(QStringLiteral("data")).toObject();
    nubixDebug() << "NubixMessageHandler: Handling response. Method:" << method << "Key:" << key;
    answerArrived(key);

    if (PendingAnswer *pending = pendingAnswers.value(key)) {
        pending->data = data.toVariantMap();
        pending->result = SyncResult::Answered;
        pending->loop.quit();
    }

    const auto &parsers = responseParsers();
    const auto parser = parsers.constFind(method);
    if (parser == parsers.constEnd()) {
        nubixWarning() << "NubixMessageHandler: Unsupported method:" << method;
        return;
    }
    (this->*parser.value())(key, data);
}

void NubixMessageHandler::handleSignals(const QJsonObject &body)
{
    const QJsonObject data = body.value(QStringLiteral("data")).toObject();
    if (data.isEmpty() || !data.contains(QStringLiteral("type")) || !data.contains(QStringLiteral("args"))) {
        nubixWarning() << "NubixMessageHandler: Invalid notify!" << body;
        return;
    }
    nubixDebug() << "NubixMessageHandler: Handling signals:" << data;

    const QString type = data.value(QStringLiteral("type")).toString();
    const QVariant args = data.value(QStringLiteral("args")).toVariant();

    const auto &parsers = signalParsers();
    const auto parser = parsers.constFind(type);
    if (parser == parsers.constEnd()) {
        nubixWarning() << "NubixMessageHandler: Unsupported signal:" << type;
        return;
    }
    (this->*parser.value())(args);
}

const QMap<QString, NubixMessageHandler::ResponseParser> &NubixMessageHandler::responseParsers()
{
    // Answers to the other requests (sync controls, navigation) are only logged.
    static const QMap<QString, ResponseParser> parsers = [] {
        qRegisterMetaType<ResponseParser>("ResponseParser");
        return QMap<QString, ResponseParser> {
            {QStringLiteral("getUserInfo"), &NubixMessageHandler::parseResponseUserInfo},
            {QStringLiteral("getSyncInfo"), &NubixMessageHandler::parseResponseSyncInfo},
            {QStringLiteral("getFileStatus"), &NubixMessageHandler::parseResponseFileStatus},
        };
    }();
    return parsers;
}

const QMap<QString, NubixMessageHandler::SignalParser> &NubixMessageHandler::signalParsers()
{
    static const QMap<QString, SignalParser> parsers {
        {QStringLiteral("syncInited"), &NubixMessageHandler::parseSigSyncInited},
        {QStringLiteral("syncRoot"), &NubixMessageHandler::parseSigSyncRootChanged},
        {QStringLiteral("banDirs"), &NubixMessageHandler::parseSigBannedDirChanged},
        {QStringLiteral("syncQuantity"), &NubixMessageHandler::parseSigSyncQuantityChanged},
        {QStringLiteral("syncErrors"), &NubixMessageHandler::parseSigSyncErrorOccured},
        {QStringLiteral("fileSyncStatus"), &NubixMessageHandler::parseSigFileSyncStatusChanged},
    };
    return parsers;
}

// Connection ------------------------------------------------------------------

void NubixMessageHandler::tryConnect()
{
    if (connected) {
        nubixInfo() << "NubixMessageHandler: Already connected.";
        return;
    }
    nubixInfo() << "NubixMessageHandler: Attempting to connect...";
    connectServer();
}

void NubixMessageHandler::connectServer()
{
    const quint16 port = readPort();
    if (port == 0) {
        // Port file problems go to the default category so they show whatever the plug-in's filter.
        qCritical() << "NubixMessageHandler: Failed to read valid port from config";
        return;
    }
    nubixInfo() << "NubixMessageHandler: Connecting to server on localhost:" << port;
    tcpClient->connectToServer(kServerHost, port);
}

QString NubixMessageHandler::portFilePath()
{
    return QDir::homePath() + QStringLiteral("/.config/kelodrive/App Data/ipc");
}

bool NubixMessageHandler::readPortFileHead(const QString &path, QByteArray *head)
{
    // Non-blocking, so that a FIFO put in its place cannot stall start-up;
    // then only a regular file counts, so that a device such as /dev/zero is
    // never read.
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return false;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return false;
    }
    head->resize(kMaxPortFileBytes);
    int filled = 0;
    while (filled < kMaxPortFileBytes) {
        const ssize_t got = ::read(fd, head->data() + filled, size_t(kMaxPortFileBytes - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        filled += int(got);
    }
    ::close(fd);
    head->truncate(filled);
    return true;
}

bool NubixMessageHandler::parsePortLine(const QByteArray &head, quint16 *port, QString *line)
{
    const int end = head.indexOf('\n');
    QByteArray first = end < 0 ? head : head.left(end);
    // The file used to be read in text mode, which drops every carriage return.
    first.replace('\r', QByteArray());
    *line = QString::fromUtf8(first).trimmed();
    bool ok = false;
    *port = line->toUShort(&ok, 10);
    return ok;
}

quint16 NubixMessageHandler::readPort()
{
    const QString path = portFilePath();
    QByteArray head;
    if (!readPortFileHead(path, &head)) {
        qCritical() << "NubixMessageHandler: Cannot open config file:" << path;
        return 0;
    }

    quint16 port = 0;
    QString line;
    if (!parsePortLine(head, &port, &line)) {
        qCritical() << "NubixMessageHandler: Invalid port number in config file:" << line;
        return 0;
    }
    nubixDebug() << "NubixMessageHandler: Read port from config:" << port;
    return port;
}

bool NubixMessageHandler::isProcessRunning(const QString &name)
{
    QProcess pgrep;
    pgrep.start(QStringLiteral("pgrep"), {QStringLiteral("-f"), name});
    // A pgrep that cannot start or hangs leaves no output: the client counts as not running.
    if (!pgrep.waitForFinished(kPgrepTimeoutMs) && pgrep.state() != QProcess::NotRunning) {
        pgrep.kill();
        pgrep.waitForFinished();
    }
    const bool running = !pgrep.readAllStandardOutput().trimmed().isEmpty();
    nubixDebug() << "NubixMessageHandler: Process" << name << (running ? "is running" : "is not running");
    return running;
}

void NubixMessageHandler::launchApp()
{
    const QString program = nubixExecPath();
    nubixInfo() << "NubixMessageHandler: Launching app:" << program;
    QProcess::startDetached(program, QStringList());
}

void NubixMessageHandler::onTcpError(QAbstractSocket::SocketError error)
{
    nubixWarning() << "NubixMessageHandler: TCP error occurred:" << error;
    if (error != QAbstractSocket::ConnectionRefusedError) {
        // A closed connection is not retried here either: the next tryConnect() of a caller reconnects.
        nubixWarning() << "NubixMessageHandler: Unhandled TCP error:" << error;
        return;
    }
    if (isProcessRunning(nubixExecPath())) {
        nubixInfo() << "NubixMessageHandler: Server process running, retrying connection in 3 seconds";
        QTimer::singleShot(kRetryDelayMs, Qt::CoarseTimer, this, [this] { tryConnect(); });
    } else {
        nubixInfo() << "NubixMessageHandler: Server process not running, stopping reconnection attempts";
    }
}

// Requests --------------------------------------------------------------------

QString NubixMessageHandler::requestUserInfo()
{
    nubixDebug() << "NubixMessageHandler: Requesting user info";
    return request(QStringLiteral("getUserInfo"), QVariantMap());
}

QString NubixMessageHandler::requestSyncInfo()
{
    nubixDebug() << "NubixMessageHandler: Requesting sync info";
    return request(QStringLiteral("getSyncInfo"), QVariantMap());
}

QString NubixMessageHandler::requestFileStatus(const QString &path, bool isDir)
{
    nubixDebug() << "NubixMessageHandler: Requesting file status for" << path << (isDir ? "(directory)" : "(file)");
    // The path travels under "basedir" for a single file too.
    const QVariantMap data {
        {QStringLiteral("basedir"), path},
        {QStringLiteral("type"), isDir ? QStringLiteral("dir") : QStringLiteral("file")},
    };
    return request(QStringLiteral("getFileStatus"), data);
}

void NubixMessageHandler::requestSyncPause()
{
    nubixDebug() << "NubixMessageHandler: Requesting sync pause";
    request(QStringLiteral("setSyncPause"), QVariantMap());
}

void NubixMessageHandler::requestSyncResume()
{
    nubixDebug() << "NubixMessageHandler: Requesting sync resume";
    request(QStringLiteral("setSyncResume"), QVariantMap());
}

void NubixMessageHandler::requestSyncStart()
{
    nubixDebug() << "NubixMessageHandler: Requesting sync start";
    request(QStringLiteral("setSyncStart"), QVariantMap());
}

void NubixMessageHandler::requestNavigate(PageType page)
{
    nubixDebug() << "NubixMessageHandler: Navigating to page:" << qint32(page);
    QVariantMap payload;
    if (!navigatePayload(page, &payload)) {
        nubixWarning() << "NubixMessageHandler: Invalid navigate page:" << qint32(page);
        return;
    }
    request(QStringLiteral("navigate"), payload);
}

// Notifications ---------------------------------------------------------------

void NubixMessageHandler::parseSigSyncInited(const QVariant &args)
{
    if (argsConvert<bool>(args, "parseSigSyncInited"))
        Q_EMIT sigSyncInited(args.toBool());
}

void NubixMessageHandler::parseSigSyncRootChanged(const QVariant &args)
{
    if (!argsConvert<QString>(args, "parseSigSyncRootChanged"))
        return;
    // The new root is only taken over from the answer; the key is not needed.
    requestSyncInfo();
    Q_EMIT sigSyncRootChanged(args.toString());
}

void NubixMessageHandler::parseSigBannedDirChanged(const QVariant &args)
{
    if (argsConvert<QStringList>(args, "parseSigBannedDirChanged"))
        Q_EMIT sigBanDirsChanged(args.toStringList());
}

void NubixMessageHandler::parseSigSyncQuantityChanged(const QVariant &args)
{
    if (argsConvert<QVariantMap>(args, "parseSigSyncQuantityChanged"))
        Q_EMIT sigSyncQuantityChanged(toSyncQuantity(args.toMap()));
}

void NubixMessageHandler::parseSigSyncErrorOccured(const QVariant &args)
{
    if (argsConvert<QVariantMap>(args, "parseSigSyncErrorOccured"))
        Q_EMIT sigSyncErrorOccured(toSyncError(args.toMap()));
}

void NubixMessageHandler::parseSigFileSyncStatusChanged(const QVariant &args)
{
    if (!argsConvert<QVariantMap>(args, "parseSigFileSyncStatusChanged"))
        return;
    const QVariantMap map = args.toMap();
    FileData data;
    data.path = map.value(QStringLiteral("path"), QString()).toString();
    data.isDir = map.value(QStringLiteral("isDir"), false).toBool();
    // Read narrower than in answers on purpose: notifications keep only a 32-bit id.
    data.fileId = map.value(QStringLiteral("fileid"), 0).toInt();
    data.plan = map.value(QStringLiteral("plan"), QString()).toString();
    data.planStatus = map.value(QStringLiteral("plan_status"), 0).toInt();
    Q_EMIT sigFileSyncStatusChanged(data);
}

// Responses -------------------------------------------------------------------

void NubixMessageHandler::parseResponseUserInfo(const QString &key, const QJsonObject &answer)
{
    const QVariantMap data = answer.toVariantMap();
    // The client's result code is read but not interpreted: failures still carry a result.
    const int code = data.value(QStringLiteral("code")).toInt();
    Q_UNUSED(code)
    const QVariantMap result = data.value(QStringLiteral("result")).toMap();
    const QVariantMap account = result.value(QStringLiteral("account")).toMap();
    const QVariantMap storage = result.value(QStringLiteral("storage")).toMap();

    UserInfo info;
    info.account.uid = account.value(QStringLiteral("uid")).toString();
    info.account.phone = account.value(QStringLiteral("phone")).toString();
    info.account.nickname = account.value(QStringLiteral("nickname")).toString();
    info.account.email = account.value(QStringLiteral("email")).toString();
    info.account.avatarLink = account.value(QStringLiteral("avatarLink")).toString();
    info.account.bookType = account.value(QStringLiteral("bookType")).toInt();
    info.account.isAdmin = account.value(QStringLiteral("isAdmin")).toBool();
    info.free = storage.value(QStringLiteral("free")).toLongLong();
    info.used = storage.value(QStringLiteral("used")).toLongLong();
    info.total = storage.value(QStringLiteral("total")).toLongLong();
    info.relative = storage.value(QStringLiteral("relative")).toLongLong();
    info.quota = storage.value(QStringLiteral("quota")).toLongLong();
    Q_EMIT sigResponseUserInfo(key, info);
}

void NubixMessageHandler::parseResponseSyncInfo(const QString &key, const QJsonObject &answer)
{
    const QVariantMap data = answer.toVariantMap();
    // The client's result code is read but not interpreted: failures still carry a result.
    const int code = data.value(QStringLiteral("code")).toInt();
    Q_UNUSED(code)
    const QVariantMap result = data.value(QStringLiteral("result")).toMap();

    SyncInfo info;
    info.syncInited = result.value(QStringLiteral("syncInited")).toBool();
    info.syncRoot = result.value(QStringLiteral("syncRoot")).toString();
    info.banDirs = result.value(QStringLiteral("banDirs")).toStringList();
    info.isPublicCloud = result.value(QStringLiteral("isPublicCloud")).toBool();
    info.syncQuantity = toSyncQuantity(result.value(QStringLiteral("syncQuantity")).toMap());
    info.syncErrors = toSyncError(result.value(QStringLiteral("syncErrors")).toMap());
    Q_EMIT sigResponseSyncInfo(key, info);
}

void NubixMessageHandler::parseResponseFileStatus(const QString &key, const QJsonObject &answer)
{
    // Answers run to tens of thousands of entries, so the answer is not turned
    // into a variant map first; it is read through the parsed document's own
    // representation, each value converted as that map would have given it.
    const int code = answer.value(QLatin1String("code")).toVariant().toInt();
    Q_UNUSED(code)
    // Anything but an array reads as an empty list, as with a variant map.
    const QCborArray result = QCborArray::fromJsonArray(answer.value(QLatin1String("result")).toArray());

    QList<FileData> datas;
    datas.reserve(int(result.size()));
    for (const QCborValue element : result) {
        // Likewise an element that is not an object reads as an empty one.
        const QCborMap map = element.toMap();
        FileData file;
        file.fileId = int64Of(map.value(QLatin1String("fileid")));
        file.isDir = boolOf(map.value(QLatin1String("isDir")));
        file.path = stringOf(map.value(QLatin1String("path")));
        file.plan = stringOf(map.value(QLatin1String("plan")));
        file.planError = int32Of(map.value(QLatin1String("plan_error")));
        file.planStatus = int32Of(map.value(QLatin1String("plan_status")));
        datas.append(file);
    }
    Q_EMIT sigResponseFileStatus(key, datas);
}

}   // namespace hfmplugin_nubix
