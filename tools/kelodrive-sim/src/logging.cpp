// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging.h"

Q_LOGGING_CATEGORY(lcKeloSim, "org.sablo.kelodrive.sim")
