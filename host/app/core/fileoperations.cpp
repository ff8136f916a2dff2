// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileoperations.h"

#include "filejobs.h"
#include "operationlog.h"

#include <hfmbase/globaleventtype.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMimeData>
#include <QPointer>
#include <QProcess>
#include <QRunnable>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

Q_LOGGING_CATEGORY(logFileOps, "org.sablo.hde.filemanager.fileoperations")

namespace hdeapp {

using hfmbase::AbstractJobHandler;

namespace {

const QString kClipboardActionMime = QStringLiteral("application/x-hde-clipboard-action");

QList<QUrl> toUrls(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

hfmbase::CallbackArgus callbackMap(quint64 windowId, const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok,
    const QString &error, const QVariant &custom)
{
    hfmbase::CallbackArgus args(new QMap<AbstractJobHandler::JobCallbackKey, QVariant>);
    args->insert(AbstractJobHandler::JobCallbackKey::kWindowIdKey, QVariant::fromValue<quint64>(windowId));
    args->insert(AbstractJobHandler::JobCallbackKey::kSourceUrlsKey, QVariant::fromValue(sources));
    args->insert(AbstractJobHandler::JobCallbackKey::kTargetUrlsKey, QVariant::fromValue(targets));
    args->insert(AbstractJobHandler::JobCallbackKey::kSuccessKey, ok);
    args->insert(AbstractJobHandler::JobCallbackKey::kErrorMessageKey, error);
    args->insert(AbstractJobHandler::JobCallbackKey::kCustomParamKey, custom);
    return args;
}

}   // namespace

QString localPathOf(const QUrl &url, QString *error)
{
    const QUrl local = hdehost::operableUrl(url, error);
    return local.isValid() ? QDir::cleanPath(local.toLocalFile()) : QString();
}

// The local paths of the URLs that have one; the first reason one has not
// goes to `unresolved`.
QStringList localPathsOf(const QList<QUrl> &urls, QString *unresolved)
{
    QStringList paths;
    for (const QUrl &url : urls) {
        QString error;
        const QString path = localPathOf(url, &error);
        if (!path.isEmpty())
            paths.append(path);
        else if (unresolved->isEmpty())
            *unresolved = error;
    }
    return paths;
}

QString localTargetPathOf(const QUrl &url, QString *error)
{
    if (url.isLocalFile())
        return url.toLocalFile().isEmpty() ? QString() : QDir::cleanPath(url.toLocalFile());
    const QString name = hdehost::normalizedUrl(url).fileName(QUrl::FullyDecoded);
    const QString dir = localPathOf(hdehost::parentUrl(url), error);
    if (dir.isEmpty() || name.isEmpty()) {
        if (error && error->isEmpty())
            *error = QStringLiteral("\"%1\" is not a local file").arg(url.toString());
        return QString();
    }
    return dir + QLatin1Char('/') + name;
}

FileOperations::FileOperations(OperationLog *log, QObject *parent) : QObject(parent), log(log)
{
    pool.setMaxThreadCount(2);
}

FileOperations::~FileOperations()
{
    pool.waitForDone();
    auto *dispatcher = hpf::dispatcher();
    for (int event : {hfmbase::kOpenFiles, hfmbase::kOpenFilesByApp, hfmbase::kOpenAsAdmin, hfmbase::kMkdir,
             hfmbase::kTouchFile, hfmbase::kCreateSymlink, hfmbase::kSetPermission, hfmbase::kCopy,
             hfmbase::kRenameFile, hfmbase::kDeleteFiles, hfmbase::kMoveToTrash, hfmbase::kWriteUrlsToClipboard,
             hfmbase::kCutFile, hfmbase::kOpenInTerminal, hfmbase::kPasteFiles, hfmbase::kHideFiles})
        dispatcher->unsubscribe(event, this);
}

void FileOperations::attach()
{
    auto *d = hpf::dispatcher();
    d->subscribe(hfmbase::kOpenFiles, this, &FileOperations::openFiles);
    d->subscribe(hfmbase::kOpenFilesByApp, this, &FileOperations::openFilesByApp);
    d->subscribe(hfmbase::kOpenAsAdmin, this, &FileOperations::openAsAdmin);
    d->subscribe(hfmbase::kMkdir, this, &FileOperations::makeDirectory);
    d->subscribeInvoker(hfmbase::kTouchFile, this, [this](const QVariantList &args) -> QVariant {
        touchFile(args);
        return QVariant();
    });
    d->subscribe(hfmbase::kCreateSymlink, this, &FileOperations::createSymlink);
    d->subscribe(hfmbase::kSetPermission, this, &FileOperations::setPermissions);
    d->subscribe(hfmbase::kCopy, this, &FileOperations::copyFiles);
    d->subscribe(hfmbase::kCutFile, this, &FileOperations::cutFiles);
    d->subscribe(hfmbase::kRenameFile, this, &FileOperations::renameFile);
    d->subscribe(hfmbase::kDeleteFiles, this, &FileOperations::deleteFiles);
    d->subscribe(hfmbase::kMoveToTrash, this, &FileOperations::moveToTrash);
    d->subscribe(hfmbase::kWriteUrlsToClipboard, this, &FileOperations::writeClipboard);
    d->subscribe(hfmbase::kPasteFiles, this, &FileOperations::pasteFiles);
    d->subscribe(hfmbase::kOpenInTerminal, this, &FileOperations::openInTerminal);
    d->subscribe(hfmbase::kHideFiles, this, &FileOperations::hideFiles);
}

void FileOperations::setRecordOnly(bool on)
{
    recordOnly = on;
}

int FileOperations::runningJobs() const
{
    return jobs;
}

void FileOperations::reportFailure(const QString &title, const QString &error)
{
    qCWarning(logFileOps).noquote() << "FileOperations:" << title << "-" << error;
    htk::MessageDialog dialog(QApplication::activeWindow());
    dialog.setIcon(QIcon::fromTheme(QStringLiteral("dialog-error")));
    dialog.setTitle(title);
    dialog.setMessage(error);
    dialog.addButton(tr("OK"), true);
    dialog.exec();
}

template <class Work, class Done> void FileOperations::runJob(Work work, Done done)
{
    ++jobs;
    QPointer<FileOperations> self(this);
    pool.start(QRunnable::create([self, work, done, target = this]() mutable {
        auto result = work();
        // `target` outlives the pool's threads: its destructor waits for them.
        QMetaObject::invokeMethod(
            target,
            [self, done, result]() mutable {
                if (!self)
                    return;
                --self->jobs;
                done(result);
                Q_EMIT self->jobFinished();
            },
            Qt::QueuedConnection);
    }));
}

void FileOperations::openFiles(quint64 windowId, const QList<QUrl> &urls)
{
    bool ok = !urls.isEmpty();
    for (const QUrl &url : urls) {
        QString error;
        const QString path = localPathOf(url, &error);
        if (path.isEmpty()) {
            ok = false;
            qCWarning(logFileOps).noquote()
                << "FileOperations::openFiles: cannot open" << url.toString() << "-" << error;
            continue;
        }
        const QUrl local = QUrl::fromLocalFile(path);
        if (QFileInfo(path).isDir()) {
            hdehost::requestNewWindow(url);
            continue;
        }
        if (recordOnly)
            log->addOpened(url, local, QString());
        else if (!QDesktopServices::openUrl(local))
            ok = false;
    }
    hpf::dispatcher()->publish(hfmbase::kOpenFilesResult, windowId, urls, ok);
}

void FileOperations::openFilesByApp(quint64 windowId, const QList<QUrl> &urls, const QStringList &apps)
{
    const QString app = apps.value(0);
    QStringList paths;
    for (const QUrl &url : urls) {
        const QString path = localPathOf(url, nullptr);
        if (path.isEmpty())
            continue;
        paths.append(path);
        if (recordOnly)
            log->addOpened(url, QUrl::fromLocalFile(path), app);
    }
    bool ok = !paths.isEmpty() && !app.isEmpty();
    if (ok && !recordOnly)
        ok = QProcess::startDetached(app, paths);
    hpf::dispatcher()->publish(hfmbase::kOpenFilesResult, windowId, urls, ok);
}

void FileOperations::openAsAdmin(const QUrl &url)
{
    const QString path = localPathOf(url, nullptr);
    if (path.isEmpty())
        return;
    if (recordOnly) {
        log->addOpened(url, QUrl::fromLocalFile(path), QStringLiteral("admin"));
        return;
    }
    qCInfo(logFileOps) << "FileOperations::openAsAdmin: this host has no administrator mode; opening" << path;
    hdehost::requestNewWindow(QUrl::fromLocalFile(path));
}

void FileOperations::makeDirectory(
    quint64 windowId, const QUrl &url, const QVariant &custom, const hfmbase::OperatorCallback &done)
{
    QString error;
    const QString path = localTargetPathOf(url, &error);
    bool ok = false;
    if (!path.isEmpty()) {
        if (pathTaken(path))
            error = tr("\"%1\" already exists").arg(path);
        else if (!QDir().mkdir(path))
            error = tr("cannot create the folder \"%1\"").arg(path);
        else
            ok = true;
    }
    const QList<QUrl> targets = ok ? QList<QUrl> {QUrl::fromLocalFile(path)} : QList<QUrl>();
    if (!ok)
        reportFailure(tr("Cannot create the folder"), error);
    hpf::dispatcher()->publish(hfmbase::kMkdirResult, windowId, targets, ok, error);
    if (done)
        done(callbackMap(windowId, {url}, targets, ok, error, custom));
}

void FileOperations::touchFile(const QVariantList &args)
{
    if (args.size() != 6 || !args.at(1).canConvert<QUrl>()) {
        qCWarning(logFileOps) << "FileOperations::touchFile: ignored an event with the arguments" << args;
        return;
    }
    const quint64 windowId = args.at(0).toULongLong();
    const QUrl dirUrl = args.at(1).toUrl();
    const QVariant kind = args.at(2);
    const QString suffix = args.at(3).toString();
    const QVariant custom = args.at(4);
    const auto done = args.at(5).value<hfmbase::OperatorCallback>();

    QString error;
    const QString dir = localPathOf(dirUrl, &error);
    const QUrl templateUrl = kind.userType() == QMetaType::QUrl ? kind.toUrl() : QUrl();
    QString templatePath;
    if (templateUrl.isValid())
        templatePath = localPathOf(templateUrl, &error);
    bool ok = false;
    QString created;
    if (!dir.isEmpty() && (!templateUrl.isValid() || !templatePath.isEmpty())) {
        QString name = templateUrl.isValid() ? QFileInfo(templatePath).fileName() : tr("New Document");
        if (!templateUrl.isValid() && !suffix.isEmpty())
            name += QLatin1Char('.') + suffix;
        created = freeTargetPath(dir, name);
        QFile file(created);
        if (created.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            error = tr("cannot create \"%1\": %2").arg(created, file.errorString());
        } else {
            ok = true;
            if (!templatePath.isEmpty()) {
                QFile source(templatePath);
                if (source.open(QIODevice::ReadOnly))
                    file.write(source.readAll());
            }
        }
    }
    const QList<QUrl> targets = ok ? QList<QUrl> {QUrl::fromLocalFile(created)} : QList<QUrl>();
    if (!ok)
        reportFailure(tr("Cannot create the file"), error);
    hpf::dispatcher()->publish(hfmbase::kTouchFileResult, windowId, targets, ok, error);
    if (done)
        done(callbackMap(windowId, {dirUrl}, targets, ok, error, custom));
}

void FileOperations::createSymlink(quint64 windowId, const QUrl &source, const QUrl &link, bool force, bool silence)
{
    Q_UNUSED(windowId)
    QString error;
    const QString target = localPathOf(source, &error);
    const QString linkPath = target.isEmpty() ? QString() : localTargetPathOf(link, &error);
    bool ok = false;
    if (!linkPath.isEmpty()) {
        const QFileInfo existing(linkPath);
        // Forcing replaces an old link, never a file.
        if (pathTaken(linkPath) && force && existing.isSymLink())
            QFile::remove(linkPath);
        if (pathTaken(linkPath))
            error = tr("\"%1\" already exists").arg(linkPath);
        else if (!QFile::link(target, linkPath))
            error = tr("cannot create the link \"%1\"").arg(linkPath);
        else
            ok = true;
    }
    if (!ok) {
        if (silence)
            qCWarning(logFileOps).noquote() << "FileOperations::createSymlink:" << error;
        else
            reportFailure(tr("Cannot create the link"), error);
    }
}

void FileOperations::setPermissions(quint64 windowId, const QUrl &url, QFileDevice::Permissions permissions)
{
    Q_UNUSED(windowId)
    QString error;
    const QString path = localPathOf(url, &error);
    if (path.isEmpty() || !QFile::setPermissions(path, permissions))
        reportFailure(tr("Cannot change the permissions"), error.isEmpty() ? path : error);
}

void FileOperations::copyFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
    AbstractJobHandler::JobFlags flags, const hfmbase::OperatorHandleCallback &handle)
{
    Q_UNUSED(flags)
    transfer(windowId, sources, target, false, handle);
}

void FileOperations::cutFiles(quint64 windowId, const QList<QUrl> &sources, const QUrl &target,
    AbstractJobHandler::JobFlags flags, const hfmbase::OperatorHandleCallback &handle)
{
    Q_UNUSED(flags)
    transfer(windowId, sources, target, true, handle);
}

void FileOperations::transfer(quint64 windowId, const QList<QUrl> &sources, const QUrl &target, bool move,
    const hfmbase::OperatorHandleCallback &handle)
{
    Q_UNUSED(windowId)
    const hfmbase::JobHandlePointer handler(new AbstractJobHandler);
    if (handle)
        handle(handler);
    QString error;
    const QStringList paths = localPathsOf(sources, &error);
    QString targetError;
    const QString targetDir = localPathOf(target, &targetError);
    if (error.isEmpty())
        error = targetError;
    const int resultEvent = move ? hfmbase::kCutFileResult : hfmbase::kCopyResult;
    const QString title = move ? tr("Cannot move the files") : tr("Cannot copy the files");
    const QString unresolved = error;
    runJob(
        [paths, targetDir, move]() {
            if (targetDir.isEmpty())
                return TransferResult();
            return hdeapp::transfer(paths, targetDir, move);
        },
        [this, sources, handler, resultEvent, title, unresolved, targetDir](const TransferResult &result) {
            // One line per item that was not done, so the report matches the disk.
            QString message = unresolved.isEmpty() ? result.problems.join(QLatin1Char('\n')) : unresolved;
            if (targetDir.isEmpty() && message.isEmpty())
                message = tr("no target folder");
            const bool ok = message.isEmpty();
            const QList<QUrl> targets = toUrls(result.targets);
            handler->finish(sources, targets, ok, message);
            if (!ok)
                reportFailure(title, message);
            hpf::dispatcher()->publish(resultEvent, sources, targets, ok, message);
        });
}

void FileOperations::renameFile(quint64 windowId, const QUrl &from, const QUrl &to)
{
    QString error;
    const QString source = localPathOf(from, &error);
    const QString target = source.isEmpty() ? QString() : localTargetPathOf(to, &error);
    bool ok = false;
    if (!target.isEmpty()) {
        if (!pathTaken(source))
            error = tr("\"%1\" does not exist").arg(source);
        else if (source == target)
            error = tr("the name is unchanged");
        else if (pathTaken(target))
            error = tr("\"%1\" already exists").arg(QFileInfo(target).fileName());
        else if (::renameat2(AT_FDCWD, QFile::encodeName(source).constData(), AT_FDCWD,
                     QFile::encodeName(target).constData(), RENAME_NOREPLACE)
            != 0)
            error = tr("cannot rename \"%1\": %2").arg(source, QString::fromLocal8Bit(strerror(errno)));
        else
            ok = true;
    }
    QMap<QUrl, QUrl> renamed;
    renamed.insert(from, ok ? QUrl::fromLocalFile(target) : to);
    if (!ok)
        reportFailure(tr("Cannot rename"), error);
    hpf::dispatcher()->publish(hfmbase::kRenameFileResult, windowId, renamed, ok, error);
}

void FileOperations::deleteFiles(quint64 windowId, const QList<QUrl> &urls, AbstractJobHandler::JobFlags flags,
    const hfmbase::OperatorHandleCallback &handle)
{
    Q_UNUSED(flags)
    removeFiles(windowId, urls, false, handle);
}

void FileOperations::moveToTrash(quint64 windowId, const QList<QUrl> &urls, AbstractJobHandler::JobFlags flags,
    const hfmbase::OperatorHandleCallback &handle)
{
    Q_UNUSED(flags)
    removeFiles(windowId, urls, true, handle);
}

void FileOperations::removeFiles(
    quint64 windowId, const QList<QUrl> &urls, bool toTrash, const hfmbase::OperatorHandleCallback &handle)
{
    const hfmbase::JobHandlePointer handler(new AbstractJobHandler);
    if (handle)
        handle(handler);
    QString unresolved;
    const QStringList paths = localPathsOf(urls, &unresolved);
    struct Outcome
    {
        QStringList done;
        QString error;
    };
    runJob(
        [paths, toTrash]() {
            Outcome outcome;
            for (const QString &path : paths) {
                QString error;
                bool ok = false;
                if (toTrash) {
                    QString inTrash;
                    ok = hdeapp::moveToTrash(path, &inTrash, &error);
                    if (ok)
                        outcome.done.append(inTrash);
                } else {
                    ok = removePath(path, &error);
                    if (ok)
                        outcome.done.append(path);
                }
                // Every item that stayed is named, not only the first.
                if (!ok)
                    outcome.error += (outcome.error.isEmpty() ? QString() : QStringLiteral("\n")) + error;
            }
            return outcome;
        },
        [this, windowId, urls, handler, toTrash, unresolved](const Outcome &outcome) {
            const QString message = unresolved.isEmpty() ? outcome.error : unresolved;
            const bool ok = message.isEmpty() && !urls.isEmpty();
            const QList<QUrl> done = toUrls(outcome.done);
            handler->finish(urls, done, ok, message);
            if (!ok)
                reportFailure(toTrash ? tr("Cannot move to the trash") : tr("Cannot delete"),
                    message.isEmpty() ? tr("nothing to remove") : message);
            hpf::dispatcher()->publish(toTrash ? hfmbase::kMoveToTrashResult : hfmbase::kDeleteFilesResult, windowId,
                toTrash ? done : urls, ok, message);
        });
}

void FileOperations::restoreFromTrash(quint64 windowId, const QList<QUrl> &urls)
{
    QString unresolved;
    const QStringList paths = localPathsOf(urls, &unresolved);
    struct Outcome
    {
        QStringList sources;
        QStringList done;
        QString error;
    };
    runJob(
        [paths]() {
            Outcome outcome;
            for (const QString &path : paths) {
                QString restored;
                QString error;
                if (hdeapp::restoreFromTrash(path, &restored, &error)) {
                    outcome.sources.append(path);
                    outcome.done.append(restored);
                } else {
                    outcome.error += (outcome.error.isEmpty() ? QString() : QStringLiteral("\n")) + error;
                }
            }
            return outcome;
        },
        [this, windowId, urls, unresolved](const Outcome &outcome) {
            const QString message = unresolved.isEmpty() ? outcome.error : unresolved;
            const bool ok = message.isEmpty() && !urls.isEmpty();
            if (!ok)
                reportFailure(tr("Cannot restore"), message.isEmpty() ? tr("nothing to restore") : message);
            log->addRestored(windowId, toUrls(outcome.sources), toUrls(outcome.done), ok, message);
        });
}

void FileOperations::writeClipboard(quint64 windowId, quint8 action, const QList<QUrl> &urls)
{
    Q_UNUSED(windowId)
    if (action != hfmbase::ClipBoard::kCopyAction && action != hfmbase::ClipBoard::kCutAction) {
        qCWarning(logFileOps) << "FileOperations::writeClipboard: ignored the clipboard action" << action;
        return;
    }
    auto *data = new QMimeData;
    data->setUrls(urls);
    data->setData(kClipboardActionMime,
        action == hfmbase::ClipBoard::kCutAction ? QByteArrayLiteral("cut") : QByteArrayLiteral("copy"));
    QStringList paths;
    for (const QUrl &url : urls)
        paths.append(hdehost::urlDisplayText(url));
    data->setText(paths.join(QLatin1Char('\n')));
    QGuiApplication::clipboard()->setMimeData(data);
}

void FileOperations::pasteFiles(quint64 windowId, const QUrl &target)
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasUrls())
        return;
    const QList<QUrl> urls = data->urls();
    const bool cut = data->data(kClipboardActionMime) == "cut";
    const auto flags = AbstractJobHandler::JobFlags(AbstractJobHandler::JobFlag::kNoHint);
    if (cut) {
        // The files leave their place once; a second paste must not find them.
        QGuiApplication::clipboard()->clear();
        hpf::dispatcher()->publish(hfmbase::kCutFile, windowId, urls, target, flags, hfmbase::OperatorHandleCallback());
    } else {
        hpf::dispatcher()->publish(hfmbase::kCopy, windowId, urls, target, flags, hfmbase::OperatorHandleCallback());
    }
}

