// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/iconbutton.h>

namespace htk {

IconButton::IconButton(QWidget *parent) : IconButton(QIcon(), parent) { }

IconButton::IconButton(const QIcon &icon, QWidget *parent) : QToolButton(parent)
{
    setAutoRaise(true);
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setIcon(icon);
}

}   // namespace htk
