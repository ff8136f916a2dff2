// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hostmenuscene.h"

namespace hfmplugin_menu {

// The menu of a computer-view entry: open it here, in a new window or in a
// new tab. Parameters: "windowId" and "selectFiles" (the entry URL).
class ComputerMenuScene : public HostMenuScene
{
    Q_OBJECT
public:
    QString name() const override;
    bool create(QMenu *parent) override;
    void updateState(QMenu *parent) override;

private:
    bool run(const QString &id) override;
    QUrl targetUrl() const;
};

}   // namespace hfmplugin_menu
