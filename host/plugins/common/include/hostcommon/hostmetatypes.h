// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaType>

#include <QPainter>

// Painters travel to the emblem plug-in inside QVariants.
Q_DECLARE_METATYPE(QPainter *)

namespace hdehost {

// Registers the SDK's meta-types and the host-internal ones. Idempotent;
// call it on the GUI thread before the first event is published.
void registerHostMetaTypes();

}   // namespace hdehost
