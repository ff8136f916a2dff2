// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QUrl>
#include <QVariant>

#include <functional>

namespace hfmbase {

// One file operation of the host. The host runs it and emits finished() on
// the GUI thread; the handler is shared between the host and whoever asked
// for the operation's handle.
class HFMBASE_EXPORT AbstractJobHandler : public QObject
{
    Q_OBJECT
public:
    enum class JobFlag {
        kNoHint = 0x00,
        kCopyFollowSymlink = 0x01,
        kCopyRemoveDestination = 0x02,
        kRevocation = 0x04,
        kDontFormatFileName = 0x08,
    };
    Q_DECLARE_FLAGS(JobFlags, JobFlag)

    enum class JobCallbackKey {
        kWindowIdKey = 0,
        kJobHandleKey = 1,
        kSourceUrlsKey = 2,
        kTargetUrlsKey = 3,
        kSuccessKey = 4,
        kErrorMessageKey = 5,
        kCustomParamKey = 6,
    };

    explicit AbstractJobHandler(QObject *parent = nullptr);
    ~AbstractJobHandler() override;

    bool isFinished() const;
    bool isSuccess() const;
    QString errorString() const;
    QList<QUrl> sourceUrls() const;
    QList<QUrl> targetUrls() const;

    // Called by the host when the operation ends.
    void finish(const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &error);

Q_SIGNALS:
    void finished(bool ok);

private:
    bool m_finished = false;
    bool m_ok = false;
    QString m_error;
    QList<QUrl> m_sources;
    QList<QUrl> m_targets;
};

using JobHandlePointer = QSharedPointer<AbstractJobHandler>;
using CallbackArgus = QSharedPointer<QMap<AbstractJobHandler::JobCallbackKey, QVariant>>;
// Receives the handler of a started operation.
using OperatorHandleCallback = std::function<void(JobHandlePointer)>;
// Receives the operation's result map (source and target URL lists among it).
using OperatorCallback = std::function<void(CallbackArgus)>;

}   // namespace hfmbase

Q_DECLARE_OPERATORS_FOR_FLAGS(hfmbase::AbstractJobHandler::JobFlags)
Q_DECLARE_METATYPE(hfmbase::AbstractJobHandler::JobFlags)
Q_DECLARE_METATYPE(hfmbase::AbstractJobHandler::JobCallbackKey)
Q_DECLARE_METATYPE(hfmbase::JobHandlePointer)
Q_DECLARE_METATYPE(hfmbase::CallbackArgus)
Q_DECLARE_METATYPE(hfmbase::OperatorHandleCallback)
Q_DECLARE_METATYPE(hfmbase::OperatorCallback)
