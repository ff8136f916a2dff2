// SPDX-License-Identifier: GPL-3.0-or-later
#include "scriptrunner.h"

#include "../core/fileoperations.h"
#include "../core/operationlog.h"
#include "jsonpath.h"
#include "menuinterceptor.h"
#include "scriptlexer.h"
#include "statecollector.h"

#include <hfmbase/abstractjobhandler.h>
#include <hfmbase/filemanagerwindow.h>
#include <hfmbase/filemanagerwindowsmanager.h>
#include <hfmbase/globaleventtype.h>
#include <hostcommon/hostkeys.h>
#include <hostcommon/navigation.h>
#include <hostcommon/urlhelpers.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QSocketNotifier>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <unistd.h>

namespace hdeapp {

using namespace hdehost;
using hfmbase::AbstractJobHandler;

namespace {

// The colours of a dark desktop theme, for the "theme dark" command.
QPalette darkPalette()
{
    QPalette palette;
    const QColor window(0x25, 0x26, 0x2a);
    const QColor base(0x1c, 0x1d, 0x20);
    const QColor text(0xe6, 0xe8, 0xec);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(0x33, 0x35, 0x3a));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, QColor(0x2b, 0x7d, 0xe9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x5a, 0xa2, 0xff));
    palette.setColor(QPalette::PlaceholderText, QColor(0x8a, 0x93, 0xa3));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x74, 0x7c));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x74, 0x7c));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x74, 0x7c));
    return palette;
}

constexpr int kDefaultWaitMs = 5000;
constexpr int kPollMs = 20;

bool parseTimeout(const QString &text, int *ms)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < 0)
        return false;
    *ms = value;
    return true;
}

QFileDevice::Permissions permissionsFromMode(uint mode)
{
    // From the lowest mode bit up; the owner's bits are the running user's too.
    static const QFileDevice::Permissions bits[]
        = {QFileDevice::ExeOther, QFileDevice::WriteOther, QFileDevice::ReadOther, QFileDevice::ExeGroup,
            QFileDevice::WriteGroup, QFileDevice::ReadGroup, QFileDevice::ExeOwner | QFileDevice::ExeUser,
            QFileDevice::WriteOwner | QFileDevice::WriteUser, QFileDevice::ReadOwner | QFileDevice::ReadUser};
    QFileDevice::Permissions p;
    for (int bit = 0; bit < 9; ++bit) {
        if (mode & (1u << bit))
            p |= bits[bit];
    }
    return p;
}

// Calls a Q_INVOKABLE `bool method(quint64 windowId, <value>)` of a host
// plug-in's inspection object; false when the plug-in is not loaded.
bool invokeBool(const QString &inspector, const char *method, quint64 windowId, QGenericArgument value)
{
    QObject *object = hostInspector(inspector);
    bool result = false;
    if (!object)
        return false;
    QMetaObject::invokeMethod(
        object, method, Qt::DirectConnection, Q_RETURN_ARG(bool, result), Q_ARG(quint64, windowId), value);
    return result;
}

QJsonArray itemsOfCurrentTab(quint64 windowId)
{
    const QVariantMap map = inspectMap(Inspector::kWorkspace, "windowState", windowId, true);
    const QVariantList tabs = map.value(QStringLiteral("tabs")).toList();
    const int current = map.value(QStringLiteral("currentTab")).toInt();
    const QVariantMap view = tabs.value(current).toMap().value(QStringLiteral("view")).toMap();
    return QJsonArray::fromVariantList(view.value(QStringLiteral("items")).toList());
}

bool hasItem(quint64 windowId, const QString &name)
{
    const QJsonArray items = itemsOfCurrentTab(windowId);
    return std::any_of(items.begin(), items.end(),
        [&name](const QJsonValue &item) { return item.toObject().value(QStringLiteral("name")).toString() == name; });
}

}   // namespace

ScriptRunner::ScriptRunner(OperationLog *log, FileOperations *operations, QObject *parent)
    : QObject(parent), log(log), operations(operations), menus(new MenuInterceptor(this)), defaultOut(stdout)
{
    out = &defaultOut;
    registerCommands();
}

ScriptRunner::~ScriptRunner() = default;

bool ScriptRunner::setSource(const QString &path, QString *error)
{
    if (path == QLatin1String("-")) {
        stdinNotifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
        connect(stdinNotifier, &QSocketNotifier::activated, this, &ScriptRunner::readStdin);
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read the script \"%1\": %2").arg(path, file.errorString());
        return false;
    }
    addLines(QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')), true);
    return true;
}

