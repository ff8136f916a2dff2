// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixentryentity.h"

#include "caches/nubixcaches.h"
#include "utils/nubixutils.h"

namespace hfmplugin_nubix {

NubixEntryEntity::NubixEntryEntity(const QUrl &url) : AbstractEntryFileEntity(url) { }

NubixEntryEntity::~NubixEntryEntity() = default;

QString NubixEntryEntity::displayName() const
{
    return tr("Kelo Drive");
}

QIcon NubixEntryEntity::icon() const
{
    return QIcon::fromTheme(iconName());
}

QString NubixEntryEntity::iconName() const
{
    // Keyed on the root, not on syncInited as the sidebar item is: the drive
    // shows its account kind only once there is a folder to open.
    const SyncInfo info = NubixCaches::instance()->syncInfo();
    if (info.syncRoot.isEmpty())
        return QStringLiteral("nubix-harddisk");
    return info.isPublicCloud ? QStringLiteral("nubix-harddisk-individual")
                              : QStringLiteral("nubix-harddisk-enterprise");
}

bool NubixEntryEntity::exists() const
{
    return true;
}

bool NubixEntryEntity::showProgress() const
{
    return showSize();
}

bool NubixEntryEntity::showTotalSize() const
{
    return showSize();
}

bool NubixEntryEntity::showUsageSize() const
{
    return showSize();
}

bool NubixEntryEntity::showSize() const
{
    if (storageInfo().quota == kUnlimitedQuota)
        return false;
    return NubixUtils::readyToAccess();
}

int NubixEntryEntity::order() const
{
    return 3;
}

qint64 NubixEntryEntity::sizeTotal() const
{
    return storageInfo().total;
}

qint64 NubixEntryEntity::sizeUsage() const
{
    return storageInfo().used;
}

QString NubixEntryEntity::description() const
{
    // Accounts with a quota get the host's usage bar instead of a line.
    if (storageInfo().quota != kUnlimitedQuota)
        return QString();
    if (!NubixUtils::readyToAccess())
        return QString();
    return tr("Used space %1").arg(formatSize(sizeUsage()));
}

void NubixEntryEntity::refresh() { }

QUrl NubixEntryEntity::targetUrl() const
{
    // The navigation filters turn the welcome page into the tree when the root is ready.
    return NubixUtils::loginRoot();
}

NubixEntryEntity::StorageInfo NubixEntryEntity::storageInfo()
{
    const UserInfo user = NubixCaches::instance()->userInfo();
    StorageInfo info;
    info.free = user.free;
    info.used = user.used;
    info.total = user.total;
    info.relative = user.relative;
    info.quota = user.quota;
    return info;
}

QString NubixEntryEntity::formatSize(qint64 bytes)
{
    static const char *const kUnits[] = {"B", "KB", "MB", "GB", "TB"};
    constexpr int kLastUnit = int(sizeof(kUnits) / sizeof(kUnits[0])) - 1;
    double value = double(bytes);
    int count = 0;
    // Strictly greater: exactly 1024 of a unit stays in that unit. A fifth
    // division would leave the list, so sizes beyond 1024 TB stay in TB
    // ("2048.0 TB") rather than gaining a unit the line never names.
    while (value > 1024 && count < kLastUnit) {
        value /= 1024;
        ++count;
    }
    return QStringLiteral("%1 %2").arg(QString::number(value, 'f', 1), QLatin1String(kUnits[count]));
}

}   // namespace hfmplugin_nubix
