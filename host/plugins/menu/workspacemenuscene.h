// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractmenuscene.h>

#include <QUrl>

namespace hfmplugin_menu {

// The menu of a file view: for selected items open, open in a new window or
// tab, copy, cut, rename, move to trash and delete; on the empty area new
// folder, new document and paste. Parameters: "windowId", "selectFiles" and
// "currentDir". Every action is carried out by publishing its event.
class WorkspaceMenuScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
public:
    explicit WorkspaceMenuScene(QObject *parent = nullptr);

    QString name() const override;
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    void updateState(QMenu *parent) override;
    bool triggered(QAction *action) override;

private:
    QAction *addAction(QMenu *menu, const QString &id, const QString &text);
    bool allDirectories() const;
    void openSelection();
    void deleteSelection();
    void createFolder();

    quint64 windowId = 0;
    QList<QUrl> selected;
    QUrl currentDir;
};

class WorkspaceMenuCreator : public hfmbase::AbstractSceneCreator
{
    Q_OBJECT
public:
    hfmbase::AbstractMenuScene *create() override;
};

}   // namespace hfmplugin_menu
