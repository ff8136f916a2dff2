// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

class SamplePlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "sampleplugin.json")
    Q_INTERFACES(hpf::Plugin)
public:
    void initialize() override;
    bool start() override;

    QString greet(const QString &who) const;
};
