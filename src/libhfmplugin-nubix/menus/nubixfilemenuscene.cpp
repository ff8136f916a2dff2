// SPDX-License-Identifier: GPL-3.0-or-later
#include "menus/nubixfilemenuscene.h"

#include "nubixglobal.h"
#include "utils/nubixutils.h"

#include <hpf/event/event.h>

#include <QAction>
#include <QFileInfo>
#include <QMenu>

namespace hfmplugin_nubix {

namespace {
const QString kMenuSpace = QStringLiteral("hfmplugin_menu");
const QString kCreateSceneTopic = QStringLiteral("slot_MenuScene_CreateScene");
const QString kWorkspaceMenu = QStringLiteral("WorkspaceMenu");
const QString kSelectFilesKey = QStringLiteral("selectFiles");

hfmbase::AbstractMenuScene *createWorkspaceScene()
{
    return hpf::channel()->push(kMenuSpace, kCreateSceneTopic, kWorkspaceMenu).value<hfmbase::AbstractMenuScene *>();
}

bool isOpenAction(const QString &id)
{
    return id == QLatin1String("open") || id == QLatin1String("open-in-new-window")
        || id == QLatin1String("open-in-new-tab");
}
}   // namespace

NubixFileMenuScene::NubixFileMenuScene(QObject *parent) : AbstractMenuScene(parent) { }

NubixFileMenuScene::~NubixFileMenuScene() = default;

QString NubixFileMenuScene::name() const
{
    return QString::fromLatin1(kName);
}

bool NubixFileMenuScene::initialize(const QVariantHash &parameters)
{
    params = parameters;
    if (hfmbase::AbstractMenuScene *workspace = createWorkspaceScene())
        addSubscene(workspace);
    AbstractMenuScene::initialize(parameters);
    // Without the host's file menu there is nothing to offer.
    return !subScene.isEmpty();
}

bool NubixFileMenuScene::create(QMenu *parent)
{
    return AbstractMenuScene::create(parent);
}

bool NubixFileMenuScene::triggered(QAction *action)
{
    if (!action)
        return false;
    const QString id = action->property(hfmbase::ActionPropertyKey::kActionID).toString();
    if (!isOpenAction(id))
        return AbstractMenuScene::triggered(action);

    hfmbase::AbstractMenuScene *fresh = createWorkspaceScene();
    if (!fresh)
        return false;
    bool done = false;
    if (fresh->initialize(localParams(params))) {
        QMenu scratch;
        fresh->create(&scratch);
        fresh->updateState(&scratch);
        const QList<QAction *> scratchActions = scratch.actions();
        for (QAction *candidate : scratchActions) {
            if (candidate->property(hfmbase::ActionPropertyKey::kActionID).toString() == id) {
                done = fresh->triggered(candidate);
                break;
            }
        }
    }
    fresh->deleteLater();
    return done;
}

QVariantHash NubixFileMenuScene::localParams(const QVariantHash &parameters)
{
    // Files open as the local files they stand for; folders stay cloud URLs
    // so that the window keeps showing the tree with its emblems and banner.
    QVariantHash local = parameters;
    const QList<QUrl> selected = parameters.value(kSelectFilesKey).value<QList<QUrl>>();
    QList<QUrl> mapped;
    mapped.reserve(selected.size());
    for (const QUrl &url : selected) {
        const QUrl file = NubixUtils::cloudToLocal(url);
        if (file.isValid() && !QFileInfo(file.toLocalFile()).isDir())
            mapped.append(file);
        else
            mapped.append(url);
    }
    local.insert(kSelectFilesKey, QVariant::fromValue(mapped));
    return local;
}

hfmbase::AbstractMenuScene *NubixFileMenuCreator::create()
{
    return new NubixFileMenuScene;
}

}   // namespace hfmplugin_nubix
