// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractjobhandler.h>

#include <QFileDevice>
#include <QObject>
#include <QThreadPool>
#include <QUrl>

namespace hdeapp {

class OperationLog;

// Carries out the host's file operations as listeners of their global
// events, on local files (URLs of other schemes through their redirected
// local URL), then publishes the result events and calls the callbacks.
// Copy, cut, delete and trash run on worker threads; their results come
// back on the GUI thread. A failure is reported in the result event (and a
// dialog); nothing is ever overwritten. Lives on the GUI thread.
class FileOperations : public QObject
{
    Q_OBJECT
public:
    explicit FileOperations(OperationLog *log, QObject *parent = nullptr);
    ~FileOperations() override;

    // Subscribes the listeners.
    void attach();
    // Record opened files and terminals instead of starting programs.
    void setRecordOnly(bool on);
    int runningJobs() const;

    void openFiles(quint64 windowId, const QList<QUrl> &urls);
    void openFilesByApp(quint64 windowId, const QList<QUrl> &urls, const QStringList &apps);
    void openAsAdmin(const QUrl &url);
    void makeDirectory(
        quint64 windowId, const QUrl &url, const QVariant &custom, const hfmbase::OperatorCallback &done);
    // (windowId, folder, type or template URL, suffix, custom, callback)
    void touchFile(const QVariantList &args);
    void createSymlink(quint64 windowId, const QUrl &source, const QUrl &link, bool force, bool silence);
    void setPermissions(quint64 windowId, const QUrl &url, QFileDevice::Permissions permissions);
    void copyFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
        hfmbase::AbstractJobHandler::JobFlags flags, const hfmbase::OperatorHandleCallback &handle);
    void cutFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
        hfmbase::AbstractJobHandler::JobFlags flags, const hfmbase::OperatorHandleCallback &handle);
    void renameFile(quint64 windowId, const QUrl &from, const QUrl &to);
    void deleteFiles(quint64 windowId, const QList<QUrl> &urls, hfmbase::AbstractJobHandler::JobFlags flags,
        const hfmbase::OperatorHandleCallback &handle);
    void moveToTrash(quint64 windowId, const QList<QUrl> &urls, hfmbase::AbstractJobHandler::JobFlags flags,
        const hfmbase::OperatorHandleCallback &handle);
    // Puts items of the home trash back where they came from. No event asks
    // for it; the result is recorded in the operation log only.
    void restoreFromTrash(quint64 windowId, const QList<QUrl> &urls);
    void writeClipboard(quint64 windowId, quint8 action, const QList<QUrl> &urls);
    void pasteFiles(quint64 windowId, const QUrl &target);
    void openInTerminal(quint64 windowId, const QList<QUrl> &urls);
    void hideFiles(quint64 windowId, const QList<QUrl> &urls);

Q_SIGNALS:
    void jobFinished();

private:
    void transfer(quint64 windowId, const QList<QUrl> &sources, const QUrl &target, bool move,
        const hfmbase::OperatorHandleCallback &handle);
    void removeFiles(
        quint64 windowId, const QList<QUrl> &urls, bool toTrash, const hfmbase::OperatorHandleCallback &handle);
    template <class Work, class Done> void runJob(Work work, Done done);
    void reportFailure(const QString &title, const QString &error);

    OperationLog *log;
    bool recordOnly = false;
    int jobs = 0;
    QThreadPool pool;
};

// The local path an operation works on, or empty with a reason.
QString localPathOf(const QUrl &url, QString *error);
// Like localPathOf for a URL that need not exist yet: its folder is resolved.
QString localTargetPathOf(const QUrl &url, QString *error);

}   // namespace hdeapp
