// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

namespace hpf {
Q_DECLARE_LOGGING_CATEGORY(logHpf)
}   // namespace hpf
