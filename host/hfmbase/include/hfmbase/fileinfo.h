// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QDateTime>
#include <QFileDevice>
#include <QIcon>
#include <QMimeType>
#include <QSharedPointer>
#include <QUrl>

namespace hfmbase {

// What a view knows about one file. Created through InfoFactory on any
// thread; an instance is used by one thread at a time. Queries never block on
// anything but the local file system.
class HFMBASE_EXPORT FileInfo
{
    Q_DISABLE_COPY(FileInfo)
public:
    enum class FileUrlInfoType {
        kUrl = 0,
        kParentUrl = 1,
        kOriginalUrl = 2,
        kRedirectedFileUrl = 3,
        kSymLinkTargetUrl = 4,
    };
    enum class FileCanType {
        kCanDelete = 0,
        kCanTrash = 1,
        kCanRename = 2,
        kCanRedirectionFileUrl = 3,
        kCanDrop = 4,
        kCanDrag = 5,
        kCanHidden = 6,
    };
    enum class ViewType {
        kEmptyDir = 0,
        kLoading = 1,
    };

    explicit FileInfo(const QUrl &url);
    virtual ~FileInfo();

    virtual QUrl fileUrl() const;
    virtual QUrl urlOf(FileUrlInfoType type) const;
    virtual bool exists() const = 0;
    virtual void refresh();

    virtual QString fileName() const = 0;
    virtual QString baseName() const;
    virtual QString suffix() const;
    virtual QString displayName() const;
    virtual QString absoluteFilePath() const;
    virtual QString absolutePath() const;

    virtual qint64 size() const = 0;
    virtual QDateTime lastModified() const;
    virtual QDateTime lastRead() const;
    virtual QDateTime birthTime() const;

    virtual bool isFile() const;
    virtual bool isDir() const;
    virtual bool isSymLink() const;
    virtual bool isHidden() const;
    virtual bool isReadable() const;
    virtual bool isWritable() const;
    virtual bool isExecutable() const;
    virtual QFileDevice::Permissions permissions() const;
    virtual QString owner() const;

    virtual QMimeType mimeType() const;
    virtual QString mimeTypeName() const;
    virtual QIcon fileIcon() const;
    // Number of entries of a directory; -1 when not a directory.
    virtual int countChildFile() const;

    virtual bool canAttributes(FileCanType type) const;
    // A text the view shows in place of items (empty directory, loading).
    virtual QString viewOfTip(ViewType type) const;

protected:
    QUrl url;
};

using FileInfoPointer = QSharedPointer<FileInfo>;

// Forwards every query to an inner info (the proxy) and keeps its own URL:
// fileUrl() is the URL it was made for, everything else, urlOf() included,
// is the proxy's answer. With no proxy the answers are empty.
class HFMBASE_EXPORT ProxyFileInfo : public FileInfo
{
public:
    explicit ProxyFileInfo(const QUrl &url);
    ~ProxyFileInfo() override;

    void setProxy(const FileInfoPointer &proxy);
    FileInfoPointer proxyInfo() const;

    QUrl fileUrl() const override;
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
    QString mimeTypeName() const override;
    QIcon fileIcon() const override;
    int countChildFile() const override;
    bool canAttributes(FileCanType type) const override;
    QString viewOfTip(ViewType type) const override;

protected:
    FileInfoPointer proxy;
};

}   // namespace hfmbase

Q_DECLARE_METATYPE(hfmbase::FileInfoPointer)
