// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "nubixglobal.h"

#include <hpf/plugin.h>

#include <functional>

namespace hfmplugin_nubix {

// The object the host's plug-in framework creates from this library. It
// registers the plug-in's schemes and pieces with the host, refuses to run in
// a host older than 6.0.49.25 and starts the conversation with the sync
// client. GUI thread only; initialize() blocks while the host's version is
// queried. The framework owns the object.
class NubixPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "nubixplugin.json")
    Q_INTERFACES(hpf::Plugin)
    Q_DISABLE_COPY(NubixPlugin)
public:
    explicit NubixPlugin(QObject *parent = nullptr);
    ~NubixPlugin() override;

    void initialize() override;
    bool start() override;
    // Watches the application for host windows being shown; never consumes an event.
    bool eventFilter(QObject *watched, QEvent *event) override;

    // Runs func once the named host plug-in has started: now if it already
    // has, otherwise every time the framework reports it started.
    void doRegStuff(const QString &pluginName, std::function<void()> func);

public Q_SLOTS:
    void onWindowOpened(quint64 windowId);

private:
    void refreshSidebarItem();

    QString hfmVersion;
};

// The version the host's executable reports with -v; empty when it cannot be run.
QString getHfmVersion();

// True when the host is older than the plug-in supports. The comparison is
// textual on purpose, so an empty version counts as too old.
bool isHostTooOld(const QString &version);

}   // namespace hfmplugin_nubix
