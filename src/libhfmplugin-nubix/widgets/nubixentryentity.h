// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractentryfileentity.h>

namespace hfmplugin_nubix {

// The cloud drive's item in the computer view. Holds nothing: every answer is
// read from NubixCaches when asked, so it is cheap, never blocks and is
// current whenever the host repaints. GUI thread.
class NubixEntryEntity : public hfmbase::AbstractEntryFileEntity
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixEntryEntity)
public:
    // The cached storage figures of the account, in bytes.
    struct StorageInfo
    {
        qint64 free = 0;
        qint64 used = 0;
        qint64 total = 0;
        qint64 relative = 0;
        qint64 quota = 0;
    };

    // The client's quota marker of an account without a fixed quota.
    static constexpr qint64 kUnlimitedQuota = -3;

    explicit NubixEntryEntity(const QUrl &url);
    ~NubixEntryEntity() override;

    QString displayName() const override;
    QIcon icon() const override;
    // The theme name of icon().
    QString iconName() const;
    bool exists() const override;
    bool showProgress() const override;
    bool showTotalSize() const override;
    bool showUsageSize() const override;
    bool showSize() const;
    int order() const override;
    qint64 sizeTotal() const override;
    qint64 sizeUsage() const override;
    QString description() const override;
    void refresh() override;
    QUrl targetUrl() const override;

    static StorageInfo storageInfo();
    // "<value with one decimal> <unit>", dividing by 1024 while above 1024.
    static QString formatSize(qint64 bytes);
};

}   // namespace hfmplugin_nubix
