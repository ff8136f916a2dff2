// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

// Navigation requests go out as global events so that plug-in filters can
// veto or redirect them; the workspace listens and does the work. GUI thread.
namespace hdehost {

// Event 1: show `url` in the window's current tab. False when a filter consumed it.
bool requestChangeUrl(quint64 windowId, const QUrl &url);
// Event 2: open a new window at `url`.
bool requestNewWindow(const QUrl &url);
// Event 3: open `url` in a new tab of the window.
bool requestNewTab(quint64 windowId, const QUrl &url);

}   // namespace hdehost
