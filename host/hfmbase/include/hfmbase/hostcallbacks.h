// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QUrl>
#include <QVariant>

#include <functional>

class QWidget;

namespace hfmbase {

// Callables that plug-ins hand to the host's plug-ins inside QVariants. The
// receiving side registers them under these names, and so must the sender.
using TopWidCreator = std::function<QWidget *()>;
using TopWidShowFunc = std::function<bool(QWidget *, const QUrl &)>;
using SidebarMenuCreator = std::function<void(quint64 windowId, const QUrl &url, const QPoint &globalPos)>;
using FindMeCallback = std::function<bool(const QUrl &itemUrl, const QUrl &targetUrl)>;

}   // namespace hfmbase

Q_DECLARE_METATYPE(hfmbase::TopWidCreator)
Q_DECLARE_METATYPE(hfmbase::TopWidShowFunc)
Q_DECLARE_METATYPE(hfmbase::SidebarMenuCreator)
Q_DECLARE_METATYPE(hfmbase::FindMeCallback)
Q_DECLARE_METATYPE(Qt::ItemFlags)
