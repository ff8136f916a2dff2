// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>
#include <QString>

namespace hfmplugin_nubix {

// The plug-in's one logging category.
const QLoggingCategory &__loghfmplugin_nubix();

namespace Schemes {
inline const QString kNubix = QStringLiteral("nubix");
inline const QString kNubixLogin = QStringLiteral("nubix-login");
}   // namespace Schemes

// Where the sync client is installed.
QString nubixExecPath();

}   // namespace hfmplugin_nubix

#define nubixDebug() qCDebug(hfmplugin_nubix::__loghfmplugin_nubix)
#define nubixInfo() qCInfo(hfmplugin_nubix::__loghfmplugin_nubix)
#define nubixWarning() qCWarning(hfmplugin_nubix::__loghfmplugin_nubix)
#define nubixCritical() qCCritical(hfmplugin_nubix::__loghfmplugin_nubix)
