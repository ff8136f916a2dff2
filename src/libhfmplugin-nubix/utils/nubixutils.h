// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace hfmplugin_nubix {

// The plug-in's fixed URLs and the mapping between local files under the
// sync root and "nubix" URLs. Stateless: the sync root is read from
// NubixCaches on every call, so the mappings may be used from any thread.
// An empty QUrl from a mapping means "not ours".
class NubixUtils
{
public:
    NubixUtils() = delete;

    // "nubix-login:///", the welcome page.
    static QUrl loginRoot();
    // "nubix:///", the top of the synchronised tree.
    static QUrl nubixRoot();
    // "entry:///nubix.nubix", the plug-in's item in the computer view.
    static QUrl computerEntryUrl();

    // A "file" URL whose path starts (as text) with the sync root becomes a
    // "nubix" URL with every occurrence of the root taken out of the path.
    static QUrl localToCloud(const QUrl &url);
    // A "nubix" URL becomes the local file at the sync root followed by its path.
    static QUrl cloudToLocal(const QUrl &url);
    // True once the sync client has told us where the sync root is.
    static bool readyToAccess();

    // A modal error dialog with one "Confirm" button; returns when it is
    // closed. GUI thread only.
    static void showDialog(const QString &title, const QString &message, QWidget *parent);
};

}   // namespace hfmplugin_nubix
