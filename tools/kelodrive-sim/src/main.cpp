// SPDX-License-Identifier: GPL-3.0-or-later
// kelodrive-sim: a stand-in for the Kelo Drive client, for tests and demonstrations.
#include "commandrunner.h"
#include "logging.h"

#include <kelodrivesim/simulator.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

using kelodrive::CommandRunner;
using kelodrive::Simulator;

namespace {

int g_signalFd[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalFd[0], &byte, 1);
}

// Turns SIGINT and SIGTERM into a clean quit, so that the port file is removed.
void installSignalHandlers(QCoreApplication *app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalFd) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalFd[1], QSocketNotifier::Read, app);
    QObject::connect(notifier, &QSocketNotifier::activated, app, [notifier] {
        char byte;
        [[maybe_unused]] const ssize_t n = ::read(g_signalFd[1], &byte, 1);
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// Feeds the lines of standard input to a runner as they arrive; stops at end of input.
void readStandardInput(QCoreApplication *app, CommandRunner *runner)
{
    auto *notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, app);
    auto *pending = new QByteArray;
    QObject::connect(app, &QObject::destroyed, [pending] { delete pending; });
    QObject::connect(notifier, &QSocketNotifier::activated, app, [notifier, pending, runner] {
        char buffer[4096];
        const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            notifier->setEnabled(false);
            if (!pending->isEmpty())
                runner->addLines({QString::fromUtf8(*pending)});
            pending->clear();
            runner->endOfInput();
            return;
        }
        pending->append(buffer, int(n));
        QStringList lines;
        int newline;
        while ((newline = pending->indexOf('\n')) >= 0) {
            lines << QString::fromUtf8(pending->left(newline));
            pending->remove(0, newline + 1);
        }
        if (!lines.isEmpty())
            runner->addLines(lines);
    });
}

