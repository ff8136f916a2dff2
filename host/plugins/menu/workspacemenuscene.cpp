// SPDX-License-Identifier: GPL-3.0-or-later
#include "workspacemenuscene.h"

#include <hfmbase/abstractjobhandler.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>

namespace hfmplugin_menu {

using namespace hdehost;
using hfmbase::FileInfo;
using hfmbase::InfoFactory;

namespace {

hfmbase::FileInfoPointer infoOf(const QUrl &url)
{
    return InfoFactory::create<FileInfo>(url, InfoFactory::CreateType::kCreateNoCache);
}

bool canDo(const QList<QUrl> &urls, FileInfo::FileCanType type)
{
    for (const QUrl &url : urls) {
        const hfmbase::FileInfoPointer info = infoOf(url);
        if (!info || !info->canAttributes(type))
            return false;
    }
    return !urls.isEmpty();
}

}   // namespace

QString WorkspaceMenuScene::name() const
{
    return Scene::kWorkspaceMenu;
}

bool WorkspaceMenuScene::initialize(const QVariantHash &params)
{
    HostMenuScene::initialize(params);
    currentDir = params.value(MenuParam::kCurrentDir).toUrl();
    if (!currentDir.isValid() && !selected.isEmpty())
        currentDir = parentUrl(selected.first());
    return !selected.isEmpty() || currentDir.isValid();
}

bool WorkspaceMenuScene::allDirectories() const
{
    for (const QUrl &url : selected) {
        const hfmbase::FileInfoPointer info = infoOf(url);
        if (!info || !info->isDir())
            return false;
    }
    return !selected.isEmpty();
}

bool WorkspaceMenuScene::create(QMenu *parent)
{
    if (!parent)
        return false;
    if (selected.isEmpty()) {
        addAction(parent, ActionId::kNewFolder, tr("New folder"));
        addAction(parent, ActionId::kNewDocument, tr("New document"));
        parent->addSeparator();
        addAction(parent, ActionId::kPaste, tr("Paste"));
    } else {
        addAction(parent, ActionId::kOpen, tr("Open"));
        if (allDirectories()) {
            addAction(parent, ActionId::kOpenInNewWindow, tr("Open in new window"));
            addAction(parent, ActionId::kOpenInNewTab, tr("Open in new tab"));
        }
        parent->addSeparator();
        addAction(parent, ActionId::kCopy, tr("Copy"));
        addAction(parent, ActionId::kCut, tr("Cut"));
        if (selected.size() == 1)
            addAction(parent, ActionId::kRename, tr("Rename"));
        parent->addSeparator();
        addAction(parent, ActionId::kMoveToTrash, tr("Move to trash"));
        addAction(parent, ActionId::kDelete, tr("Delete"));
    }
    return AbstractMenuScene::create(parent);
}

void WorkspaceMenuScene::updateState(QMenu *parent)
{
    auto enable = [this](const QString &id, bool on) {
        if (QAction *action = predicateAction.value(id))
            action->setEnabled(on);
    };
    if (selected.isEmpty()) {
        const QMimeData *data = QGuiApplication::clipboard()->mimeData();
        enable(ActionId::kPaste, data && data->hasUrls());
        const hfmbase::FileInfoPointer dir = infoOf(currentDir);
        const bool writable = dir && dir->isWritable();
        enable(ActionId::kNewFolder, writable);
        enable(ActionId::kNewDocument, writable);
    } else {
        enable(ActionId::kCut, canDo(selected, FileInfo::FileCanType::kCanDelete));
        enable(ActionId::kRename, canDo(selected, FileInfo::FileCanType::kCanRename));
        enable(ActionId::kMoveToTrash, canDo(selected, FileInfo::FileCanType::kCanTrash));
        enable(ActionId::kDelete, canDo(selected, FileInfo::FileCanType::kCanDelete));
    }
    AbstractMenuScene::updateState(parent);
}

bool WorkspaceMenuScene::run(const QString &id)
{
    auto *dispatcher = hpf::dispatcher();
    const auto noFlags = hfmbase::AbstractJobHandler::JobFlags(hfmbase::AbstractJobHandler::JobFlag::kNoHint);
    if (id == ActionId::kOpen) {
        openSelection();
    } else if (id == ActionId::kOpenInNewWindow) {
        for (const QUrl &url : qAsConst(selected))
            requestNewWindow(url);
    } else if (id == ActionId::kOpenInNewTab) {
        for (const QUrl &url : qAsConst(selected))
            requestNewTab(windowId, url);
    } else if (id == ActionId::kCopy || id == ActionId::kCut) {
        const quint8 clipAction
            = id == ActionId::kCopy ? hfmbase::ClipBoard::kCopyAction : hfmbase::ClipBoard::kCutAction;
        dispatcher->publish(hfmbase::kWriteUrlsToClipboard, windowId, clipAction, selected);
    } else if (id == ActionId::kPaste) {
        dispatcher->publish(hfmbase::kPasteFiles, windowId, currentDir);
    } else if (id == ActionId::kRename) {
        hpf::channel()->push(Space::kWorkspace, Topic::kViewRenameItem, windowId, selected.value(0));
    } else if (id == ActionId::kMoveToTrash) {
        dispatcher->publish(hfmbase::kMoveToTrash, windowId, selected, noFlags, hfmbase::OperatorHandleCallback());
    } else if (id == ActionId::kDelete) {
        deleteSelection();
    } else if (id == ActionId::kNewFolder) {
        createFolder();
    } else if (id == ActionId::kNewDocument) {
        dispatcher->publish(hfmbase::kTouchFile, windowId, currentDir, 0u, QStringLiteral("txt"), QVariant(),
            hfmbase::OperatorCallback());
    } else {
        return false;
    }
    return true;
}

void WorkspaceMenuScene::openSelection()
{
    QList<QUrl> files;
    QList<QUrl> dirs;
    for (const QUrl &url : qAsConst(selected)) {
        const hfmbase::FileInfoPointer info = infoOf(url);
        (info && info->isDir() ? dirs : files).append(url);
    }
    if (!files.isEmpty())
        hpf::dispatcher()->publish(hfmbase::kOpenFiles, windowId, files);
    // One folder replaces the view; more open in their own windows.
    if (dirs.size() == 1 && files.isEmpty()) {
        requestChangeUrl(windowId, dirs.first());
    } else {
        for (const QUrl &dir : qAsConst(dirs))
            requestNewWindow(dir);
    }
}

void WorkspaceMenuScene::deleteSelection()
{
    htk::MessageDialog dialog(QApplication::activeWindow());
    dialog.setIcon(QIcon::fromTheme(QStringLiteral("dialog-warning")));
    dialog.setTitle(tr("Delete permanently?"));
    dialog.setMessage(selected.size() == 1
            ? tr("\"%1\" will be deleted and cannot be restored.").arg(defaultTabName(selected.first()))
            : tr("%1 items will be deleted and cannot be restored.").arg(selected.size()));
    dialog.addButton(tr("Delete"), true, htk::MessageDialog::ButtonWarning);
    dialog.addButton(tr("Cancel"));
    if (dialog.exec() != 0)
        return;
    hpf::dispatcher()->publish(hfmbase::kDeleteFiles, windowId, selected,
        hfmbase::AbstractJobHandler::JobFlags(hfmbase::AbstractJobHandler::JobFlag::kNoHint),
        hfmbase::OperatorHandleCallback());
}

void WorkspaceMenuScene::createFolder()
{
    const QString name = freeFileName(
        tr("New Folder"),
        [this](const QString &candidate) {
            const hfmbase::FileInfoPointer info = infoOf(childUrl(currentDir, candidate));
            return info && info->exists();
        },
        true);
    if (name.isEmpty())
        return;
    hpf::dispatcher()->publish(
        hfmbase::kMkdir, windowId, childUrl(currentDir, name), QVariant(), hfmbase::OperatorCallback());
}

}   // namespace hfmplugin_menu
