// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractfilewatcherprivate.h>
#include <hfmbase/infofactory.h>

#include <QtTest>

#include <functional>

using hfmbase::AbstractFileWatcher;
using hfmbase::WatcherCache;
using hfmbase::WatcherFactory;

using Action = std::function<bool(const QString &dir, const QString &outside)>;
Q_DECLARE_METATYPE(Action)

namespace {

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

class TestFileWatcher : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(tmp.isValid());
        WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fake"));
        WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fakeuncached"));
        WatcherCache::instance().setCacheDisbale(QStringLiteral("fakeuncached"));
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

    void badUrls_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("warning");
        QTest::newRow("missing directory")
            << urlOf(tmp.filePath(QStringLiteral("missing"))) << "^LocalFileWatcher::startWatcher: ";
        QTest::newRow("file scheme without a path")
            << QUrl(QStringLiteral("file:")) << "^LocalFileWatcher::startWatcher: ";
        QTest::newRow("unknown scheme") << QUrl(QStringLiteral("nowhere:///a"))
                                        << "^WatcherFactory::createWatcher: no watcher class is registered for the "
                                           "scheme \"nowhere\"$";
    }
    void badUrls()
    {
        QFETCH(QUrl, url);
        QFETCH(QString, warning);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(warning));
        QString error;
        auto watcher = WatcherFactory::create<AbstractFileWatcher>(url, false, &error);
        if (watcher) {
            QVERIFY(!watcher->startWatcher());
            QVERIFY(!watcher->isStarted());
        } else {
            QVERIFY(error.contains(url.scheme()));
        }
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
        if (!QDir().mkpath(path))
            return QString();
        return path;
    }

    QTemporaryDir tmp;
    int dirCounter = 0;
};

QTEST_GUILESS_MAIN(TestFileWatcher)
#include "tst_filewatcher.moc"
