// SPDX-License-Identifier: GPL-3.0-or-later
// Local files as the host sees them: file infos and their cache, listings,
// and watchers.
#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/abstractfilewatcherprivate.h>
#include <hfmbase/infofactory.h>

#include <QtTest>

#include <functional>

using hfmbase::AbstractDirIterator;
using hfmbase::AbstractFileWatcher;
using hfmbase::DirIteratorFactory;
using hfmbase::FileInfo;
using hfmbase::FileInfoPointer;
using hfmbase::InfoCache;
using hfmbase::InfoFactory;
using hfmbase::ProxyFileInfo;
using hfmbase::WatcherCache;
using hfmbase::WatcherFactory;

// Declared under the alias: Qt's normalisation of a function type's name is not
// stable (normalising it twice differs), which a debug build asserts on.
using Query = std::function<QVariant(const FileInfo &)>;
Q_DECLARE_METATYPE(Query)
using Action = std::function<bool(const QString &dir, const QString &outside)>;
Q_DECLARE_METATYPE(Action)

namespace {

// An info whose answers are distinctive, to see what a proxy forwards.
class MarkedInfo : public FileInfo
{
public:
    explicit MarkedInfo(const QUrl &url) : FileInfo(url) { }
    QUrl urlOf(FileUrlInfoType type) const override { return QUrl(QStringLiteral("marked:///kind/%1").arg(int(type))); }
    bool exists() const override { return true; }
    QString fileName() const override { return QStringLiteral("marked.name"); }
    qint64 size() const override { return 4242; }
    QDateTime lastModified() const override { return QDateTime::fromSecsSinceEpoch(1000); }
    bool isDir() const override { return true; }
    QFileDevice::Permissions permissions() const override { return QFileDevice::ReadOwner | QFileDevice::ExeOther; }
    QString mimeTypeName() const override { return QStringLiteral("x-test/marked"); }
    int countChildFile() const override { return 17; }
    bool canAttributes(FileCanType type) const override { return type == FileCanType::kCanRedirectionFileUrl; }
    QString viewOfTip(ViewType) const override { return QStringLiteral("marked tip"); }
    void refresh() override { ++refreshed; }
    int refreshed = 0;
};

FileInfoPointer localInfo(const QString &path, InfoFactory::CreateType type = InfoFactory::CreateType::kCreateDefault)
{
    return InfoFactory::create<FileInfo>(QUrl::fromLocalFile(path), type);
}

// Counts how often the base class reaches the implementation.
class FakeWatcherPrivate : public hfmbase::AbstractFileWatcherPrivate
{
public:
    using AbstractFileWatcherPrivate::AbstractFileWatcherPrivate;
    bool start() override { return ++calls; }
    bool stop() override { return ++calls; }
    int calls = 0;
};

class FakeWatcher : public AbstractFileWatcher
{
public:
    explicit FakeWatcher(const QUrl &url) : AbstractFileWatcher(new FakeWatcherPrivate(url, this)) { }
    int calls() const { return static_cast<FakeWatcherPrivate *>(d.data())->calls; }
};

bool writeFile(const QString &path, const QByteArray &data, QIODevice::OpenMode mode = QIODevice::WriteOnly)
{
    QFile f(path);
    return f.open(mode) && f.write(data) == data.size();
}

QUrl urlOf(const QString &path)
{
    return QUrl::fromLocalFile(path);
}

// Signals of one watcher as "kind url [url]" lines, in arrival order.
class Recorder : public QObject
{
public:
    explicit Recorder(AbstractFileWatcher *watcher)
    {
        connect(watcher, &AbstractFileWatcher::subfileCreated, this,
            [this](const QUrl &u) { lines << QStringLiteral("created ") + u.toLocalFile(); });
        connect(watcher, &AbstractFileWatcher::fileDeleted, this,
            [this](const QUrl &u) { lines << QStringLiteral("deleted ") + u.toLocalFile(); });
        connect(watcher, &AbstractFileWatcher::fileAttributeChanged, this,
            [this](const QUrl &u) { lines << QStringLiteral("changed ") + u.toLocalFile(); });
        connect(watcher, &AbstractFileWatcher::fileRename, this, [this](const QUrl &from, const QUrl &to) {
            lines << QStringLiteral("renamed ") + from.toLocalFile() + QLatin1Char(' ') + to.toLocalFile();
        });
    }
    QStringList lines;
};

}   // namespace

class TestLocalFiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // Icons are looked up in a theme the set-up script installs
        // (the headless platform knows no theme paths of its own).
        QIcon::setThemeSearchPaths({QStringLiteral("/usr/share/icons")});
        QIcon::setThemeName(QStringLiteral("Adwaita"));
        QVERIFY(tmp.isValid());
        QDir root(tmp.path());
        for (const char *dir : {"dir/sub", "empty", "docs/deep", ".config"})
            QVERIFY(root.mkpath(QLatin1String(dir)));
        for (const char *name :
            {"a.txt", "b.TXT", ".secret.txt", "docs/readme.md", "docs/deep/x.txt", ".config/rc", "with space.txt"})
            QVERIFY(writeFile(root.filePath(QLatin1String(name)), name));
        QVERIFY(writeFile(tmp.filePath(QStringLiteral("dir/a.txt")), "hello"));
        QVERIFY(writeFile(tmp.filePath(QStringLiteral("dir/.hidden")), ""));
        QVERIFY(writeFile(tmp.filePath(QStringLiteral("notes.tar.gz")), "0123456789"));
        QVERIFY(QFile::link(tmp.filePath(QStringLiteral("dir/a.txt")), tmp.filePath(QStringLiteral("link"))));
        WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fake"));
        WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fakeuncached"));
        WatcherCache::instance().setCacheDisbale(QStringLiteral("fakeuncached"));
    }

    void localInfoDescribesTheFile_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<bool>("exists");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QString>("mime");
        QTest::addColumn<int>("children");
        QTest::addColumn<QString>("icon");
        // clang-format off
        QTest::newRow("text file") << "dir/a.txt" << true << false << qint64(5) << false << "text/plain" << -1 << "text-x-generic";
        QTest::newRow("double suffix") << "notes.tar.gz" << true << false << qint64(10) << false << "application/x-compressed-tar" << -1 << "package-x-generic";
        QTest::newRow("hidden file") << "dir/.hidden" << true << false << qint64(0) << true << "application/x-zerosize" << -1 << "application-x-generic";
        QTest::newRow("directory with hidden entries") << "dir" << true << true << qint64(-1) << false << "inode/directory" << 3 << "inode-directory";
        QTest::newRow("empty directory") << "empty" << true << true << qint64(-1) << false << "inode/directory" << 0 << "inode-directory";
        QTest::newRow("symlink to a file") << "link" << true << false << qint64(5) << false << "text/plain" << -1 << "text-x-generic";
        QTest::newRow("missing file") << "gone.txt" << false << false << qint64(0) << false << "text/plain" << -1 << "text-x-generic";
        // clang-format on
    }
    void localInfoDescribesTheFile()
    {
        QFETCH(QString, relative);
        QFETCH(bool, exists);
        QFETCH(qint64, size);

        const FileInfoPointer info = localInfo(tmp.filePath(relative), InfoFactory::CreateType::kCreateNoCache);
        QVERIFY(info);
        QCOMPARE(info->exists(), exists);
        QTEST(info->isDir(), "isDir");
        if (size >= 0)
            QCOMPARE(info->size(), size);
        QTEST(info->isHidden(), "hidden");
        QTEST(info->mimeTypeName(), "mime");
        QTEST(info->countChildFile(), "children");
        QTEST(info->fileIcon().name(), "icon");
        QCOMPARE(info->urlOf(FileInfo::FileUrlInfoType::kParentUrl),
            QUrl::fromLocalFile(QFileInfo(tmp.filePath(relative)).absolutePath()));
        QCOMPARE(info->viewOfTip(FileInfo::ViewType::kEmptyDir), QStringLiteral("Folder is empty"));
        QCOMPARE(info->canAttributes(FileInfo::FileCanType::kCanRename), exists);
    }

    void symlinkAndRoot()
    {
        const FileInfoPointer link = localInfo(tmp.filePath(QStringLiteral("link")));
        QVERIFY(link->isSymLink());
        QCOMPARE(link->urlOf(FileInfo::FileUrlInfoType::kSymLinkTargetUrl),
            QUrl::fromLocalFile(tmp.filePath(QStringLiteral("dir/a.txt"))));
        QVERIFY(localInfo(tmp.filePath(QStringLiteral("dir/a.txt")))
                    ->urlOf(FileInfo::FileUrlInfoType::kSymLinkTargetUrl)
                    .isEmpty());
        const FileInfoPointer root = localInfo(QStringLiteral("/"));
        QVERIFY(root->urlOf(FileInfo::FileUrlInfoType::kParentUrl).isEmpty());
        QCOMPARE(root->displayName(), QStringLiteral("/"));
    }

    void proxyForwardsEveryQuery_data()
    {
        QTest::addColumn<Query>("query");
        QTest::addColumn<QVariant>("withoutProxy");
        auto row = [](const char *name, Query q, const QVariant &empty) { QTest::newRow(name) << q << empty; };
#define QUERY(call) [](const FileInfo &i) { return QVariant(i.call); }
        row("urlOf url", QUERY(urlOf(FileInfo::FileUrlInfoType::kUrl)), QUrl());
        row("exists", QUERY(exists()), false);
        row("fileName", QUERY(fileName()), QString());
        row("size", QUERY(size()), qint64(0));
        row("lastModified", QUERY(lastModified()), QDateTime());
        row("isDir", QUERY(isDir()), false);
        row(
            "permissions", [](const FileInfo &i) { return QVariant(int(i.permissions())); }, 0);
        row("mimeTypeName", QUERY(mimeTypeName()), QString());
        row("countChildFile", QUERY(countChildFile()), -1);
        row("canAttributes redirection", QUERY(canAttributes(FileInfo::FileCanType::kCanRedirectionFileUrl)), false);
        row("viewOfTip empty dir", QUERY(viewOfTip(FileInfo::ViewType::kEmptyDir)), QString());
#undef QUERY
    }
    void proxyForwardsEveryQuery()
    {
        QFETCH(Query, query);
        const QUrl own(QStringLiteral("proxied:///own/url"));
        auto inner = QSharedPointer<MarkedInfo>::create(QUrl(QStringLiteral("marked:///inner")));

        ProxyFileInfo proxy(own);
        QTEST(query(proxy), "withoutProxy");   // no proxy: empty, no crash
        proxy.refresh();
        proxy.setProxy(inner);
        QCOMPARE(query(proxy), query(*inner));
        QCOMPARE(proxy.fileUrl(), own);
        proxy.refresh();
        QCOMPARE(inner->refreshed, 1);
    }

    void unknownSchemesAndSecondRegistrations()
    {
        for (const QUrl &url : {QUrl(QStringLiteral("nowhere:///a")), QUrl(), QUrl(QStringLiteral("relative/path"))}) {
            QString error;
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^InfoFactory::createInfo: ")));
            QVERIFY2(!InfoFactory::create<FileInfo>(url, InfoFactory::CreateType::kCreateDefault, &error),
                qPrintable(url.toString()));
            QVERIFY(!error.isEmpty());
        }
        // A second class for a scheme is refused; the first keeps serving it.
        QVERIFY(InfoFactory::regClass<MarkedInfo>(QStringLiteral("marked")));
        QTest::ignoreMessage(QtWarningMsg, "InfoFactory::regCreator: the scheme \"marked\" is already registered");
        QVERIFY(!InfoFactory::regClass<ProxyFileInfo>(QStringLiteral("marked")));
        QVERIFY(InfoFactory::create<MarkedInfo>(QUrl(QStringLiteral("marked:///a"))));
        QTest::ignoreMessage(QtWarningMsg, "InfoFactory::regCreator: the scheme \"file\" is already registered");
        QVERIFY(!InfoFactory::regClass<MarkedInfo>(QStringLiteral("file")));
    }

    void cacheRules_data()
    {
        QTest::addColumn<bool>("noCacheOption");
        QTest::addColumn<bool>("disabledInCache");
        QTest::addColumn<bool>("reEnabled");
        QTest::addColumn<int>("createType");
        QTest::addColumn<bool>("shared");
        QTest::newRow("default scheme is cached") << false << false << false << 0 << true;
        QTest::newRow("creation without cache") << false << false << false << 1 << false;
        QTest::newRow("scheme registered kNoCache") << true << false << false << 0 << false;
        QTest::newRow("cache disabled for scheme") << false << true << false << 0 << false;
        QTest::newRow("cache disabled then enabled") << false << true << true << 0 << true;
    }
    void cacheRules()
    {
        QFETCH(bool, noCacheOption);
        QFETCH(bool, disabledInCache);
        QFETCH(bool, reEnabled);
        QFETCH(int, createType);
        QFETCH(bool, shared);

        const QString scheme = QStringLiteral("cache%1").arg(++schemeCounter);
        QVERIFY(InfoFactory::regClass<MarkedInfo>(
            scheme, noCacheOption ? InfoFactory::RegOption::kNoCache : InfoFactory::RegOption::kNoOption));
        const QUrl url(scheme + QStringLiteral(":///some/file"));
        const auto type = InfoFactory::CreateType(createType);
        InfoFactory::create<FileInfo>(url, type);
        // Disabling drops what was kept; enabling again does not bring it back.
        if (disabledInCache)
            InfoCache::instance().setCacheDisbale(scheme);
        if (reEnabled)
            InfoCache::instance().setCacheDisbale(scheme, false);
        QCOMPARE(bool(InfoCache::instance().getCacheInfo(url)), shared && !disabledInCache);

        const FileInfoPointer first = InfoFactory::create<FileInfo>(url, type);
        QCOMPARE(InfoFactory::create<FileInfo>(url, type) == first, shared);
        QCOMPARE(InfoCache::instance().getCacheInfo(url) == first, shared);
    }

    void trailingSlashIsTheSameCachedFile()
    {
        const QString path = tmp.filePath(QStringLiteral("dir"));
        const FileInfoPointer a = localInfo(path);
        QCOMPARE(localInfo(path + QLatin1Char('/')), a);
        InfoCache::instance().removeCacheInfo(QUrl::fromLocalFile(path));
        QVERIFY(localInfo(path) != a);
    }

    void listingRefreshesTheInfoCache()
    {
        const QString path = tmp.filePath(QStringLiteral("a.txt"));
        const QUrl url = QUrl::fromLocalFile(path);
        auto stale = hfmbase::InfoFactory::create<FileInfo>(url);
        const qint64 before = stale->size();
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::Append));
            f.write("more");
        }
        auto it = DirIteratorFactory::create<AbstractDirIterator>(
            QUrl::fromLocalFile(tmp.path()), {QStringLiteral("a.txt")}, QDir::Files);
        QVERIFY(it->hasNext());
        it->next();
        const auto listed = it->fileInfo();
        QCOMPARE(listed->size(), before + 4);
        // The fresh info replaced the stale one for everybody else.
        QCOMPARE(hfmbase::InfoFactory::create<FileInfo>(url), listed);
        // Who holds the stale one sees the new content after a refresh.
        stale->refresh();
        QCOMPARE(stale->size(), before + 4);
    }

    void closeEndsTheListing()
    {
        auto it = DirIteratorFactory::create<AbstractDirIterator>(QUrl::fromLocalFile(tmp.path()));
        QVERIFY(it->hasNext());
        it->next();
        it->close();
        QVERIFY(!it->hasNext());
    }

    // Neither a listing nor a watcher of a bad URL yields anything.
    void badUrlsListAndWatchNothing_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<bool>("made");
        QTest::addColumn<QString>("watcherWarning");   // empty: not watched
        const QString startFails = QStringLiteral("^LocalFileWatcher::startWatcher: ");
        // clang-format off
        QTest::newRow("missing directory") << QUrl::fromLocalFile(tmp.filePath(QStringLiteral("nope"))) << true << startFails;
        QTest::newRow("a file, not a directory") << QUrl::fromLocalFile(tmp.filePath(QStringLiteral("a.txt"))) << true << "";
        QTest::newRow("file scheme without a path") << QUrl(QStringLiteral("file:")) << true << startFails;
        QTest::newRow("unknown scheme") << QUrl(QStringLiteral("nowhere:///x")) << false
                                        << "^WatcherFactory::createWatcher: no watcher class is registered for the "
                                           "scheme \"nowhere\"$";
        // clang-format on
    }
    void badUrlsListAndWatchNothing()
    {
        QFETCH(QUrl, url);
        QFETCH(bool, made);
        QFETCH(QString, watcherWarning);
        QString error;
        if (!made || url.toLocalFile().isEmpty())
            QTest::ignoreMessage(QtWarningMsg,
                QRegularExpression(
                    QStringLiteral("^(DirIteratorFactory::createIterator|LocalDirIterator::LocalDirIterator): ")));
        auto it = DirIteratorFactory::create<AbstractDirIterator>(
            url, {}, QDir::NoFilter, QDirIterator::NoIteratorFlags, &error);
        QCOMPARE(bool(it), made);
        QCOMPARE(error.isEmpty(), made);
        if (it) {
            QVERIFY(!it->hasNext());
            QVERIFY(it->next().isEmpty());
            QVERIFY(it->fileName().isEmpty());
            QVERIFY(!it->fileInfo());
        }
        if (watcherWarning.isEmpty())
            return;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(watcherWarning));
        error.clear();
        auto watcher = WatcherFactory::create<AbstractFileWatcher>(url, false, &error);
        if (watcher) {
            QVERIFY(!watcher->startWatcher());
            QVERIFY(!watcher->isStarted());
        } else {
            QVERIFY(error.contains(url.scheme()));
        }
    }

    void reportsChangesOfTheDirectory_data()
    {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("expected");   // %D: the watched dir

        using D = const QString &;
        // clang-format off
        QTest::newRow("file created") << Action([](D d, D) { return writeFile(d + QStringLiteral("/new.txt"), "x"); }) << "created %D/new.txt";
        QTest::newRow("file deleted") << Action([](D d, D) { return QFile::remove(d + QStringLiteral("/existing.txt")); }) << "deleted %D/existing.txt";
        QTest::newRow("content changed") << Action([](D d, D) { return writeFile(d + QStringLiteral("/existing.txt"), "more", QIODevice::Append); }) << "changed %D/existing.txt";
        QTest::newRow("renamed inside") << Action([](D d, D) { return QFile::rename(d + QStringLiteral("/existing.txt"), d + QStringLiteral("/renamed.txt")); })
                                        << "renamed %D/existing.txt %D/renamed.txt";
        QTest::newRow("subdirectory renamed") << Action([](D d, D) { return QDir(d).rename(QStringLiteral("sub"), QStringLiteral("sub2")); }) << "renamed %D/sub %D/sub2";
        QTest::newRow("moved in from outside") << Action([](D d, D o) { return QFile::rename(o + QStringLiteral("/outside.txt"), d + QStringLiteral("/arrived.txt")); })
                                               << "created %D/arrived.txt";
        QTest::newRow("moved out") << Action([](D d, D o) { return QFile::rename(d + QStringLiteral("/existing.txt"), o + QStringLiteral("/left.txt")); }) << "deleted %D/existing.txt";
        QTest::newRow("watched directory deleted") << Action([](D d, D) { return QDir(d).removeRecursively(); }) << "deleted %D";
        QTest::newRow("watched directory moved away") << Action([](D d, D o) { return QDir().rename(d, o + QStringLiteral("/moved")); }) << "deleted %D";
        // clang-format on
    }
    void reportsChangesOfTheDirectory()
    {
        QFETCH(Action, action);
        QFETCH(QString, expected);

        const QString dir = freshDir();
        const QString outside = freshDir();
        QVERIFY(writeFile(dir + QStringLiteral("/existing.txt"), "data"));
        QVERIFY(QDir(dir).mkdir(QStringLiteral("sub")));
        QVERIFY(writeFile(outside + QStringLiteral("/outside.txt"), "o"));

        auto watcher = WatcherFactory::create<AbstractFileWatcher>(urlOf(dir), false);
        Recorder recorder(watcher.data());
        QVERIFY(watcher->startWatcher());

        QVERIFY(action(dir, outside));
        expected.replace(QStringLiteral("%D"), dir);
        QTRY_VERIFY_WITH_TIMEOUT(recorder.lines.contains(expected), 1000);

        // One rename, never a deletion plus a creation.
        if (expected.startsWith(QLatin1String("renamed ")))
            QCOMPARE(recorder.lines, QStringList {expected});
        if (expected == QStringLiteral("deleted ") + dir)
            QVERIFY(!watcher->isStarted());
    }

    void changeDropsTheCachedInfo()
    {
        // Whoever hears of a change must not be served the old status.
        const QString dir = freshDir();
        const QString path = dir + QStringLiteral("/kept.txt");
        QVERIFY(writeFile(path, "1"));
        auto kept = hfmbase::InfoFactory::create<hfmbase::FileInfo>(urlOf(path));
        QCOMPARE(kept->size(), qint64(1));
        auto watcher = WatcherFactory::create<AbstractFileWatcher>(urlOf(dir), false);
        Recorder recorder(watcher.data());
        QVERIFY(watcher->startWatcher());
        QVERIFY(writeFile(path, "22", QIODevice::Append));
        QTRY_VERIFY_WITH_TIMEOUT(recorder.lines.contains(QStringLiteral("changed ") + path), 1000);
        QVERIFY(!hfmbase::InfoCache::instance().getCacheInfo(urlOf(path)));
        QCOMPARE(hfmbase::InfoFactory::create<hfmbase::FileInfo>(urlOf(path))->size(), qint64(3));
    }

    void stoppedWatcherIsSilent()
    {
        const QString dir = freshDir();
        auto stopped = WatcherFactory::create<AbstractFileWatcher>(urlOf(dir), false);
        auto running = WatcherFactory::create<AbstractFileWatcher>(urlOf(dir), false);
        Recorder quiet(stopped.data());
        Recorder loud(running.data());
        QVERIFY(stopped->startWatcher());
        QVERIFY(running->startWatcher());
        QVERIFY(stopped->stopWatcher());

        QVERIFY(writeFile(dir + QStringLiteral("/f"), "1"));
        QTRY_VERIFY_WITH_TIMEOUT(!loud.lines.isEmpty(), 1000);
        QCoreApplication::processEvents();
        QVERIFY(quiet.lines.isEmpty());

        // And it can be started again.
        QVERIFY(stopped->startWatcher());
        QVERIFY(QFile::remove(dir + QStringLiteral("/f")));
        QTRY_VERIFY_WITH_TIMEOUT(quiet.lines.contains(QStringLiteral("deleted ") + dir + QStringLiteral("/f")), 1000);
    }

    void cacheSharing_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<bool>("cache");
        QTest::addColumn<bool>("shared");
        const QUrl local = urlOf(tmp.path());
        QTest::newRow("local, cached") << local << true << true;
        QTest::newRow("local, uncached") << local << false << false;
        QTest::newRow("scheme with the cache disabled") << QUrl(QStringLiteral("fakeuncached:///x")) << true << false;
    }
    void cacheSharing()
    {
        QFETCH(QUrl, url);
        QFETCH(bool, cache);
        QFETCH(bool, shared);
        auto first = WatcherFactory::create<AbstractFileWatcher>(url, cache);
        auto second = WatcherFactory::create<AbstractFileWatcher>(url, cache);
        QVERIFY(first && second);
        QCOMPARE(first == second, shared);
        if (shared) {
            // Trailing slash: the same watched directory.
            QUrl slashed = url;
            slashed.setPath(url.path() + QLatin1Char('/'));
            QCOMPARE(WatcherFactory::create<AbstractFileWatcher>(slashed, true), first);
        }
    }

    void cachedWatcherGoesWithItsLastUser()
    {
        const QUrl url(QStringLiteral("fake:///released"));
        auto watcher = WatcherFactory::create<AbstractFileWatcher>(url, true);
        // Starting or stopping twice reaches the implementation once.
        QVERIFY(watcher->startWatcher() && watcher->startWatcher());
        QVERIFY(watcher->stopWatcher() && watcher->stopWatcher());
        QCOMPARE(static_cast<FakeWatcher *>(watcher.data())->calls(), 2);
        QPointer<AbstractFileWatcher> guard(watcher.data());
        QCOMPARE(WatcherCache::instance().getCacheWatcher(url), watcher);
        watcher.reset();
        QVERIFY(guard.isNull());
        QVERIFY(!WatcherCache::instance().getCacheWatcher(url));
    }

private:
    QString freshDir()
    {
        const QString path = tmp.filePath(QStringLiteral("d%1").arg(++dirCounter));
        return QDir().mkpath(path) ? path : QString();
    }

    QTemporaryDir tmp;
    int schemeCounter = 0;
    int dirCounter = 0;
};

QTEST_MAIN(TestLocalFiles)
#include "tst_fileinfo.moc"
