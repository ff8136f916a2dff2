// SPDX-License-Identifier: GPL-3.0-or-later
#include "tabpage.h"
#include "workspacelog.h"

#include "fileview.h"
#include "workspaceregistry.h"

#include <hfmbase/abstractbaseview.h>
#include <hostcommon/urlhelpers.h>
#include <hostcommon/widgetprobe.h>

#include <QLoggingCategory>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace hfmplugin_workspace {

using namespace hdehost;

TabPage::TabPage(WorkspaceRegistry *registry, QWidget *parent)
    : QWidget(parent), registry(registry), topArea(new QVBoxLayout), stack(new QStackedWidget(this))
{
    setObjectName(QStringLiteral("hde-tabpage"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    topArea->setContentsMargins(0, 0, 0, 0);
    topArea->setSpacing(0);
    layout->addLayout(topArea);
    layout->addWidget(stack, 1);
}

TabPage::~TabPage()
{
    // The widgets go with the stack; a view object that is no widget is
    // ours to delete as well.
    for (const CustomView &custom : qAsConst(customViews)) {
        if (custom.view && !dynamic_cast<QWidget *>(custom.view))
            delete custom.view;
    }
}

bool TabPage::setUrl(const QUrl &url, bool recordHistory)
{
    if (!url.isValid() || url.scheme().isEmpty()) {
        qCWarning(logWorkspace) << "TabPage::setUrl: refused the invalid URL" << url;
        return false;
    }
    bool shown = false;
    if (registry->isFileViewScheme(url.scheme()))
        shown = showInFileView(url);
    else if (hfmbase::ViewFactory::isRegistered(url.scheme()))
        shown = showInCustomView(url);
    else
        qCWarning(logWorkspace) << "TabPage::setUrl: no view shows the scheme of" << url;
    if (!shown)
        return false;
    if (recordHistory && current.isValid() && !sameUrl(current, url)) {
        backList.append(current);
        forwardList.clear();
    }
    current = url;
    applyTopWidgets();
    Q_EMIT urlChanged(url);
    return true;
}

bool TabPage::showInFileView(const QUrl &url)
{
    if (!files) {
        files = new FileView(registry, stack);
        files->setViewMode(mode);
        connect(files, &FileView::loadFinished, this, &TabPage::loadFinished);
        connect(files, &FileView::selectionChanged, this, &TabPage::selectionChanged);
        connect(files, &FileView::itemCountChanged, this, &TabPage::itemCountChanged);
        stack->addWidget(files);
    }
    files->setRootUrl(url);
    stack->setCurrentWidget(files);
    return true;
}

bool TabPage::showInCustomView(const QUrl &url)
{
    CustomView &custom = customViews[url.scheme()];
    if (custom.view && custom.widget) {
        custom.view->setRootUrl(url);
        stack->setCurrentWidget(custom.widget);
        return true;
    }
    QString error;
    hfmbase::AbstractBaseView *view = hfmbase::ViewFactory::create(url, stack, &error);
    QWidget *widget = view ? view->widget() : nullptr;
    if (!widget) {
        qCWarning(logWorkspace).noquote()
            << "TabPage::setUrl: cannot create the view of" << url.toString() << "-" << error;
        delete view;
        customViews.remove(url.scheme());
        return false;
    }
    custom.view = view;
    custom.widget = widget;
    stack->addWidget(widget);
    stack->setCurrentWidget(widget);
    return true;
}

QUrl TabPage::url() const
{
    return current;
}

bool TabPage::back()
{
    return step(backList, forwardList);
}

bool TabPage::forward()
{
    return step(forwardList, backList);
}

bool TabPage::step(QList<QUrl> &from, QList<QUrl> &to)
{
    if (from.isEmpty())
        return false;
    const QUrl target = from.takeLast();
    const QUrl here = current;
    if (!setUrl(target, false)) {
        from.append(target);
        return false;
    }
    to.append(here);
    return true;
}

void TabPage::reload()
{
    if (files && stack->currentWidget() == files)
        files->reload();
    applyTopWidgets();
}

void TabPage::setViewMode(hdehost::ViewMode wanted)
{
    mode = wanted;
    if (files)
        files->setViewMode(wanted);
}

FileView *TabPage::fileView() const
{
    return files;
}

QString TabPage::viewKind() const
{
    QWidget *widget = stack->currentWidget();
    if (!widget || !current.isValid())
        return QStringLiteral("none");
    if (widget == files)
        return files->viewMode() == hdehost::ViewMode::kList ? QStringLiteral("list") : QStringLiteral("icon");
    return QStringLiteral("custom");
}

QWidget *TabPage::currentViewWidget() const
{
    return stack->currentWidget();
}

bool TabPage::isLoaded() const
{
    if (files && stack->currentWidget() == files)
        return files->isLoaded();
    return true;
}

void TabPage::applyTopWidgets()
{
    const QString scheme = current.scheme();
    if (registry->hasTopWidget(scheme) && !tops.contains(scheme)) {
        const TopWidgetRegistration reg = registry->topWidget(scheme);
        QWidget *widget = reg.create();
        ++topCreations[scheme];
        tops.insert(scheme, widget);
        if (widget)
            topArea->addWidget(widget);
        else
            qCWarning(logWorkspace) << "TabPage::applyTopWidgets: the top widget creator of" << scheme
                                    << "returned no widget";
    }
    for (auto it = tops.cbegin(); it != tops.cend(); ++it) {
        QWidget *widget = it.value();
        if (!widget)
            continue;
        const bool visible = it.key() == scheme && registry->topWidget(it.key()).shouldShow(widget, current);
        widget->setVisible(visible);
    }
}

QWidget *TabPage::topWidget(const QString &scheme) const
{
    return tops.value(scheme);
}

QVariantMap TabPage::state() const
{
    QVariantMap map;
    map.insert(QStringLiteral("url"), current.toString());
    QVariantMap view;
    const QString kind = viewKind();
    if (kind == QLatin1String("icon") || kind == QLatin1String("list")) {
        view = files->state();
    } else if (kind == QLatin1String("custom")) {
        view = describeWidget(stack->currentWidget());
        view.insert(QStringLiteral("kind"), kind);
        view.insert(QStringLiteral("loaded"), true);
    } else {
        view.insert(QStringLiteral("kind"), kind);
        view.insert(QStringLiteral("loaded"), true);
    }
    map.insert(QStringLiteral("view"), view);
    const QString scheme = current.scheme();
    QWidget *top = tops.value(scheme);
    if (top) {
        QVariantMap topMap = describeWidget(top);
        topMap.insert(QStringLiteral("scheme"), scheme);
        topMap.insert(QStringLiteral("visible"), !top->isHidden());
        topMap.insert(QStringLiteral("created"), topCreations.value(scheme));
        map.insert(QStringLiteral("top"), topMap);
    } else {
        map.insert(QStringLiteral("top"), QVariant());
    }
    return map;
}

}   // namespace hfmplugin_workspace
