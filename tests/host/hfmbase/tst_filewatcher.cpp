// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractfilewatcherprivate.h>
#include <hfmbase/infofactory.h>

#include <QtTest>

#include <atomic>
#include <functional>
#include <sys/stat.h>

using hfmbase::AbstractFileWatcher;
using hfmbase::AbstractFileWatcherPointer;
using hfmbase::WatcherCache;
using hfmbase::WatcherFactory;

using Action = std::function<bool(const QString &dir, const QString &outside)>;
Q_DECLARE_METATYPE(Action)

namespace {

class FakeWatcherPrivate : public hfmbase::AbstractFileWatcherPrivate
{
public:
    using AbstractFileWatcherPrivate::AbstractFileWatcherPrivate;
    bool start() override
    {
        ++starts;
        return true;
    }
    bool stop() override
    {
        ++stops;
        return true;
    }
    int starts = 0;
    int stops = 0;
};

class FakeWatcher : public AbstractFileWatcher
{
public:
    explicit FakeWatcher(const QUrl &url, QObject *parent = nullptr)
        : AbstractFileWatcher(new FakeWatcherPrivate(url, this), parent)
    {
    }
    FakeWatcherPrivate *priv() const { return static_cast<FakeWatcherPrivate *>(d.data()); }
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
        QVERIFY(WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fake")));
        QVERIFY(WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fakeuncached")));
        WatcherCache::instance().setCacheDisbale(QStringLiteral("fakeuncached"));
    }

    void reportsChangesOfTheDirectory_data()
    {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("expected");   // with %D the watched dir, %O the outside dir

        QTest::newRow("file created") << Action([](const QString &d, const QString &) {
            return writeFile(d + QStringLiteral("/new.txt"), "x");
        }) << "created %D/new.txt";
        QTest::newRow("file deleted") << Action([](const QString &d, const QString &) {
            return QFile::remove(d + QStringLiteral("/existing.txt"));
        }) << "deleted %D/existing.txt";
        QTest::newRow("content changed") << Action([](const QString &d, const QString &) {
            return writeFile(d + QStringLiteral("/existing.txt"), "more", QIODevice::Append);
        }) << "changed %D/existing.txt";
        QTest::newRow("renamed inside") << Action([](const QString &d, const QString &) {
            return QFile::rename(d + QStringLiteral("/existing.txt"), d + QStringLiteral("/renamed.txt"));
        }) << "renamed %D/existing.txt %D/renamed.txt";
        QTest::newRow("subdirectory renamed") << Action([](const QString &d, const QString &) {
            return QDir(d).rename(QStringLiteral("sub"), QStringLiteral("sub2"));
        }) << "renamed %D/sub %D/sub2";
        QTest::newRow("moved in from outside") << Action([](const QString &d, const QString &o) {
            return QFile::rename(o + QStringLiteral("/outside.txt"), d + QStringLiteral("/arrived.txt"));
        }) << "created %D/arrived.txt";
        QTest::newRow("moved out") << Action([](const QString &d, const QString &o) {
            return QFile::rename(d + QStringLiteral("/existing.txt"), o + QStringLiteral("/left.txt"));
        }) << "deleted %D/existing.txt";
        QTest::newRow("watched directory deleted")
            << Action([](const QString &d, const QString &) { return QDir(d).removeRecursively(); }) << "deleted %D";
        QTest::newRow("watched directory moved away")
            << Action([](const QString &d, const QString &o) { return QDir().rename(d, o + QStringLiteral("/moved")); })
            << "deleted %D";
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
        QVERIFY(watcher);
        QCOMPARE(watcher->url(), urlOf(dir));
        Recorder recorder(watcher.data());
        QVERIFY(watcher->startWatcher());
        QVERIFY(watcher->isStarted());

        QVERIFY(action(dir, outside));
        expected.replace(QStringLiteral("%D"), dir).replace(QStringLiteral("%O"), outside);
        QTRY_VERIFY_WITH_TIMEOUT(recorder.lines.contains(expected), 1000);

        if (expected.startsWith(QStringLiteral("renamed "))) {
            // One rename, never a deletion plus a creation.
            const QStringList parts = expected.split(QLatin1Char(' '));
            QVERIFY2(!recorder.lines.contains(QStringLiteral("deleted ") + parts.at(1)),
                qPrintable(recorder.lines.join(QLatin1Char('\n'))));
            QVERIFY2(!recorder.lines.contains(QStringLiteral("created ") + parts.at(2)),
                qPrintable(recorder.lines.join(QLatin1Char('\n'))));
            QCOMPARE(recorder.lines.count(expected), 1);
        }
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
        QVERIFY(stopped != running);
        Recorder quiet(stopped.data());
        Recorder loud(running.data());
        QVERIFY(stopped->startWatcher());
        QVERIFY(running->startWatcher());
        QVERIFY(stopped->stopWatcher());
        QVERIFY(!stopped->isStarted());

        QVERIFY(writeFile(dir + QStringLiteral("/f"), "1"));
        QTRY_VERIFY_WITH_TIMEOUT(!loud.lines.isEmpty(), 1000);
        QCoreApplication::processEvents();
        QVERIFY(quiet.lines.isEmpty());

        // And it can be started again.
        QVERIFY(stopped->startWatcher());
        QVERIFY(QFile::remove(dir + QStringLiteral("/f")));
        QTRY_VERIFY_WITH_TIMEOUT(quiet.lines.contains(QStringLiteral("deleted ") + dir + QStringLiteral("/f")), 1000);
    }

    void watcherOnAWorkerThread()
    {
        const QString dir = freshDir();
        QThread worker;
        worker.start();
        QObject context;
        context.moveToThread(&worker);

        AbstractFileWatcherPointer watcher;
        bool started = false;
        QMetaObject::invokeMethod(
            &context,
            [&] {
                watcher = WatcherFactory::create<AbstractFileWatcher>(urlOf(dir), false);
                started = watcher && watcher->startWatcher();
            },
            Qt::BlockingQueuedConnection);
        QVERIFY(started);
        QCOMPARE(watcher->thread(), &worker);

        std::atomic<QThread *> emitter {nullptr};
        QStringList created;
        connect(
            watcher.data(), &AbstractFileWatcher::subfileCreated, watcher.data(),
            [&emitter] { emitter = QThread::currentThread(); }, Qt::DirectConnection);
        connect(watcher.data(), &AbstractFileWatcher::subfileCreated, this,
            [&created](const QUrl &u) { created << u.toLocalFile(); });

        QVERIFY(writeFile(dir + QStringLiteral("/from-main.txt"), "x"));
        QTRY_COMPARE_WITH_TIMEOUT(created, QStringList {dir + QStringLiteral("/from-main.txt")}, 1000);
        QCOMPARE(emitter.load(), &worker);

        QMetaObject::invokeMethod(
            &context, [&] { watcher.reset(); }, Qt::BlockingQueuedConnection);
        worker.quit();
        QVERIFY(worker.wait(5000));
    }

    void startFailsForBadPaths_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::newRow("missing directory") << urlOf(tmp.filePath(QStringLiteral("missing")));
        QTest::newRow("file scheme without a path") << QUrl(QStringLiteral("file:"));
    }
    void startFailsForBadPaths()
    {
        QFETCH(QUrl, url);
        auto watcher = WatcherFactory::create<AbstractFileWatcher>(url, false);
        QVERIFY(watcher);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^LocalFileWatcher::startWatcher: ")));
        QVERIFY(!watcher->startWatcher());
        QVERIFY(!watcher->isStarted());
    }

