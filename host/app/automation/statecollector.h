// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QVariantMap>

class QObject;

namespace hdeapp {

class FileOperations;
class OperationLog;

// Version of the state document; bumped when a member changes meaning.
constexpr int kStateVersion = 1;

// Gathers the whole visible state of the host into one JSON object: the
// windows with their tabs and views, the sidebar, the computer entries, the
// title-bar settings, recorded dialogs, opened files, results of file
// operations and the plug-ins. Asks the host plug-ins through their
// inspection objects. GUI thread only.
QJsonObject collectState(const OperationLog *log, const FileOperations *operations);

// The inspection object of a host plug-in, or null when it is not loaded.
QObject *hostInspector(const QString &name);
// Calls a Q_INVOKABLE returning QVariantMap with a window id, or with no
// argument when `windowId` is 0 and `withWindow` is false.
QVariantMap inspectMap(const QString &inspector, const char *method, quint64 windowId, bool withWindow);

}   // namespace hdeapp
