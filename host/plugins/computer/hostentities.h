// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractentryfileentity.h>

namespace hdehost {
struct StandardPlace;
}   // namespace hdehost

namespace hfmplugin_computer {

// A mounted file system: "entry:///root.localdisk" is the one holding "/".
class LocalDiskEntity : public hfmbase::AbstractEntryFileEntity
{
    Q_OBJECT
public:
    explicit LocalDiskEntity(const QUrl &url);

    QString displayName() const override;
    QIcon icon() const override;
    bool exists() const override;
    bool showProgress() const override;
    bool showTotalSize() const override;
    bool showUsageSize() const override;
    int order() const override;
    qint64 sizeTotal() const override;
    qint64 sizeUsage() const override;
    void refresh() override;
    QUrl targetUrl() const override;

private:
    QString mountPoint;
    qint64 total = 0;
    qint64 available = 0;
    bool valid = false;
};

// One of the user's standard folders: "entry:///documents.userdir".
class UserDirEntity : public hfmbase::AbstractEntryFileEntity
{
    Q_OBJECT
public:
    explicit UserDirEntity(const QUrl &url);

    QString displayName() const override;
    QIcon icon() const override;
    bool exists() const override;
    bool showProgress() const override;
    bool showTotalSize() const override;
    bool showUsageSize() const override;
    int order() const override;
    QUrl targetUrl() const override;

    // The entry URLs of the folders that exist, in display order.
    static QList<QUrl> existingEntries();

private:
    QString key;
    QString path;
    const hdehost::StandardPlace *place = nullptr;
    int rank = 0;
};

}   // namespace hfmplugin_computer
