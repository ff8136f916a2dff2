// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QIcon>
#include <QUrl>

namespace hfmbase {

// The table of URL schemes the host can show. Thread-safe.
class HFMBASE_EXPORT UrlRoute
{
public:
    // Refuses (false, with errorString) a scheme that is already registered.
    static bool regScheme(const QString &scheme, const QString &root, const QIcon &icon = QIcon(),
        bool isVirtual = false, const QString &displayName = QString(), QString *errorString = nullptr);
    static bool hasScheme(const QString &scheme);
    static QStringList schemes();
    // "scheme:///" + root path; empty when the scheme is unknown.
    static QUrl rootUrl(const QString &scheme);
    static QString rootPath(const QString &scheme);
    static QIcon icon(const QString &scheme);
    static bool isVirtual(const QString &scheme);
    static QString displayName(const QString &scheme);
    static bool isRootUrl(const QUrl &url);
    // Parent of a URL within its scheme; empty at the root.
    static QUrl urlParent(const QUrl &url);
};

}   // namespace hfmbase
