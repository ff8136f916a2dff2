// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hostcallbacks.h>

#include <QHash>
#include <QObject>
#include <QSet>
#include <QVariantMap>

namespace hfmplugin_workspace {

// A top widget that a plug-in registered for a scheme.
struct TopWidgetRegistration
{
    QString scheme;
    // Shown for every URL of the scheme, whatever `show` says.
    bool keepShow = false;
    hfmbase::TopWidCreator create;
    hfmbase::TopWidShowFunc show;

    bool shouldShow(QWidget *widget, const QUrl &url) const;
};

// What plug-ins registered with the workspace: which schemes get the file
// view, top widgets by scheme and menu scenes by scheme. GUI thread only.
class WorkspaceRegistry : public QObject
{
    Q_OBJECT
public:
    explicit WorkspaceRegistry(QObject *parent = nullptr);

    // "file" is a file-view scheme from the start.
    bool addFileViewScheme(const QString &scheme);
    bool isFileViewScheme(const QString &scheme) const;
    QStringList fileViewSchemes() const;

    // From the "Property_Key_..." map of slot_RegisterCustomTopWidget; false,
    // with a reason, when the scheme or the creator is missing.
    bool addTopWidget(const QVariantMap &properties, QString *error);
    bool hasTopWidget(const QString &scheme) const;
    TopWidgetRegistration topWidget(const QString &scheme) const;

    bool setMenuScene(const QString &scheme, const QString &scene);
    // The registered scene, else "WorkspaceMenu".
    QString menuSceneFor(const QString &scheme) const;

Q_SIGNALS:
    void fileViewSchemeAdded(const QString &scheme);
    void topWidgetAdded(const QString &scheme);

private:
    QSet<QString> fileViewSchemesSet;
    QHash<QString, TopWidgetRegistration> topWidgets;
    QHash<QString, QString> menuScenes;
};

}   // namespace hfmplugin_workspace
