// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixmessagehandler.h"

#include "nubixglobal.h"
#include "tcpclient.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QMap>
#include <QUuid>

namespace hfmplugin_nubix {

namespace {
const QString kTypeRequest = QStringLiteral("ping");
const QString kTypeResponse = QStringLiteral("pong");
const QString kMethodPluginInfo = QStringLiteral("getPluginInfo");
const QString kMethodNotify = QStringLiteral("notify");
const QString kPluginVersion = QStringLiteral("1.0.7");
}   // namespace

NubixMessageHandler *NubixMessageHandler::instance()
{
    static NubixMessageHandler handler;
    return &handler;
}

NubixMessageHandler::NubixMessageHandler(QObject *parent) : QObject(parent), tcpClient(new TcpClient(this))
{
    nubixInfo() << "NubixMessageHandler: Initializing";

    connect(tcpClient, &TcpClient::connected, this, [this] {
        nubixInfo() << "NubixMessageHandler: Connected to server";
        connected = true;
        Q_EMIT sigConnected();
    });
    connect(tcpClient, &TcpClient::disconnected, this, [this] {
        nubixInfo() << "NubixMessageHandler: Disconnected from server";
        connected = false;
        Q_EMIT sigDisconnected();
    });
    // TcpClient::errorOccured is wired here to the retry logic of the
    // connection management once that lands.
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
    return key;
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

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(message.toLocal8Bit(), &error);
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
    const QVariantMap data = body.value(QStringLiteral("data")).toObject().toVariantMap();
    nubixDebug() << "NubixMessageHandler: Handling response. Method:" << method << "Key:" << key;

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
    // One entry per method whose answer the plug-in reads; filled as those
    // parsers are added.
    static const QMap<QString, ResponseParser> parsers = [] {
        qRegisterMetaType<ResponseParser>("ResponseParser");
        return QMap<QString, ResponseParser> {};
    }();
    return parsers;
}

const QMap<QString, NubixMessageHandler::SignalParser> &NubixMessageHandler::signalParsers()
{
    // One entry per notification the client pushes; filled as those parsers
    // are added.
    static const QMap<QString, SignalParser> parsers {};
    return parsers;
}

}   // namespace hfmplugin_nubix
