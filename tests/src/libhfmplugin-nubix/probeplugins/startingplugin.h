// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

// A host plug-in that starts, for checking what happens once it has.
class StartingPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "startingplugin.json")
    Q_INTERFACES(hpf::Plugin)
public:
    bool start() override { return true; }
};
