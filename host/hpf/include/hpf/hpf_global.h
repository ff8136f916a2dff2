// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/qglobal.h>

#if defined(HPF_LIBRARY)
#define HPF_EXPORT Q_DECL_EXPORT
#else
#define HPF_EXPORT Q_DECL_IMPORT
#endif

// The interface id every file-manager plug-in must declare in its metadata.
#define HPF_PLUGIN_IID "org.sablo.plugin.filemanager"
