// SPDX-License-Identifier: GPL-3.0-or-later
// The host lists cloud folders on its own worker threads while the sync
// client may move the sync root at any time. Run under ThreadSanitizer this
// shows that the iterator, the file info and the mapping read the root
// safely; in any build it shows that a listing never mixes up the roots.
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
        QDir(root).mkpath(folder);
        names.insert(folder);
        for (int f = 0; f < kFilesPerFolder; ++f) {
            const QString name = QStringLiteral("%1-file-%2.txt").arg(tag).arg(f);
            QFile file(root + QLatin1Char('/') + folder + QLatin1Char('/') + name);
            if (file.open(QIODevice::WriteOnly))
                file.write(name.toUtf8());
            names.insert(name);
        }
    }
    return names;
}

struct ListingReport
{
    int entries = 0;
    int cloudUrls = 0;
    QStringList faults;
};

// What a host worker does: list the whole cloud tree and describe each entry.
void listCloudTree(const QSet<QString> &knownNames, ListingReport *report)
{
    using UrlType = hfmbase::FileInfo::FileUrlInfoType;
    for (int round = 0; round < kRounds; ++round) {
        const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            NubixUtils::nubixRoot(), {}, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        if (!it) {
            report->faults.append(QStringLiteral("no iterator"));
            return;
        }
        while (it->hasNext()) {
            const QUrl local = it->next();
            ++report->entries;
            const QString name = it->fileName();
            if (!knownNames.contains(name))
                report->faults.append(QStringLiteral("unknown name ") + name);
            if (!local.isLocalFile())
                report->faults.append(QStringLiteral("next() not local: ") + local.toString());

            // Empty when the root moved away from this entry meanwhile.
            const QUrl cloud = it->fileUrl();
            if (cloud.isEmpty())
                continue;
            if (cloud.scheme() != QLatin1String("nubix") || !cloud.path().endsWith(name))
                report->faults.append(QStringLiteral("bad cloud url ") + cloud.toString());
            ++report->cloudUrls;

            // None when the root moved between the two calls.
            const hfmbase::FileInfoPointer info = it->fileInfo();
            if (!info)
                continue;
            if (!dynamic_cast<CloudProxyFileInfo *>(info.data())) {
                report->faults.append(QStringLiteral("no cloud info for ") + cloud.toString());
                continue;
            }
            const QUrl redirected = info->urlOf(UrlType::kRedirectedFileUrl);
            if (!redirected.isEmpty() && !redirected.isLocalFile())
                report->faults.append(QStringLiteral("bad redirection ") + redirected.toString());
            info->urlOf(UrlType::kParentUrl);
            info->fileName();
            info->size();
            info->viewOfTip(hfmbase::FileInfo::ViewType::kEmptyDir);
        }
    }
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

    void listingWhileTheRootMoves()
    {
        QSet<QString> names = fillTree(env.root(), QStringLiteral("one"));
        names.unite(fillTree(otherRoot.path(), QStringLiteral("two")));
        QCOMPARE(names.size(), 2 * (kFolders + kFilesPerFolder));

        const QStringList roots {env.root(), otherRoot.path()};
        CloudEnvironment::useRoot(roots.first());
        std::atomic<bool> done {false};
        ListingReport report;
        std::thread worker([&] {
            listCloudTree(names, &report);
            done.store(true);
        });

        int moves = 0;
        while (!done.load()) {
            CloudEnvironment::useRoot(roots.at(moves % 2));
            ++moves;
            // The GUI thread reads the root too, for emblems and menus.
            NubixUtils::readyToAccess();
            NubixUtils::localToCloud(QUrl::fromLocalFile(roots.at(moves % 2) + QStringLiteral("/x")));
        }
        worker.join();

        QVERIFY2(report.faults.isEmpty(), qPrintable(report.faults.value(0)));
        QVERIFY(moves > 0);
        // Each listing keeps the local folder it started with.
        QCOMPARE(report.entries, kRounds * kFolders * (kFilesPerFolder + 1));
        QVERIFY(report.cloudUrls > 0);
    }

private:
    CloudEnvironment env;
    QTemporaryDir otherRoot;
};

QTEST_GUILESS_MAIN(TestCloudFileThreads)
#include "tst_cloudfilethreads.moc"
