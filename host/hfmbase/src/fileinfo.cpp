// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/fileinfo.h"

#include "hfmbase/urlroute.h"

#include <QCoreApplication>

namespace hfmbase {

FileInfo::FileInfo(const QUrl &url) : url(url) { }

FileInfo::~FileInfo() = default;

QUrl FileInfo::fileUrl() const
{
    return url;
}

QUrl FileInfo::urlOf(FileUrlInfoType type) const
{
    switch (type) {
    case FileUrlInfoType::kUrl:
    case FileUrlInfoType::kOriginalUrl:
    case FileUrlInfoType::kRedirectedFileUrl:
        return url;
    case FileUrlInfoType::kParentUrl:
        return UrlRoute::urlParent(url);
    case FileUrlInfoType::kSymLinkTargetUrl:
        break;
    }
    return QUrl();
}

void FileInfo::refresh() { }

QString FileInfo::baseName() const
{
    const QString name = fileName();
    const int dot = name.indexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QString FileInfo::suffix() const
{
    const QString name = fileName();
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString FileInfo::displayName() const
{
    return fileName();
}

QString FileInfo::absoluteFilePath() const
{
    return url.path(QUrl::FullyDecoded);
}

QString FileInfo::absolutePath() const
{
    return UrlRoute::urlParent(url).path(QUrl::FullyDecoded);
}

QDateTime FileInfo::lastModified() const
{
    return QDateTime();
}

QDateTime FileInfo::lastRead() const
{
    return QDateTime();
}

QDateTime FileInfo::birthTime() const
{
    return QDateTime();
}

bool FileInfo::isFile() const
{
    return false;
}

bool FileInfo::isDir() const
{
    return false;
}

bool FileInfo::isSymLink() const
{
    return false;
}

bool FileInfo::isHidden() const
{
    return fileName().startsWith(QLatin1Char('.'));
}

bool FileInfo::isReadable() const
{
    return false;
}

bool FileInfo::isWritable() const
{
    return false;
}

bool FileInfo::isExecutable() const
{
    return false;
}

QFileDevice::Permissions FileInfo::permissions() const
{
    return {};
}

QString FileInfo::owner() const
{
    return QString();
}

QMimeType FileInfo::mimeType() const
{
    return QMimeType();
}

QString FileInfo::mimeTypeName() const
{
    return mimeType().name();
}

QIcon FileInfo::fileIcon() const
{
    return QIcon();
}

int FileInfo::countChildFile() const
{
    return -1;
}

bool FileInfo::canAttributes(FileCanType type) const
{
    Q_UNUSED(type)
    return false;
}

QString FileInfo::viewOfTip(ViewType type) const
{
    switch (type) {
    case ViewType::kEmptyDir:
        return QCoreApplication::translate("hfmbase::FileInfo", "Folder is empty");
    case ViewType::kLoading:
        return QCoreApplication::translate("hfmbase::FileInfo", "Loading...");
    }
    return QString();
}

// ---------------------------------------------------------------------------

ProxyFileInfo::ProxyFileInfo(const QUrl &url) : FileInfo(url) { }

ProxyFileInfo::~ProxyFileInfo() = default;

void ProxyFileInfo::setProxy(const FileInfoPointer &proxy)
{
    this->proxy = proxy;
}

FileInfoPointer ProxyFileInfo::proxyInfo() const
{
    return proxy;
}

QUrl ProxyFileInfo::fileUrl() const
{
    return url;
}

QUrl ProxyFileInfo::urlOf(FileUrlInfoType type) const
{
    return proxy ? proxy->urlOf(type) : QUrl();
}

bool ProxyFileInfo::exists() const
{
    return proxy && proxy->exists();
}

void ProxyFileInfo::refresh()
{
    if (proxy)
        proxy->refresh();
}

QString ProxyFileInfo::fileName() const
{
    return proxy ? proxy->fileName() : QString();
}

QString ProxyFileInfo::baseName() const
{
    return proxy ? proxy->baseName() : QString();
}

QString ProxyFileInfo::suffix() const
{
    return proxy ? proxy->suffix() : QString();
}

QString ProxyFileInfo::displayName() const
{
    return proxy ? proxy->displayName() : QString();
}

QString ProxyFileInfo::absoluteFilePath() const
{
    return proxy ? proxy->absoluteFilePath() : QString();
}

QString ProxyFileInfo::absolutePath() const
{
    return proxy ? proxy->absolutePath() : QString();
}

qint64 ProxyFileInfo::size() const
{
    return proxy ? proxy->size() : 0;
}

QDateTime ProxyFileInfo::lastModified() const
{
    return proxy ? proxy->lastModified() : QDateTime();
}

QDateTime ProxyFileInfo::lastRead() const
{
    return proxy ? proxy->lastRead() : QDateTime();
}

QDateTime ProxyFileInfo::birthTime() const
{
    return proxy ? proxy->birthTime() : QDateTime();
}

bool ProxyFileInfo::isFile() const
{
    return proxy && proxy->isFile();
}

bool ProxyFileInfo::isDir() const
{
    return proxy && proxy->isDir();
}

bool ProxyFileInfo::isSymLink() const
{
    return proxy && proxy->isSymLink();
}

bool ProxyFileInfo::isHidden() const
{
    return proxy && proxy->isHidden();
}

bool ProxyFileInfo::isReadable() const
{
    return proxy && proxy->isReadable();
}

bool ProxyFileInfo::isWritable() const
{
    return proxy && proxy->isWritable();
}

bool ProxyFileInfo::isExecutable() const
{
    return proxy && proxy->isExecutable();
}

QFileDevice::Permissions ProxyFileInfo::permissions() const
{
    return proxy ? proxy->permissions() : QFileDevice::Permissions();
}

QString ProxyFileInfo::owner() const
{
    return proxy ? proxy->owner() : QString();
}

QMimeType ProxyFileInfo::mimeType() const
{
    return proxy ? proxy->mimeType() : QMimeType();
}

QString ProxyFileInfo::mimeTypeName() const
{
    return proxy ? proxy->mimeTypeName() : QString();
}

QIcon ProxyFileInfo::fileIcon() const
{
    return proxy ? proxy->fileIcon() : QIcon();
}

int ProxyFileInfo::countChildFile() const
{
    return proxy ? proxy->countChildFile() : -1;
}

bool ProxyFileInfo::canAttributes(FileCanType type) const
{
    return proxy && proxy->canAttributes(type);
}

QString ProxyFileInfo::viewOfTip(ViewType type) const
{
    return proxy ? proxy->viewOfTip(type) : QString();
}

}   // namespace hfmbase
