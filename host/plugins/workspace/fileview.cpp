// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileview.h"
#include "workspacelog.h"

#include "filemodel.h"
#include "fileviewdelegate.h"
#include "workspaceregistry.h"

#include <hfmbase/abstractjobhandler.h>
#include <hfmbase/abstractmenuscene.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hfmbase/infofactory.h>
#include <hostcommon/navigation.h>
#include <hostcommon/scenemenu.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>

#include <QAction>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QLoggingCategory>
#include <QPointer>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace hfmplugin_workspace {

using namespace hdehost;

namespace {

constexpr int kLoadingTipDelayMs = 150;
constexpr int kPendingSelectionMs = 3000;

}   // namespace

FileView::FileView(WorkspaceRegistry *registry, QWidget *parent)
    : QWidget(parent),
      registry(registry),
      model(new FileModel(this)),
      stack(new QStackedWidget(this)),
      tip(new QLabel(this)),
      loadingTipTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("hde-fileview"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(stack);

    tip->setObjectName(QStringLiteral("tip"));
    tip->setAlignment(Qt::AlignCenter);
    tip->setWordWrap(true);
    tip->setAttribute(Qt::WA_TransparentForMouseEvents);
    QFont font = tip->font();
    font.setPointSizeF(font.pointSizeF() * 1.2);
    tip->setFont(font);
    tip->setStyleSheet(QStringLiteral("color: palette(mid);"));
    tip->hide();

    loadingTipTimer->setSingleShot(true);
    loadingTipTimer->setInterval(kLoadingTipDelayMs);
    connect(loadingTipTimer, &QTimer::timeout, this, &FileView::updateTip);

    connect(model, &FileModel::loadingStarted, this, [this] {
        loadingTipTimer->start();
        updateTip();
    });
    connect(model, &FileModel::loadingFinished, this, [this] {
        loadingTipTimer->stop();
        updateTip();
        Q_EMIT loadFinished();
    });
    for (auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(model, signal, this, [this] {
            updateTip();
            Q_EMIT itemCountChanged();
        });
    }
    connect(model, &QAbstractItemModel::modelReset, this, [this] {
        updateTip();
        Q_EMIT itemCountChanged();
    });
    connect(model, &FileModel::renameRequested, this, &FileView::onRenameRequested);
    pendingTimer = new QTimer(this);
    pendingTimer->setSingleShot(true);
    pendingTimer->setInterval(kPendingSelectionMs);
    connect(pendingTimer, &QTimer::timeout, this, [this] { pendingSelection.clear(); });
    connect(model, &QAbstractItemModel::rowsInserted, this, &FileView::selectPending);
    connect(model, &QAbstractItemModel::layoutChanged, this, &FileView::selectPending);
    connect(model, &FileModel::loadingStarted, this, [this] { pendingSelection.clear(); });

    auto addShortcut = [this](const QKeySequence &keys, std::function<void()> slot) {
        auto *action = new QAction(this);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, std::move(slot));
        addAction(action);
    };
    const auto noFlags = hfmbase::AbstractJobHandler::JobFlags(hfmbase::AbstractJobHandler::JobFlag::kNoHint);
    addShortcut(QKeySequence::Copy, [this] {
        if (!selectedUrls().isEmpty())
            hpf::dispatcher()->publish(
                hfmbase::kWriteUrlsToClipboard, windowId(), quint8(hfmbase::ClipBoard::kCopyAction), selectedUrls());
    });
    addShortcut(QKeySequence::Cut, [this] {
        if (!selectedUrls().isEmpty())
            hpf::dispatcher()->publish(
                hfmbase::kWriteUrlsToClipboard, windowId(), quint8(hfmbase::ClipBoard::kCutAction), selectedUrls());
    });
    addShortcut(
        QKeySequence::Paste, [this] { hpf::dispatcher()->publish(hfmbase::kPasteFiles, windowId(), rootUrl()); });
    addShortcut(QKeySequence::Delete, [this, noFlags] {
        if (!selectedUrls().isEmpty())
            hpf::dispatcher()->publish(
                hfmbase::kMoveToTrash, windowId(), selectedUrls(), noFlags, hfmbase::OperatorHandleCallback());
    });
    addShortcut(QKeySequence::Refresh, [this] { reload(); });
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_H), [this] { model->setShowHidden(!model->showHidden()); });
    addShortcut(QKeySequence(Qt::Key_Backspace), [this] {
        const QUrl parentDir = parentUrl(rootUrl());
        if (parentDir.isValid())
            requestChangeUrl(windowId(), parentDir);
    });

    ensureView(mode);
}

