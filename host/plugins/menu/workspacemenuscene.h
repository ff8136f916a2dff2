// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hostmenuscene.h"

namespace hfmplugin_menu {

// The menu of a file view: for selected items open, open in a new window or
// tab, copy, cut, rename, move to trash and delete; on the empty area new
// folder, new document and paste. Parameters: "windowId", "selectFiles" and
// "currentDir". Every action is carried out by publishing its event.
class WorkspaceMenuScene : public HostMenuScene
{
    Q_OBJECT
public:
    QString name() const override;
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    void updateState(QMenu *parent) override;

private:
    bool run(const QString &id) override;
    bool allDirectories() const;
    void openSelection();
    void deleteSelection();
    void createFolder();

    QUrl currentDir;
};

}   // namespace hfmplugin_menu
