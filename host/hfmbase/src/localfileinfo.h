// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbase/fileinfo.h"

#include <QFileInfo>
#include <mutex>

namespace hfmio {

// Information of a local "file" URL from the file system's own data. The
// status comes from the QFileInfo given (or made) at construction; the mime
// type and icon are computed only when asked. A cached instance may be
// queried from several threads, so the lazy parts are guarded.
class LocalFileInfo : public hfmbase::FileInfo
{
public:
    explicit LocalFileInfo(const QUrl &url);
    // Reuses status already read, e.g. by a directory iterator.
    LocalFileInfo(const QUrl &url, const QFileInfo &info);
    ~LocalFileInfo() override;

    QUrl urlOf(FileUrlInfoType type) const override;
    bool exists() const override;
    void refresh() override;

    QString fileName() const override;
    QString baseName() const override;
    QString suffix() const override;
    QString displayName() const override;
    QString absoluteFilePath() const override;
    QString absolutePath() const override;

    qint64 size() const override;
    QDateTime lastModified() const override;
    QDateTime lastRead() const override;
    QDateTime birthTime() const override;

    bool isFile() const override;
    bool isDir() const override;
    bool isSymLink() const override;
    bool isHidden() const override;
    bool isReadable() const override;
    bool isWritable() const override;
    bool isExecutable() const override;
    QFileDevice::Permissions permissions() const override;
    QString owner() const override;

    QMimeType mimeType() const override;
    QIcon fileIcon() const override;
    int countChildFile() const override;

    bool canAttributes(FileCanType type) const override;

    // Theme icon name used for a mime type when the theme has neither its
    // own nor its generic icon.
    static QString fallbackIconName(const QFileInfo &info);

private:
    bool parentWritable() const;

    mutable std::mutex mutex;
    QFileInfo info;
    mutable QMimeType mime;
    mutable bool mimeKnown = false;
    mutable QIcon icon;
    mutable bool iconKnown = false;
};

}   // namespace hfmio