void FileView::configure(QAbstractItemView *view)
{
    view->setModel(model);
    view->setItemDelegate(new FileViewDelegate(view));
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setFrameShape(QFrame::NoFrame);
    view->setTextElideMode(Qt::ElideMiddle);
    connect(view, &QAbstractItemView::activated, this, &FileView::onActivated);
    connect(view, &QWidget::customContextMenuRequested, this, &FileView::onContextMenuRequested);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &FileView::selectionChanged);
    // A selection the user makes meanwhile wins over one still waiting.
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!selectingPending)
            pendingSelection.clear();
    });
    stack->addWidget(view);
}

void FileView::ensureView(ViewMode wanted)
{
    if (wanted == ViewMode::kList && !listView) {
        listView = new QTreeView(stack);
        listView->setObjectName(QStringLiteral("list-view"));
        listView->setRootIsDecorated(false);
        listView->setItemsExpandable(false);
        listView->setUniformRowHeights(true);
        listView->setAllColumnsShowFocus(true);
        listView->setIconSize(QSize(20, 20));
        configure(listView);
        listView->header()->setStretchLastSection(false);
        listView->header()->setSectionResizeMode(FileModel::kName, QHeaderView::Stretch);
        listView->header()->resizeSection(FileModel::kModified, 140);
        listView->header()->resizeSection(FileModel::kSize, 90);
        listView->header()->resizeSection(FileModel::kType, 170);
        listView->setTextElideMode(Qt::ElideRight);
    } else if (wanted == ViewMode::kIcon && !iconView) {
        iconView = new QListView(stack);
        iconView->setObjectName(QStringLiteral("icon-view"));
        iconView->setViewMode(QListView::IconMode);
        iconView->setResizeMode(QListView::Adjust);
        iconView->setMovement(QListView::Static);
        iconView->setFlow(QListView::LeftToRight);
        iconView->setWrapping(true);
        iconView->setUniformItemSizes(true);
        iconView->setWordWrap(true);
        iconView->setIconSize(QSize(48, 48));
        iconView->setGridSize(QSize(112, 92));
        iconView->setLayoutMode(QListView::Batched);
        iconView->setBatchSize(1000);
        configure(iconView);
    }
    stack->setCurrentWidget(wanted == ViewMode::kList ? static_cast<QWidget *>(listView) : iconView);
}

void FileView::setRootUrl(const QUrl &url)
{
    model->setRootUrl(url);
}

QUrl FileView::rootUrl() const
{
    return model->rootUrl();
}

void FileView::reload()
{
    model->reload();
}

void FileView::setViewMode(ViewMode wanted)
{
    mode = wanted;
    ensureView(wanted);
}

ViewMode FileView::viewMode() const
{
    return mode;
}

bool FileView::isLoaded() const
{
    return !model->isLoading();
}

FileModel *FileView::fileModel() const
{
    return model;
}

QAbstractItemView *FileView::currentView() const
{
    return mode == ViewMode::kList ? static_cast<QAbstractItemView *>(listView) : iconView;
}

quint64 FileView::windowId() const
{
    return hfmbase::FileManagerWindowsManager::instance().findWindowId(this);
}

QList<QUrl> FileView::selectedUrls() const
{
    QList<QUrl> urls;
    const QModelIndexList rows = currentView()->selectionModel()->selectedRows(FileModel::kName);
    QList<int> sorted;
    for (const QModelIndex &index : rows)
        sorted.append(index.row());
    std::sort(sorted.begin(), sorted.end());
    for (int row : qAsConst(sorted))
        urls.append(model->itemAt(row)->url);
    return urls;
}

