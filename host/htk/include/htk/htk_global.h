// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/qglobal.h>

#if defined(HTK_LIBRARY)
#define HTK_EXPORT Q_DECL_EXPORT
#else
#define HTK_EXPORT Q_DECL_IMPORT
#endif
