// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractjobhandler.h>

#include <QFileDevice>
#include <QIcon>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPoint>
#include <QUrl>
#include <QVariant>

namespace hfmplugin_nubix {

// Ties the plug-in into the host's other plug-ins through the host's event
// channels: registrations, file-operation filters, navigation, the sidebar
// item and emblems. GUI thread only; nothing here waits on the sync client
// (the incomplete-file dialog is the one modal wait). A process-wide
// singleton that lives until exit; it keeps no state of its own.
class EventsHandler : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(EventsHandler)
public:
    static EventsHandler *instance();

    // Filters return true when they consumed the event; a consumed cloud
    // event has been published again with local URLs, which the same filter
    // lets pass, so a redirect happens at most once.

    // Navigation.
    bool filterEnter(quint64 windowId, const QUrl &url);
    bool filterEnterInNewTab(quint64 windowId, const QUrl &url);
    bool filterEnterInNewWin(const QUrl &url);
    bool filterEnterInNewWin2(const QUrl &url, bool isNew);
    void onEnterDir(quint64 windowId, const QUrl &url);
    bool hookSetTabName(const QUrl &url, QString *name);
    bool workspaceEventFilter(int type, const QVariantList &args);

    // File operations.
    bool filterOpenFiles(quint64 windowId, const QList<QUrl> &urls);
    bool filterOpenWith(quint64 windowId, const QList<QUrl> &urls, const QList<QString> &apps);
    bool filterOpenTerminal(quint64 windowId, const QList<QUrl> &urls);
    bool filterOpenAsAdmin(const QUrl &url);
    bool filterMoveToTrash(quint64 windowId, const QList<QUrl> &urls, hfmbase::AbstractJobHandler::JobFlags flags,
        hfmbase::OperatorHandleCallback callback);
    bool filterDelete(quint64 windowId, const QList<QUrl> &urls, hfmbase::AbstractJobHandler::JobFlags flags,
        hfmbase::OperatorHandleCallback callback);
    bool filterWriteClipbord(quint64 windowId, quint8 action, const QList<QUrl> &urls);
    bool filterHiddenFiles(quint64 windowId, const QList<QUrl> &urls);
    bool filterCopyFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
        hfmbase::AbstractJobHandler::JobFlags flags, hfmbase::OperatorHandleCallback callback);
    bool filterCutFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
        hfmbase::AbstractJobHandler::JobFlags flags, hfmbase::OperatorHandleCallback callback);
    bool filterMkdir(quint64 windowId, const QUrl &url, const QVariant &arg, hfmbase::OperatorCallback callback);
    bool filterCreateLink(quint64 windowId, const QUrl &source, const QUrl &link, bool force, bool silence);
    bool filterSetPermission(quint64 windowId, const QUrl &url, QFileDevice::Permissions permissions);
    bool filterPasteResult(const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &errorMsg);
    bool filterRenameResult(quint64 windowId, const QMap<QUrl, QUrl> &renamed, bool ok, const QString &errorMsg);

    // Emblems, answered from the cache alone.
    bool hookRequestCustomEmblems(const QUrl &url, QList<QIcon> *emblems);

    // Pure decisions behind the filters, public so that they can be tested alone.

    // Every "nubix" URL replaced by its local file, others kept, order kept;
    // true when there was one.
    static bool takeHandle(const QList<QUrl> &urls, QList<QUrl> *out);
    // The rename results a cloud window must see: local new URLs mapped to
    // the tree; false when every pair is already a cloud one.
    static bool cloudRenameMap(const QMap<QUrl, QUrl> &renamed, QMap<QUrl, QUrl> *out);
    // The emblem name of a cloud path, "" for none; ".temp" files show their target's.
    static QString emblemName(const QString &cloudPath);
    // Where a navigation to url must go instead; empty when it may go on.
    static QUrl redirectTarget(const QUrl &url);
    // Wraps a creation callback so that it reports the created items as cloud URLs.
    static hfmbase::OperatorCallback fileCreatedCallbackShell(hfmbase::OperatorCallback callback);

    static bool findSidebarItem(const QUrl &itemUrl, const QUrl &targetUrl);
    static void createSidebarItemMenu(quint64 windowId, const QUrl &url, const QPoint &pos);

public Q_SLOTS:
    void subscribeEvents();
    void installEventsFilter();
    void regFileView();
    void regTopWidget();
    void addToComputer();
    void bindMenuScene();
    void hookOperations();
    void disableTitleBarViewType();

    void cdNubixLogin();
    void cdNubixRoot();
    // Sends the sidebar item again, with the icon of the account kind.
    void updateSidebarItem();
    // Takes the plug-in's item (the one the host made from the metadata) out of the sidebar.
    void removeSidebarItem();

private:
    EventsHandler();
    ~EventsHandler() override;

    bool blockOpenFiles(const QList<QUrl> &urls);
    void showFileIncompleteWarning();
};

}   // namespace hfmplugin_nubix