void FileOperations::openInTerminal(quint64 windowId, const QList<QUrl> &urls)
{
    Q_UNUSED(windowId)
    for (const QUrl &url : urls) {
        QString path = localPathOf(url, nullptr);
        if (path.isEmpty())
            continue;
        if (!QFileInfo(path).isDir())
            path = QFileInfo(path).absolutePath();
        if (recordOnly) {
            log->addTerminal(QUrl::fromLocalFile(path));
            continue;
        }
        const QString terminal = qEnvironmentVariable("TERMINAL", QStringLiteral("x-terminal-emulator"));
        if (!QProcess::startDetached(terminal, {}, path))
            qCWarning(logFileOps).noquote() << "FileOperations::openInTerminal: cannot start" << terminal;
    }
}

void FileOperations::hideFiles(quint64 windowId, const QList<QUrl> &urls)
{
    Q_UNUSED(windowId)
    QHash<QString, QStringList> byFolder;
    for (const QUrl &url : urls) {
        const QString path = localPathOf(url, nullptr);
        if (!path.isEmpty())
            byFolder[QFileInfo(path).absolutePath()].append(QFileInfo(path).fileName());
    }
    for (auto it = byFolder.cbegin(); it != byFolder.cend(); ++it) {
        QFile file(it.key() + QStringLiteral("/.hidden"));
        QStringList names;
        if (file.open(QIODevice::ReadOnly)) {
            const QList<QByteArray> lines = file.readAll().split('\n');
            for (const QByteArray &line : lines) {
                const QString name = QString::fromUtf8(line).trimmed();
                if (!name.isEmpty())
                    names.append(name);
            }
            file.close();
        }
        bool changed = false;
        for (const QString &name : it.value()) {
            if (!names.contains(name)) {
                names.append(name);
                changed = true;
            }
        }
        if (!changed)
            continue;
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            reportFailure(tr("Cannot hide the files"), file.fileName() + QStringLiteral(": ") + file.errorString());
            continue;
        }
        file.write(names.join(QLatin1Char('\n')).toUtf8() + '\n');
    }
}

}   // namespace hdeapp
