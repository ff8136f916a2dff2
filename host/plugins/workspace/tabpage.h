// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hostcommon/hostkeys.h>

#include <QHash>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>
#include <QWidget>

class QLabel;
class QStackedWidget;
class QVBoxLayout;

namespace hfmbase {
class AbstractBaseView;
}

namespace hfmplugin_workspace {

class FileView;
class WorkspaceRegistry;

// One tab: the URL it shows with its history, the file view for file-view
// schemes or the scheme's own view class for others (one kept per scheme),
// and above them the top widgets registered for schemes, each created once
// per tab and shown while its callback allows. GUI thread only.
class TabPage : public QWidget
{
    Q_OBJECT
public:
    TabPage(WorkspaceRegistry *registry, QWidget *parent = nullptr);
    ~TabPage() override;

    // False when no view can show the URL; the tab then stays where it was.
    bool setUrl(const QUrl &url, bool recordHistory = true);
    QUrl url() const;
    bool back();
    bool forward();
    void reload();
    void setViewMode(hdehost::ViewMode mode);

    FileView *fileView() const;
    // "icon", "list", "custom" or "none".
    QString viewKind() const;
    QWidget *currentViewWidget() const;
    bool isLoaded() const;
    // Creates the top widget of the current scheme if needed and sets every
    // top widget's visibility for the current URL.
    void applyTopWidgets();
    QWidget *topWidget(const QString &scheme) const;
    QVariantMap state() const;

Q_SIGNALS:
    void urlChanged(const QUrl &url);
    void loadFinished();
    void selectionChanged();
    void itemCountChanged();

private:
    bool showInFileView(const QUrl &url);
    bool showInCustomView(const QUrl &url);
    // Shows the last URL of `from`; the one shown now goes to `to`.
    bool step(QList<QUrl> &from, QList<QUrl> &to);

    struct CustomView
    {
        hfmbase::AbstractBaseView *view = nullptr;
        QPointer<QWidget> widget;
    };

    WorkspaceRegistry *registry;
    QVBoxLayout *topArea;
    QStackedWidget *stack;
    FileView *files = nullptr;
    QHash<QString, CustomView> customViews;
    QHash<QString, QPointer<QWidget>> tops;
    QHash<QString, int> topCreations;
    QUrl current;
    // Both are stacks: the next URL to go to is the last one.
    QList<QUrl> backList;
    QList<QUrl> forwardList;
    hdehost::ViewMode mode = hdehost::ViewMode::kIcon;
};

}   // namespace hfmplugin_workspace
