// SPDX-License-Identifier: GPL-3.0-or-later
#include "nubixglobal.h"

namespace hfmplugin_nubix {

const QLoggingCategory &__loghfmplugin_nubix()
{
    static const QLoggingCategory category("org.sablo.hde.filemanager.plugin.hfmplugin_nubix");
    return category;
}

QString nubixExecPath()
{
    return QStringLiteral("/opt/apps/com.kelo.drive/files/kelodrive");
}

}   // namespace hfmplugin_nubix
