// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/filemanagerwindow.h"

#include "hfmbase/filemanagerwindowsmanager.h"
#include "hfmbaselog.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPointer>
#include <QSplitter>
#include <QVBoxLayout>

namespace hfmbase {

struct FileManagerWindow::Private
{
    QUrl currentUrl;
    QSplitter *splitter = nullptr;
    QWidget *rightPane = nullptr;
    QVBoxLayout *rightLayout = nullptr;
    QPointer<QWidget> sideBar;
    QPointer<QWidget> titleBar;
    QPointer<QWidget> workSpace;
    bool sideBarInstalled = false;
    bool titleBarInstalled = false;
    bool workSpaceInstalled = false;
};

FileManagerWindow::FileManagerWindow(const QUrl &url, QWidget *parent)
    : QMainWindow(parent), d(std::make_unique<Private>())
{
    d->currentUrl = url;

    // Side bar on the left; title bar above the workspace on the right.
    d->splitter = new QSplitter(Qt::Horizontal, this);
    d->splitter->setChildrenCollapsible(false);
    d->rightPane = new QWidget(d->splitter);
    d->rightLayout = new QVBoxLayout(d->rightPane);
    d->rightLayout->setContentsMargins(0, 0, 0, 0);
    d->rightLayout->setSpacing(0);
    d->splitter->addWidget(d->rightPane);
    setCentralWidget(d->splitter);
    resize(1000, 640);
}

FileManagerWindow::~FileManagerWindow() = default;

quint64 FileManagerWindow::internalWinId() const
{
    return FileManagerWindowsManager::instance().findWindowId(this);
}

QUrl FileManagerWindow::currentUrl() const
{
    return d->currentUrl;
}

void FileManagerWindow::cd(const QUrl &url)
{
    d->currentUrl = url;
    Q_EMIT currentUrlChanged(url);
}

QWidget *FileManagerWindow::sideBar() const
{
    return d->sideBar;
}

QWidget *FileManagerWindow::titleBar() const
{
    return d->titleBar;
}

QWidget *FileManagerWindow::workSpace() const
{
    return d->workSpace;
}

void FileManagerWindow::installSideBar(QWidget *sideBar)
{
    if (!sideBar || d->sideBarInstalled) {
        warnAt("FileManagerWindow::installSideBar", QStringLiteral("ignored: no widget or already installed"));
        return;
    }
    d->sideBarInstalled = true;
    d->sideBar = sideBar;
    d->splitter->insertWidget(0, sideBar);
    d->splitter->setStretchFactor(0, 0);
    d->splitter->setStretchFactor(1, 1);
    Q_EMIT sideBarInstallFinished();
}

void FileManagerWindow::installTitleBar(QWidget *titleBar)
{
    if (!titleBar || d->titleBarInstalled) {
        warnAt("FileManagerWindow::installTitleBar", QStringLiteral("ignored: no widget or already installed"));
        return;
    }
    d->titleBarInstalled = true;
    d->titleBar = titleBar;
    d->rightLayout->insertWidget(0, titleBar);
    Q_EMIT titleBarInstallFinished();
}

void FileManagerWindow::installWorkSpace(QWidget *workSpace)
{
    if (!workSpace || d->workSpaceInstalled) {
        warnAt("FileManagerWindow::installWorkSpace", QStringLiteral("ignored: no widget or already installed"));
        return;
    }
    d->workSpaceInstalled = true;
    d->workSpace = workSpace;
    d->rightLayout->addWidget(workSpace, 1);
    Q_EMIT workspaceInstallFinished();
}

void FileManagerWindow::closeEvent(QCloseEvent *event)
{
    Q_EMIT aboutToClose();
    QMainWindow::closeEvent(event);
}

}   // namespace hfmbase
