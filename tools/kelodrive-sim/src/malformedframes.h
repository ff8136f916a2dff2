// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

namespace kelodrive {

// Payloads a careless or broken client might send: each must be logged and dropped by the
// plug-in without harm. None holds a zero byte or 0x0C, so each stays one frame.
const QList<QByteArray> &malformedFrames();

}   // namespace kelodrive
