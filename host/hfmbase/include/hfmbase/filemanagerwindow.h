// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QMainWindow>
#include <QUrl>

#include <memory>

namespace hfmbase {

// A main window of the file manager. The host's plug-ins fill it: the
// sidebar, the title bar and the workspace are installed into it once each.
// GUI thread only.
class HFMBASE_EXPORT FileManagerWindow : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY(FileManagerWindow)
public:
    explicit FileManagerWindow(const QUrl &url, QWidget *parent = nullptr);
    ~FileManagerWindow() override;

    quint64 internalWinId() const;
    QUrl currentUrl() const;
    // Records the URL shown (the workspace calls it) and emits currentUrlChanged.
    void cd(const QUrl &url);

    QWidget *sideBar() const;
    QWidget *titleBar() const;
    QWidget *workSpace() const;
    // Each may be installed once; a second call is ignored.
    void installSideBar(QWidget *sideBar);
    void installTitleBar(QWidget *titleBar);
    void installWorkSpace(QWidget *workSpace);

Q_SIGNALS:
    void currentUrlChanged(const QUrl &url);
    void sideBarInstallFinished();
    void titleBarInstallFinished();
    void workspaceInstallFinished();
    void aboutToClose();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace hfmbase
