// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>
#include <QString>

namespace hfmbase {

Q_DECLARE_LOGGING_CATEGORY(logHfmbase)

// Logs "where: text" as a warning in the library's category.
void warnAt(const char *where, const QString &text);
// The same, and hands the text to the caller through an optional error string.
void warnAt(const char *where, const QString &text, QString *errorString);

}   // namespace hfmbase
