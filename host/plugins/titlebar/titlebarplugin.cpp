// SPDX-License-Identifier: GPL-3.0-or-later
#include "titlebarplugin.h"

#include "titlebarwidget.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QCoreApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(logTitlebar, "org.sablo.hde.filemanager.plugin.titlebar")

namespace hfmplugin_titlebar {

using namespace hdehost;

namespace {

const QStringList &knownKeys()
{
    static const QStringList keys {PropertyKey::kHideIconViewBtn, PropertyKey::kHideListViewBtn,
        PropertyKey::kHideTreeViewBtn, PropertyKey::kHideDetailSpaceBtn};
    return keys;
}

// Reports the title bars to the automation mode and clicks their buttons.
class TitleBarInspector : public QObject
{
    Q_OBJECT
public:
    explicit TitleBarInspector(TitleBarPlugin *plugin) : plugin(plugin)
    {
        setObjectName(Inspector::kTitlebar);
        setParent(QCoreApplication::instance());
    }

    Q_INVOKABLE QVariantMap state() const
    {
        QVariantMap map;
        map.insert(QStringLiteral("schemes"), plugin ? plugin->registrations() : QVariantMap());
        return map;
    }
    Q_INVOKABLE QVariantMap windowState(quint64 windowId) const
    {
        TitleBarWidget *bar = plugin ? plugin->titleBarOf(windowId) : nullptr;
        return bar ? bar->state() : QVariantMap();
    }
    Q_INVOKABLE bool clickButton(quint64 windowId, const QString &name)
    {
        TitleBarWidget *bar = plugin ? plugin->titleBarOf(windowId) : nullptr;
        return bar && bar->clickButton(name);
    }
    Q_INVOKABLE bool enterAddress(quint64 windowId, const QString &text)
    {
        TitleBarWidget *bar = plugin ? plugin->titleBarOf(windowId) : nullptr;
        return bar && bar->enterAddress(text);
    }

private:
    QPointer<TitleBarPlugin> plugin;
};

}   // namespace

TitleBarPlugin::~TitleBarPlugin()
{
    delete inspector.data();
}

void TitleBarPlugin::initialize()
{
    registerHostMetaTypes();
    hpf::channel()->connect(Space::kTitlebar, Topic::kTitlebarCustomRegister, this, &TitleBarPlugin::customRegister);
    connect(&hfmbase::FileManagerWindowsManager::instance(), &hfmbase::FileManagerWindowsManager::windowCreated, this,
        &TitleBarPlugin::onWindowCreated);
    inspector = new TitleBarInspector(this);
}

bool TitleBarPlugin::start()
{
    return true;
}

bool TitleBarPlugin::customRegister(const QString &scheme, const QVariantMap &settings)
{
    if (scheme.isEmpty()) {
        qCWarning(logTitlebar) << "TitleBarPlugin::customRegister: refused settings without a scheme";
        return false;
    }
    QVariantMap kept;
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        if (knownKeys().contains(it.key()))
            kept.insert(it.key(), it.value().toBool());
        else
            qCWarning(logTitlebar) << "TitleBarPlugin::customRegister: ignored the unknown key" << it.key();
    }
    schemeSettings.insert(scheme, kept);
    for (const auto &bar : qAsConst(bars)) {
        if (bar)
            bar->refreshButtons();
    }
    return true;
}

QVariantMap TitleBarPlugin::settingsOf(const QString &scheme) const
{
    return schemeSettings.value(scheme);
}

TitleBarWidget *TitleBarPlugin::titleBarOf(quint64 windowId) const
{
    return bars.value(windowId);
}

QVariantMap TitleBarPlugin::registrations() const
{
    QVariantMap map;
    for (auto it = schemeSettings.cbegin(); it != schemeSettings.cend(); ++it)
        map.insert(it.key(), it.value());
    return map;
}

void TitleBarPlugin::onWindowCreated(quint64 windowId)
{
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(windowId);
    if (!window)
        return;
    QPointer<TitleBarPlugin> self(this);
    auto *bar = new TitleBarWidget(
        windowId, [self](const QString &scheme) { return self ? self->settingsOf(scheme) : QVariantMap(); });
    bars.insert(windowId, bar);
    bar->setUrl(window->currentUrl());
    connect(window, &hfmbase::FileManagerWindow::currentUrlChanged, bar, &TitleBarWidget::setUrl);
    connect(bar, &QObject::destroyed, this, [this, windowId] { bars.remove(windowId); });
    window->installTitleBar(bar);
}

}   // namespace hfmplugin_titlebar

#include "titlebarplugin.moc"
