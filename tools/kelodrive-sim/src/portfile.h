// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace kelodrive {

// The file through which the plug-in finds the client's port: the port on the first line.
namespace portfile {

// $HOME/.config/kelodrive/App Data/ipc
QString defaultPath();

// Writes "port\n" through a temporary file renamed over the target, so that a reader
// never sees a partial file. Creates the folder. False (and a warning) on failure.
bool write(const QString &path, quint16 port);

// Removes the file when its first line still names this port (another instance may
// have taken it over). True when the file is gone afterwards.
bool removeIfOurs(const QString &path, quint16 port);

// The port on the first line, 0 when absent or invalid.
quint16 read(const QString &path);

}   // namespace portfile
}   // namespace kelodrive
