// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hostcommon/hostkeys.h>

#include <QUrl>
#include <QVariantMap>
#include <QWidget>

class QAbstractItemView;
class QLabel;
class QListView;
class QStackedWidget;
class QTimer;
class QTreeView;

namespace hfmplugin_workspace {

class FileModel;
class WorkspaceRegistry;

// The file view of one tab: icon or list mode over one FileModel, the tip
// shown instead of rows (loading, empty folder, error), opening items,
// renaming in place and the context menu of the scheme's scene. GUI thread.
class FileView : public QWidget
{
    Q_OBJECT
public:
    explicit FileView(WorkspaceRegistry *registry, QWidget *parent = nullptr);

    void setRootUrl(const QUrl &url);
    QUrl rootUrl() const;
    void reload();
    void setViewMode(hdehost::ViewMode mode);
    hdehost::ViewMode viewMode() const;
    bool isLoaded() const;
    FileModel *fileModel() const;
    QAbstractItemView *currentView() const;

    QList<QUrl> selectedUrls() const;
    // Selects the rows with these names; false when one is missing.
    bool selectNames(const QStringList &names);
    // Selects the items at these URLs once they are listed: URLs of the
    // view's scheme, or local files in the folder the view's folder
    // redirects to (the result of an operation a plug-in carried out on the
    // local files). Rows not listed yet are selected when they arrive, for a
    // few seconds; URLs of other folders are ignored.
    void selectWhenShown(const QList<QUrl> &urls);
    // As a double-click on the row with this name.
    bool activate(const QString &name);
    // As a right-click on the row with this name, or on the empty area for
    // an empty name.
    bool showContextMenu(const QString &name, const QPoint &globalPos);
    bool startRename(const QUrl &url);
    // {"kind", "loaded", "tip", "error", "items": [{"name", "url", "dir", "emblems", "selected"}]}
    QVariantMap state() const;
    // The tip shown instead of rows, empty when rows show.
    QString tipText() const;

Q_SIGNALS:
    void loadFinished();
    void selectionChanged();
    void itemCountChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void ensureView(hdehost::ViewMode mode);
    void configure(QAbstractItemView *view);
    void onActivated(const QModelIndex &index);
    void onContextMenuRequested(const QPoint &pos);
    void runMenu(const QList<QUrl> &selection, const QPoint &globalPos);
    void onRenameRequested(const QUrl &url, const QString &newName);
    void updateTip();
    quint64 windowId() const;
    int rowOfName(const QString &name) const;
    QUrl shownUrlOf(const QUrl &url) const;
    void selectPending();

    WorkspaceRegistry *registry;
    FileModel *model;
    QStackedWidget *stack;
    QListView *iconView = nullptr;
    QTreeView *listView = nullptr;
    QLabel *tip;
    QTimer *loadingTipTimer;
    hdehost::ViewMode mode = hdehost::ViewMode::kIcon;
    QList<QUrl> pendingSelection;   // view URLs
    QTimer *pendingTimer;
    bool selectingPending = false;
};

}   // namespace hfmplugin_workspace
