// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// Writes a file of the test's tree, making its folders.
inline bool writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

// The file manager with the plug-in and the simulator, both as processes
// under a throw-away home. The file manager runs an automation script fed
// line by line (started on first use); the simulator takes commands on its
// standard input and logs what reached it. One session per test function.
class E2eSession
{
public:
    E2eSession() { QDir().mkpath(path(QStringLiteral("home/.local/share"))); }
    ~E2eSession()
    {
        stop(fm);
        stop(sim);
    }

    QString path(const QString &relative) const { return QDir(tmp.path()).filePath(relative); }
    QString root() const { return path(QStringLiteral("root")); }

    // The built file manager first on PATH (the plug-in asks "hde-file-manager
    // -v" for the host's version), headless, and only the log lines tests read.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        const QString home = path(QStringLiteral("home"));
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
        env.insert(QStringLiteral("PATH"),
            QFileInfo(QStringLiteral(HDE_FM_BINARY)).path() + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("QT_LOGGING_RULES"),
            QStringLiteral("*.debug=false;*.info=false;org.sablo.kelodrive.sim.info=true"));
        env.remove(QStringLiteral("HDE_PLUGIN_DIRS"));
        if (!locale.isEmpty()) {
            env.insert(QStringLiteral("LC_ALL"), locale);
            env.insert(QStringLiteral("LANG"), locale);
        }
        return env;
    }

    // Starts the simulator and waits until it listens.
    bool startSimulator(const QStringList &arguments)
    {
        sim.setProcessEnvironment(environment());
        sim.start(QStringLiteral(KELODRIVE_SIM_EXE), arguments);
        return sim.waitForStarted(10000) && QTest::qWaitFor([this] {
            simOutput += QString::fromUtf8(sim.readAllStandardOutput());
            return simOutput.contains(QLatin1String("port ")) || sim.state() == QProcess::NotRunning;
        }) && simOutput.contains(QLatin1String("port "));
    }
    void simulator(const QString &commands) { sim.write(commands.toUtf8()); }
    void stopFileManager() { stop(fm); }
    // What the simulator logged so far, waiting until `until` shows up in it.
    QString simulatorLog(const QString &until)
    {
        (void)QTest::qWaitFor([&] {
            simErrors += QString::fromUtf8(sim.readAllStandardError());
            return simErrors.contains(until);
        });
        return simErrors;
    }

    // Runs script lines ($ROOT and $OUT replaced) and waits until they are
    // done; false, with the failing line logged, when the file manager
    // stopped (a failed wait or expectation ends it).
    bool host(QString lines, int timeoutMs = 20000)
    {
        if (fm.state() == QProcess::NotRunning) {
            fm.setProcessEnvironment(environment());
            fm.start(QStringLiteral(HDE_FM_BINARY), {QStringLiteral("--script"), QStringLiteral("-")});
            if (!fm.waitForStarted(10000))
                return false;
        }
        const QString done = QStringLiteral("done-%1").arg(++mark);
        lines.replace(QStringLiteral("$ROOT"), root()).replace(QStringLiteral("$OUT"), path(QStringLiteral("outside")));
        fm.write((lines + QStringLiteral("\necho ") + done + QLatin1Char('\n')).toUtf8());
        const auto finished = [&] { return fmOutput.split(QLatin1Char('\n')).contains(done); };
        (void)QTest::qWaitFor(
            [&] {
                fmOutput += QString::fromUtf8(fm.readAllStandardOutput());
                return finished() || fm.state() == QProcess::NotRunning;
            },
            timeoutMs);
        if (finished())
            return true;
        const QStringList errors = QString::fromUtf8(fm.readAllStandardError()).split(QLatin1Char('\n'));
        qWarning().noquote() << errors.filter(QStringLiteral("script line")).join(QLatin1Char('\n'));
        return false;
    }

    QTemporaryDir tmp;
    QString locale;   // empty: the machine's
    QProcess sim;
    QProcess fm;
    QString fmOutput;

private:
    // Both programs take "quit"; the file manager saves its cache as it ends.
    static void stop(QProcess &process)
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.write("quit\n");
        process.closeWriteChannel();
        if (!process.waitForFinished(5000)) {
            process.kill();
            process.waitForFinished();
        }
    }

    QString simOutput;
    QString simErrors;
    int mark = 0;
};
