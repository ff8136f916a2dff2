// SPDX-License-Identifier: GPL-3.0-or-later
// The text commands of standard input and script files.
#include <kelodrivesim/simulator.h>

#include "commandline.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

namespace kelodrive {

namespace {

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

// "on"/"off" style switches: returns 1, 0, or -1 when the word is neither.
int switchValue(const QString &word, QLatin1String on, QLatin1String off)
{
    if (word == on)
        return 1;
    if (word == off)
        return 0;
    return -1;
}

QString expandHome(const QString &path)
{
    if (path == QLatin1String("~"))
        return QDir::homePath();
    if (path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}

}   // namespace

QStringList Simulator::commandHelp()
{
    return {
        QStringLiteral("online | offline                 network state"),
        QStringLiteral("pause | resume | start           sync control, as the plug-in's requests"),
        QStringLiteral("local-space low|ok               local disk space"),
        QStringLiteral("cloud-space low|ok               cloud space"),
        QStringLiteral("allowance empty|ok               transfer allowance used up or not"),
        QStringLiteral("permission forbid|ok             the sync root may not be written"),
        QStringLiteral("unknown-error on|off             the unclassified error flag"),
        QStringLiteral("public | enterprise              kind of account"),
        QStringLiteral("quota BYTES                      the quota (-3: no fixed quota)"),
        QStringLiteral("storage FREE USED TOTAL [RELATIVE [QUOTA]]"),
        QStringLiteral("root DIR | root none             set or clear the sync root"),
        QStringLiteral("ban DIR | unban DIR | ban none   banned folders (cloud paths)"),
        QStringLiteral("fail PATTERN | fail none         file names whose transfer fails"),
        QStringLiteral("pace MS                          time per transfer step"),
        QStringLiteral("download PATH [BYTES [CHUNKS]]   simulate a download through PATH.temp"),
        QStringLiteral("rescan                           look at the sync root again"),
        QStringLiteral("notify TYPE [JSON]               push any notification"),
        QStringLiteral("notify-all                       push the whole state"),
        QStringLiteral("drop                             drop every connection"),
        QStringLiteral("stop-listening SECONDS           refuse connections for a while"),
        QStringLiteral("restart                          listen on a new port"),
        QStringLiteral("malformed [COUNT]                send malformed frames"),
        QStringLiteral("burst COUNT [TYPE]               send COUNT notifications at once"),
        QStringLiteral("answer on|off                    answer requests or stay silent"),
        QStringLiteral("delay MS                         delay before every answer"),
        QStringLiteral("quit                             stop and exit"),
    };
}

bool Simulator::execute(const QString &commandLine, QString *error)
{
    const CommandLine cmd = CommandLine::parse(commandLine);
    if (!cmd.ok)
        return fail(error, cmd.error);
    if (cmd.word.isEmpty())
        return true;   // blank line or comment
    const QString &w = cmd.word;
    const QStringList &a = cmd.args;
    auto needArgs = [&](int min, int max) { return a.size() >= min && a.size() <= max; };
    auto usage = [&] { return fail(error, QStringLiteral("wrong arguments for \"%1\"").arg(w)); };
    auto toInt = [](const QString &text, bool *ok) { return text.toLongLong(ok); };

    // State switches: a word that is the state itself ("offline"), or a word and a state ("answer on").
    static const struct
    {
        const char *word;   // null when the command word is the state
        const char *on;
        const char *off;
        void (Simulator::*set)(bool);
    } switches[] = {
        {nullptr, "online", "offline", &Simulator::setOnline},
        {nullptr, "pause", "resume", &Simulator::setPaused},
        {nullptr, "public", "enterprise", &Simulator::setPublicCloud},
        {"local-space", "low", "ok", &Simulator::setLocalSpaceLow},
        {"cloud-space", "low", "ok", &Simulator::setRemoteSpaceLow},
        {"allowance", "empty", "ok", &Simulator::setFlowEmpty},
        {"permission", "forbid", "ok", &Simulator::setLocalPermissionForbidden},
        {"unknown-error", "on", "off", &Simulator::setUnknownError},
        {"answer", "on", "off", &Simulator::setAnswering},
    };
    for (const auto &s : switches) {
        const QLatin1String on(s.on), off(s.off);
        if (s.word ? w != QLatin1String(s.word) : switchValue(w, on, off) < 0)
            continue;
        const int v
            = s.word ? (needArgs(1, 1) ? switchValue(a.at(0), on, off) : -1) : (needArgs(0, 0) ? int(w == on) : -1);
        if (v < 0)
            return usage();
        (this->*s.set)(v == 1);
        return true;
    }

    if (w == QLatin1String("start")) {
        if (!needArgs(0, 0))
            return usage();
        setPaused(false);
        rescan();
        notifyAll();
    } else if (w == QLatin1String("quota")) {
        bool ok = false;
        const qint64 quota = needArgs(1, 1) ? toInt(a.at(0), &ok) : 0;
        if (!ok)
            return usage();
        Storage s = storage();
        s.quota = quota;
        setStorage(s);
    } else if (w == QLatin1String("storage")) {
        if (!needArgs(3, 5))
            return usage();
        qint64 v[5] = {0, 0, 0, storage().relative, storage().quota};
        for (int i = 0; i < a.size(); ++i) {
            bool ok = false;
            v[i] = toInt(a.at(i), &ok);
            if (!ok)
                return usage();
        }
        setStorage(Storage {v[0], v[1], v[2], v[3], v[4]});
    } else if (w == QLatin1String("root")) {
        if (!needArgs(1, 1))
            return usage();
        if (a.at(0) == QLatin1String("none"))
            clearSyncRoot();
        else if (!setSyncRoot(expandHome(a.at(0))))
            return fail(error, QStringLiteral("cannot use %1 as the sync root").arg(a.at(0)));
    } else if (w == QLatin1String("ban") || w == QLatin1String("unban")) {
        if (!needArgs(1, 1))
            return usage();
        QStringList dirs = banDirs();
        if (w == QLatin1String("ban") && a.at(0) == QLatin1String("none")) {
            dirs.clear();
        } else {
            QString path = a.at(0);
            if (!path.startsWith(QLatin1Char('/')))
                path.prepend(QLatin1Char('/'));
            if (w == QLatin1String("ban"))
                dirs.append(path);
            else
                dirs.removeAll(QDir::cleanPath(path));
        }
        setBanDirs(dirs);
    } else if (w == QLatin1String("fail")) {
        if (!needArgs(1, 1))
            return usage();
        setFailPatterns(a.at(0) == QLatin1String("none") ? QStringList() : failPatterns() << a.at(0));
    } else if (w == QLatin1String("pace") || w == QLatin1String("delay")) {
        bool ok = false;
        const qint64 ms = needArgs(1, 1) ? toInt(a.at(0), &ok) : 0;
        if (!ok || ms < 0 || ms > 3600 * 1000)
            return usage();
        if (w == QLatin1String("pace"))
            setPaceMs(int(ms));
        else
            setResponseDelayMs(int(ms));
    } else if (w == QLatin1String("download")) {
        if (!needArgs(1, 3))
            return usage();
        bool ok = true;
        const qint64 size = a.size() > 1 ? toInt(a.at(1), &ok) : 64 * 1024;
        bool okChunks = true;
        const qint64 chunks = a.size() > 2 ? toInt(a.at(2), &okChunks) : 4;
        if (!ok || !okChunks || size < 0 || size > (1LL << 31) || chunks < 1 || chunks > 100000)
            return usage();
        if (!startDownload(a.at(0), size, int(chunks)))
            return fail(error, QStringLiteral("cannot download %1").arg(a.at(0)));
    } else if (w == QLatin1String("rescan")) {
        rescan();
    } else if (w == QLatin1String("notify")) {
        if (!needArgs(1, 2))
            return usage();
        QJsonValue args;
        if (a.size() == 2) {
            // Wrapped in an array so that scalars parse too.
            QJsonParseError err;
            const QJsonDocument doc = QJsonDocument::fromJson('[' + a.at(1).toUtf8() + ']', &err);
            if (err.error != QJsonParseError::NoError || doc.array().size() != 1)
                return fail(error, QStringLiteral("not a JSON value: %1").arg(a.at(1)));
            args = doc.array().at(0);
        }
        notify(a.at(0), args);
    } else if (w == QLatin1String("notify-all")) {
        notifyAll();
    } else if (w == QLatin1String("drop")) {
        dropConnections();
    } else if (w == QLatin1String("stop-listening")) {
        bool ok = false;
        const qint64 seconds = needArgs(1, 1) ? toInt(a.at(0), &ok) : 0;
        if (!ok || seconds < 0 || seconds > 24 * 3600)
            return usage();
        stopListening(int(seconds));
    } else if (w == QLatin1String("restart")) {
        if (!restartOnNewPort())
            return fail(error, QStringLiteral("cannot listen on a new port"));
    } else if (w == QLatin1String("malformed")) {
        bool ok = true;
        const qint64 count = a.isEmpty() ? -1 : toInt(a.at(0), &ok);
        if (!needArgs(0, 1) || !ok || count > 1000000)
            return usage();
        sendMalformedFrames(int(count));
    } else if (w == QLatin1String("burst")) {
        bool ok = false;
        const qint64 count = needArgs(1, 2) ? toInt(a.at(0), &ok) : 0;
        if (!ok || count < 0 || count > 10000000)
            return usage();
        sendBurst(int(count), a.value(1));
    } else if (w == QLatin1String("quit")) {
        Q_EMIT quitRequested();
    } else {
        return fail(error, QStringLiteral("unknown command \"%1\"").arg(w));
    }
    return true;
}

}   // namespace kelodrive
