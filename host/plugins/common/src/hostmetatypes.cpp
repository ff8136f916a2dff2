// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/hostmetatypes.h"

#include <hfmbase/globaleventtype.h>
#include <hfmbase/metatypes.h>

#include <QFileDevice>
#include <QList>
#include <QMap>
#include <QUrl>

namespace hdehost {

void registerHostMetaTypes()
{
    static const bool done = [] {
        hfmbase::registerMetaTypes();
        qRegisterMetaType<QPainter *>("QPainter*");
        qRegisterMetaType<QFileDevice::Permissions>("QFileDevice::Permissions");
        qRegisterMetaType<QList<QUrl>>();
        qRegisterMetaType<QMap<QUrl, QUrl>>();
        return true;
    }();
    Q_UNUSED(done)
}

}   // namespace hdehost
