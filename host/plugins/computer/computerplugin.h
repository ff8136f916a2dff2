// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QPointer>
#include <QUrl>

namespace hfmplugin_computer {

class ComputerView;

// The computer plug-in: registers the "computer" scheme and its view, the
// host's own entries (the user's folders, the system disk), and publishes
// slot_Item_Add (group, entry URL, shape, append-at-end) in the
// "hfmplugin_computer" space. GUI thread.
class ComputerPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "computer.json")
    Q_INTERFACES(hpf::Plugin)
public:
    ~ComputerPlugin() override;

    void initialize() override;
    bool start() override;

    bool addItem(const QString &group, const QUrl &entryUrl, int shape, bool appendAtEnd);
    // The computer view shown in a window, or null.
    static ComputerView *viewOf(quint64 windowId);

private:
    QPointer<QObject> inspector;
};

}   // namespace hfmplugin_computer