void ScriptRunner::addLines(const QStringList &lines, bool last)
{
    pending += lines;
    if (last)
        inputDone = true;
    if (running && !busy)
        QTimer::singleShot(0, this, &ScriptRunner::pump);
}

void ScriptRunner::setOutput(QTextStream *stream)
{
    out = stream;
}

void ScriptRunner::start()
{
    running = true;
    QTimer::singleShot(0, this, &ScriptRunner::pump);
}

bool ScriptRunner::isRunning() const
{
    return running && !done;
}

void ScriptRunner::readStdin()
{
    char buffer[4096];
    const ssize_t size = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (size > 0) {
        stdinBuffer.append(buffer, int(size));
        int newline;
        QStringList lines;
        while ((newline = stdinBuffer.indexOf('\n')) >= 0) {
            lines.append(QString::fromUtf8(stdinBuffer.left(newline)));
            stdinBuffer.remove(0, newline + 1);
        }
        addLines(lines, false);
        return;
    }
    // End of input (or an error reading it): what is left is the last line.
    stdinNotifier->setEnabled(false);
    QStringList rest;
    if (!stdinBuffer.isEmpty())
        rest.append(QString::fromUtf8(stdinBuffer));
    stdinBuffer.clear();
    addLines(rest, true);
}

void ScriptRunner::print(const QString &line)
{
    *out << line << '\n';
    out->flush();
}

void ScriptRunner::finish(int code)
{
    if (done)
        return;
    done = true;
    busy = false;
    if (stdinNotifier)
        stdinNotifier->setEnabled(false);
    Q_EMIT finished(code);
}

void ScriptRunner::pump()
{
    if (done || busy || !running)
        return;
    if (pending.isEmpty()) {
        if (inputDone)
            finish(kOk);
        return;
    }
    const QString line = pending.takeFirst();
    ++lineNumber;
    execute(line);
}

void ScriptRunner::execute(const QString &line)
{
    QStringList words;
    QString error;
    auto complain = [this](int code, const QString &message) {
        QTextStream err(stderr);
        err << "hde-file-manager: script line " << lineNumber << ": " << currentLine.trimmed() << ": " << message
            << '\n';
        err.flush();
        finish(code);
    };
    currentLine = line;
    if (!splitScriptLine(line, &words, &error)) {
        complain(kUsage, error);
        return;
    }
    if (words.isEmpty()) {
        QTimer::singleShot(0, this, &ScriptRunner::pump);
        return;
    }
    const QString name = words.takeFirst();
    const auto it = commands.constFind(name);
    if (it == commands.cend()) {
        complain(kUsage, QStringLiteral("unknown command"));
        return;
    }
    const Command &command = it.value();
    if (words.size() < command.minArgs || (command.maxArgs >= 0 && words.size() > command.maxArgs)) {
        complain(kUsage, QStringLiteral("usage: %1 %2").arg(name, command.usage));
        return;
    }
    busy = true;
    auto finished = std::make_shared<bool>(false);
    command.run(words, [this, complain, finished](int code, const QString &message) {
        if (*finished)
            return;
        *finished = true;
        busy = false;
        if (code != kOk) {
            complain(code, message);
            return;
        }
        QTimer::singleShot(0, this, &ScriptRunner::pump);
    });
}

quint64 ScriptRunner::window(const QString &token, QString *error, bool allowNone) const
{
    const QList<quint64> ids = hfmbase::FileManagerWindowsManager::instance().windowIdList();
    if (token == QLatin1String("last") || token == QLatin1String("first")) {
        if (ids.isEmpty()) {
            *error = QStringLiteral("there is no window");
            return 0;
        }
        return token == QLatin1String("last") ? *std::max_element(ids.begin(), ids.end())
                                              : *std::min_element(ids.begin(), ids.end());
    }
    bool ok = false;
    const quint64 id = token.toULongLong(&ok);
    if (ok && id == 0 && allowNone)
        return 0;
    if (!ok || !ids.contains(id)) {
        *error = QStringLiteral("no window \"%1\"").arg(token);
        return 0;
    }
    return id;
}