int FileView::rowOfName(const QString &name) const
{
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->itemAt(row)->name == name)
            return row;
    }
    return -1;
}

bool FileView::selectNames(const QStringList &names)
{
    QItemSelection selection;
    for (const QString &name : names) {
        const int row = rowOfName(name);
        if (row < 0)
            return false;
        selection.select(model->index(row, 0), model->index(row, FileModel::kColumnCount - 1));
    }
    QItemSelectionModel *selectionModel = currentView()->selectionModel();
    selectionModel->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!names.isEmpty())
        selectionModel->setCurrentIndex(model->index(rowOfName(names.first()), 0), QItemSelectionModel::NoUpdate);
    return true;
}

QUrl FileView::shownUrlOf(const QUrl &url) const
{
    const QUrl root = model->rootUrl();
    if (url.scheme() == root.scheme())
        return hdehost::sameUrl(hdehost::parentUrl(url), root) ? url : QUrl();
    if (!url.isLocalFile())
        return QUrl();
    const QUrl localRoot = hdehost::operableUrl(root);
    if (!localRoot.isValid() || !hdehost::sameUrl(hdehost::parentUrl(url), localRoot))
        return QUrl();
    QUrl shown = root;
    QString path = root.path();
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    shown.setPath(path + url.fileName(QUrl::FullyDecoded));
    return shown;
}

void FileView::selectWhenShown(const QList<QUrl> &urls)
{
    QList<QUrl> shown;
    for (const QUrl &url : urls) {
        const QUrl mapped = shownUrlOf(url);
        if (mapped.isValid())
            shown.append(mapped);
    }
    if (shown.isEmpty())
        return;
    selectingPending = true;
    currentView()->selectionModel()->clearSelection();
    selectingPending = false;
    pendingSelection = shown;
    pendingTimer->start();
    selectPending();
}

void FileView::selectPending()
{
    if (pendingSelection.isEmpty())
        return;
    QItemSelection selection;
    QModelIndex first;
    for (auto it = pendingSelection.begin(); it != pendingSelection.end();) {
        const int row = model->rowOf(*it);
        if (row < 0) {
            ++it;
            continue;
        }
        selection.select(model->index(row, 0), model->index(row, FileModel::kColumnCount - 1));
        if (!first.isValid())
            first = model->index(row, 0);
        it = pendingSelection.erase(it);
    }
    if (selection.isEmpty())
        return;
    QItemSelectionModel *selectionModel = currentView()->selectionModel();
    selectingPending = true;
    selectionModel->select(selection, QItemSelectionModel::Select);
    selectionModel->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    selectingPending = false;
    currentView()->scrollTo(first);
    if (pendingSelection.isEmpty())
        pendingTimer->stop();
}

bool FileView::activate(const QString &name)
{
    const int row = rowOfName(name);
    if (row < 0)
        return false;
    selectNames({name});
    onActivated(model->index(row, 0));
    return true;
}

void FileView::onActivated(const QModelIndex &index)
{
    const FileItemPointer item = model->itemAt(index.row());
    if (!item)
        return;
    if (item->isDir)
        requestChangeUrl(windowId(), item->url);
    else
        hpf::dispatcher()->publish(hfmbase::kOpenFiles, windowId(), QList<QUrl> {item->url});
}

bool FileView::showContextMenu(const QString &name, const QPoint &globalPos)
{
    if (name.isEmpty()) {
        currentView()->selectionModel()->clearSelection();
        runMenu({}, globalPos);
        return true;
    }
    const int row = rowOfName(name);
    if (row < 0)
        return false;
    if (!currentView()->selectionModel()->isSelected(model->index(row, 0)))
        selectNames({name});
    runMenu(selectedUrls(), globalPos);
    return true;
}

