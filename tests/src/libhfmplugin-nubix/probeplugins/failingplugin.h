// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

// A host plug-in that is loaded but refuses to start.
class FailingPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "failingplugin.json")
    Q_INTERFACES(hpf::Plugin)
public:
    bool start() override { return false; }
};