    void unknownSchemeGivesNullAndAnError()
    {
        QString error;
        QTest::ignoreMessage(
            QtWarningMsg, "WatcherFactory::createWatcher: no watcher class is registered for the scheme \"nowhere\"");
        QVERIFY(!WatcherFactory::create<AbstractFileWatcher>(QUrl(QStringLiteral("nowhere:///a")), true, &error));
        QVERIFY(error.contains(QStringLiteral("nowhere")));

        QTest::ignoreMessage(QtWarningMsg, "WatcherFactory::regCreator: the scheme \"fake\" is already registered");
        QVERIFY(!WatcherFactory::regClass<FakeWatcher>(QStringLiteral("fake"), &error));
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
        QPointer<AbstractFileWatcher> guard(watcher.data());
        QCOMPARE(WatcherCache::instance().getCacheWatcher(url), watcher);
        watcher.reset();
        QVERIFY(guard.isNull());
        QVERIFY(!WatcherCache::instance().getCacheWatcher(url));
        QVERIFY(WatcherFactory::create<AbstractFileWatcher>(url, true));
    }

    void startAndStopReachThePrivatePart()
    {
        FakeWatcher watcher(QUrl(QStringLiteral("fake:///direct")));
        QCOMPARE(watcher.priv()->q, &watcher);
        QCOMPARE(watcher.priv()->parent(), &watcher);
        QVERIFY(watcher.startWatcher());
        QVERIFY(watcher.startWatcher());
        QCOMPARE(watcher.priv()->starts, 1);
        QVERIFY(watcher.isStarted());
        QVERIFY(watcher.stopWatcher());
        QVERIFY(watcher.stopWatcher());
        QCOMPARE(watcher.priv()->stops, 1);
        QVERIFY(!watcher.isStarted());
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
