// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantMap>

class QWidget;

// Looks at widgets that plug-ins hand to the host (top widgets, custom
// views) the way a person would: visible texts, links, buttons. GUI thread.
namespace hdehost {

// {"class", "visible", "texts", "links", "buttons", "icon"}: the texts of the
// visible labels, the link targets in them, the texts of the visible buttons,
// and the "iconName" property of the widget or of a child, when set.
QVariantMap describeWidget(const QWidget *widget);
// Emits linkActivated(link) of the visible label that offers the link.
bool activateLink(QWidget *widget, const QString &link);
// Clicks the visible, enabled button with this text (mnemonics ignored).
bool clickButton(QWidget *widget, const QString &text);

}   // namespace hdehost
