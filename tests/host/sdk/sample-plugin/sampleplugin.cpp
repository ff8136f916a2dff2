// SPDX-License-Identifier: GPL-3.0-or-later
#include "sampleplugin.h"

#include <hfmbase/urlroute.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

void SamplePlugin::initialize()
{
    hfmbase::UrlRoute::regScheme(
        QStringLiteral("sample"), QStringLiteral("/"), QIcon(), true, QStringLiteral("Sample"));
    hpf::channel()->connect(
        QStringLiteral("hfmplugin_sample"), QStringLiteral("slot_Greet"), this, &SamplePlugin::greet);
}

bool SamplePlugin::start()
{
    htk::MessageDialog dialog;
    dialog.setTitle(QStringLiteral("Sample started"));
    dialog.addButton(QStringLiteral("OK"), true);
    return dialog.exec() == 0;
}

QString SamplePlugin::greet(const QString &who) const
{
    return QStringLiteral("Hello, ") + who;
}
