// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace kelodrive {

// One line of the command language: a word and its arguments. Arguments are split at
// spaces, and double quotes keep spaces together; commands that take a path or JSON take
// the rest of the line as it is. "#" starts a comment line.
struct CommandLine
{
    bool ok = true;
    QString error;
    QString word;   // empty for a blank or comment line
    QStringList args;

    static CommandLine parse(const QString &line);
};

}   // namespace kelodrive
