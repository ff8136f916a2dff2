// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractbaseview.h>
#include <hfmbase/abstractmenuscene.h>
#include <hpf/plugin.h>

#include <QIcon>
#include <QLabel>
#include <QUrl>
#include <QWidget>

namespace hosttest {

// A plug-in for the host's tests. It uses only the public SDK, as a real
// plug-in does: a "hosttest" scheme shown in the file view, a top widget, a
// sidebar item from its metadata, a file menu, title-bar settings for
// "hosttest-page" (a custom view) and navigation filters:
//   a URL whose path contains "forbidden" is vetoed (events 1, 2, 3);
//   "hosttest-redirect:///x" is redirected to "hosttest:///x".
// What it saw is kept in dynamic properties: "sidebarItemBeforeStart",
// "entered", "bannersCreated", "newWindowCalls".
class HostTestPlugin : public hpf::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.sablo.plugin.filemanager" FILE "hosttest.json")
    Q_INTERFACES(hpf::Plugin)
public:
    void initialize() override;
    bool start() override;

    bool filterChangeUrl(quint64 windowId, const QUrl &url);
    bool filterNewWindow(const QUrl &url);
    // The second form of event 2; records what it saw in "newWindowCalls".
    bool filterNewWindow2(const QUrl &url, bool flag);
    bool filterNewTab(quint64 windowId, const QUrl &url);
    void onEntered(quint64 windowId, const QUrl &url);

private:
    void whenStarted(const QString &plugin, std::function<void()> func);
    // Vetoes or redirects `url` (see above); `republish` sends the redirected one.
    bool filter(const QUrl &url, const std::function<void(const QUrl &)> &republish);
    void registerWithWorkspace();
};

// The strip above the file view of "hosttest": "Test banner #N" and a link.
class TestBanner : public QWidget
{
    Q_OBJECT
public:
    explicit TestBanner(int number);
    QLabel *text;
};

// The view of "hosttest-page": a label and a button.
class TestPageView : public QWidget, public hfmbase::AbstractBaseView
{
    Q_OBJECT
public:
    TestPageView(const QUrl &url, QWidget *parent = nullptr);
    QWidget *widget() const override { return const_cast<TestPageView *>(this); }
    QUrl rootUrl() const override { return root; }
    bool setRootUrl(const QUrl &url) override
    {
        root = url;
        return true;
    }

private:
    QUrl root;
    QLabel *label;
};

// The file menu of "hosttest": the host's "WorkspaceMenu" plus "hosttest-info",
// which shows a dialog naming the selected items.
class FileScene : public hfmbase::AbstractMenuScene
{
    Q_OBJECT
public:
    QString name() const override { return QStringLiteral("HostTestFileMenu"); }
    bool initialize(const QVariantHash &params) override;
    bool create(QMenu *parent) override;
    bool triggered(QAction *action) override;

private:
    QList<QUrl> selected;
};

class SceneCreator : public hfmbase::AbstractSceneCreator
{
public:
    hfmbase::AbstractMenuScene *create() override { return new FileScene; }
};

}   // namespace hosttest
