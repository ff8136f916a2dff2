// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/filemanagerwindowsmanager.h"

#include "hfmbase/filemanagerwindow.h"
#include "hfmbase/metatypes.h"
#include "hfmbaselog.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMap>
#include <QPointer>
#include <QSet>

namespace hfmbase {

namespace {

// Notes which window was activated last.
class ActivationWatcher : public QObject
{
public:
    std::function<void(QObject *)> onActivated;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::WindowActivate && onActivated)
            onActivated(watched);
        return false;
    }
};

}   // namespace

struct FileManagerWindowsManager::Private
{
    quint64 lastId = 0;
    quint64 lastActive = 0;
    QMap<quint64, QPointer<FileManagerWindow>> windows;
    QSet<quint64> opened;
    ActivationWatcher activation;
};

FileManagerWindowsManager::FileManagerWindowsManager() : d(std::make_unique<Private>())
{
    registerMetaTypes();
    d->activation.onActivated = [this](QObject *watched) {
        const quint64 id = findWindowId(qobject_cast<QWidget *>(watched));
        if (id)
            d->lastActive = id;
    };
}

FileManagerWindowsManager::~FileManagerWindowsManager() = default;

FileManagerWindowsManager &FileManagerWindowsManager::instance()
{
    static FileManagerWindowsManager manager;
    return manager;
}

FileManagerWindow *FileManagerWindowsManager::createWindow(const QUrl &url, QString *errorString)
{
    if (!url.isValid()) {
        warnAt("FileManagerWindowsManager::createWindow",
            QStringLiteral("cannot open a window at the invalid URL \"%1\"").arg(url.toString()), errorString);
        return nullptr;
    }

    auto *window = new FileManagerWindow(url);
    window->setAttribute(Qt::WA_DeleteOnClose);
    const quint64 id = ++d->lastId;
    d->windows.insert(id, window);
    window->installEventFilter(&d->activation);

    connect(window, &FileManagerWindow::currentUrlChanged, this,
        [this, id](const QUrl &newUrl) { Q_EMIT currentUrlChanged(id, newUrl); });
    // A window leaves the list when it closes, or when it is deleted unclosed.
    auto forget = [this, id] {
        if (!d->windows.contains(id))
            return;
        d->windows.remove(id);
        d->opened.remove(id);
        if (d->lastActive == id)
            d->lastActive = d->windows.isEmpty() ? 0 : d->windows.lastKey();
        Q_EMIT windowClosed(id);
        if (d->windows.isEmpty())
            Q_EMIT lastWindowClosed(id);
    };
    connect(window, &FileManagerWindow::aboutToClose, this, forget);
    connect(window, &QObject::destroyed, this, forget);

    Q_EMIT windowCreated(id);
    return window;
}

void FileManagerWindowsManager::showWindow(FileManagerWindow *window)
{
    const quint64 id = findWindowId(window);
    if (!id) {
        warnAt("FileManagerWindowsManager::showWindow", QStringLiteral("the window is not one of ours"));
        return;
    }
    window->show();
    // Headless platforms cannot raise and would say so every time.
    const QString platform = QGuiApplication::platformName();
    if (platform != QLatin1String("offscreen") && platform != QLatin1String("minimal"))
        window->raise();
    window->activateWindow();
    d->lastActive = id;
    if (!d->opened.contains(id)) {
        d->opened.insert(id);
        Q_EMIT windowOpened(id);
    }
}

quint64 FileManagerWindowsManager::findWindowId(const QWidget *window) const
{
    if (!window)
        return 0;
    const QWidget *top = window->window();
    for (auto it = d->windows.constBegin(); it != d->windows.constEnd(); ++it) {
        if (it.value() && (it.value() == window || it.value() == top))
            return it.key();
    }
    return 0;
}

FileManagerWindow *FileManagerWindowsManager::findWindowById(quint64 windowId) const
{
    return d->windows.value(windowId);
}

QList<quint64> FileManagerWindowsManager::windowIdList() const
{
    return d->windows.keys();
}

quint64 FileManagerWindowsManager::lastActivedWindowId() const
{
    return d->lastActive;
}

}   // namespace hfmbase