bool ScriptRunner::resolveUrls(const QStringList &texts, QList<QUrl> *urls, QString *error) const
{
    for (const QString &text : texts) {
        const QUrl url = urlFromUserInput(text);
        if (!url.isValid()) {
            *error = QStringLiteral("\"%1\" is neither an absolute path nor a URL").arg(text);
            return false;
        }
        urls->append(url);
    }
    return true;
}

void ScriptRunner::waitUntil(
    std::function<bool(QString *)> condition, int timeoutMs, const QString &what, const Done &done)
{
    QString detail;
    if (condition(&detail)) {
        done(kOk, QString());
        return;
    }
    auto *timer = new QTimer(this);
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    connect(timer, &QTimer::timeout, this, [timer, clock, condition, timeoutMs, what, done]() {
        QString detail;
        if (condition(&detail)) {
            timer->stop();
            timer->deleteLater();
            done(kOk, QString());
        } else if (clock->elapsed() >= timeoutMs) {
            timer->stop();
            timer->deleteLater();
            done(kTimeout,
                QStringLiteral("timed out after %1 ms waiting for %2%3")
                    .arg(timeoutMs)
                    .arg(what, detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(detail)));
        }
    });
    timer->start(kPollMs);
}

void ScriptRunner::add(const QString &name, int minArgs, int maxArgs, const QString &usage, Handler run)
{
    commands.insert(name, Command {minArgs, maxArgs, usage, std::move(run)});
}

void ScriptRunner::runMenu(const QString &target, const QStringList &args, const QString &actionId, const Done &done)
{
    QString error;
    const quint64 id = window(args.value(0), &error);
    if (!id) {
        done(kFailed, error);
        return;
    }
    bool shown = false;
    menus->arm(actionId);
    if (target == QLatin1String("item"))
        shown = invokeBool(Inspector::kWorkspace, "contextMenu", id, Q_ARG(QString, args.value(1)));
    else if (target == QLatin1String("blank"))
        shown = invokeBool(Inspector::kWorkspace, "contextMenu", id, Q_ARG(QString, QString()));
    else if (target == QLatin1String("entry"))
        shown = invokeBool(Inspector::kComputer, "contextMenu", id, Q_ARG(QString, args.value(1)));
    else if (target == QLatin1String("sidebar"))
        shown = invokeBool(Inspector::kSidebar, "contextMenu", id, Q_ARG(QString, args.value(1)));
    else {
        menus->disarm();
        done(kUsage, QStringLiteral("the menu target must be item, blank, entry or sidebar"));
        return;
    }
    menus->disarm();
    if (!shown) {
        done(kFailed, QStringLiteral("no %1 \"%2\" to open a menu on").arg(target, args.value(1)));
        return;
    }
    if (!menus->menuSeen()) {
        done(kFailed, QStringLiteral("no menu was shown"));
        return;
    }
    if (!actionId.isEmpty() && !menus->error().isEmpty()) {
        done(kFailed, menus->error());
        return;
    }
    if (actionId.isEmpty()) {
        const QJsonObject object {{QStringLiteral("menu"), QJsonArray::fromVariantList(menus->actions())}};
        print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
    }
    done(kOk, QString());
}

