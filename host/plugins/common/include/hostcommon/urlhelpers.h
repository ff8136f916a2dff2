// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <functional>

// URL and file-name helpers shared by the host's plug-ins and application.
// Pure functions, callable from any thread; operableUrl() creates a file
// info and so touches the file system.
namespace hdehost {

// An absolute path ("/tmp/x", "~/x") or a URL ("file:///x", "nubix:///x");
// an empty URL for anything else.
QUrl urlFromUserInput(const QString &text);
// What an address bar shows: the local path, or the URL text.
QString urlDisplayText(const QUrl &url);
// The URL without a trailing slash (roots keep theirs).
QUrl normalizedUrl(const QUrl &url);
bool sameUrl(const QUrl &a, const QUrl &b);
// The parent within the URL's scheme; empty at the root.
QUrl parentUrl(const QUrl &url);
// The URL of `name` inside the directory `dir`.
QUrl childUrl(const QUrl &dir, const QString &name);
// The last path segment, or the scheme's display name at its root.
QString defaultTabName(const QUrl &url);
// The local URL an operation on `url` works on: a "file" URL itself, the
// redirected URL when the scheme's file info allows redirection, else empty
// with a reason in `error`.
QUrl operableUrl(const QUrl &url, QString *error = nullptr);

// Splits "a.txt" into "a" and ".txt"; ".tar.*" suffixes stay together and a
// leading dot belongs to the base ("a.tar.gz" -> "a", ".tar.gz").
void splitFileName(const QString &name, QString *base, QString *suffix);
// `name` when it is free, else the first of "a (1).txt", "a (2).txt", ...
// for which `taken` is false. Folders (`wholeName`) keep their dots:
// "v1.2 (1)".
QString freeFileName(const QString &name, const std::function<bool(const QString &)> &taken, bool wholeName = false);

}   // namespace hdehost
