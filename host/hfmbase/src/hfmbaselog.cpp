// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbaselog.h"

namespace hfmbase {

Q_LOGGING_CATEGORY(logHfmbase, "org.sablo.hde.hfmbase")

void warnAt(const char *where, const QString &text)
{
    qCWarning(logHfmbase, "%s: %s", where, qUtf8Printable(text));
}

void warnAt(const char *where, const QString &text, QString *errorString)
{
    warnAt(where, text);
    if (errorString)
        *errorString = text;
}

}   // namespace hfmbase
