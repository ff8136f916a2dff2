// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudfilewatcher.h"

#include "file/cloudfilewatcher_p.h"

#include "cloudenvironment.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace hfmplugin_nubix;

namespace {

enum class Change { Create, MakeDir, Delete, Chmod, Write, Rename };

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
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<bool>("statusDropped");

        const QByteArray created = SIGNAL(subfileCreated(QUrl));
        const QByteArray deleted = SIGNAL(fileDeleted(QUrl));
        const QByteArray changed = SIGNAL(fileAttributeChanged(QUrl));
        const QByteArray renamed = SIGNAL(fileRename(QUrl, QUrl));
        QTest::newRow("new file in the root")
            << QString() << Change::Create << QStringLiteral("new-1.txt") << QString() << created << false;
        QTest::newRow("new file in a subfolder") << QStringLiteral("sub") << Change::Create
                                                 << QStringLiteral("sub/new-2.txt") << QString() << created << false;
        QTest::newRow("new folder") << QStringLiteral("sub") << Change::MakeDir << QStringLiteral("sub/folder-3")
                                    << QString() << created << false;
        QTest::newRow("deleted file") << QString() << Change::Delete << QStringLiteral("old-4.txt") << QString()
                                      << deleted << true;
        QTest::newRow("deleted file with odd characters")
            << QString() << Change::Delete << QStringLiteral("\u00e9t\u00e9 #6 100%.txt") << QString() << deleted
            << true;
        QTest::newRow("permissions changed")
            << QString() << Change::Chmod << QStringLiteral("old-7.txt") << QString() << changed << false;
        QTest::newRow("content written") << QStringLiteral("sub") << Change::Write << QStringLiteral("sub/old-8.txt")
                                         << QString() << changed << false;
        QTest::newRow("renamed in a subfolder")
            << QStringLiteral("sub") << Change::Rename << QStringLiteral("sub/a #10.txt")
            << QStringLiteral("sub/b %10.txt") << renamed << false;
    }
    void relaysLocalChanges()
    {
        QFETCH(QString, dir);
        QFETCH(Change, change);
        QFETCH(QString, file);
        QFETCH(QString, target);
        QFETCH(QByteArray, signal);
        QFETCH(bool, statusDropped);

        const bool exists = change != Change::Create && change != Change::MakeDir;
        if (exists)
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

        const QString local = env.localPath(file);
        switch (change) {
        case Change::Create:
            QVERIFY(env.makeFile(file));
            break;
        case Change::MakeDir:
            QVERIFY(QDir().mkdir(local));
            break;
        case Change::Delete:
            QVERIFY(QFile::remove(local));
            break;
        case Change::Chmod:
            QVERIFY(QFile::setPermissions(local, QFile::ReadOwner));
            break;
        case Change::Write: {
            QFile f(local);
            QVERIFY(f.open(QIODevice::Append));
            f.write("more");
            break;
        }
        case Change::Rename:
            QVERIFY(QFile::rename(local, env.localPath(target)));
            break;
        }

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
