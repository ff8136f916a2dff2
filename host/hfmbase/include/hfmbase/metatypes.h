// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

namespace hfmbase {

// Registers the meta-types of the job-handler and host-callback types, the
// callbacks under their short names ("TopWidCreator", ...), so that they can
// travel in QVariants and queued signals. Idempotent and thread-safe; the
// factories and the windows manager call it on first use.
HFMBASE_EXPORT void registerMetaTypes();

}   // namespace hfmbase
