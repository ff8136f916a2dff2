// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractmenuscene.h>

#include <QVariantHash>

namespace hfmplugin_nubix {

// The menu of files in the cloud tree: the host's own file menu, except that
// the three open actions run again through a fresh host scene made for the
// local files, so that they open what the cloud items stand for.
// GUI thread; the host owns the scene.
class NubixFileMenuScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixFileMenuScene)
public:
    static constexpr char kName[] = "NubixFileMenu";

    explicit NubixFileMenuScene(QObject *parent = nullptr);
    ~NubixFileMenuScene() override;

    QString name() const override;
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    bool triggered(QAction *action) override;

    // The parameters of the fresh scene: the same, with cloud URLs made local.
    static QVariantHash localParams(const QVariantHash &params);

private:
    QVariantHash params;
};

class NubixFileMenuCreator : public hfmbase::AbstractSceneCreator
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixFileMenuCreator)
public:
    NubixFileMenuCreator() = default;
    static QString name() { return QString::fromLatin1(NubixFileMenuScene::kName); }
    hfmbase::AbstractMenuScene *create() override;
};

}   // namespace hfmplugin_nubix
