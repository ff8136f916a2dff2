// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace hfmplugin_nubix {

// The plug-in's icons are compiled in as a small hicolor tree. Putting its
// root on the icon theme search path lets QIcon::fromTheme() find them by
// name, from the current theme through its hicolor fallback, exactly as it
// finds the same files once they are installed into the system's hicolor
// theme. Idempotent; GUI thread.
void installIcons();

// The resource folder that holds the compiled-in "hicolor" theme folder.
QString iconThemeRoot();

}   // namespace hfmplugin_nubix
