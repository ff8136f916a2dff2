// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QIcon>
#include <QRect>
#include <QUrl>

class QPainter;

namespace hfmplugin_emblem {

// Declares "hook_CustomEmblems_Fetch" and draws what its followers return:
// at most four emblems on the corners of an item's icon. The workspace asks
// for every item it paints. GUI thread.
class EmblemPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "emblem.json")
    Q_INTERFACES(hpf::Plugin)
public:
    static constexpr int kMaxEmblems = 4;

    void initialize() override;
    bool start() override;

    // The emblems of `url`, at most four, asked of the hook's followers.
    static QList<QIcon> fetchEmblems(const QUrl &url);
    bool paintEmblems(QPainter *painter, const QRect &iconRect, const QUrl &url);
    QStringList emblemNames(const QUrl &url);
};

}   // namespace hfmplugin_emblem
