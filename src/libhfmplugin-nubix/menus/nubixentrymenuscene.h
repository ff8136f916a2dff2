// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractmenuscene.h>

#include <QList>
#include <QUrl>

namespace hfmplugin_nubix {

// Ids of the entry menu's actions, in the order the menu shows them.
namespace NubixEntryActions {
inline constexpr char kOpen[] = "nubix-open";
inline constexpr char kOpenInWindow[] = "nubix-open-in-win";
inline constexpr char kOpenMainPanel[] = "nubix-open-main-panel";
inline constexpr char kSyncDetail[] = "nubix-sync-detail";
inline constexpr char kTrashBin[] = "nubix-trash-bin";
inline constexpr char kSyncResume[] = "nubix-sync-resume";
inline constexpr char kSyncPause[] = "nubix-sync-pause";
inline constexpr char kUpgradeEnterprise[] = "nubix-upgrade-enterprise";
inline constexpr char kSettings[] = "nubix-settings";
}   // namespace NubixEntryActions

// The cloud drive's actions in the menu of its computer-view entry and of its
// sidebar item. The actions are chosen from the cached sync state when the
// menu is built; triggering one only sends a request or publishes an event,
// so nothing blocks. GUI thread; the host owns the scene.
class NubixEntryMenuScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixEntryMenuScene)
public:
    static constexpr char kName[] = "NubixEntryMenu";
    // The product site's enterprise pricing page, where "Upgrade enterprise" takes the user.
    static constexpr char kEnterprisePricingUrl[] = "https://drive.kelo.example/pricing/enterprise";

    explicit NubixEntryMenuScene(QObject *parent = nullptr);
    ~NubixEntryMenuScene() override;

    QString name() const override;
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    void updateState(QMenu *parent) override;
    bool triggered(QAction *action) override;

    // mode 0: the current window changes to the drive; 1: a new window opens on it.
    void actEnterNubix(quint64 windowId, int mode);

private:
    quint64 windowId = 0;
    QList<QUrl> selectFiles;
    // The actions create() made, in menu order.
    QList<QAction *> actions;
};

class NubixEntryMenuCreator : public hfmbase::AbstractSceneCreator
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixEntryMenuCreator)
public:
    NubixEntryMenuCreator() = default;
    static QString name() { return QString::fromLatin1(NubixEntryMenuScene::kName); }
    hfmbase::AbstractMenuScene *create() override;
};

}   // namespace hfmplugin_nubix
