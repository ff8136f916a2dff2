// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonValue>
#include <QString>

namespace hdeapp {

// Looks up a value in a JSON document by a path of '/'-separated steps:
//   key            a member of an object
//   3, -1          an element of an array (negative counts from the end)
//   name=a.txt     the first element of an array whose member equals the text
//   [url=file:///x] the same, bracketed so that the text may hold '/'
//   #              the number of elements or members (last step only)
// An empty path is the whole document. False, with a reason, when a step
// finds nothing.
bool evaluateJsonPath(const QJsonValue &root, const QString &path, QJsonValue *out, QString *error);
// JSON text ("true", "3", "\"a\"", "[1]") as a value; anything that is not
// JSON is taken as a string.
QJsonValue parseJsonValueText(const QString &text);
// The value as compact JSON text (strings quoted).
QString jsonValueText(const QJsonValue &value);

}   // namespace hdeapp