void printLine(const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

bool readNumber(const QCommandLineParser &parser, const QString &name, qint64 *value)
{
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    *value = parser.value(name).toLongLong(&ok);
    if (!ok)
        std::fprintf(stderr, "kelodrive-sim: --%s needs a number\n", qPrintable(name));
    return ok;
}

}   // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    // Fixed, so that a start through a link of any name behaves the same.
    QCoreApplication::setApplicationName(QStringLiteral("kelodrive-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulates the Kelo Drive sync client for the file manager plug-in. Commands on standard input "
                       "(type \"help\") and in --script files change its state and inject faults."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QList<QCommandLineOption> options = {
        {QStringLiteral("port"), QStringLiteral("TCP port on 127.0.0.1 (default: any free port)."),
            QStringLiteral("port")},
        {QStringLiteral("root"), QStringLiteral("Sync root folder, created when missing (default: ~/Kelo Drive)."),
            QStringLiteral("dir")},
        {QStringLiteral("no-root"), QStringLiteral("Start with no sync root (sync not set up).")},
        {QStringLiteral("pace-ms"), QStringLiteral("Time per transfer step in ms (default: 500)."),
            QStringLiteral("ms")},
        {QStringLiteral("rescan-ms"), QStringLiteral("Period of the full rescan in ms, 0 for none (default: 2000)."),
            QStringLiteral("ms")},
        {QStringLiteral("fail-pattern"), QStringLiteral("File names whose transfer fails (wildcard; repeatable)."),
            QStringLiteral("pattern")},
        {QStringLiteral("ban"), QStringLiteral("Folder excluded from syncing, as a cloud path (repeatable)."),
            QStringLiteral("dir")},
        {QStringLiteral("enterprise"), QStringLiteral("An enterprise account instead of a public one.")},
        {QStringLiteral("uid"), QStringLiteral("Account id."), QStringLiteral("uid")},
        {QStringLiteral("nickname"), QStringLiteral("Account display name."), QStringLiteral("name")},
        {QStringLiteral("phone"), QStringLiteral("Account phone number."), QStringLiteral("phone")},
        {QStringLiteral("email"), QStringLiteral("Account e-mail address."), QStringLiteral("email")},
        {QStringLiteral("avatar"), QStringLiteral("Account avatar link."), QStringLiteral("url")},
        {QStringLiteral("book-type"), QStringLiteral("Account subscription code."), QStringLiteral("n")},
        {QStringLiteral("admin"), QStringLiteral("The account administers its organisation.")},
        {QStringLiteral("free"), QStringLiteral("Free cloud space in bytes."), QStringLiteral("bytes")},
        {QStringLiteral("used"), QStringLiteral("Used cloud space in bytes."), QStringLiteral("bytes")},
        {QStringLiteral("total"), QStringLiteral("Total cloud space in bytes."), QStringLiteral("bytes")},
        {QStringLiteral("relative"), QStringLiteral("The further storage figure."), QStringLiteral("bytes")},
        {QStringLiteral("quota"), QStringLiteral("Quota in bytes; -3 for none."), QStringLiteral("bytes")},
        {QStringLiteral("offline"), QStringLiteral("Start offline.")},
        {QStringLiteral("paused"), QStringLiteral("Start with syncing paused.")},
        {QStringLiteral("script"), QStringLiteral("Run the commands of this file (\"sleep MS\" waits)."),
            QStringLiteral("file")},
        {QStringLiteral("no-plugin-info"), QStringLiteral("Do not ask new peers for their version.")},
        {QStringLiteral("indented"), QStringLiteral("Send indented JSON.")},
        {QStringLiteral("verbose"), QStringLiteral("Log every message sent and received.")},
    };
    parser.addOptions(options);
    parser.process(app);

    if (!parser.isSet(QStringLiteral("verbose")))
        QLoggingCategory::setFilterRules(QStringLiteral("org.sablo.kelodrive.sim.debug=false"));
    qSetMessagePattern(QStringLiteral("kelodrive-sim %{time hh:mm:ss.zzz} %{type}: %{message}"));

    Simulator sim;
    kelodrive::Account account;
    if (parser.isSet(QStringLiteral("uid")))
        account.uid = parser.value(QStringLiteral("uid"));
    if (parser.isSet(QStringLiteral("nickname")))
        account.nickname = parser.value(QStringLiteral("nickname"));
    if (parser.isSet(QStringLiteral("phone")))
        account.phone = parser.value(QStringLiteral("phone"));
    if (parser.isSet(QStringLiteral("email")))
        account.email = parser.value(QStringLiteral("email"));
    if (parser.isSet(QStringLiteral("avatar")))
        account.avatarLink = parser.value(QStringLiteral("avatar"));
    qint64 bookType = account.bookType;
    kelodrive::Storage storage;
    qint64 pace = 500;
    qint64 rescan = 2000;
    qint64 port = 0;
    if (!readNumber(parser, QStringLiteral("book-type"), &bookType)
        || !readNumber(parser, QStringLiteral("free"), &storage.free)
        || !readNumber(parser, QStringLiteral("used"), &storage.used)
        || !readNumber(parser, QStringLiteral("total"), &storage.total)
        || !readNumber(parser, QStringLiteral("relative"), &storage.relative)
        || !readNumber(parser, QStringLiteral("quota"), &storage.quota)
        || !readNumber(parser, QStringLiteral("pace-ms"), &pace)
        || !readNumber(parser, QStringLiteral("rescan-ms"), &rescan)
        || !readNumber(parser, QStringLiteral("port"), &port))
        return 2;
    if (port < 0 || port > 65535) {
        std::fprintf(stderr, "kelodrive-sim: --port must be 0 to 65535\n");
        return 2;
    }
    account.bookType = int(bookType);
    account.isAdmin = parser.isSet(QStringLiteral("admin"));
    sim.setAccount(account);
    sim.setStorage(storage);
    sim.setPublicCloud(!parser.isSet(QStringLiteral("enterprise")));
    sim.setPaceMs(int(qBound<qint64>(1, pace, 3600 * 1000)));
    sim.setRescanMs(int(qBound<qint64>(0, rescan, 3600 * 1000)));
    sim.setFailPatterns(parser.values(QStringLiteral("fail-pattern")));
    sim.setAskPluginInfo(!parser.isSet(QStringLiteral("no-plugin-info")));
    sim.setIndentedOutput(parser.isSet(QStringLiteral("indented")));
    kelodrive::SyncFlags flags;
    flags.isOnline = !parser.isSet(QStringLiteral("offline"));
    flags.isPaused = parser.isSet(QStringLiteral("paused"));
    sim.setFlags(flags);

    if (!parser.isSet(QStringLiteral("no-root"))) {
        const QString root = parser.isSet(QStringLiteral("root")) ? parser.value(QStringLiteral("root"))
                                                                  : QDir::homePath() + QStringLiteral("/Kelo Drive");
        if (!sim.setSyncRoot(root)) {
            std::fprintf(stderr, "kelodrive-sim: cannot use %s as the sync root\n", qPrintable(root));
            return 1;
        }
    }
    sim.setBanDirs(parser.values(QStringLiteral("ban")));

    QObject::connect(&sim, &Simulator::listening, &app, [](quint16 p) { printLine(QStringLiteral("port %1").arg(p)); });
    QObject::connect(&sim, &Simulator::quitRequested, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    if (!sim.start(quint16(port)))
        return 1;

    installSignalHandlers(&app);
    auto *stdinRunner = new CommandRunner(&sim, QStringLiteral("stdin"), &app);
    readStandardInput(&app, stdinRunner);

    if (parser.isSet(QStringLiteral("script"))) {
        const QString path = parser.value(QStringLiteral("script"));
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            std::fprintf(stderr, "kelodrive-sim: cannot read the script %s\n", qPrintable(path));
            sim.stop();
            return 1;
        }
        auto *scriptRunner = new CommandRunner(&sim, path, &app);
        scriptRunner->addLines(QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')));
        scriptRunner->endOfInput();
    }

    const int code = app.exec();
    sim.stop();
    return code;
}
