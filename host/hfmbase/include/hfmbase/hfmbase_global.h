// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/qglobal.h>

#if defined(HFMBASE_LIBRARY)
#define HFMBASE_EXPORT Q_DECL_EXPORT
#else
#define HFMBASE_EXPORT Q_DECL_IMPORT
#endif
