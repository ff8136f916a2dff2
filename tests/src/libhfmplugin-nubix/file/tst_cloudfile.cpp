// SPDX-License-Identifier: GPL-3.0-or-later
// The cloud iterator, file info and watcher, as the host makes them through
// its factories for "nubix" URLs, over a real sync root.
#include "file/cloudfileiterator.h"
#include "file/cloudfilewatcher.h"
#include "file/cloudfilewatcher_p.h"
#include "file/cloudproxyfileinfo.h"

#include "cloudenvironment.h"

#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace hfmplugin_nubix;
using UrlType = hfmbase::FileInfo::FileUrlInfoType;
using CanType = hfmbase::FileInfo::FileCanType;
using ViewType = hfmbase::FileInfo::ViewType;
// A change made to the local file (and, for a rename, its new name).
using Change = std::function<bool(const QString &local, const QString &target)>;

Q_DECLARE_METATYPE(QDir::Filters)
Q_DECLARE_METATYPE(QDirIterator::IteratorFlags)
Q_DECLARE_METATYPE(UrlType)
Q_DECLARE_METATYPE(CanType)
Q_DECLARE_METATYPE(Change)

namespace {

const QString kWelcomeTip = QStringLiteral("Welcome to upload frequently used files");
const QString kDropTip = QStringLiteral("Drag and drop or copy the files you want to synchronize here.\n"
                                        "Your files will be synchronized across multiple devices.");

int g_minute = 0;
QTime clockAtMinute()
{
    return QTime(10, g_minute, 30);
}

hfmbase::FileInfoPointer cloudInfo(const QString &relative)
{
    return hfmbase::InfoFactory::create<hfmbase::FileInfo>(CloudEnvironment::cloud(relative));
}

hfmbase::AbstractDirIteratorPointer cloudIterator(const QString &relative, QDir::Filters filters = QDir::NoFilter,
    const QStringList &nameFilters = {}, QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags)
{
    return hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
        CloudEnvironment::cloud(relative), nameFilters, filters, flags);
}

void putStatus(const QString &cloudPath)
{
    NubixCaches::instance()->cacheFileDatas({FileData {cloudPath, false, 0, {}, 3}});
}

bool hasStatus(const QString &cloudPath)
{
    return NubixCaches::instance()->fileData(cloudPath).path == cloudPath;
}

}   // namespace

class TestCloudFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(env.setUp());
        QVERIFY(outside.isValid());
        for (const char *file : {"a.txt", "b.log", ".hidden.txt", "space \u00e9t\u00e9 #1.txt", "sub/c.txt",
                 "sub/deeper/d.txt", "dir/doc.txt"})
            QVERIFY(env.makeFile(QString::fromUtf8(file), "data"));
        QVERIFY(QDir().mkpath(env.localPath(QStringLiteral("empty"))));
        QVERIFY(QFile::link(QStringLiteral("doc.txt"), env.localPath(QStringLiteral("dir/link"))));
        QVERIFY(QFile::link(outside.path(), env.localPath(QStringLiteral("outlink"))));
    }
    void init() { CloudEnvironment::useRoot(env.root()); }
    void cleanup() { CloudProxyFileInfo::setClock(nullptr); }

    void madeByTheHostsFactoriesAndNeverShared()
    {
        const QUrl url = CloudEnvironment::cloud(QStringLiteral("dir/doc.txt"));
        QVERIFY(hfmbase::InfoCache::instance().cacheDisable(QStringLiteral("nubix")));
        const hfmbase::FileInfoPointer info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(url);
        QVERIFY(dynamic_cast<CloudProxyFileInfo *>(info.data()));
        QVERIFY(info != hfmbase::InfoFactory::create<hfmbase::FileInfo>(url));
        QCOMPARE(info->fileUrl(), url);

        QVERIFY(hfmbase::WatcherCache::instance().cacheDisable(QStringLiteral("nubix")));
        const auto watcher = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(url, true);
        QVERIFY(qobject_cast<CloudFileWatcher *>(watcher.data()));
        QVERIFY(watcher != hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(url, true));
        QCOMPARE(watcher->url(), url);
    }

    // Whatever the host asks for, the names are those of the local folder,
    // next() stays local, fileUrl() is the cloud form of the same entry and
    // fileInfo() the cloud info of it.
    void listsLikeTheLocalFolder_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QStringList>("nameFilters");
        QTest::addColumn<QDir::Filters>("filters");
        QTest::addColumn<QDirIterator::IteratorFlags>("flags");
        QTest::addColumn<int>("expectedCount");
        QTest::addColumn<QString>("url");

        const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot;
        const QDirIterator::IteratorFlags flat = QDirIterator::NoIteratorFlags;
        const QStringList txt {QStringLiteral("*.txt")};
        QTest::newRow("cloud root") << QString() << QStringList() << all << flat << 7 << "nubix:///";
        QTest::newRow("missing folder") << "missing" << QStringList() << all << flat << 0 << "nubix:///missing";
        QTest::newRow("name filter") << QString() << txt << QDir::Filters(QDir::Files) << flat << 2 << "nubix:///";
        QTest::newRow("hidden shown") << QString() << QStringList() << (all | QDir::Hidden) << flat << 8 << "nubix:///";
        QTest::newRow("recursive") << QString() << txt << QDir::Filters(QDir::Files)
                                   << QDirIterator::IteratorFlags(QDirIterator::Subdirectories) << 5 << "nubix:///";
        QTest::newRow("nested with trailing slash")
            << "sub/deeper/" << QStringList() << all << flat << 1 << "nubix:///sub/deeper/";
    }
    void listsLikeTheLocalFolder()
    {
        QFETCH(QString, dir);
        QFETCH(QStringList, nameFilters);
        QFETCH(QDir::Filters, filters);
        QFETCH(QDirIterator::IteratorFlags, flags);

        // What the same request gives on the local folder, by relative path.
        QMap<QString, QString> expected;
        const QDir rootDir(env.root());
        QDirIterator local(env.localPath(dir), nameFilters, filters, flags);
        while (local.hasNext()) {
            const QString path = local.next();
            expected.insert(rootDir.relativeFilePath(path), local.fileName());
        }
        QTEST(expected.size(), "expectedCount");

        const auto it = cloudIterator(dir, filters, nameFilters, flags);
        QVERIFY(it);
        QTEST(it->url().toString(), "url");
        while (it->hasNext()) {
            const QUrl next = it->next();
            QVERIFY2(next.isLocalFile(), qPrintable(next.toString()));
            const QString relative = rootDir.relativeFilePath(next.toLocalFile());
            QVERIFY2(expected.contains(relative), qPrintable(relative));
            QCOMPARE(it->fileName(), expected.take(relative));
            QCOMPARE(it->fileUrl(), CloudEnvironment::cloud(relative));

            const hfmbase::FileInfoPointer info = it->fileInfo();
            QVERIFY(dynamic_cast<CloudProxyFileInfo *>(info.data()));
            QCOMPARE(info->fileUrl(), it->fileUrl());
            QCOMPARE(info->urlOf(UrlType::kRedirectedFileUrl), next);
            const QFileInfo file(next.toLocalFile());
            QCOMPARE(info->fileName(), file.fileName());
            QCOMPARE(info->isDir(), file.isDir());
            if (file.isFile())
                QCOMPARE(info->size(), file.size());
        }
        QVERIFY(expected.isEmpty());
    }

    // The root is read on every call, so an iterator made before a change
    // answers for the new root.
    void iteratorFollowsTheRootWhileListing()
    {
        QTemporaryDir elsewhere;
        const auto it = cloudIterator(QStringLiteral("sub"), QDir::Files);
        QVERIFY(it && it->hasNext());
        it->next();
        QCOMPARE(it->fileUrl(), CloudEnvironment::cloud(QStringLiteral("sub/c.txt")));

        CloudEnvironment::useRoot(elsewhere.path());
        QVERIFY(it->fileUrl().isEmpty());
        QVERIFY(it->url().isEmpty());
        CloudEnvironment::useRoot(env.localPath(QStringLiteral("sub")));
        QCOMPARE(it->fileUrl(), CloudEnvironment::cloud(QStringLiteral("c.txt")));
    }

    void urlOf_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<UrlType>("type");
        QTest::addColumn<QUrl>("expected");

        const QUrl doc = CloudEnvironment::cloud(QStringLiteral("dir/doc.txt"));
        // "nubix://" with no path: what the root itself maps to.
        QUrl cloudWithoutPath;
        cloudWithoutPath.setScheme(QStringLiteral("nubix"));
        cloudWithoutPath.setHost(QStringLiteral(""));
        QTest::newRow("url") << "dir/doc.txt" << UrlType::kUrl << doc;
        QTest::newRow("parent") << "dir/doc.txt" << UrlType::kParentUrl
                                << CloudEnvironment::cloud(QStringLiteral("dir"));
        QTest::newRow("parent of a top-level file is the root itself")
            << "a.txt" << UrlType::kParentUrl << cloudWithoutPath;
        QTest::newRow("redirection is the local file")
            << "dir/doc.txt" << UrlType::kRedirectedFileUrl
            << QUrl::fromLocalFile(env.localPath(QStringLiteral("dir/doc.txt")));
        QTest::newRow("redirection of the cloud root")
            << QString() << UrlType::kRedirectedFileUrl << QUrl::fromLocalFile(env.root() + QLatin1Char('/'));
        QTest::newRow("link target inside the root") << "dir/link" << UrlType::kSymLinkTargetUrl << doc;
        QTest::newRow("link target outside the root") << "outlink" << UrlType::kSymLinkTargetUrl << QUrl();
        QTest::newRow("no link target") << "dir/doc.txt" << UrlType::kSymLinkTargetUrl << QUrl();
    }
    void urlOf()
    {
        QFETCH(QString, path);
        QFETCH(UrlType, type);
        QFETCH(QUrl, expected);
        const QUrl url = cloudInfo(path)->urlOf(type);
        QCOMPARE(url, expected);
        QCOMPARE(url.isEmpty(), expected.isEmpty());
    }

    // Redirection is always allowed; everything else is the local file's answer.
    void canAttributes_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<CanType>("type");
        QTest::addColumn<bool>("asLocal");

        QTest::newRow("redirect the cloud root") << QString() << CanType::kCanRedirectionFileUrl << false;
        QTest::newRow("rename") << "dir/doc.txt" << CanType::kCanRename << true;
        QTest::newRow("drag a missing file") << "missing.txt" << CanType::kCanDrag << true;
    }
    void canAttributes()
    {
        QFETCH(QString, path);
        QFETCH(CanType, type);
        QFETCH(bool, asLocal);
        const hfmbase::FileInfoPointer info = cloudInfo(path);
        if (!asLocal) {
            QVERIFY(info->canAttributes(type));
            return;
        }
        const auto local = hfmbase::InfoFactory::create<hfmbase::FileInfo>(
            QUrl::fromLocalFile(env.localPath(path)), hfmbase::InfoFactory::CreateType::kCreateNoCache);
        QCOMPARE(info->canAttributes(type), local->canAttributes(type));
    }

    void viewOfTip()
    {
        CloudProxyFileInfo::setClock(&clockAtMinute);
        const hfmbase::FileInfoPointer info = cloudInfo(QStringLiteral("dir"));
        // No state between calls: the same info follows the clock.
        g_minute = 13;
        QCOMPARE(info->viewOfTip(ViewType::kEmptyDir), kWelcomeTip);
        g_minute = 14;
        QCOMPARE(info->viewOfTip(ViewType::kEmptyDir), kDropTip);
        // Any other tip is the local folder's, whatever the time.
        const QString loading
            = hfmbase::InfoFactory::create<hfmbase::FileInfo>(QUrl::fromLocalFile(env.localPath(QStringLiteral("dir"))))
                  ->viewOfTip(ViewType::kLoading);
        QVERIFY(!loading.isEmpty());
        g_minute = 13;
        QCOMPARE(info->viewOfTip(ViewType::kLoading), loading);
    }

    // Every local change reaches the host as the same change of the cloud
    // URL; only a deletion drops the file's sync status, and only after the
    // views were told.
    void watcherRelaysLocalChanges_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("target");
        QTest::addColumn<Change>("change");
        QTest::addColumn<QByteArray>("signal");

        const Change create = [](const QString &local, const QString &) { return QFile(local).open(QFile::WriteOnly); };
        const Change remove = [](const QString &local, const QString &) { return QFile::remove(local); };
        const Change write = [](const QString &local, const QString &) {
            QFile file(local);
            return file.open(QFile::Append) && file.write("more") == 4;
        };
        const Change rename = [](const QString &local, const QString &target) { return QFile::rename(local, target); };
        const QByteArray created = SIGNAL(subfileCreated(QUrl));
        const QString root;
        const QString sub = QStringLiteral("sub");
        QTest::newRow("new file in a subfolder") << sub << "sub/new-2.txt" << root << create << created;
        QTest::newRow("deleted file with odd characters")
            << root << "\u00e9t\u00e9 #6 100%.txt" << root << remove << QByteArray(SIGNAL(fileDeleted(QUrl)));
        QTest::newRow("content written") << sub << "sub/old-8.txt" << root << write
                                         << QByteArray(SIGNAL(fileAttributeChanged(QUrl)));
        QTest::newRow("renamed in a subfolder")
            << sub << "sub/a #10.txt"
            << "sub/b %10.txt" << rename << QByteArray(SIGNAL(fileRename(QUrl, QUrl)));
    }
    void watcherRelaysLocalChanges()
    {
        QFETCH(QString, dir);
        QFETCH(QString, file);
        QFETCH(QString, target);
        QFETCH(Change, change);
        QFETCH(QByteArray, signal);

        const bool statusDropped = signal == SIGNAL(fileDeleted(QUrl));
        if (signal != SIGNAL(subfileCreated(QUrl)))
            QVERIFY(env.makeFile(file, "old"));
        const QString cloudPath = QLatin1Char('/') + file;
        putStatus(cloudPath);
        putStatus(QStringLiteral("/unrelated.txt"));

        CloudFileWatcher watcher(CloudEnvironment::cloud(dir));
        QSignalSpy expected(&watcher, signal.constData());
        QList<QUrl> reported;
        const auto keep = [&reported](const QUrl &url) { reported.append(url); };
        connect(&watcher, &hfmbase::AbstractFileWatcher::subfileCreated, this, keep);
        connect(&watcher, &hfmbase::AbstractFileWatcher::fileAttributeChanged, this, keep);
        connect(&watcher, &hfmbase::AbstractFileWatcher::fileRename, this,
            [&reported](const QUrl &from, const QUrl &to) { reported << from << to; });
        // Receivers of a deletion may still read the status they are about to lose.
        QStringList statusAtDeletion;
        connect(&watcher, &hfmbase::AbstractFileWatcher::fileDeleted, this, [&](const QUrl &url) {
            reported.append(url);
            statusAtDeletion.append(NubixCaches::instance()->fileData(url.path(QUrl::FullyDecoded)).path);
        });
        QVERIFY(watcher.startWatcher());
        QVERIFY(change(env.localPath(file), env.localPath(target)));

        QTRY_VERIFY(!expected.isEmpty());
        QList<QUrl> wanted {CloudEnvironment::cloud(file)};
        if (!target.isEmpty())
            wanted.append(CloudEnvironment::cloud(target));
        QList<QUrl> given;
        for (const QVariant &argument : expected.first())
            given.append(argument.toUrl());
        QCOMPARE(given, wanted);
        // Nothing that reaches the host is a local URL.
        for (const QUrl &url : qAsConst(reported))
            QVERIFY2(url.scheme() == QLatin1String("nubix"), qPrintable(url.toString()));

        if (statusDropped)
            QCOMPARE(statusAtDeletion.value(0), cloudPath);
        QCOMPARE(hasStatus(cloudPath), !statusDropped);
        QVERIFY(hasStatus(QStringLiteral("/unrelated.txt")));
        NubixCaches::instance()->removeFileCache(cloudPath);
    }

    void watcherStopStopsTheLocalWatcher()
    {
        CloudFileWatcher watcher(CloudEnvironment::cloud({}));
        // The host shares its local watchers, so this is the cloud watcher's own.
        const auto local = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(
            QUrl::fromLocalFile(env.root() + QLatin1Char('/')), true);
        QVERIFY(local && !local->isStarted());
        QVERIFY(watcher.startWatcher());
        QVERIFY(watcher.isStarted() && local->isStarted());
        QVERIFY(watcher.stopWatcher());
        QVERIFY(!watcher.isStarted());
        QVERIFY(!local->isStarted());
    }

    // A file that is no longer below the root (the root moved while we
    // watched) is reported with an empty URL and costs no other status.
    void watcherRootMovedWhileWatching()
    {
        QTemporaryDir elsewhere;
        QVERIFY(env.makeFile(QStringLiteral("sub/stray.txt")));
        putStatus(QStringLiteral("/sub/stray.txt"));
        putStatus(QStringLiteral("/stray.txt"));

        CloudFileWatcher watcher(CloudEnvironment::cloud(QStringLiteral("sub")));
        QSignalSpy deleted(&watcher, &hfmbase::AbstractFileWatcher::fileDeleted);
        QVERIFY(watcher.startWatcher());
        CloudEnvironment::useRoot(elsewhere.path());
        QVERIFY(QFile::remove(env.localPath(QStringLiteral("sub/stray.txt"))));

        QTRY_COMPARE(deleted.count(), 1);
        QVERIFY(deleted.first().first().toUrl().isEmpty());
        QVERIFY(hasStatus(QStringLiteral("/sub/stray.txt")));
        QVERIFY(hasStatus(QStringLiteral("/stray.txt")));
    }

    // Not a cloud URL: the host has nothing local behind it, so nothing is
    // listed, described or watched, and nothing breaks.
    void foreignUrlGivesEmptyAnswers_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::newRow("other scheme") << QUrl(QStringLiteral("smb://host/share"));
        QTest::newRow("local") << QUrl::fromLocalFile(QStringLiteral("/tmp"));
        QTest::newRow("empty") << QUrl();
    }
    void foreignUrlGivesEmptyAnswers()
    {
        QFETCH(QUrl, url);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^DirIteratorFactory::createIterator: ")));
        CloudFileIterator it(url, {}, QDir::AllEntries | QDir::NoDotAndDotDot);
        QVERIFY(!it.hasNext());
        QVERIFY(it.next().isEmpty());
        QVERIFY(it.fileName().isEmpty());
        QVERIFY(it.fileUrl().isEmpty());
        QVERIFY(it.url().isEmpty());
        QVERIFY(!it.fileInfo());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^InfoFactory::createInfo: ")));
        const CloudProxyFileInfo info(url);
        QVERIFY(!info.proxyInfo());
        QCOMPARE(info.fileUrl(), url);
        QVERIFY(!info.exists());
        QVERIFY(info.fileName().isEmpty());
        for (UrlType type : {UrlType::kUrl, UrlType::kParentUrl, UrlType::kRedirectedFileUrl})
            QVERIFY(info.urlOf(type).isEmpty());
        QVERIFY(info.canAttributes(CanType::kCanRedirectionFileUrl));
        QVERIFY(!info.canAttributes(CanType::kCanDelete));
        QVERIFY(info.viewOfTip(ViewType::kLoading).isEmpty());

        const QRegularExpression watcherWarning(QStringLiteral("^WatcherFactory::createWatcher: "));
        QTest::ignoreMessage(QtWarningMsg, watcherWarning);
        CloudFileWatcher watcher(url);
        QVERIFY(!watcher.startWatcher());
        QVERIFY(!watcher.isStarted());
        QTest::ignoreMessage(QtWarningMsg, watcherWarning);
        CloudFileWatcherPrivate d(url, &watcher);
        QVERIFY(!d.start());
        QVERIFY(!d.stop());
    }

private:
    CloudEnvironment env;
    QTemporaryDir outside;
};

QTEST_GUILESS_MAIN(TestCloudFile)
#include "tst_cloudfile.moc"
