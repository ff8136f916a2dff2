// SPDX-License-Identifier: GPL-3.0-or-later
#include "caches/nubixcaches.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace hfmplugin_nubix;

namespace {

constexpr int kFiles = 256;
constexpr int kWorkers = 4;

QString filePath(int i)
{
    return QStringLiteral("/dir %1/file-%2.txt").arg(i % 8).arg(i);
}

const QStringList &roots()
{
    static const QStringList list {
        QStringLiteral("/home/u/Kelo Drive"), QStringLiteral("/data/sync"), QString(), QStringLiteral("/mnt/x")};
    return list;
}

// The fields of a summary hang together, so a torn copy shows.
SyncInfo summary(int round)
{
    SyncInfo info;
    info.syncRoot = roots().at(round % roots().size());
    info.syncInited = !info.syncRoot.isEmpty();
    info.banDirs = QStringList {info.syncRoot + QStringLiteral("/ban")};
    info.syncQuantity.todo = round;
    info.syncQuantity.done = -round;
    return info;
}

bool consistent(const SyncInfo &info)
{
    return info.syncInited == !info.syncRoot.isEmpty()
        && info.banDirs == QStringList {info.syncRoot + QStringLiteral("/ban")}
    && info.syncQuantity.todo == -info.syncQuantity.done;
}

}   // namespace

// The host's iterators, file infos and watchers read the sync root and drop
// entries from their own threads while the GUI thread takes in the client's
// answers. Plain threads only, so a thread checker sees every access.
class TestCacheThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void workersReadAndDropWhileGuiThreadWrites()
    {
        NubixCaches caches;
        caches.setSyncInfo(summary(0));
        roots();

        std::atomic<bool> stop {false};
        std::atomic<int> torn {0};
        std::atomic<qint64> reads {0};
        std::vector<std::thread> workers;
        for (int w = 0; w < kWorkers; ++w) {
            workers.emplace_back([&, w] {
                for (int i = w; !stop.load(std::memory_order_relaxed); i += kWorkers) {
                    const QString root = caches.syncRoot();
                    const SyncInfo info = caches.syncInfo();
                    if (!consistent(info) || !roots().contains(root))
                        ++torn;
                    const QString path = filePath(i % kFiles);
                    const FileData data = caches.fileData(path);
                    if (!data.path.isEmpty() && (data.path != path || data.fileId != (i % kFiles)))
                        ++torn;
                    if (i % 3 == 0)
                        caches.removeFileCache(path);
                    const UserInfo user = caches.userInfo();
                    if (user.used + user.free != user.total)
                        ++torn;
                    reads.fetch_add(1, std::memory_order_relaxed);
                }
            });
        }

        for (int round = 0; round < 600; ++round) {
            caches.setSyncInfo(summary(round));
            QList<FileData> batch;
            for (int k = 0; k < 16; ++k) {
                FileData data;
                data.fileId = (round * 16 + k) % kFiles;
                data.path = filePath(int(data.fileId));
                data.plan = QStringLiteral("upload");
                data.planStatus = 1 + round % 3;
                batch.append(data);
            }
            caches.cacheFileDatas(batch);
            UserInfo user;
            user.used = round;
            user.free = 1000 - round;
            user.total = 1000;
            caches.setUserInfo(user);
            if (round % 200 == 0) {
                caches.saveCache();
                caches.loadCache();
                caches.setUserInfo(user);
            }
        }
        // Keep writing until every worker has had a fair share of turns.
        while (reads.load() < 20000)
            caches.setSyncInfo(summary(int(reads.load() % 7)));
        stop = true;
        for (std::thread &worker : workers)
            worker.join();

        QCOMPARE(torn.load(), 0);
        QVERIFY(reads.load() >= 20000);
        QVERIFY(consistent(caches.syncInfo()));
    }
};

QTEST_GUILESS_MAIN(TestCacheThreads)
#include "tst_cachethreads.moc"
