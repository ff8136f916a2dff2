// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

// Navigation requests go out as global events so that plug-in filters can
// veto or redirect them; the workspace listens and does the work. GUI thread.
namespace hdehost {

// Declares the optional trailing bool of event 2 (default false), so that a
// new-window request published as (URL) or as (URL, bool) reaches receivers
// of either form without a warning. Idempotent; the app and the workspace
// call it before any navigation.
void declareNavigationEvents();

// Event 1: show `url` in the window's current tab. False when a filter consumed it.
bool requestChangeUrl(quint64 windowId, const QUrl &url);
// Event 2: open a new window at `url`.
bool requestNewWindow(const QUrl &url);
// Event 3: open `url` in a new tab of the window.
bool requestNewTab(quint64 windowId, const QUrl &url);

}   // namespace hdehost
