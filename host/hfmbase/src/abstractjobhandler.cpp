// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractjobhandler.h"

namespace hfmbase {

AbstractJobHandler::AbstractJobHandler(QObject *parent) : QObject(parent) { }

AbstractJobHandler::~AbstractJobHandler() = default;

bool AbstractJobHandler::isFinished() const
{
    return m_finished;
}

bool AbstractJobHandler::isSuccess() const
{
    return m_ok;
}

QString AbstractJobHandler::errorString() const
{
    return m_error;
}

QList<QUrl> AbstractJobHandler::sourceUrls() const
{
    return m_sources;
}

QList<QUrl> AbstractJobHandler::targetUrls() const
{
    return m_targets;
}

void AbstractJobHandler::finish(const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &error)
{
    m_sources = sources;
    m_targets = targets;
    m_ok = ok;
    m_error = error;
    m_finished = true;
    Q_EMIT finished(ok);
}

}   // namespace hfmbase
