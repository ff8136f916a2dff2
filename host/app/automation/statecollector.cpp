// SPDX-License-Identifier: GPL-3.0-or-later
#include "statecollector.h"

#include "../core/fileoperations.h"
#include "../core/operationlog.h"

#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hostcommon/hostkeys.h>
#include <hpf/lifecycle.h>
#include <htk/messagedialog.h>
#include <htk/themehelper.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QJsonArray>
#include <QMimeData>

namespace hdeapp {

using namespace hdehost;

QObject *hostInspector(const QString &name)
{
    return QCoreApplication::instance()->findChild<QObject *>(name, Qt::FindDirectChildrenOnly);
}

QVariantMap inspectMap(const QString &inspector, const char *method, quint64 windowId, bool withWindow)
{
    QObject *object = hostInspector(inspector);
    QVariantMap result;
    if (!object)
        return result;
    if (withWindow)
        QMetaObject::invokeMethod(
            object, method, Qt::DirectConnection, Q_RETURN_ARG(QVariantMap, result), Q_ARG(quint64, windowId));
    else
        QMetaObject::invokeMethod(object, method, Qt::DirectConnection, Q_RETURN_ARG(QVariantMap, result));
    return result;
}

namespace {

QVariantMap windowState(quint64 id)
{
    QVariantMap map;
    hfmbase::FileManagerWindow *window = hfmbase::FileManagerWindowsManager::instance().findWindowById(id);
    if (!window)
        return map;
    map.insert(QStringLiteral("id"), id);
    map.insert(QStringLiteral("url"), window->currentUrl().toString());
    map.insert(QStringLiteral("title"), window->windowTitle());
    map.insert(QStringLiteral("visible"), window->isVisible());
    const QVariantMap workspace = inspectMap(Inspector::kWorkspace, "windowState", id, true);
    for (auto it = workspace.cbegin(); it != workspace.cend(); ++it)
        map.insert(it.key(), it.value());
    map.insert(QStringLiteral("sidebar"), inspectMap(Inspector::kSidebar, "windowState", id, true));
    map.insert(QStringLiteral("titlebar"), inspectMap(Inspector::kTitlebar, "windowState", id, true));
    return map;
}

QVariantList dialogs()
{
    QVariantList list;
    const QList<htk::MessageDialog::Record> records = htk::MessageDialog::recordedDialogs();
    for (const htk::MessageDialog::Record &record : records) {
        list.append(QVariantMap {{QStringLiteral("title"), record.title}, {QStringLiteral("message"), record.message},
            {QStringLiteral("icon"), record.iconName}, {QStringLiteral("buttons"), record.buttons}});
    }
    return list;
}

QVariantMap clipboard()
{
    QVariantMap map;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QStringList urls;
    if (data && data->hasUrls()) {
        const QList<QUrl> list = data->urls();
        for (const QUrl &url : list)
            urls.append(url.toString());
    }
    const QByteArray action = data ? data->data(QStringLiteral("application/x-hde-clipboard-action")) : QByteArray();
    map.insert(
        QStringLiteral("action"), urls.isEmpty() ? QString() : QString::fromLatin1(action.isEmpty() ? "copy" : action));
    map.insert(QStringLiteral("urls"), urls);
    return map;
}

QVariantList plugins()
{
    QVariantList list;
    const QList<hpf::PluginMetaObjectPointer> metas = hpf::LifeCycle::pluginMetaObjs();
    for (const hpf::PluginMetaObjectPointer &meta : metas) {
        list.append(QVariantMap {{QStringLiteral("name"), meta->name()}, {QStringLiteral("version"), meta->version()},
            {QStringLiteral("state"), int(meta->pluginState())}, {QStringLiteral("error"), meta->errorString()}});
    }
    return list;
}

}   // namespace

QJsonObject collectState(const OperationLog *log, const FileOperations *operations)
{
    QVariantMap state;
    state.insert(QStringLiteral("version"), kStateVersion);
    QVariantList windows;
    const QList<quint64> ids = hfmbase::FileManagerWindowsManager::instance().windowIdList();
    for (quint64 id : ids)
        windows.append(windowState(id));
    state.insert(QStringLiteral("windows"), windows);
    state.insert(QStringLiteral("sidebar"), inspectMap(Inspector::kSidebar, "state", 0, false));
    state.insert(QStringLiteral("computer"), inspectMap(Inspector::kComputer, "state", 0, false));
    state.insert(QStringLiteral("titlebar"), inspectMap(Inspector::kTitlebar, "state", 0, false));
    state.insert(QStringLiteral("menu"), inspectMap(Inspector::kMenu, "state", 0, false));
    state.insert(QStringLiteral("dialogs"), dialogs());
    state.insert(QStringLiteral("clipboard"), clipboard());
    state.insert(QStringLiteral("opened"), log ? log->opened() : QVariantList());
    state.insert(QStringLiteral("terminals"), log ? log->terminals() : QVariantList());
    state.insert(QStringLiteral("results"), log ? log->results() : QVariantList());
    state.insert(QStringLiteral("theme"),
        htk::ThemeHelper::instance()->themeType() == htk::ThemeHelper::DarkType ? QStringLiteral("dark")
                                                                                : QStringLiteral("light"));
    state.insert(QStringLiteral("jobs"), operations ? operations->runningJobs() : 0);
    state.insert(QStringLiteral("plugins"), plugins());
    return QJsonObject::fromVariantMap(state);
}

}   // namespace hdeapp
