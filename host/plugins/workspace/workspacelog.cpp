// SPDX-License-Identifier: GPL-3.0-or-later
#include "workspacelog.h"

Q_LOGGING_CATEGORY(logWorkspace, "org.sablo.hde.filemanager.plugin.workspace")
