// SPDX-License-Identifier: GPL-3.0-or-later
// The INI file that keeps the sync summary between runs: the input is the
// file, loaded as at start-up. Checked: a file without keys leaves the state
// alone; what was loaded counts as unconfirmed; saving what was loaded and
// loading it again gives the same summary, so a value never changes by
// going through the file.
#include "caches/nubixcaches.h"
#include "fuzzsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>

using hfmplugin_nubix::NubixCaches;
using hfmplugin_nubix::SyncInfo;
using hfmplugin_nubix::UserInfo;

namespace {

struct Summary
{
    QString root;
    bool inited = false;
    bool isPublic = false;
    bool disconnected = false;
    qint64 quota = 0;
    qint64 total = 0;
    qint64 used = 0;

    bool operator==(const Summary &other) const
    {
        return root == other.root && inited == other.inited && isPublic == other.isPublic
            && disconnected == other.disconnected && quota == other.quota && total == other.total && used == other.used;
    }
};

Summary summaryOf(const NubixCaches &caches)
{
    const SyncInfo sync = caches.syncInfo();
    const UserInfo user = caches.userInfo();
    return {sync.syncRoot, sync.syncInited, sync.isPublicCloud, sync.isDisconnected, user.quota, user.total, user.used};
}

void reset(NubixCaches *caches)
{
    caches->setSyncInfo(SyncInfo());
    caches->setUserInfo(UserInfo());
}

// The settings classes keep files they have read and read them again only
// when size or time stamp differ: every input gets a time stamp of its own.
qint64 stamp = 0;

bool writeCacheFile(const QByteArray &bytes)
{
    QFile file(NubixCaches::cachePath());
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)
        && file.write(bytes) == bytes.size()
        && file.setFileTime(QDateTime::fromSecsSinceEpoch(++stamp, Qt::UTC), QFileDevice::FileModificationTime);
}

NubixCaches *caches = nullptr;

}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Without a TZ the C library looks at /etc/localtime again for every
    // time stamp Qt converts, several per load: a third of the time.
    qputenv("TZ", "UTC");
    nubixfuzz::setUp(argc, argv, true);
    QDir().mkpath(QFileInfo(NubixCaches::cachePath()).absolutePath());
    caches = new NubixCaches;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (!writeCacheFile(QByteArray(reinterpret_cast<const char *>(data), int(size))))
        return 0;
    reset(caches);
    const Summary empty = summaryOf(*caches);
    caches->loadCache();
    const Summary loaded = summaryOf(*caches);
    if (!(loaded == empty) && !loaded.disconnected)
        std::abort();

    caches->saveCache();
    reset(caches);
    caches->loadCache();
    // The saved file always has every key, so it reads as unconfirmed.
    Summary again = summaryOf(*caches);
    if (!again.disconnected)
        std::abort();
    again.disconnected = loaded.disconnected;
    if (!(again == loaded))
        std::abort();
    return 0;
}
