// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "computerstore.h"

#include <QWidget>

namespace hfmplugin_computer {

// One entry of the computer view: icon and name, and for large entries a
// usage bar with sizes or the entity's description. Double-click (or Enter)
// opens the entity's target; right-click shows the "ComputerMenu" scene.
// The entity is asked afresh at every paint. GUI thread only.
class EntryTile : public QWidget
{
    Q_OBJECT
public:
    EntryTile(const ComputerEntry &entry, QWidget *parent = nullptr);

    const ComputerEntry &entry() const;
    void setSelected(bool on);
    // Asks to show the target URL in this window (event 1).
    bool activate();
    // Builds and runs the "ComputerMenu" scene for this entry.
    bool showContextMenu(const QPoint &globalPos);
    QSize sizeHint() const override;

Q_SIGNALS:
    void pressed(hfmplugin_computer::EntryTile *tile);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    quint64 windowId() const;
    QString sizeText() const;

    ComputerEntry data;
    bool selected = false;
    bool hovered = false;
};

}   // namespace hfmplugin_computer
