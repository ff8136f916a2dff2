// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractmenuscene.h>

#include <QUrl>

namespace hfmplugin_menu {

// The menu of a computer-view entry: open it here, in a new window or in a
// new tab. Parameters: "windowId" and "selectFiles" (the entry URL).
class ComputerMenuScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
public:
    explicit ComputerMenuScene(QObject *parent = nullptr);

    QString name() const override;
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    void updateState(QMenu *parent) override;
    bool triggered(QAction *action) override;

private:
    QAction *addAction(QMenu *menu, const QString &id, const QString &text);
    QUrl targetUrl() const;

    quint64 windowId = 0;
    QList<QUrl> selected;
};

class ComputerMenuCreator : public hfmbase::AbstractSceneCreator
{
    Q_OBJECT
public:
    hfmbase::AbstractMenuScene *create() override;
};

}   // namespace hfmplugin_menu
