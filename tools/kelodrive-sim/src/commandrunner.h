// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

namespace kelodrive {

class Simulator;

// Runs command lines one after another against a simulator, in the GUI thread. Besides the
// simulator's commands it knows "sleep MS", "wait-peer [N]", "status" and "help", which
// hold or report without touching the simulator's state.
class CommandRunner : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(CommandRunner)

public:
    CommandRunner(Simulator *simulator, const QString &sourceName, QObject *parent = nullptr);

    void addLines(const QStringList &lines);
    // No more lines will come; finished() follows once the queue is empty.
    void endOfInput();

Q_SIGNALS:
    void finished();

private:
    void runNext();
    bool runBuiltin(const QString &word, const QStringList &args);

    Simulator *const m_sim;
    const QString m_source;
    QStringList m_lines;
    int m_lineNumber = 0;
    bool m_ended = false;
    bool m_holding = false;
    int m_waitPeers = 0;
    QTimer m_sleep;
};

}   // namespace kelodrive
