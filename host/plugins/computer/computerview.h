// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractbaseview.h>

#include <QPointer>
#include <QWidget>

class QScrollArea;
class QTimer;

namespace hfmplugin_computer {

class EntryTile;

// The view of "computer:///": every group of the store with its entries as
// tiles. Rebuilt when the store changes, repainted every few seconds while
// shown so that entries that change their figures stay current.
class ComputerView : public QWidget, public hfmbase::AbstractBaseView
{
    Q_OBJECT
public:
    ComputerView(const QUrl &url, QWidget *parent = nullptr);
    ~ComputerView() override;

    QWidget *widget() const override;
    QUrl rootUrl() const override;
    bool setRootUrl(const QUrl &url) override;

    // By entry URL text or display name.
    EntryTile *tileFor(const QString &key) const;
    // The workspace's automation calls these on its custom views.
    Q_INVOKABLE bool hdeActivate(const QString &key);
    Q_INVOKABLE bool hdeContextMenu(const QString &key);
    // The views that exist now.
    static QList<ComputerView *> views();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void rebuild();
    void select(EntryTile *tile);

    QUrl root;
    QScrollArea *area;
    QList<QPointer<EntryTile>> tiles;
    QTimer *repaintTimer;
};

}   // namespace hfmplugin_computer
