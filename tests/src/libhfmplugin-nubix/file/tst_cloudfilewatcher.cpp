// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudfilewatcher.h"

#include "file/cloudfilewatcher_p.h"

#include "cloudenvironment.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace hfmplugin_nubix;

namespace {

// A change made to the local file (and, for a rename, its new name).
using Change = std::function<bool(const QString &local, const QString &target)>;

QList<QUrl> urlsOf(const QList<QVariant> &arguments)
{
    QList<QUrl> urls;
    for (const QVariant &argument : arguments)
        urls.append(argument.toUrl());
    return urls;
}

void putStatus(const QString &cloudPath)
{
    FileData data;
    data.path = cloudPath;
    data.planStatus = 3;
    NubixCaches::instance()->cacheFileDatas({data});
}

bool hasStatus(const QString &cloudPath)
{
    return NubixCaches::instance()->fileData(cloudPath).path == cloudPath;
}

}   // namespace

Q_DECLARE_METATYPE(Change)

class TestCloudFileWatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(env.setUp());
        QVERIFY(QDir().mkpath(env.localPath(QStringLiteral("sub"))));
    }
    void init() { CloudEnvironment::useRoot(env.root()); }

    void madeByTheHostsFactoryAndNeverShared()
    {
        QVERIFY(hfmbase::WatcherCache::instance().cacheDisable(QStringLiteral("nubix")));
        const QUrl url = CloudEnvironment::cloud(QStringLiteral("sub"));
        const auto first = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(url, true);
        const auto second = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(url, true);
        QVERIFY(qobject_cast<CloudFileWatcher *>(first.data()));
        QVERIFY(qobject_cast<CloudFileWatcher *>(second.data()));
        QVERIFY(first != second);
        QCOMPARE(first->url(), url);
    }

    // Every local change reaches the host as the same change of the cloud
    // URL; only a deletion drops the file's sync status, and only after the
    // views were told.
    void relaysLocalChanges_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("target");
        QTest::addColumn<Change>("change");
        QTest::addColumn<QByteArray>("signal");

        const Change create = [](const QString &local, const QString &) { return QFile(local).open(QFile::WriteOnly); };
        const Change makeDir = [](const QString &local, const QString &) { return QDir().mkdir(local); };
        const Change remove = [](const QString &local, const QString &) { return QFile::remove(local); };
        const Change write = [](const QString &local, const QString &) {
            QFile file(local);
            return file.open(QFile::Append) && file.write("more") == 4;
        };
        const Change rename = [](const QString &local, const QString &target) { return QFile::rename(local, target); };
        const QByteArray created = SIGNAL(subfileCreated(QUrl));
        const QByteArray deleted = SIGNAL(fileDeleted(QUrl));
        const QByteArray changed = SIGNAL(fileAttributeChanged(QUrl));
        const QByteArray renamed = SIGNAL(fileRename(QUrl, QUrl));
        const QString root;
        const QString sub = QStringLiteral("sub");
        QTest::newRow("new file in a subfolder") << sub << "sub/new-2.txt" << root << create << created;
        QTest::newRow("new folder") << sub << "sub/folder-3" << root << makeDir << created;
        QTest::newRow("deleted file with odd characters")
            << root << "\u00e9t\u00e9 #6 100%.txt" << root << remove << deleted;
        QTest::newRow("content written") << sub << "sub/old-8.txt" << root << write << changed;
        QTest::newRow("renamed in a subfolder")
            << sub << "sub/a #10.txt" << QStringLiteral("sub/b %10.txt") << rename << renamed;
    }
    void relaysLocalChanges()
    {
        QFETCH(QString, dir);
        QFETCH(QString, file);
        QFETCH(QString, target);
        QFETCH(Change, change);
        QFETCH(QByteArray, signal);

        // Only a deletion drops the status.
        const bool statusDropped = signal == SIGNAL(fileDeleted(QUrl));
        if (signal != SIGNAL(subfileCreated(QUrl)))
            QVERIFY(env.makeFile(file, "old"));
        const QString cloudPath = QLatin1Char('/') + file;
        putStatus(cloudPath);
        putStatus(QStringLiteral("/unrelated.txt"));

        CloudFileWatcher watcher(CloudEnvironment::cloud(dir));
        QSignalSpy expected(&watcher, signal.constData());
        QSignalSpy createdSpy(&watcher, &hfmbase::AbstractFileWatcher::subfileCreated);
        QSignalSpy deletedSpy(&watcher, &hfmbase::AbstractFileWatcher::fileDeleted);
        QSignalSpy changedSpy(&watcher, &hfmbase::AbstractFileWatcher::fileAttributeChanged);
        QSignalSpy renamedSpy(&watcher, &hfmbase::AbstractFileWatcher::fileRename);
        // Receivers of a deletion may still read the status they are about to lose.
        QStringList statusAtDeletion;
        connect(&watcher, &hfmbase::AbstractFileWatcher::fileDeleted, this, [&](const QUrl &url) {
            statusAtDeletion.append(NubixCaches::instance()->fileData(url.path(QUrl::FullyDecoded)).path);
        });
        QVERIFY(watcher.startWatcher());
        QVERIFY(change(env.localPath(file), env.localPath(target)));

        QTRY_VERIFY(!expected.isEmpty());
        QList<QUrl> wanted {CloudEnvironment::cloud(file)};
        if (!target.isEmpty())
            wanted.append(CloudEnvironment::cloud(target));
        QCOMPARE(urlsOf(expected.first()), wanted);

        // Nothing that reaches the host is a local URL.
        for (const QSignalSpy *spy : {&createdSpy, &deletedSpy, &changedSpy, &renamedSpy}) {
            for (const QList<QVariant> &arguments : *spy) {
                for (const QUrl &url : urlsOf(arguments))
                    QVERIFY2(url.scheme() == QLatin1String("nubix"), qPrintable(url.toString()));
            }
        }

        if (statusDropped)
            QCOMPARE(statusAtDeletion.value(0), cloudPath);
        QCOMPARE(hasStatus(cloudPath), !statusDropped);
        QVERIFY(hasStatus(QStringLiteral("/unrelated.txt")));
        NubixCaches::instance()->removeFileCache(cloudPath);
    }

    void stopStopsTheLocalWatcher()
    {
        CloudFileWatcher watcher(CloudEnvironment::cloud({}));
        // The host shares its local watchers, so this is the cloud watcher's own.
        const auto local = hfmbase::WatcherFactory::create<hfmbase::AbstractFileWatcher>(
            QUrl::fromLocalFile(env.root() + QLatin1Char('/')), true);
        QVERIFY(local);
        QVERIFY(!local->isStarted());

        QVERIFY(watcher.startWatcher());
        QVERIFY(watcher.isStarted());
        QVERIFY(local->isStarted());
        QVERIFY(watcher.stopWatcher());
        QVERIFY(!watcher.isStarted());
        QVERIFY(!local->isStarted());
    }

    // A file that is no longer below the root (the root moved while we
    // watched) is reported with an empty URL and costs no other status.
    void rootMovedWhileWatching()
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

    // Without a local watcher from the host there is nothing to start or stop.
    void withoutLocalWatcherCannotStart_data()
    {
        QTest::addColumn<QUrl>("url");

        QTest::newRow("other scheme") << QUrl(QStringLiteral("smb://host/share"));
        QTest::newRow("empty url") << QUrl();
    }
    void withoutLocalWatcherCannotStart()
    {
        QFETCH(QUrl, url);
        const QRegularExpression factoryWarning(QStringLiteral("^WatcherFactory::createWatcher: "));

        QTest::ignoreMessage(QtWarningMsg, factoryWarning);
        CloudFileWatcher watcher(url);
        QVERIFY(!watcher.startWatcher());
        QVERIFY(!watcher.isStarted());

        QTest::ignoreMessage(QtWarningMsg, factoryWarning);
        CloudFileWatcherPrivate d(url, &watcher);
        QVERIFY(!d.start());
        QVERIFY(!d.stop());
    }

private:
    CloudEnvironment env;
};

QTEST_GUILESS_MAIN(TestCloudFileWatcher)
#include "tst_cloudfilewatcher.moc"
