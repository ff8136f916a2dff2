// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <QtGlobal>

#include <algorithm>

// Records every log line written while it exists (from any thread), with its
// category, so that a test can assert the exact set of warnings some input
// produced, and wait for a line the code under test writes. Lines are not printed.
class MessageLog
{
public:
    MessageLog()
    {
        current = this;
        previous = qInstallMessageHandler(&MessageLog::handler);
    }
    ~MessageLog()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }
    Q_DISABLE_COPY(MessageLog)

    QStringList lines(QtMsgType type) const { return collect(type, &Entry::text); }
    // The category of each of lines(type), in the same order.
    QStringList categories(QtMsgType type) const { return collect(type, &Entry::category); }
    // Warnings and worse: what "nothing else" is checked against.
    QStringList problems() const { return lines(QtWarningMsg) + lines(QtCriticalMsg) + lines(QtFatalMsg); }
    int count(QtMsgType type, const QString &prefix) const
    {
        const QStringList all = lines(type);
        return int(std::count_if(all.cbegin(), all.cend(), [&](const QString &l) { return l.startsWith(prefix); }));
    }

private:
    struct Entry
    {
        QtMsgType type;
        QString category;
        QString text;
    };

    QStringList collect(QtMsgType type, QString Entry::*field) const
    {
        QMutexLocker lock(&mutex);
        QStringList result;
        for (const Entry &entry : entries) {
            if (entry.type == type)
                result.append(entry.*field);
        }
        return result;
    }
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (MessageLog *log = current) {
            QMutexLocker lock(&log->mutex);
            log->entries.append({type, QString::fromLatin1(context.category), text});
        }
    }

    static inline MessageLog *current = nullptr;
    mutable QMutex mutex;
    QList<Entry> entries;
    QtMessageHandler previous = nullptr;
};
