// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

namespace htk {
Q_DECLARE_LOGGING_CATEGORY(logHtk)
}   // namespace htk
