// SPDX-License-Identifier: GPL-3.0-or-later
#include "localfileinfo.h"

#include <QDir>
#include <QMimeDatabase>

namespace hfmio {

namespace {

QFileInfo infoOf(const QUrl &url)
{
    // A non-local or empty URL must never describe the working directory.
    if (!url.isLocalFile() || url.toLocalFile().isEmpty())
        return QFileInfo();
    return QFileInfo(url.toLocalFile());
}

}   // namespace

LocalFileInfo::LocalFileInfo(const QUrl &url) : FileInfo(url), info(infoOf(url)) { }

LocalFileInfo::LocalFileInfo(const QUrl &url, const QFileInfo &info) : FileInfo(url), info(info) { }

LocalFileInfo::~LocalFileInfo() = default;

QUrl LocalFileInfo::urlOf(FileUrlInfoType type) const
{
    std::lock_guard<std::mutex> locker(mutex);
    switch (type) {
    case FileUrlInfoType::kParentUrl: {
        if (info.filePath().isEmpty() || info.isRoot())
            return QUrl();
        return QUrl::fromLocalFile(info.absolutePath());
    }
    case FileUrlInfoType::kSymLinkTargetUrl:
        return info.isSymLink() ? QUrl::fromLocalFile(info.symLinkTarget()) : QUrl();
    default:
        return url;
    }
}

bool LocalFileInfo::exists() const
{
    std::lock_guard<std::mutex> locker(mutex);
    return !info.filePath().isEmpty() && info.exists();
}

void LocalFileInfo::refresh()
{
    std::lock_guard<std::mutex> locker(mutex);
    info.refresh();
    mimeKnown = false;
    mime = QMimeType();
    iconKnown = false;
    icon = QIcon();
}

// The status held at construction (or since the last refresh()), read under
// the lock.
#define LOCKED_STATUS(Type, name)                                                                                      \
    Type LocalFileInfo::name() const                                                                                   \
    {                                                                                                                  \
        std::lock_guard<std::mutex> locker(mutex);                                                                     \
        return info.name();                                                                                            \
    }

LOCKED_STATUS(QString, fileName)
LOCKED_STATUS(QString, baseName)
LOCKED_STATUS(QString, suffix)
LOCKED_STATUS(qint64, size)
LOCKED_STATUS(QDateTime, lastModified)
LOCKED_STATUS(QDateTime, lastRead)
LOCKED_STATUS(QDateTime, birthTime)
LOCKED_STATUS(bool, isFile)
LOCKED_STATUS(bool, isDir)
LOCKED_STATUS(bool, isSymLink)
LOCKED_STATUS(bool, isReadable)
LOCKED_STATUS(bool, isWritable)
LOCKED_STATUS(bool, isExecutable)
LOCKED_STATUS(QFileDevice::Permissions, permissions)
LOCKED_STATUS(QString, owner)

#undef LOCKED_STATUS

QString LocalFileInfo::displayName() const
{
    std::lock_guard<std::mutex> locker(mutex);
    const QString name = info.fileName();
    return name.isEmpty() ? info.absoluteFilePath() : name;
}

QString LocalFileInfo::absoluteFilePath() const
{
    std::lock_guard<std::mutex> locker(mutex);
    return info.filePath().isEmpty() ? QString() : info.absoluteFilePath();
}

QString LocalFileInfo::absolutePath() const
{
    std::lock_guard<std::mutex> locker(mutex);
    return info.filePath().isEmpty() ? QString() : info.absolutePath();
}

bool LocalFileInfo::isHidden() const
{
    std::lock_guard<std::mutex> locker(mutex);
    return !info.filePath().isEmpty() && info.isHidden();
}

QMimeType LocalFileInfo::mimeType() const
{
    std::lock_guard<std::mutex> locker(mutex);
    if (!mimeKnown) {
        if (!info.filePath().isEmpty())
            mime = QMimeDatabase().mimeTypeForFile(info);
        mimeKnown = true;
    }
    return mime;
}

QString LocalFileInfo::fallbackIconName(const QFileInfo &info)
{
    if (info.isDir())
        return QStringLiteral("folder");
    if (info.isFile())
        return QStringLiteral("text-x-generic");
    return QStringLiteral("unknown");
}

QIcon LocalFileInfo::fileIcon() const
{
    const QMimeType type = mimeType();
    std::lock_guard<std::mutex> locker(mutex);
    if (!iconKnown) {
        if (type.isValid() && QIcon::hasThemeIcon(type.iconName()))
            icon = QIcon::fromTheme(type.iconName());
        else if (type.isValid() && QIcon::hasThemeIcon(type.genericIconName()))
            icon = QIcon::fromTheme(type.genericIconName());
        else
            icon = QIcon::fromTheme(fallbackIconName(info));
        iconKnown = true;
    }
    return icon;
}

int LocalFileInfo::countChildFile() const
{
    std::lock_guard<std::mutex> locker(mutex);
    if (info.filePath().isEmpty() || !info.isDir())
        return -1;
    return QDir(info.absoluteFilePath())
        .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)
        .size();
}

bool LocalFileInfo::parentWritable() const
{
    if (info.filePath().isEmpty() || info.isRoot())
        return false;
    return QFileInfo(info.absolutePath()).isWritable();
}

bool LocalFileInfo::canAttributes(FileCanType type) const
{
    std::lock_guard<std::mutex> locker(mutex);
    if (info.filePath().isEmpty())
        return false;
    switch (type) {
    case FileCanType::kCanDelete:
    case FileCanType::kCanTrash:
    case FileCanType::kCanRename:
    case FileCanType::kCanHidden:
        return (info.exists() || info.isSymLink()) && parentWritable();
    case FileCanType::kCanRedirectionFileUrl:
        return false;
    case FileCanType::kCanDrop:
        return info.isDir() && info.isWritable();
    case FileCanType::kCanDrag:
        return info.exists() && info.isReadable();
    }
    return false;
}

}   // namespace hfmio