void ScriptRunner::waitForCommand(const QString &kind, const QStringList &args, const Done &done)
{
    // Fixed arguments per kind; one more is the timeout.
    static const QHash<QString, int> arity {{QStringLiteral("loaded"), 1}, {QStringLiteral("item"), 2},
        {QStringLiteral("no-item"), 2}, {QStringLiteral("url"), 2}, {QStringLiteral("windows"), 1},
        {QStringLiteral("file"), 1}, {QStringLiteral("no-file"), 1}, {QStringLiteral("idle"), 0},
        {QStringLiteral("state"), 2}, {QStringLiteral("dialogs"), 1}};
    if (!arity.contains(kind)) {
        done(kUsage, QStringLiteral("unknown condition \"%1\"").arg(kind));
        return;
    }
    const int fixed = arity.value(kind);
    int timeout = kDefaultWaitMs;
    if (args.size() < fixed || args.size() > fixed + 1
        || (args.size() == fixed + 1 && !parseTimeout(args.last(), &timeout))) {
        done(kUsage, QStringLiteral("wrong arguments for \"wait-for %1\"").arg(kind));
        return;
    }
    const QString what = QStringLiteral("%1 %2").arg(kind, args.mid(0, fixed).join(QLatin1Char(' '))).trimmed();
    auto windowCheck = [this](const QString &token, quint64 *id, QString *detail) {
        *id = window(token, detail);
        return *id != 0;
    };
    std::function<bool(QString *)> condition;
    if (kind == QLatin1String("loaded")) {
        const QString token = args.at(0);
        condition = [=](QString *detail) {
            quint64 id = 0;
            if (!windowCheck(token, &id, detail))
                return false;
            bool loaded = false;
            QObject *inspector = hostInspector(Inspector::kWorkspace);
            if (inspector)
                QMetaObject::invokeMethod(
                    inspector, "isLoaded", Qt::DirectConnection, Q_RETURN_ARG(bool, loaded), Q_ARG(quint64, id));
            return loaded;
        };
    } else if (kind == QLatin1String("item") || kind == QLatin1String("no-item")) {
        const QString token = args.at(0);
        const QString name = args.at(1);
        const bool present = kind == QLatin1String("item");
        condition = [=](QString *detail) {
            quint64 id = 0;
            return windowCheck(token, &id, detail) && hasItem(id, name) == present;
        };
    } else if (kind == QLatin1String("url")) {
        const QString token = args.at(0);
        const QUrl wanted = urlFromUserInput(args.at(1));
        condition = [=](QString *detail) {
            quint64 id = 0;
            if (!windowCheck(token, &id, detail))
                return false;
            const QUrl now = hfmbase::FileManagerWindowsManager::instance().findWindowById(id)->currentUrl();
            *detail = QStringLiteral("the window shows %1").arg(now.toString());
            return sameUrl(now, wanted);
        };
    } else if (kind == QLatin1String("windows")) {
        const int count = args.at(0).toInt();
        condition = [count](QString *detail) {
            const int now = hfmbase::FileManagerWindowsManager::instance().windowIdList().size();
            *detail = QStringLiteral("%1 open").arg(now);
            return now == count;
        };
    } else if (kind == QLatin1String("file") || kind == QLatin1String("no-file")) {
        const QString path = args.at(0);
        const bool present = kind == QLatin1String("file");
        condition = [=](QString *) { return QFileInfo::exists(path) == present; };
    } else if (kind == QLatin1String("idle")) {
        condition = [this](QString *detail) {
            *detail = QStringLiteral("%1 operations running").arg(operations ? operations->runningJobs() : 0);
            return !operations || operations->runningJobs() == 0;
        };
    } else if (kind == QLatin1String("dialogs")) {
        const int count = args.at(0).toInt();
        condition = [count](QString *detail) {
            const int now = htk::MessageDialog::recordedDialogs().size();
            *detail = QStringLiteral("%1 recorded").arg(now);
            return now >= count;
        };
    } else {
        const QString path = args.at(0);
        const QJsonValue expected = parseJsonValueText(args.at(1));
        condition = [this, path, expected](QString *detail) {
            QJsonValue value;
            QString error;
            if (!evaluateJsonPath(collectState(log, operations), path, &value, &error)) {
                *detail = error;
                return false;
            }
            *detail = QStringLiteral("it is %1").arg(jsonValueText(value));
            return value == expected;
        };
    }
    waitUntil(condition, timeout, what, done);
}

void ScriptRunner::addWindowCommand(
    const QString &name, int minArgs, int maxArgs, const QString &usage, const QString &failure, WindowAction act)
{
    add(name, minArgs, maxArgs, usage, [this, failure, act](const QStringList &args, const Done &done) {
        QString error;
        const quint64 id = window(args.at(0), &error);
        if (id && act(id, args)) {
            done(kOk, QString());
            return;
        }
        if (error.isEmpty())
            error = failure.contains(QLatin1String("%1")) ? failure.arg(args.value(1)) : failure;
        done(kFailed, error);
    });
}

void ScriptRunner::publishWithUrls(const QStringList &args, const Done &done, const Publish &publish)
{
    QString error;
    QList<QUrl> urls;
    const quint64 id = window(args.at(0), &error, true);
    if (!error.isEmpty() || !resolveUrls(args.mid(1), &urls, &error)) {
        done(kFailed, error);
        return;
    }
    publish(id, urls);
    done(kOk, QString());
}

void ScriptRunner::addUrlCommand(const QString &name, int minArgs, int maxArgs, const QString &usage, Publish publish)
{
    add(name, minArgs, maxArgs, usage,
        [this, publish](const QStringList &args, const Done &done) { publishWithUrls(args, done, publish); });
}

