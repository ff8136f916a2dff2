// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QObject>
#include <QUrl>

#include <memory>

namespace hfmbase {

class FileManagerWindow;

// Creates and tracks the main windows. GUI thread only.
class HFMBASE_EXPORT FileManagerWindowsManager : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(FileManagerWindowsManager)
public:
    static FileManagerWindowsManager &instance();

    // Creates a window showing `url` (not yet shown); emits windowCreated.
    FileManagerWindow *createWindow(const QUrl &url, QString *errorString = nullptr);
    // Shows it and emits windowOpened the first time.
    void showWindow(FileManagerWindow *window);
    quint64 findWindowId(const QWidget *window) const;
    FileManagerWindow *findWindowById(quint64 windowId) const;
    QList<quint64> windowIdList() const;
    quint64 lastActivedWindowId() const;

Q_SIGNALS:
    void windowCreated(quint64 windowId);
    void windowOpened(quint64 windowId);
    void windowClosed(quint64 windowId);
    void lastWindowClosed(quint64 windowId);
    void currentUrlChanged(quint64 windowId, const QUrl &url);

private:
    FileManagerWindowsManager();
    ~FileManagerWindowsManager() override;
    struct Private;
    std::unique_ptr<Private> d;
};

}   // namespace hfmbase
