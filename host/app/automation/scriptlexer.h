// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace hdeapp {

// Splits one script line into words as a shell would: blanks separate,
// '...' keeps everything literally, "..." keeps blanks and honours \" and \\,
// a backslash outside quotes escapes the next character. A line that is
// blank or starts with '#' gives no words. False, with a reason, for an
// unterminated quote.
bool splitScriptLine(const QString &line, QStringList *words, QString *error);

}   // namespace hdeapp
