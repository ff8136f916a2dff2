// SPDX-License-Identifier: GPL-3.0-or-later
#include "operationlog.h"

#include <hfmbase/globaleventtype.h>
#include <hpf/event/event.h>

#include <QMap>
#include <QUrl>

namespace hdeapp {

namespace {

QStringList urlTexts(const QVariant &value)
{
    QStringList texts;
    const QList<QUrl> urls = value.value<QList<QUrl>>();
    for (const QUrl &url : urls)
        texts.append(url.toString());
    return texts;
}

}   // namespace

OperationLog::OperationLog(QObject *parent) : QObject(parent) { }

OperationLog::~OperationLog()
{
    auto *dispatcher = hpf::dispatcher();
    for (int event : {hfmbase::kRenameFileResult, hfmbase::kCopyResult, hfmbase::kCutFileResult, hfmbase::kMkdirResult,
             hfmbase::kTouchFileResult, hfmbase::kDeleteFilesResult, hfmbase::kMoveToTrashResult,
             hfmbase::kOpenFilesResult})
        dispatcher->unsubscribe(event, this);
}

void OperationLog::attach()
{
    auto *dispatcher = hpf::dispatcher();
    for (int event : {hfmbase::kRenameFileResult, hfmbase::kCopyResult, hfmbase::kCutFileResult, hfmbase::kMkdirResult,
             hfmbase::kTouchFileResult, hfmbase::kDeleteFilesResult, hfmbase::kMoveToTrashResult,
             hfmbase::kOpenFilesResult}) {
        dispatcher->subscribeInvoker(event, this, [this, event](const QVariantList &args) -> QVariant {
            record(event, args);
            return QVariant();
        });
    }
}

void OperationLog::record(int event, const QVariantList &args)
{
    QVariantMap entry;
    entry.insert(QStringLiteral("event"), event);
    switch (event) {
    case hfmbase::kRenameFileResult: {
        // quint64 windowId, QMap<QUrl, QUrl>, bool ok, QString error
        const auto renamed = args.value(1).value<QMap<QUrl, QUrl>>();
        QStringList sources;
        QStringList targets;
        for (auto it = renamed.cbegin(); it != renamed.cend(); ++it) {
            sources.append(it.key().toString());
            targets.append(it.value().toString());
        }
        entry.insert(QStringLiteral("window"), args.value(0).toULongLong());
        entry.insert(QStringLiteral("sources"), sources);
        entry.insert(QStringLiteral("targets"), targets);
        entry.insert(QStringLiteral("ok"), args.value(2).toBool());
        entry.insert(QStringLiteral("error"), args.value(3).toString());
        break;
    }
    case hfmbase::kCopyResult:
    case hfmbase::kCutFileResult:
        // QList<QUrl> sources, QList<QUrl> targets, bool ok, QString error
        entry.insert(QStringLiteral("sources"), urlTexts(args.value(0)));
        entry.insert(QStringLiteral("targets"), urlTexts(args.value(1)));
        entry.insert(QStringLiteral("ok"), args.value(2).toBool());
        entry.insert(QStringLiteral("error"), args.value(3).toString());
        break;
    default:
        // quint64 windowId, QList<QUrl>, bool ok[, QString error]
        entry.insert(QStringLiteral("window"), args.value(0).toULongLong());
        entry.insert(QStringLiteral("targets"), urlTexts(args.value(1)));
        entry.insert(QStringLiteral("ok"), args.value(2).toBool());
        entry.insert(QStringLiteral("error"), args.value(3).toString());
        break;
    }
    resultList.append(entry);
    Q_EMIT resultRecorded(event);
}

void OperationLog::addRestored(
    quint64 windowId, const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &error)
{
    resultList.append(
        QVariantMap {{QStringLiteral("event"), 0}, {QStringLiteral("operation"), QStringLiteral("restore")},
            {QStringLiteral("window"), windowId}, {QStringLiteral("sources"), urlTexts(QVariant::fromValue(sources))},
            {QStringLiteral("targets"), urlTexts(QVariant::fromValue(targets))}, {QStringLiteral("ok"), ok},
            {QStringLiteral("error"), error}});
    Q_EMIT resultRecorded(0);
}

void OperationLog::addOpened(const QUrl &requested, const QUrl &local, const QString &app)
{
    openedList.append(QVariantMap {{QStringLiteral("url"), local.toString()},
        {QStringLiteral("requested"), requested.toString()}, {QStringLiteral("app"), app}});
}

void OperationLog::addTerminal(const QUrl &dir)
{
    terminalList.append(dir.toString());
}

QVariantList OperationLog::results() const
{
    return resultList;
}

QVariantList OperationLog::opened() const
{
    return openedList;
}

QVariantList OperationLog::terminals() const
{
    return terminalList;
}

void OperationLog::clear()
{
    resultList.clear();
    openedList.clear();
    terminalList.clear();
}

}   // namespace hdeapp
