// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Real processes for end-to-end tests: the file manager driven by an automation script fed
// line by line, the client simulator by its standard input. Output lines are kept as they
// arrive, so a test can wait for one while the process runs on.
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

inline QString operator""_s(const char16_t *text, size_t size)
{
    return QString::fromUtf16(text, int(size));
}

inline bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
    ~Child()
    {
        process.kill();
        process.waitForFinished(10000);
    }

    void send(const QString &line) { process.write(line.toUtf8() + '\n'); }
    bool running() const { return process.state() == QProcess::Running; }

    // Waits until a line at or after `from` contains `part`; its index, or -1.
    int waitOut(const QString &part, int timeoutMs, int from = 0) { return waitIn(out, part, timeoutMs, from); }
    int waitErr(const QString &part, int timeoutMs, int from = 0) { return waitIn(err, part, timeoutMs, from); }
    int countErr(const QString &part) const { return err.filter(part).size(); }

    QProcess process;
    QStringList out;
    QStringList err;

private:
    static void take(const QByteArray &data, QByteArray &pending, QStringList &lines)
    {
        pending += data;
        for (int nl; (nl = pending.indexOf('\n')) >= 0; pending.remove(0, nl + 1))
            lines.append(QString::fromUtf8(pending.left(nl)));
    }
    int waitIn(const QStringList &lines, const QString &part, int timeoutMs, int from)
    {
        const auto find = [&] {
            for (int i = from; i < lines.size(); ++i)
                if (lines.at(i).contains(part))
                    return i;
            return -1;
        };
        // The last output may have come with the exit.
        (void)QTest::qWaitFor([&] { return find() >= 0 || process.state() == QProcess::NotRunning; }, timeoutMs);
        return find();
    }

    QByteArray outPending;
    QByteArray errPending;
};

// The file manager's own folder first in PATH, because the plug-in asks it for its version by name.
inline QString searchPath()
{
    return QFileInfo(QStringLiteral(HDE_FM_BINARY)).absolutePath() + QLatin1Char(':') + qEnvironmentVariable("PATH");
}

// The environment of a run under a temporary home.
inline QProcessEnvironment environment(const QString &home, const QString &path)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"HOME"_s, home);
    env.insert(u"XDG_CONFIG_HOME"_s, home + u"/.config"_s);
    env.insert(u"XDG_DATA_HOME"_s, home + u"/.local/share"_s);
    env.insert(u"XDG_CACHE_HOME"_s, home + u"/.cache"_s);
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    env.insert(u"QT_LOGGING_RULES"_s, u"*.debug=false\norg.sablo.kelodrive.sim.debug=true"_s);
    env.insert(u"PATH"_s, path);
    env.remove(u"HDE_PLUGIN_DIRS"_s);
    return env;
}

class Host : public Child
{
public:
    // `wrapper`: a command and its arguments that run the file manager, if any.
    bool start(const QProcessEnvironment &env, const QStringList &wrapper = {})
    {
        process.setProcessEnvironment(env);
        const QStringList command = wrapper
            + QStringList {QStringLiteral(HDE_FM_BINARY), u"-platform"_s, u"offscreen"_s, u"--script"_s, u"-"_s};
        process.start(command.first(), command.mid(1));
        return process.waitForStarted(10000);
    }

    // Time until the file manager answers a command, in ms; -1 when it does not in time.
    int ping(int timeoutMs = 10000)
    {
        QElapsedTimer timer;
        timer.start();
        return tick(timeoutMs) >= 0 ? int(timer.elapsed()) : -1;
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
        send(u"state "_s + path);
        const int end = tick(10000);
        if (end <= from)
            return QJsonValue(QJsonValue::Undefined);
        return QJsonDocument::fromJson("[" + out.at(end - 1).toUtf8() + "]").array().at(0);
    }

    // A field of the kernel's view of the process, in kB ("VmHWM:" peak resident, "VmRSS:" now).
    qint64 memoryKb(const char *field) const
    {
        const QByteArray status = readFile(u"/proc/%1/status"_s.arg(process.processId()));
        for (const QByteArray &line : status.split('\n'))
            if (line.startsWith(field))
                return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
        return -1;
    }

private:
    // Sends an echo and waits for it: the index of its line, or -1.
    int tick(int timeoutMs)
    {
        const QString mark = u"tick-%1"_s.arg(++ticks);
        const int from = out.size();
        send(u"echo "_s + mark);
        return waitOut(mark, timeoutMs, from);
    }

    int ticks = 0;
};

class Sim : public Child
{
public:
    bool start(const QProcessEnvironment &env, const QStringList &arguments)
    {
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(KELODRIVE_SIM_EXE), arguments + QStringList {u"--verbose"_s});
        return process.waitForStarted(10000) && waitOut(u"port "_s, 10000) >= 0;
    }
    quint16 port() const
    {
        const QStringList ports = out.filter(QRegularExpression(u"^port "_s));
        return ports.isEmpty() ? 0 : quint16(ports.last().mid(5).toUInt());
    }
};

// Every entry below `root` by relative path: a hash of its content, "/" for a folder, "@target" for a link.
inline QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(
        root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        QByteArray value = "/";
        if (info.isSymLink())
            value = "@" + info.symLinkTarget().toUtf8();
        else if (QFile file(info.filePath()); !info.isDir())
            value = file.open(QIODevice::ReadOnly)
                ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex()
                : QByteArray("<unreadable>");
        files.insert(QDir(root).relativeFilePath(info.filePath()), value);
    }
    return files;
}

}   // namespace e2e
