// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QVariantMap>

namespace hfmplugin_nubix {

class TcpClient;

// The plug-in's one conversation with the sync client: wraps requests and
// answers in JSON envelopes, and routes incoming messages to their handlers.
// GUI thread only; nothing here blocks. The singleton lives until exit and
// owns its TcpClient.
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
    QString buildReqeustMessage(const QString &method, const QVariantMap &data, const QString &key);
    QString buildResponseMessage(const QString &method, const QVariantMap &data, const QString &key);
    // A fresh request key: "{" and the 36 characters of a new UUID.
    static QString createKey();

    bool isConnected() const { return connected; }
    TcpClient *client() const { return tcpClient; }

public Q_SLOTS:
    void handleMessage(const QString &message);

Q_SIGNALS:
    void sigConnected();
    void sigDisconnected();

private Q_SLOTS:
    void handleRequest(const QJsonObject &body);
    void handleResponse(const QJsonObject &body);
    void handleSignals(const QJsonObject &body);
    void onRequestPluginInfo(const QString &key);

private:
    using ResponseParser = void (NubixMessageHandler::*)(const QString &key, const QVariantMap &data);
    using SignalParser = void (NubixMessageHandler::*)(const QVariant &args);
    static const QMap<QString, ResponseParser> &responseParsers();
    static const QMap<QString, SignalParser> &signalParsers();

    QString buildMessage(const QString &type, const QString &method, const QVariantMap &data, const QString &key);

    TcpClient *tcpClient = nullptr;
    bool connected = false;
};

}   // namespace hfmplugin_nubix
