// SPDX-License-Identifier: GPL-3.0-or-later
#include "events/eventshandler.h"

#include "caches/nubixcaches.h"
#include "resources/nubixicons.h"

#include <hfmbase/globaleventtype.h>
#include <hfmbase/metatypes.h>
#include <hpf/event/event.h>
#include <htk/messagedialog.h>

#include <QApplication>
#include <QIcon>
#include <QTest>

using namespace hfmplugin_nubix;
using Key = hfmbase::AbstractJobHandler::JobCallbackKey;

namespace {
const QString kRoot = QStringLiteral("/home/a/Drive");

QUrl url(const char *text)
{
    return QUrl(QString::fromUtf8(text));
}

void setSync(const QString &root, const QStringList &banDirs = {})
{
    NubixCaches::instance()->setSyncInfo(SyncInfo {root, banDirs, {}, {}});
}

void setStatus(const QString &path, int planStatus)
{
    NubixCaches::instance()->cacheFileDatas({FileData {path, false, 0, {}, planStatus}});
}

// Records what reaches the host's own listeners of an event, that is what
// the plug-in's filters let pass or published again.
struct EventTap
{
    explicit EventTap(hpf::EventType type) : type(type)
    {
        hpf::dispatcher()->subscribeInvoker(type, this, [this](const QVariantList &args) {
            calls.append(args);
            return QVariant();
        });
    }
    ~EventTap() { hpf::dispatcher()->unsubscribe(type, this); }
    hpf::EventType type;
    QList<QVariantList> calls;
};
}   // namespace

class TestEventsHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        htk::MessageDialog::setAutomationMode(true);
        installIcons();
        EventsHandler::instance()->installEventsFilter();
    }
    void init()
    {
        setSync(kRoot);
        htk::MessageDialog::clearRecordedDialogs();
    }

    void redirect_data()
    {
        QTest::addColumn<QUrl>("asked");
        QTest::addColumn<bool>("ready");
        QTest::addColumn<QUrl>("shown");

        QTest::newRow("tree without a root goes to the welcome page")
            << url("nubix:///") << false << url("nubix-login:///");
        QTest::newRow("subfolder without a root too") << url("nubix:///a/b") << false << url("nubix-login:///");
        QTest::newRow("welcome page with a root goes to the tree")
            << url("nubix-login:///") << true << url("nubix:///");
        QTest::newRow("tree with a root stays") << url("nubix:///a") << true << url("nubix:///a");
        QTest::newRow("welcome page without a root stays") << url("nubix-login:///") << false << url("nubix-login:///");
        QTest::newRow("other scheme untouched") << url("file:///tmp") << false << url("file:///tmp");
    }
    void redirect()
    {
        QFETCH(QUrl, asked);
        QFETCH(bool, ready);
        QFETCH(QUrl, shown);
        setSync(ready ? kRoot : QString());

        // Each of the three navigations publishes its own event again, once.
        EventTap enter(hfmbase::kChangeCurrentUrl);
        EventTap tab(hfmbase::kOpenNewTab);
        EventTap window(hfmbase::kOpenNewWindow);
        hpf::dispatcher()->publish(hfmbase::kChangeCurrentUrl, quint64(7), asked);
        hpf::dispatcher()->publish(hfmbase::kOpenNewTab, quint64(7), asked);
        hpf::dispatcher()->publish(hfmbase::kOpenNewWindow, asked, true);

        const QList<QVariantList> once {{quint64(7), shown}};
        QCOMPARE(enter.calls, once);
        QCOMPARE(tab.calls, once);
        QCOMPARE(window.calls.size(), 1);
        QCOMPARE(window.calls[0].value(0).toUrl(), shown);
    }

    void tabName_data()
    {
        QTest::addColumn<QUrl>("location");
        QTest::addColumn<bool>("named");

        QTest::newRow("tree root") << url("nubix:///") << true;
        QTest::newRow("welcome page") << url("nubix-login:///") << true;
        QTest::newRow("welcome page, any path") << url("nubix-login:///x") << true;
        QTest::newRow("subfolder keeps the host's name") << url("nubix:///docs") << false;
        QTest::newRow("root with an empty path") << url("nubix:") << false;
        QTest::newRow("local root") << url("file:///") << false;
    }
    void tabName()
    {
        QFETCH(QUrl, location);
        QFETCH(bool, named);
        QString name = QStringLiteral("host");
        QCOMPARE(EventsHandler::instance()->hookSetTabName(location, &name), named);
        QCOMPARE(name, named ? QStringLiteral("Kelo Drive") : QStringLiteral("host"));
    }

    void emblems_data()
    {
        QTest::addColumn<QUrl>("item");
        QTest::addColumn<QString>("cachedPath");
        QTest::addColumn<int>("status");
        QTest::addColumn<QStringList>("banDirs");
        QTest::addColumn<QString>("emblem");

        const QStringList none;
        QTest::newRow("status 1 syncing") << url("nubix:///a.txt") << "/a.txt" << 1 << none << "fbnubix_file_syncing";
        QTest::newRow("status 3 done") << url("nubix:///a.txt") << "/a.txt" << 3 << none << "fbnubix_file_done";
        QTest::newRow("status 10 failed") << url("nubix:///a.txt") << "/a.txt" << 10 << none << "fbnubix_file_error";
        QTest::newRow("status 4 none") << url("nubix:///a.txt") << "/a.txt" << 4 << none << "";
        QTest::newRow("unknown file none") << url("nubix:///b.txt") << "/a.txt" << 3 << none << "";
        QTest::newRow("ban overrides done")
            << url("nubix:///d") << "/d" << 3 << QStringList {QStringLiteral("/d")} << "fbnubix_file_ban";
        QTest::newRow("ban without status")
            << url("nubix:///d") << "/x" << 3 << QStringList {QStringLiteral("/d")} << "fbnubix_file_ban";
        QTest::newRow("ban is a whole-entry match")
            << url("nubix:///d2") << "/d2" << 3 << QStringList {QStringLiteral("/d")} << "fbnubix_file_done";
        QTest::newRow("temp file shows its target")
            << url("nubix:///a.txt.temp") << "/a.txt" << 2 << none << "fbnubix_file_syncing";
        QTest::newRow("every .temp is removed")
            << url("nubix:///x.temp.d/y.temp") << "/x.d/y" << 3 << none << "fbnubix_file_done";
        QTest::newRow(".temp only inside the name is kept") << url("nubix:///x.temp.d") << "/x.d" << 3 << none << "";
        QTest::newRow("decoded path is the key") << url("nubix:///a%20b") << "/a b" << 3 << none << "fbnubix_file_done";
        QTest::newRow("local file gets nothing") << url("file:///home/a/Drive/a.txt") << "/a.txt" << 3 << none << "";
    }
    void emblems()
    {
        QFETCH(QUrl, item);
        QFETCH(QString, cachedPath);
        QFETCH(int, status);
        QFETCH(QStringList, banDirs);
        QFETCH(QString, emblem);
        setSync(kRoot, banDirs);
        setStatus(cachedPath, status);

        QList<QIcon> icons {QIcon()};
        const bool answered = EventsHandler::instance()->hookRequestCustomEmblems(item, &icons);
        QCOMPARE(answered, !emblem.isEmpty());
        QCOMPARE(icons.size(), emblem.isEmpty() ? 1 : 2);
        QCOMPARE(icons.last().name(), emblem);
        // No answer without a list to put it in.
        QVERIFY(!EventsHandler::instance()->hookRequestCustomEmblems(item, nullptr));
        setStatus(cachedPath, 0);
    }

    void themeFindsEveryIcon_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"fbnubix_file_syncing", "fbnubix_file_done", "fbnubix_file_error", "fbnubix_file_ban",
                 "fbnubix_file_locked", "kelo-drive", "fbnubix-symbolic", "nubix-harddisk-symbolic", "fbnubix_personal",
                 "nubix-harddisk-individual-symbolic", "fbnubix_enterprise", "nubix-harddisk-enterprise-symbolic"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void themeFindsEveryIcon()
    {
        QFETCH(QString, name);
        const QString theme = QIcon::themeName();
        const QStringList paths = QIcon::themeSearchPaths();
        // As the host runs: a desktop theme in the system folders, and with no theme at all.
        for (const QString &current : {QStringLiteral("Adwaita"), QString()}) {
            QIcon::setThemeSearchPaths({QStringLiteral("/usr/share/icons")});
            QIcon::setThemeName(current);
            installIcons();
            const QIcon icon = QIcon::fromTheme(name);
            QVERIFY2(!icon.isNull(), qPrintable(current));
            QCOMPARE(icon.name(), name);
            QVERIFY(!icon.pixmap(16, 16).isNull());
        }
        QIcon::setThemeSearchPaths(paths);
        QIcon::setThemeName(theme);
    }

    void takeHandle_data()
    {
        QTest::addColumn<QList<QUrl>>("urls");
        QTest::addColumn<bool>("ours");
        QTest::addColumn<QList<QUrl>>("local");

        QTest::newRow("empty") << QList<QUrl> {} << false << QList<QUrl> {};
        QTest::newRow("local only") << QList<QUrl> {url("file:///tmp/a")} << false
                                    << QList<QUrl> {url("file:///tmp/a")};
        QTest::newRow("cloud only") << QList<QUrl> {url("nubix:///a"), url("nubix:///b%20c")} << true
                                    << QList<QUrl> {url("file:///home/a/Drive/a"), url("file:///home/a/Drive/b%20c")};
        QTest::newRow("mixed keeps order")
            << QList<QUrl> {url("file:///tmp/x"), url("nubix:///a"), url("smb://h/y")} << true
            << QList<QUrl> {url("file:///tmp/x"), url("file:///home/a/Drive/a"), url("smb://h/y")};
        QTest::newRow("welcome page is not a cloud file")
            << QList<QUrl> {url("nubix-login:///")} << false << QList<QUrl> {url("nubix-login:///")};
    }
    void takeHandle()
    {
        QFETCH(QList<QUrl>, urls);
        QFETCH(bool, ours);
        QFETCH(QList<QUrl>, local);
        QList<QUrl> out {url("file:///stale")};
        QCOMPARE(EventsHandler::takeHandle(urls, &out), ours);
        QCOMPARE(out, local);
        QCOMPARE(EventsHandler::takeHandle(urls, nullptr), ours);
    }

    void renameMap_data()
    {
        QTest::addColumn<QUrl>("oldUrl");
        QTest::addColumn<QUrl>("newUrl");
        QTest::addColumn<bool>("republished");
        QTest::addColumn<QUrl>("shownUrl");

        QTest::newRow("local result mapped to the tree")
            << url("nubix:///a") << url("file:///home/a/Drive/b") << true << url("nubix:///b");
        QTest::newRow("already cloud passes") << url("nubix:///a") << url("nubix:///b") << false << QUrl();
        QTest::newRow("outside the root dropped") << url("nubix:///a") << url("file:///tmp/b") << true << QUrl();
        QTest::newRow("other scheme dropped") << url("nubix:///a") << url("smb://h/b") << true << QUrl();
    }
    void renameMap()
    {
        QFETCH(QUrl, oldUrl);
        QFETCH(QUrl, newUrl);
        QFETCH(bool, republished);
        QFETCH(QUrl, shownUrl);
        QMap<QUrl, QUrl> out;
        QCOMPARE(EventsHandler::cloudRenameMap({{oldUrl, newUrl}}, &out), republished);
        if (shownUrl.isEmpty())
            QVERIFY(out.isEmpty());
        else
            QCOMPARE(out, (QMap<QUrl, QUrl> {{oldUrl, shownUrl}}));
    }

    void createFileEvent_data()
    {
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<bool>("translated");

        // The host's six arguments, with the folder and the kind given, cut or extended to `count`.
        const auto args = [](const QVariant &dir, const QVariant &kind, int count = 6) {
            QVariantList list {quint64(3), dir, kind, QStringLiteral("txt"), QVariant(),
                QVariant::fromValue(hfmbase::OperatorCallback()), 1};
            return list.mid(0, count);
        };
        const QVariant cloud = url("nubix:///d");
        QTest::newRow("cloud folder, file kind") << args(cloud, 0u) << true;
        QTest::newRow("cloud folder, template url") << args(cloud, url("file:///t.odt")) << true;
        QTest::newRow("local folder") << args(url("file:///tmp"), 0u) << false;
        QTest::newRow("folder as text") << args(QStringLiteral("nubix:///d"), 0u) << false;
        QTest::newRow("kind neither number nor url") << args(cloud, QVariant::fromValue(QPoint(1, 1))) << false;
        QTest::newRow("five arguments") << args(cloud, 0u, 5) << false;
        QTest::newRow("seven arguments") << args(cloud, 0u, 7) << false;
    }
    void createFileEvent()
    {
        QFETCH(QVariantList, args);
        QFETCH(bool, translated);
        EventTap tap(hfmbase::kTouchFile);

        hpf::dispatcher()->publishList(hfmbase::kTouchFile, args);

        QCOMPARE(tap.calls.size(), 1);
        const QVariantList seen = tap.calls.first();
        QCOMPARE(seen.size(), args.size());
        QCOMPARE(seen.at(1), translated ? QVariant(url("file:///home/a/Drive/d")) : args.at(1));
        QCOMPARE(seen.at(2), args.at(2));
    }

    void createdItemsReportedInTheTree()
    {
        hfmbase::CallbackArgus seen;
        auto shell = EventsHandler::fileCreatedCallbackShell([&seen](hfmbase::CallbackArgus args) { seen = args; });
        auto args = hfmbase::CallbackArgus::create();
        args->insert(Key::kSourceUrlsKey, QVariant::fromValue(QList<QUrl> {url("file:///home/a/Drive/d")}));
        args->insert(
            Key::kTargetUrlsKey, QVariant::fromValue(QList<QUrl> {url("file:///home/a/Drive/d/N"), url("file:///x")}));
        args->insert(Key::kSuccessKey, true);
        shell(args);
        QVERIFY(seen);
        QCOMPARE(seen->value(Key::kSourceUrlsKey).value<QList<QUrl>>(), QList<QUrl> {url("nubix:///d")});
        QCOMPARE(seen->value(Key::kTargetUrlsKey).value<QList<QUrl>>(),
            (QList<QUrl> {url("nubix:///d/N"), url("file:///x")}));
        QCOMPARE(seen->value(Key::kSuccessKey), QVariant(true));
        // An empty callback is never called, whatever the map.
        EventsHandler::fileCreatedCallbackShell(hfmbase::OperatorCallback())(args);
    }

    void openFiles_data()
    {
        QTest::addColumn<QList<QUrl>>("urls");
        QTest::addColumn<QList<QUrl>>("opened");
        QTest::addColumn<int>("dialogs");

        QTest::newRow("one transfer among others refuses all") << QList<QUrl> {url("nubix:///b.txt"),
            url("file:///home/a/Drive/a.temp"), url("file:///home/a/Drive/c.temp")}
                                                               << QList<QUrl> {} << 1;
        QTest::newRow(".temp outside the root opens")
            << QList<QUrl> {url("file:///tmp/a.temp")} << QList<QUrl> {url("file:///tmp/a.temp")} << 0;
        QTest::newRow("suffix is case-sensitive")
            << QList<QUrl> {url("nubix:///a.TEMP")} << QList<QUrl> {url("file:///home/a/Drive/a.TEMP")} << 0;
    }
    void openFiles()
    {
        QFETCH(QList<QUrl>, urls);
        QFETCH(QList<QUrl>, opened);
        QFETCH(int, dialogs);
        EventTap tap(hfmbase::kOpenFiles);

        hpf::dispatcher()->publish(hfmbase::kOpenFiles, quint64(2), urls);

        QCOMPARE(tap.calls.size(), opened.isEmpty() ? 0 : 1);
        if (!opened.isEmpty())
            QCOMPARE(tap.calls.first().at(1).value<QList<QUrl>>(), opened);
        const auto records = htk::MessageDialog::recordedDialogs();
        QCOMPARE(records.size(), dialogs);
        if (dialogs) {
            QCOMPARE(records.first().title, QStringLiteral("Open failed"));
            QCOMPARE(records.first().buttons, QStringList {QStringLiteral("Confirm")});
        }
    }

    // Which URL of each operation is translated: the rest of the arguments pass unchanged.
    void operationTranslation_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QVariantList>("expected");

        const QVariant wid = QVariant::fromValue(quint64(4));
        const QVariant flags = QVariant::fromValue(hfmbase::AbstractJobHandler::JobFlags());
        const QVariant handle = QVariant::fromValue(hfmbase::OperatorHandleCallback());
        const QVariant cloudList = QVariant::fromValue(QList<QUrl> {url("nubix:///a"), url("file:///tmp/x")});
        const QVariant localList
            = QVariant::fromValue(QList<QUrl> {url("file:///home/a/Drive/a"), url("file:///tmp/x")});
        const QVariant outside = QVariant::fromValue(QList<QUrl> {url("file:///tmp/x")});

        QTest::newRow("delete mixed") << int(hfmbase::kDeleteFiles) << QVariantList {wid, cloudList, flags, handle}
                                      << QVariantList {wid, localList, flags, handle};
        QTest::newRow("clipboard") << int(hfmbase::kWriteUrlsToClipboard)
                                   << QVariantList {wid, QVariant::fromValue(quint8(1)), cloudList}
                                   << QVariantList {wid, QVariant::fromValue(quint8(1)), localList};
        QTest::newRow("terminal") << int(hfmbase::kOpenInTerminal) << QVariantList {wid, cloudList}
                                  << QVariantList {wid, localList};
        QTest::newRow("copy out of the tree untouched")
            << int(hfmbase::kCopy) << QVariantList {wid, cloudList, url("file:///tmp"), flags, handle}
            << QVariantList {wid, cloudList, url("file:///tmp"), flags, handle};
        QTest::newRow("as admin") << int(hfmbase::kOpenAsAdmin) << QVariantList {url("nubix:///a")}
                                  << QVariantList {url("file:///home/a/Drive/a")};
        QTest::newRow("paste result shown in the tree")
            << int(hfmbase::kCopyResult)
            << QVariantList {outside, QVariant::fromValue(QList<QUrl> {url("file:///home/a/Drive/x")}), true, QString()}
            << QVariantList {outside, QVariant::fromValue(QList<QUrl> {url("nubix:///x")}), true, QString()};
        QTest::newRow("paste result outside untouched")
            << int(hfmbase::kCopyResult) << QVariantList {outside, outside, false, QStringLiteral("e")}
            << QVariantList {outside, outside, false, QStringLiteral("e")};
    }
    void operationTranslation()
    {
        QFETCH(int, type);
        QFETCH(QVariantList, args);
        QFETCH(QVariantList, expected);
        EventTap tap(type);

        hpf::dispatcher()->publishList(type, args);

        QCOMPARE(tap.calls.size(), 1);
        const QVariantList &seen = tap.calls.first();
        QCOMPARE(seen.size(), expected.size());
        for (int i = 0; i < seen.size(); ++i) {
            // Callables have no comparison; their type must survive.
            QCOMPARE(seen.at(i).userType(), expected.at(i).userType());
            if (expected.at(i).userType() == qMetaTypeId<QList<QUrl>>())
                QCOMPARE(seen.at(i).value<QList<QUrl>>(), expected.at(i).value<QList<QUrl>>());
            else if (expected.at(i).userType() < QMetaType::User)
                QCOMPARE(seen.at(i), expected.at(i));
        }
    }

    void sidebarMenuWithoutScene()
    {
        QTest::ignoreMessage(QtWarningMsg, "Craete scene for computer failed: ComputerMenu");
        EventsHandler::createSidebarItemMenu(1, url("nubix-login:///"), QPoint());
    }
};

QTEST_MAIN(TestEventsHandler)
#include "tst_eventshandler.moc"
