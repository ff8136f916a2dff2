// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTextStream>

#include <functional>

class QSocketNotifier;

namespace hdeapp {

class FileOperations;
class MenuInterceptor;
class OperationLog;

// Runs an automation script: one command a line, in order, with the event
// loop running between commands. Lines come from a file or from standard
// input (read as they arrive). Output lines (state, menus, echo) go to
// `out`; errors to standard error. When the script ends or fails, finished()
// carries the exit code: 0 at the end or on "quit", 1 for a failed command,
// 2 for an unknown command or bad arguments, 3 for a wait that timed out.
// The command set is documented in docs/automation.md. GUI thread only.
class ScriptRunner : public QObject
{
    Q_OBJECT
public:
    enum ExitCode { kOk = 0, kFailed = 1, kUsage = 2, kTimeout = 3 };

    ScriptRunner(OperationLog *log, FileOperations *operations, QObject *parent = nullptr);
    ~ScriptRunner() override;

    // "-" reads standard input. False, with a reason, when the file cannot be read.
    bool setSource(const QString &path, QString *error);
    // Feeds lines directly (tests); `last` ends the script after them.
    void addLines(const QStringList &lines, bool last);
    void setOutput(QTextStream *stream);
    void start();
    bool isRunning() const;

Q_SIGNALS:
    void finished(int exitCode);

private:
    using Done = std::function<void(int code, const QString &error)>;
    using Handler = std::function<void(const QStringList &args, const Done &done)>;
    struct Command
    {
        int minArgs;
        int maxArgs;   // -1: any number
        QString usage;
        Handler run;
    };

    using WindowAction = std::function<bool(quint64 windowId, const QStringList &args)>;
    using Publish = std::function<void(quint64 windowId, const QList<QUrl> &urls)>;

    void registerCommands();
    void add(const QString &name, int minArgs, int maxArgs, const QString &usage, Handler run);
    // A command on the window its first argument names; fails with `failure`
    // ("%1": the second argument) when `act` returns false.
    void addWindowCommand(
        const QString &name, int minArgs, int maxArgs, const QString &usage, const QString &failure, WindowAction act);
    // A file operation: the window (0 for none) and the URLs that follow it.
    void addUrlCommand(const QString &name, int minArgs, int maxArgs, const QString &usage, Publish publish);
    void publishWithUrls(const QStringList &args, const Done &done, const Publish &publish);
    void pump();
    void execute(const QString &line);
    void readStdin();
    void finish(int code);
    void print(const QString &line);

    quint64 window(const QString &token, QString *error, bool allowNone = false) const;
    bool resolveUrls(const QStringList &texts, QList<QUrl> *urls, QString *error) const;
    void waitUntil(std::function<bool(QString *)> condition, int timeoutMs, const QString &what, const Done &done);
    void runMenu(const QString &target, const QStringList &args, const QString &actionId, const Done &done);
    void waitForCommand(const QString &kind, const QStringList &args, const Done &done);

    OperationLog *log;
    FileOperations *operations;
    MenuInterceptor *menus;
    QHash<QString, Command> commands;
    QStringList pending;
    QByteArray stdinBuffer;
    QSocketNotifier *stdinNotifier = nullptr;
    QTextStream *out = nullptr;
    QTextStream defaultOut;
    bool inputDone = false;
    bool busy = false;
    bool running = false;
    bool done = false;
    int lineNumber = 0;
    QString currentLine;
};

}   // namespace hdeapp
