// SPDX-License-Identifier: GPL-3.0-or-later
// The host lists cloud folders and drops statuses on its own threads while the GUI thread takes
// in the client's answers. Plain threads, so that ThreadSanitizer sees every access; in any
// build, a listing never mixes up the roots and no reader sees a torn record.
#include "file/cloudproxyfileinfo.h"
#include "utils/nubixutils.h"

#include "cloudenvironment.h"

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSet>
#include <QTest>

#include <atomic>
#include <thread>

using namespace hfmplugin_nubix;

namespace {

constexpr int kFolders = 3;
constexpr int kFilesPerFolder = 10;
constexpr int kRounds = 60;

// Fills `root` with folders and files whose names carry `tag`; returns the names.
QSet<QString> fillTree(const QString &root, const QString &tag)
{
    QSet<QString> names;
    for (int d = 0; d < kFolders; ++d) {
        const QString folder = QStringLiteral("%1-dir-%2").arg(tag).arg(d);
        names.insert(folder);
        for (int f = 0; f < kFilesPerFolder; ++f) {
            const QString name = QStringLiteral("%1-file-%2.txt").arg(tag).arg(f);
            QDir(root).mkpath(folder);
            QFile file(root + QLatin1Char('/') + folder + QLatin1Char('/') + name);
            if (file.open(QIODevice::WriteOnly))
                file.write(name.toUtf8());
            names.insert(name);
        }
    }
    return names;
}

// The fields of a summary hang together, so a torn copy shows.
SyncInfo summary(const QString &root, int round)
{
    return SyncInfo {root, {root + QStringLiteral("/ban")}, SyncQuantity {round, 0, -round}, {}};
}

// What a host worker does: list the whole cloud tree, describe each entry,
// and drop statuses as a watcher does for deleted files. Returns the faults.
QStringList listCloudTree(const QSet<QString> &knownNames, std::atomic<int> *entries)
{
    using UrlType = hfmbase::FileInfo::FileUrlInfoType;
    NubixCaches *caches = NubixCaches::instance();
    QStringList faults;
    for (int round = 0; round < kRounds; ++round) {
        const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            NubixUtils::nubixRoot(), {}, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        if (!it)
            return faults << QStringLiteral("no iterator");
        while (it->hasNext()) {
            const QUrl local = it->next();
            ++*entries;
            const QString name = it->fileName();
            if (!knownNames.contains(name) || !local.isLocalFile())
                faults << QStringLiteral("bad entry ") + local.toString();
            const SyncInfo info = caches->syncInfo();
            const UserInfo user = caches->userInfo();
            if (info.banDirs != QStringList {info.syncRoot + QStringLiteral("/ban")}
                || info.syncQuantity.todo != -info.syncQuantity.done || user.used + user.free != user.total)
                faults << QStringLiteral("torn summary or account");

            // Empty when the root moved away from this entry meanwhile.
            const QUrl cloud = it->fileUrl();
            if (cloud.isEmpty())
                continue;
            if (cloud.scheme() != QLatin1String("nubix") || !cloud.path().endsWith(name))
                faults << QStringLiteral("bad cloud url ") + cloud.toString();
            const FileData data = caches->fileData(cloud.path());
            if (!data.path.isEmpty() && data.path != cloud.path())
                faults << QStringLiteral("torn status ") + data.path;
            if (round % 3 == 0)
                caches->removeFileCache(cloud.path());

            // None when the root moved between the two calls.
            const hfmbase::FileInfoPointer fileInfo = it->fileInfo();
            if (!fileInfo)
                continue;
            if (!dynamic_cast<CloudProxyFileInfo *>(fileInfo.data())) {
                faults << QStringLiteral("no cloud info for ") + cloud.toString();
                continue;
            }
            const QUrl redirected = fileInfo->urlOf(UrlType::kRedirectedFileUrl);
            if (!redirected.isEmpty() && !redirected.isLocalFile())
                faults << QStringLiteral("bad redirection ") + redirected.toString();
            fileInfo->urlOf(UrlType::kParentUrl);
            fileInfo->fileName();
            fileInfo->size();
            fileInfo->viewOfTip(hfmbase::FileInfo::ViewType::kEmptyDir);
        }
    }
    return faults;
}

}   // namespace

class TestCloudFileThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Every iterator logs its start at debug level; keep the output readable.
        QLoggingCategory::setFilterRules(
            QStringLiteral("org.sablo.hde.filemanager.plugin.hfmplugin_nubix.debug=false"));
        QVERIFY(env.setUp());
        QVERIFY(otherRoot.isValid());
    }

    void listingWhileTheClientAnswers()
    {
        QSet<QString> names = fillTree(env.root(), QStringLiteral("one"));
        names.unite(fillTree(otherRoot.path(), QStringLiteral("two")));
        QCOMPARE(names.size(), 2 * (kFolders + kFilesPerFolder));

        NubixCaches *caches = NubixCaches::instance();
        const QStringList roots {env.root(), otherRoot.path()};
        caches->setSyncInfo(summary(roots.first(), 0));
        // A fixed clock for the tips: libc's time zone state, behind Qt's local
        // time, looks unsynchronised to the thread checker.
        CloudProxyFileInfo::setClock([] { return QTime(10, 13); });
        std::atomic<int> entries {0};
        std::atomic<bool> done {false};
        QStringList faults;
        std::thread worker([&] {
            faults = listCloudTree(names, &entries);
            done = true;
        });

        int round = 0;
        for (; !done.load(); ++round) {
            const QString root = roots.at(round % 2);
            caches->setSyncInfo(summary(root, round));
            QList<FileData> batch;
            for (int f = 0; f < 4; ++f) {
                const QString path = QStringLiteral("/%1-dir-%2/%1-file-%3.txt")
                                         .arg(round % 2 ? QStringLiteral("two") : QStringLiteral("one"))
                                         .arg(round % kFolders)
                                         .arg((round + f) % kFilesPerFolder);
                batch.append(FileData {path, false, 0, QStringLiteral("upload"), 1 + round % 3});
            }
            caches->cacheFileDatas(batch);
            caches->setUserInfo(UserInfo {{}, 1000 - round, round, 1000});
            if (round % 200 == 0) {
                caches->saveCache();
                caches->loadCache();
            }
            // The GUI thread reads the root too, for emblems and menus.
            NubixUtils::readyToAccess();
            NubixUtils::localToCloud(QUrl::fromLocalFile(root + QStringLiteral("/x")));
        }
        worker.join();

        QVERIFY2(faults.isEmpty(), qPrintable(faults.value(0)));
        QVERIFY(round > 0);
        // Each listing keeps the local folder it started with.
        QCOMPARE(entries.load(), kRounds * kFolders * (kFilesPerFolder + 1));
    }

private:
    CloudEnvironment env;
    QTemporaryDir otherRoot;
};

QTEST_GUILESS_MAIN(TestCloudFileThreads)
#include "tst_cloudfilethreads.moc"
