// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Real processes for end-to-end tests: the file manager driven by an
// automation script fed line by line, and the client simulator driven through
// its standard input. Output is collected as it arrives, so a test can wait
// for a line while the process keeps running.
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QProcess>
#include <QtTest>

namespace e2e {

// A child process whose output lines are kept in order.
class Child
{
public:
    Child()
    {
        QObject::connect(&process, &QProcess::readyReadStandardOutput,
            [this] { take(process.readAllStandardOutput(), outPending, out); });
        QObject::connect(&process, &QProcess::readyReadStandardError,
            [this] { take(process.readAllStandardError(), errPending, err); });
    }
    ~Child() { stop(); }

    void stop()
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.kill();
        process.waitForFinished(10000);
    }

    void send(const QString &line) { process.write(line.toUtf8() + '\n'); }
    bool running() const { return process.state() == QProcess::Running; }

    // Waits until a line at or after `from` contains `part`; its index, or -1.
    int waitOut(const QString &part, int timeoutMs, int from = 0) { return waitIn(out, part, timeoutMs, from); }
    int waitErr(const QString &part, int timeoutMs, int from = 0) { return waitIn(err, part, timeoutMs, from); }
    int countErr(const QString &part, int from = 0) const
    {
        int n = 0;
        for (int i = from; i < err.size(); ++i)
            n += err.at(i).contains(part) ? 1 : 0;
        return n;
    }

    QProcess process;
    QStringList out;
    QStringList err;

private:
    static void take(const QByteArray &data, QByteArray &pending, QStringList &lines)
    {
        pending += data;
        int nl;
        while ((nl = pending.indexOf('\n')) >= 0) {
            lines.append(QString::fromUtf8(pending.left(nl)));
            pending.remove(0, nl + 1);
        }
    }
    int waitIn(const QStringList &lines, const QString &part, int timeoutMs, int from)
    {
        int found = -1;
        (void)QTest::qWaitFor(
            [&] {
                for (int i = from; i < lines.size() && found < 0; ++i)
                    found = lines.at(i).contains(part) ? i : -1;
                return found >= 0 || process.state() == QProcess::NotRunning;
            },
            timeoutMs);
        if (found < 0)   // the last output may have come with the exit
            for (int i = from; i < lines.size() && found < 0; ++i)
                found = lines.at(i).contains(part) ? i : -1;
        return found;
    }

    QByteArray outPending;
    QByteArray errPending;
};

// The environment of a run under a temporary home: the file manager's own
// folder first in PATH, because the plug-in asks it for its version by name.
inline QProcessEnvironment environment(const QString &home, const QString &path)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/.cache"));
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.debug=false\norg.sablo.kelodrive.sim.debug=true"));
    env.insert(QStringLiteral("PATH"), path);
    env.remove(QStringLiteral("HDE_PLUGIN_DIRS"));
    return env;
}

class Host : public Child
{
public:
    // `wrapper`: a command and its arguments that run the file manager, if any.
    bool start(const QProcessEnvironment &env, const QString &binary, const QStringList &wrapper = QStringList())
    {
        process.setProcessEnvironment(env);
        const QStringList arguments {binary, QStringLiteral("-platform"), QStringLiteral("offscreen"),
            QStringLiteral("--script"), QStringLiteral("-")};
        const QStringList command = wrapper + arguments;
        process.start(command.first(), command.mid(1));
        return process.waitForStarted(10000);
    }

    // Time until the file manager answers a command, in ms; -1 when it does not
    // within the timeout.
    int ping(int timeoutMs = 10000)
    {
        const QString tick = QStringLiteral("tick-%1").arg(++ticks);
        QElapsedTimer timer;
        timer.start();
        send(QStringLiteral("echo ") + tick);
        const int line = waitOut(tick, timeoutMs, out.size());
        return line >= 0 ? int(timer.elapsed()) : -1;
    }

    // The longest answer time of pings sent back to back for `durationMs`.
    int worstPing(int durationMs)
    {
        QElapsedTimer timer;
        timer.start();
        int worst = 0;
        do {
            const int ms = ping(60000);
            if (ms < 0)
                return -1;
            worst = qMax(worst, ms);
            QTest::qWait(20);
        } while (timer.elapsed() < durationMs);
        return worst;
    }

    // The JSON printed by `state <path>`.
    QJsonValue state(const QString &path)
    {
        const int from = out.size();
        send(QStringLiteral("state ") + path);
        const QString tick = QStringLiteral("tick-%1").arg(++ticks);
        send(QStringLiteral("echo ") + tick);
        const int end = waitOut(tick, 10000, from);
        if (end <= from)
            return QJsonValue(QJsonValue::Undefined);
        const QByteArray text = "[" + out.at(end - 1).toUtf8() + "]";
        return QJsonDocument::fromJson(text).array().at(0);
    }

    // Peak and current resident memory in kB, from the kernel's view of the process.
    qint64 memoryKb(const char *field) const
    {
        QFile status(QStringLiteral("/proc/%1/status").arg(process.processId()));
        if (!status.open(QIODevice::ReadOnly))
            return -1;
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith(field))
                return line.mid(qstrlen(field) + 1).trimmed().split(' ').value(0).toLongLong();
        return -1;
    }

private:
    int ticks = 0;
};

class Sim : public Child
{
public:
    bool start(const QProcessEnvironment &env, const QString &binary, const QStringList &arguments)
    {
        process.setProcessEnvironment(env);
        process.start(binary, arguments + QStringList {QStringLiteral("--verbose")});
        return process.waitForStarted(10000) && waitOut(QStringLiteral("port "), 10000) >= 0;
    }
    quint16 port() const
    {
        for (auto it = out.crbegin(); it != out.crend(); ++it)
            if (it->startsWith(QStringLiteral("port ")))
                return quint16(it->mid(5).toUInt());
        return 0;
    }
};

// Every entry below `root` with a hash of its content ("/" for a folder, "@"
// and the target for a link), relative paths as keys.
inline QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(
        root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        QByteArray value;
        if (info.isSymLink()) {
            value = "@" + info.symLinkTarget().toUtf8();
        } else if (info.isDir()) {
            value = "/";
        } else {
            QFile file(info.filePath());
            if (file.open(QIODevice::ReadOnly))
                value = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex();
            else
                value = "<unreadable>";
        }
        files.insert(QDir(root).relativeFilePath(info.filePath()), value);
    }
    return files;
}

}   // namespace e2e
