// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <atomic>

// The file-system work behind the host's file operations, on local paths.
// Blocking and free of GUI; called on worker threads. Nothing is ever
// overwritten: a name that is taken in the target gets a free one
// ("a (1).txt").
namespace hdeapp {

struct TransferResult
{
    // One entry per source that arrived, in source order.
    QStringList targets;
    // Empty when every source arrived; else the first problem (later
    // sources are still tried).
    QString error;
    // Every problem, one line per item that was not done or done only in
    // part (a skipped FIFO, a source that could not be removed after its
    // copy); what the lines do not name was done.
    QStringList problems;
    bool ok() const { return error.isEmpty(); }
};

// Copies (or, with `move`, moves) each source into `targetDir`: files,
// folders with their whole content, and symbolic links as links. A source
// moved within its own folder stays where it is.
TransferResult transfer(
    const QStringList &sources, const QString &targetDir, bool move, const std::atomic<bool> *cancelled = nullptr);
// A file, a link or a whole folder (links are removed, never followed).
bool removePath(const QString &path, QString *error);
// `name` inside `dir` when free, else "name (n).suffix" with the first free
// n; a folder's name gets " (n)" at its end.
QString freeTargetPath(const QString &dir, const QString &name, bool folder = false);
// Whether `path` names anything, a dangling link included.
bool pathTaken(const QString &path);

// The home trash: $XDG_DATA_HOME/Trash (XDG_DATA_HOME when it is an
// absolute path, else $HOME/.local/share); empty when HOME is unset too.
QString homeTrashPath();
// Moves `path` into the home trash (files/ plus an info/NAME.trashinfo
// record), creating the trash folders with mode 0700 where missing. False
// with `error` when it cannot, the file then left where it was. `inTrash` is
// its new place.
bool moveToTrash(const QString &path, QString *inTrash, QString *error);
// Puts an item of the home trash (`inTrash`, a path in its files/ folder)
// back where its record says it came from, recreating missing folders on the
// way; a taken name there gets a free one. The record is removed. False with
// `error` when it cannot, the item then left in the trash. `restored` is its
// new place.
bool restoreFromTrash(const QString &inTrash, QString *restored, QString *error);

}   // namespace hdeapp