void FileView::onContextMenuRequested(const QPoint &pos)
{
    auto *view = qobject_cast<QAbstractItemView *>(sender());
    if (!view)
        return;
    const QModelIndex index = view->indexAt(pos);
    const QPoint globalPos = view->viewport()->mapToGlobal(pos);
    if (!index.isValid()) {
        view->selectionModel()->clearSelection();
        runMenu({}, globalPos);
        return;
    }
    if (!view->selectionModel()->isSelected(index))
        view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    runMenu(selectedUrls(), globalPos);
}

void FileView::runMenu(const QList<QUrl> &selection, const QPoint &globalPos)
{
    const QString preferred = registry->menuSceneFor(rootUrl().scheme());
    hfmbase::AbstractMenuScene *scene = createMenuScene(preferred);
    if (!scene && preferred != Scene::kWorkspaceMenu)
        scene = createMenuScene(Scene::kWorkspaceMenu);
    if (!scene) {
        qCWarning(logWorkspace) << "FileView::runMenu: no menu scene for" << rootUrl().scheme();
        return;
    }
    const QVariantHash params {{MenuParam::kWindowId, QVariant::fromValue<quint64>(windowId())},
        {MenuParam::kSelectFiles, QVariant::fromValue(selection)}, {MenuParam::kCurrentDir, rootUrl()}};
    execMenuScene(scene, params, globalPos);
}

bool FileView::startRename(const QUrl &url)
{
    const int row = model->rowOf(url);
    if (row < 0)
        return false;
    const QModelIndex index = model->index(row, FileModel::kName);
    currentView()->setCurrentIndex(index);
    currentView()->edit(index);
    return true;
}

void FileView::onRenameRequested(const QUrl &url, const QString &newName)
{
    hpf::dispatcher()->publish(hfmbase::kRenameFile, windowId(), url, childUrl(parentUrl(url), newName));
}

void FileView::updateTip()
{
    QString text;
    if (model->rowCount() == 0) {
        if (model->isLoading()) {
            if (!loadingTipTimer->isActive()) {
                const auto info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(rootUrl());
                text = info ? info->viewOfTip(hfmbase::FileInfo::ViewType::kLoading) : QString();
                if (text.isEmpty())
                    text = tr("Loading...");
            }
        } else if (!model->errorString().isEmpty()) {
            text = tr("Cannot show this folder: %1").arg(model->errorString());
        } else {
            const auto info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(rootUrl());
            text = info ? info->viewOfTip(hfmbase::FileInfo::ViewType::kEmptyDir) : QString();
            if (text.isEmpty())
                text = tr("Folder is empty");
        }
    }
    tip->setText(text);
    tip->setVisible(!text.isEmpty());
    if (!text.isEmpty()) {
        tip->setGeometry(rect());
        tip->raise();
    }
}

QString FileView::tipText() const
{
    return tip->isHidden() ? QString() : tip->text();
}

void FileView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    tip->setGeometry(rect());
}

QVariantMap FileView::state() const
{
    QVariantMap map;
    map.insert(QStringLiteral("kind"), mode == ViewMode::kList ? QStringLiteral("list") : QStringLiteral("icon"));
    map.insert(QStringLiteral("loaded"), isLoaded());
    map.insert(QStringLiteral("tip"), tipText());
    map.insert(QStringLiteral("error"), model->errorString());
    QSet<int> selected;
    const QModelIndexList rows = currentView()->selectionModel()->selectedRows(FileModel::kName);
    for (const QModelIndex &index : rows)
        selected.insert(index.row());
    QVariantList items;
    for (int row = 0; row < model->rowCount(); ++row) {
        const FileItemPointer item = model->itemAt(row);
        QVariantMap entry;
        entry.insert(QStringLiteral("name"), item->name);
        entry.insert(QStringLiteral("url"), item->url.toString());
        entry.insert(QStringLiteral("dir"), item->isDir);
        entry.insert(QStringLiteral("emblems"),
            hpf::channel()->push(Space::kEmblem, Topic::kEmblemNames, item->url).toStringList());
        entry.insert(QStringLiteral("selected"), selected.contains(row));
        items.append(entry);
    }
    map.insert(QStringLiteral("items"), items);
    return map;
}

}   // namespace hfmplugin_workspace
