// SPDX-License-Identifier: GPL-3.0-or-later
#include "commandrunner.h"

#include "commandline.h"

#include <kelodrivesim/simulator.h>

#include <QJsonDocument>

#include <cstdio>

namespace kelodrive {

namespace {
void printLine(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}
}   // namespace

CommandRunner::CommandRunner(Simulator *simulator, const QString &sourceName, QObject *parent)
    : QObject(parent), m_sim(simulator), m_source(sourceName)
{
    m_sleep.setSingleShot(true);
    connect(&m_sleep, &QTimer::timeout, this, [this] {
        m_holding = false;
        runNext();
    });
    connect(m_sim, &Simulator::peerConnected, this, [this] {
        if (m_holding && m_waitPeers > 0 && m_sim->connectionCount() >= m_waitPeers) {
            m_holding = false;
            m_waitPeers = 0;
            QTimer::singleShot(0, this, &CommandRunner::runNext);
        }
    });
}

void CommandRunner::addLines(const QStringList &lines)
{
    m_lines << lines;
    if (!m_holding)
        QTimer::singleShot(0, this, &CommandRunner::runNext);
}

void CommandRunner::endOfInput()
{
    m_ended = true;
    if (!m_holding)
        QTimer::singleShot(0, this, &CommandRunner::runNext);
}

bool CommandRunner::runBuiltin(const QString &word, const QStringList &args)
{
    if (word == QLatin1String("sleep")) {
        bool ok = false;
        const int ms = args.value(0).toInt(&ok);
        if (!ok || ms < 0 || args.size() != 1) {
            printLine(stderr, QStringLiteral("%1:%2: usage: sleep MS").arg(m_source).arg(m_lineNumber));
            return true;
        }
        m_holding = true;
        m_sleep.start(ms);
        return true;
    }
    if (word == QLatin1String("wait-peer")) {
        bool ok = true;
        const int count = args.isEmpty() ? 1 : args.at(0).toInt(&ok);
        if (!ok || count < 1) {
            printLine(stderr, QStringLiteral("%1:%2: usage: wait-peer [N]").arg(m_source).arg(m_lineNumber));
            return true;
        }
        if (m_sim->connectionCount() < count) {
            m_holding = true;
            m_waitPeers = count;
        }
        return true;
    }
    if (word == QLatin1String("status")) {
        printLine(stdout,
            QStringLiteral("status ")
                + QString::fromUtf8(QJsonDocument(m_sim->describe()).toJson(QJsonDocument::Compact)));
        return true;
    }
    if (word == QLatin1String("help")) {
        QStringList help = Simulator::commandHelp();
        help << QStringLiteral("sleep MS                         wait before the next command")
             << QStringLiteral("wait-peer [N]                    wait until N plug-ins are connected")
             << QStringLiteral("status                           print the state as JSON")
             << QStringLiteral("help                             this list");
        for (const QString &line : qAsConst(help))
            printLine(stdout, line);
        return true;
    }
    return false;
}

void CommandRunner::runNext()
{
    while (!m_holding && !m_lines.isEmpty()) {
        const QString line = m_lines.takeFirst();
        ++m_lineNumber;
        const CommandLine cmd = CommandLine::parse(line);
        if (cmd.ok && runBuiltin(cmd.word, cmd.args))
            continue;
        QString error;
        if (!m_sim->execute(line, &error))
            printLine(stderr, QStringLiteral("%1:%2: %3").arg(m_source).arg(m_lineNumber).arg(error));
    }
    if (!m_holding && m_lines.isEmpty() && m_ended) {
        m_ended = false;
        Q_EMIT finished();
    }
}

}   // namespace kelodrive
