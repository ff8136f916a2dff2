// SPDX-License-Identifier: GPL-3.0-or-later
#include "menus/nubixentrymenuscene.h"

#include "caches/nubixcaches.h"
#include "ipc/nubixmessagehandler.h"
#include "nubixglobal.h"
#include "utils/nubixutils.h"

#include <hfmbase/globaleventtype.h>
#include <hpf/event/event.h>

#include <QAction>
#include <QMenu>
#include <QProcess>

namespace hfmplugin_nubix {

using namespace NubixEntryActions;

namespace {
const QString kWindowIdKey = QStringLiteral("windowId");
const QString kSelectFilesKey = QStringLiteral("selectFiles");

QString actionId(const QAction *action)
{
    return action->property(hfmbase::ActionPropertyKey::kActionID).toString();
}
}   // namespace

NubixEntryMenuScene::NubixEntryMenuScene(QObject *parent) : AbstractMenuScene(parent) { }

NubixEntryMenuScene::~NubixEntryMenuScene() = default;

QString NubixEntryMenuScene::name() const
{
    return QString::fromLatin1(kName);
}

bool NubixEntryMenuScene::initialize(const QVariantHash &params)
{
    windowId = params.value(kWindowIdKey).toULongLong();
    selectFiles = params.value(kSelectFilesKey).value<QList<QUrl>>();

    // Only the drive's own entry: the computer menu asks every sub-scene.
    const QString suffix = NubixUtils::computerEntryUrl().path();
    bool ours = false;
    for (const QUrl &url : qAsConst(selectFiles)) {
        if (url.path().endsWith(suffix)) {
            ours = true;
            break;
        }
    }
    if (!ours)
        return false;
    return AbstractMenuScene::initialize(params);
}

bool NubixEntryMenuScene::create(QMenu *parent)
{
    if (!parent)
        return false;

    const SyncInfo info = NubixCaches::instance()->syncInfo();
    const bool online = !info.isDisconnected;
    auto add = [this, parent](const char *id, const QString &text) {
        auto *action = new QAction(text, parent);
        action->setProperty(hfmbase::ActionPropertyKey::kActionID, QString::fromLatin1(id));
        predicateAction.insert(QString::fromLatin1(id), action);
        actions.append(action);
    };

    add(kOpen, tr("Open"));
    add(kOpenInWindow, tr("Open in new window"));
    if (online) {
        add(kOpenMainPanel, tr("Open main panel"));
        add(kSyncDetail, tr("Sync detail"));
        add(kTrashBin, tr("Cloud recycle bin"));
        if (info.syncErrors.isPaused)
            add(kSyncResume, tr("Resume sync"));
        else
            add(kSyncPause, tr("Pause sync"));
        if (info.isPublicCloud)
            add(kUpgradeEnterprise, tr("Upgrade enterprise"));
        add(kSettings, tr("Kelo Drive Settings"));
    }
    return AbstractMenuScene::create(parent);
}

void NubixEntryMenuScene::updateState(QMenu *parent)
{
    if (!parent)
        return;
    // The computer menu's generic actions make no sense for the drive.
    const QList<QAction *> existing = parent->actions();
    for (QAction *action : existing)
        action->setVisible(false);

    const bool ready = NubixUtils::readyToAccess();
    for (QAction *action : qAsConst(actions)) {
        const QString id = actionId(action);
        if (ready || id == QLatin1String(kOpen) || id == QLatin1String(kOpenInWindow))
            parent->addAction(action);
    }
    AbstractMenuScene::updateState(parent);
}

bool NubixEntryMenuScene::triggered(QAction *action)
{
    if (!action)
        return false;
    const QString id = actionId(action);
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    if (id == QLatin1String(kOpen)) {
        actEnterNubix(windowId, 0);
    } else if (id == QLatin1String(kOpenInWindow)) {
        actEnterNubix(windowId, 1);
    } else if (id == QLatin1String(kOpenMainPanel)) {
        handler->requestNavigate(PageType::HomeFileDocs);
    } else if (id == QLatin1String(kSyncDetail)) {
        handler->requestNavigate(PageType::SyncList);
    } else if (id == QLatin1String(kTrashBin)) {
        handler->requestNavigate(PageType::HomeFileRecycle);
    } else if (id == QLatin1String(kSyncPause)) {
        handler->requestSyncPause();
    } else if (id == QLatin1String(kSyncResume)) {
        handler->requestSyncResume();
    } else if (id == QLatin1String(kUpgradeEnterprise)) {
        QProcess::startDetached(QStringLiteral("xdg-open"), {QString::fromLatin1(kEnterprisePricingUrl)});
    } else if (id == QLatin1String(kSettings)) {
        handler->requestNavigate(PageType::Setting);
    } else {
        return AbstractMenuScene::triggered(action);
    }
    return true;
}

void NubixEntryMenuScene::actEnterNubix(quint64 window, int mode)
{
    const QUrl target = NubixUtils::loginRoot();
    if (mode == 0)
        hpf::dispatcher()->publish(hfmbase::kChangeCurrentUrl, window, target);
    else
        hpf::dispatcher()->publish(hfmbase::kOpenNewWindow, target);
}

hfmbase::AbstractMenuScene *NubixEntryMenuCreator::create()
{
    return new NubixEntryMenuScene;
}

}   // namespace hfmplugin_nubix
