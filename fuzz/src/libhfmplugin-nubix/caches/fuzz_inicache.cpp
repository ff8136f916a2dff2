// SPDX-License-Identifier: GPL-3.0-or-later
// The INI file that keeps the sync summary between runs: the input is the
// file, loaded as at start-up. Checked: a file without keys leaves the state
// alone; what was loaded counts as unconfirmed; saving what was loaded and
// loading it again gives the same summary, so a value never changes by
// going through the file.
#include "caches/nubixcaches.h"
#include "fuzzsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
// Written with plain system calls, the cheapest way there is.
time_t stamp = 0;
QByteArray cacheFile;

bool writeCacheFile(const uint8_t *data, size_t size)
{
    const int fd = ::open(cacheFile.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    const timespec times[2] = {{++stamp, 0}, {stamp, 0}};
    const bool ok = ::write(fd, data, size) == ssize_t(size) && ::futimens(fd, times) == 0;
    ::close(fd);
    return ok;
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
    cacheFile = QFile::encodeName(NubixCaches::cachePath());
    caches = new NubixCaches;
    // What the inputs below skip: the state a file without keys leaves,
    // saved over a damaged file, reads back as it was.
    const char damaged[] = "[General]\nQuota=@Variant(\\0)\n";
    if (!writeCacheFile(reinterpret_cast<const uint8_t *>(damaged), sizeof damaged - 1))
        std::abort();
    reset(caches);
    caches->loadCache();
    const Summary empty = summaryOf(*caches);
    caches->saveCache();
    caches->loadCache();
    Summary again = summaryOf(*caches);
    if (!again.disconnected)
        std::abort();
    again.disconnected = false;
    if (!(again == empty))
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (!writeCacheFile(data, size))
        return 0;
    reset(caches);
    const Summary empty = summaryOf(*caches);
    caches->loadCache();
    const Summary loaded = summaryOf(*caches);
    if (!(loaded == empty) && !loaded.disconnected)
        std::abort();
    // Nothing read (no keys, or a file left unread): saving the defaults is
    // the same for every such input and was checked once at the start.
    if (loaded == empty)
        return 0;

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
