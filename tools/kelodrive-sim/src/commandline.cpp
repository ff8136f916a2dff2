// SPDX-License-Identifier: GPL-3.0-or-later
#include "commandline.h"

namespace kelodrive {

namespace {

QString unquote(const QString &text)
{
    if (text.size() >= 2 && text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"')))
        return text.mid(1, text.size() - 2);
    return text;
}

// Splits off the first word; returns it and leaves the trimmed remainder in rest.
QString firstWord(const QString &text, QString *rest)
{
    int end = 0;
    while (end < text.size() && !text.at(end).isSpace())
        ++end;
    *rest = text.mid(end).trimmed();
    return text.left(end);
}

}   // namespace

CommandLine CommandLine::parse(const QString &line)
{
    CommandLine cmd;
    const QString text = line.trimmed();
    if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
        return cmd;
    QString rest;
    cmd.word = firstWord(text, &rest);

    static const QStringList pathCommands
        = {QStringLiteral("root"), QStringLiteral("ban"), QStringLiteral("unban"), QStringLiteral("fail")};
    if (pathCommands.contains(cmd.word)) {
        if (!rest.isEmpty())
            cmd.args << unquote(rest);
        return cmd;
    }
    if (cmd.word == QLatin1String("notify")) {
        QString json;
        const QString type = firstWord(rest, &json);
        if (!type.isEmpty())
            cmd.args << type;
        if (!json.isEmpty())
            cmd.args << json;
        return cmd;
    }

    QString current;
    bool inQuotes = false;
    bool hasToken = false;
    for (const QChar c : rest) {
        if (c == QLatin1Char('"')) {
            inQuotes = !inQuotes;
            hasToken = true;
        } else if (c.isSpace() && !inQuotes) {
            if (hasToken)
                cmd.args << current;
            current.clear();
            hasToken = false;
        } else {
            current += c;
            hasToken = true;
        }
    }
    if (inQuotes) {
        cmd.ok = false;
        cmd.error = QStringLiteral("unterminated quote");
        cmd.args.clear();
        return cmd;
    }
    if (hasToken)
        cmd.args << current;
    return cmd;
}

}   // namespace kelodrive