void ScriptRunner::registerCommands()
{
    const auto noFlags = AbstractJobHandler::JobFlags(AbstractJobHandler::JobFlag::kNoHint);

    add(QStringLiteral("open"), 1, 1, QStringLiteral("<url-or-path>"), [](const QStringList &args, const Done &done) {
        const QUrl url = urlFromUserInput(args.at(0));
        if (!url.isValid()) {
            done(kUsage, QStringLiteral("\"%1\" is neither an absolute path nor a URL").arg(args.at(0)));
            return;
        }
        QString error;
        auto &windows = hfmbase::FileManagerWindowsManager::instance();
        hfmbase::FileManagerWindow *created = windows.createWindow(url, &error);
        if (!created) {
            done(kFailed, error);
            return;
        }
        windows.showWindow(created);
        done(kOk, QString());
    });
    auto navigate = [this](bool (*request)(quint64, const QUrl &)) {
        return [this, request](const QStringList &args, const Done &done) {
            QString error;
            QList<QUrl> urls;
            const quint64 id = window(args.at(0), &error);
            if (!id || !resolveUrls({args.at(1)}, &urls, &error)) {
                done(kFailed, error);
                return;
            }
            request(id, urls.first());
            done(kOk, QString());
        };
    };
    add(QStringLiteral("cd"), 2, 2, QStringLiteral("<window> <url-or-path>"), navigate(&requestChangeUrl));
    add(QStringLiteral("new-tab"), 2, 2, QStringLiteral("<window> <url-or-path>"), navigate(&requestNewTab));
    add(QStringLiteral("new-window"), 1, 1, QStringLiteral("<url-or-path>"),
        [this](const QStringList &args, const Done &done) {
            QString error;
            QList<QUrl> urls;
            if (!resolveUrls(args, &urls, &error)) {
                done(kUsage, error);
                return;
            }
            requestNewWindow(urls.first());
            done(kOk, QString());
        });
    auto titleButton = [this](const QString &windowToken, const QString &button, const Done &done) {
        QString error;
        const quint64 id = window(windowToken, &error);
        if (!id) {
            done(kFailed, error);
            return;
        }
        if (!invokeBool(Inspector::kTitlebar, "clickButton", id, Q_ARG(QString, button))) {
            done(kFailed, QStringLiteral("the title bar has no visible \"%1\" button").arg(button));
            return;
        }
        done(kOk, QString());
    };
    add(QStringLiteral("back"), 1, 1, QStringLiteral("<window>"),
        [titleButton](
            const QStringList &args, const Done &done) { titleButton(args.at(0), QStringLiteral("back"), done); });
    add(QStringLiteral("forward"), 1, 1, QStringLiteral("<window>"),
        [titleButton](
            const QStringList &args, const Done &done) { titleButton(args.at(0), QStringLiteral("forward"), done); });
    add(QStringLiteral("view-mode"), 2, 2, QStringLiteral("<window> icon|list"),
        [titleButton](const QStringList &args, const Done &done) {
            if (args.at(1) != QLatin1String("icon") && args.at(1) != QLatin1String("list")) {
                done(kUsage, QStringLiteral("the view mode is icon or list"));
                return;
            }
            titleButton(args.at(0), args.at(1), done);
        });
    add(QStringLiteral("detail"), 2, 2, QStringLiteral("<window> on|off"),
        [this, titleButton](const QStringList &args, const Done &done) {
            QString error;
            const quint64 id = window(args.at(0), &error);
            if (!id) {
                done(kFailed, error);
                return;
            }
            const bool wanted = args.at(1) == QLatin1String("on");
            const bool now = inspectMap(Inspector::kTitlebar, "windowState", id, true)
                                 .value(QStringLiteral("detailSpace"))
                                 .toBool();
            if (wanted == now) {
                done(kOk, QString());
                return;
            }
            titleButton(args.at(0), QStringLiteral("detail"), done);
        });

    // Commands that act on a window as a user would, through the host
    // plug-ins' inspection objects.
    struct Action
    {
        const char *name;
        const char *usage;
        const QString &inspector;
        const char *method;
        const char *failure;
    };
    const Action actions[] = {
        {"address", "<window> <text>", Inspector::kTitlebar, "enterAddress", "the window has no title bar"},
        {"activate", "<window> <item>", Inspector::kWorkspace, "activate", "no item \"%1\" in the view"},
        {"sidebar-activate", "<window> <name-or-url>", Inspector::kSidebar, "activate",
            "no enabled sidebar item \"%1\""},
        {"top-link", "<window> <link>", Inspector::kWorkspace, "activateTopLink",
            "no visible top widget offers \"%1\""},
        {"click", "<window> <button-text>", Inspector::kWorkspace, "click", "no button \"%1\""},
    };
    for (const Action &action : actions) {
        const QString inspector = action.inspector;
        const char *method = action.method;
        addWindowCommand(QLatin1String(action.name), 2, 2, QLatin1String(action.usage),
            QString::fromUtf8(action.failure), [inspector, method](quint64 id, const QStringList &args) {
                return invokeBool(inspector, method, id, Q_ARG(QString, args.at(1)));
            });
    }
    addWindowCommand(QStringLiteral("tab"), 2, 2, QStringLiteral("<window> <index>"), QStringLiteral("no tab %1"),
        [](quint64 id, const QStringList &args) {
            return invokeBool(Inspector::kWorkspace, "setCurrentTab", id, Q_ARG(int, args.at(1).toInt()));
        });
    addWindowCommand(QStringLiteral("close-tab"), 2, 2, QStringLiteral("<window> <index>"),
        QStringLiteral("cannot close tab %1"), [](quint64 id, const QStringList &args) {
            return invokeBool(Inspector::kWorkspace, "closeTab", id, Q_ARG(int, args.at(1).toInt()));
        });
    addWindowCommand(QStringLiteral("select"), 2, -1, QStringLiteral("<window> <name>..."),
        QStringLiteral("not every item is shown"), [](quint64 id, const QStringList &args) {
            return invokeBool(Inspector::kWorkspace, "select", id, Q_ARG(QStringList, args.mid(1)));
        });
    addWindowCommand(
        QStringLiteral("close"), 1, 1, QStringLiteral("<window>"), QString(), [](quint64 id, const QStringList &) {
            hfmbase::FileManagerWindowsManager::instance().findWindowById(id)->close();
            return true;
        });
    add(QStringLiteral("menu"), 2, 3, QStringLiteral("item|blank|entry|sidebar <window> [<item>]"),
        [this](const QStringList &args, const Done &done) { runMenu(args.at(0), args.mid(1), QString(), done); });
    add(QStringLiteral("menu-shot"), 3, 4, QStringLiteral("<file.png> item|blank|entry|sidebar <window> [<item>]"),
        [this](const QStringList &args, const Done &done) {
            const QString file = args.at(0);
            QFile::remove(file);
            menus->setShotPath(file);
            runMenu(args.at(1), args.mid(2), QString(), [file, done](int code, const QString &error) {
                if (code == kOk && !QFileInfo::exists(file))
                    done(kFailed, QStringLiteral("cannot write \"%1\"").arg(file));
                else
                    done(code, error);
            });
            menus->setShotPath(QString());
        });
    add(QStringLiteral("menu-trigger"), 3, 4, QStringLiteral("item|blank|entry|sidebar <window> [<item>] <action-id>"),
        [this](const QStringList &args, const Done &done) {
            runMenu(args.at(0), args.mid(1, args.size() - 2), args.last(), done);
        });

    // File operations: each publishes its event, as the views do.
    addUrlCommand(
        QStringLiteral("mkdir"), 2, 2, QStringLiteral("<window> <url>"), [](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(hfmbase::kMkdir, id, urls.first(), QVariant(), hfmbase::OperatorCallback());
        });
    add(QStringLiteral("touch"), 2, 3, QStringLiteral("<window> <folder> [suffix]"),
        [this](const QStringList &args, const Done &done) {
            const QString suffix = args.value(2);
            publishWithUrls(args.mid(0, 2), done, [suffix](quint64 id, const QList<QUrl> &urls) {
                hpf::dispatcher()->publish(
                    hfmbase::kTouchFile, id, urls.first(), 0u, suffix, QVariant(), hfmbase::OperatorCallback());
            });
        });
    addUrlCommand(QStringLiteral("copy"), 3, -1, QStringLiteral("<window> <target-folder> <source>..."),
        [noFlags](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(
                hfmbase::kCopy, id, urls.mid(1), urls.first(), noFlags, hfmbase::OperatorHandleCallback());
        });
    addUrlCommand(QStringLiteral("cut"), 3, -1, QStringLiteral("<window> <target-folder> <source>..."),
        [noFlags](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(
                hfmbase::kCutFile, id, urls.mid(1), urls.first(), noFlags, hfmbase::OperatorHandleCallback());
        });
    addUrlCommand(QStringLiteral("paste"), 2, 2, QStringLiteral("<window> <target-folder>"),
        [](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(hfmbase::kPasteFiles, id, urls.first());
        });
    addUrlCommand(QStringLiteral("delete"), 2, -1, QStringLiteral("<window> <url>..."),
        [noFlags](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(hfmbase::kDeleteFiles, id, urls, noFlags, hfmbase::OperatorHandleCallback());
        });
    addUrlCommand(QStringLiteral("trash"), 2, -1, QStringLiteral("<window> <url>..."),
        [noFlags](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(hfmbase::kMoveToTrash, id, urls, noFlags, hfmbase::OperatorHandleCallback());
        });
    addUrlCommand(QStringLiteral("restore"), 2, -1, QStringLiteral("<window> <url-in-trash>..."),
        [this](quint64 id, const QList<QUrl> &urls) { operations->restoreFromTrash(id, urls); });
    add(QStringLiteral("rename"), 3, 3, QStringLiteral("<window> <url> <new-name-or-url>"),
        [this](const QStringList &args, const Done &done) {
            QStringList resolved = args;
            // A bare name stays in the same folder.
            if (!args.at(2).contains(QLatin1Char('/'))) {
                const QUrl from = urlFromUserInput(args.at(1));
                resolved[2] = childUrl(parentUrl(from), args.at(2)).toString();
            }
            publishWithUrls(resolved, done, [](quint64 id, const QList<QUrl> &urls) {
                hpf::dispatcher()->publish(hfmbase::kRenameFile, id, urls.at(0), urls.at(1));
            });
        });
    addUrlCommand(QStringLiteral("link"), 3, 3, QStringLiteral("<window> <source> <link>"),
        [](quint64 id, const QList<QUrl> &urls) {
            hpf::dispatcher()->publish(hfmbase::kCreateSymlink, id, urls.at(0), urls.at(1), false, false);
        });
    add(QStringLiteral("chmod"), 3, 3, QStringLiteral("<window> <url> <octal-mode>"),
        [this](const QStringList &args, const Done &done) {
            bool ok = false;
            const uint mode = args.at(2).toUInt(&ok, 8);
            if (!ok || mode > 07777) {
                done(kUsage, QStringLiteral("\"%1\" is not an octal mode").arg(args.at(2)));
                return;
            }
            publishWithUrls(args.mid(0, 2), done, [mode](quint64 id, const QList<QUrl> &urls) {
                hpf::dispatcher()->publish(hfmbase::kSetPermission, id, urls.first(), permissionsFromMode(mode));
            });
        });
    addUrlCommand(QStringLiteral("hide"), 2, -1, QStringLiteral("<window> <url>..."),
        [](quint64 id, const QList<QUrl> &urls) { hpf::dispatcher()->publish(hfmbase::kHideFiles, id, urls); });
    add(QStringLiteral("clipboard"), 3, -1, QStringLiteral("<window> copy|cut <url>..."),
        [this](const QStringList &args, const Done &done) {
            if (args.at(1) != QLatin1String("copy") && args.at(1) != QLatin1String("cut")) {
                done(kUsage, QStringLiteral("the clipboard action is copy or cut"));
                return;
            }
            const quint8 action = args.at(1) == QLatin1String("cut") ? quint8(hfmbase::ClipBoard::kCutAction)
                                                                     : quint8(hfmbase::ClipBoard::kCopyAction);
            QStringList rest = args;
            rest.removeAt(1);
            publishWithUrls(rest, done, [action](quint64 id, const QList<QUrl> &urls) {
                hpf::dispatcher()->publish(hfmbase::kWriteUrlsToClipboard, id, action, urls);
            });
        });
    addUrlCommand(QStringLiteral("open-files"), 2, -1, QStringLiteral("<window> <url>..."),
        [](quint64 id, const QList<QUrl> &urls) { hpf::dispatcher()->publish(hfmbase::kOpenFiles, id, urls); });
    add(QStringLiteral("open-with"), 3, -1, QStringLiteral("<window> <application> <url>..."),
        [this](const QStringList &args, const Done &done) {
            const QString app = args.at(1);
            QStringList rest = args;
            rest.removeAt(1);
            publishWithUrls(rest, done, [app](quint64 id, const QList<QUrl> &urls) {
                hpf::dispatcher()->publish(hfmbase::kOpenFilesByApp, id, urls, QStringList {app});
            });
        });
    addUrlCommand(QStringLiteral("terminal"), 2, -1, QStringLiteral("<window> <url>..."),
        [](quint64 id, const QList<QUrl> &urls) { hpf::dispatcher()->publish(hfmbase::kOpenInTerminal, id, urls); });

    add(QStringLiteral("wait"), 1, 1, QStringLiteral("<milliseconds>"),
        [this](const QStringList &args, const Done &done) {
            int ms = 0;
            if (!parseTimeout(args.at(0), &ms)) {
                done(kUsage, QStringLiteral("\"%1\" is not a number of milliseconds").arg(args.at(0)));
                return;
            }
            QTimer::singleShot(ms, this, [done] { done(kOk, QString()); });
        });
    add(QStringLiteral("wait-for"), 1, 4, QStringLiteral("<condition> <arguments>... [timeout-ms]"),
        [this](const QStringList &args, const Done &done) { waitForCommand(args.at(0), args.mid(1), done); });
    add(QStringLiteral("expect"), 2, 2, QStringLiteral("<state-path> <json-value>"),
        [this](const QStringList &args, const Done &done) {
            QJsonValue value;
            QString error;
            const QJsonValue expected = parseJsonValueText(args.at(1));
            if (!evaluateJsonPath(collectState(log, operations), args.at(0), &value, &error)) {
                done(kFailed, error);
                return;
            }
            if (value != expected) {
                done(kFailed,
                    QStringLiteral("%1 is %2, not %3").arg(args.at(0), jsonValueText(value), jsonValueText(expected)));
                return;
            }
            done(kOk, QString());
        });
    add(QStringLiteral("state"), 0, 1, QStringLiteral("[<state-path>]"),
        [this](const QStringList &args, const Done &done) {
            const QJsonObject state = collectState(log, operations);
            if (args.isEmpty()) {
                print(QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Compact)));
                done(kOk, QString());
                return;
            }
            QJsonValue value;
            QString error;
            if (!evaluateJsonPath(state, args.at(0), &value, &error)) {
                done(kFailed, error);
                return;
            }
            print(jsonValueText(value));
            done(kOk, QString());
        });
    addWindowCommand(QStringLiteral("screenshot"), 2, 2, QStringLiteral("<window> <file.png>"),
        QStringLiteral("cannot write \"%1\""), [](quint64 id, const QStringList &args) {
            return hfmbase::FileManagerWindowsManager::instance().findWindowById(id)->grab().save(args.at(1), "PNG");
        });
    add(QStringLiteral("resize"), 3, 3, QStringLiteral("<window> <width> <height>"),
        [this](const QStringList &args, const Done &done) {
            QString error;
            const quint64 id = window(args.at(0), &error);
            const int width = args.at(1).toInt();
            const int height = args.at(2).toInt();
            if (!id || width <= 0 || height <= 0) {
                done(id ? kUsage : kFailed, id ? QStringLiteral("bad size") : error);
                return;
            }
            hfmbase::FileManagerWindowsManager::instance().findWindowById(id)->resize(width, height);
            done(kOk, QString());
        });
    add(QStringLiteral("theme"), 1, 1, QStringLiteral("light|dark"), [](const QStringList &args, const Done &done) {
        const QString name = args.at(0);
        if (name != QLatin1String("light") && name != QLatin1String("dark")) {
            done(kUsage, QStringLiteral("the theme must be light or dark"));
            return;
        }
        // A new application palette, as a desktop's theme switch gives;
        // the toolkit's theme helper follows it and signals the change.
        QApplication::setPalette(
            name == QLatin1String("dark") ? darkPalette() : QApplication::style()->standardPalette());
        done(kOk, QString());
    });
    add(QStringLiteral("echo"), 0, -1, QStringLiteral("<text>..."), [this](const QStringList &args, const Done &done) {
        print(args.join(QLatin1Char(' ')));
        done(kOk, QString());
    });
    add(QStringLiteral("clear-records"), 0, 0, QString(), [this](const QStringList &, const Done &done) {
        htk::MessageDialog::clearRecordedDialogs();
        if (log)
            log->clear();
        done(kOk, QString());
    });
    add(QStringLiteral("quit"), 0, 1, QStringLiteral("[exit-code]"),
        [this](const QStringList &args, const Done &) { finish(args.isEmpty() ? kOk : args.at(0).toInt()); });
}

}   // namespace hdeapp
