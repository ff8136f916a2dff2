// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/plugin.h>

#include <QHash>
#include <QPointer>
#include <QVariantMap>

namespace hfmplugin_titlebar {

class TitleBarWidget;

// Installs a title bar into every window and publishes
// "slot_Custom_Register" (scheme, settings) in the "hfmplugin_titlebar"
// space: settings hide view-mode buttons for that scheme. GUI thread.
class TitleBarPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "titlebar.json")
    Q_INTERFACES(hpf::Plugin)
public:
    ~TitleBarPlugin() override;

    void initialize() override;
    bool start() override;

    bool customRegister(const QString &scheme, const QVariantMap &settings);
    QVariantMap settingsOf(const QString &scheme) const;
    TitleBarWidget *titleBarOf(quint64 windowId) const;
    QVariantMap registrations() const;

private:
    void onWindowCreated(quint64 windowId);

    QHash<QString, QVariantMap> schemeSettings;
    QHash<quint64, QPointer<TitleBarWidget>> bars;
    QPointer<QObject> inspector;
};

}   // namespace hfmplugin_titlebar
