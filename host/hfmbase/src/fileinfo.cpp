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

// What an info knows nothing about answers with the empty value of its type.
#define EMPTY_ANSWER(Type, name)                                                                                       \
    Type FileInfo::name() const                                                                                        \
    {                                                                                                                  \
        return Type();                                                                                                 \
    }

EMPTY_ANSWER(QDateTime, lastModified)
EMPTY_ANSWER(QDateTime, lastRead)
EMPTY_ANSWER(QDateTime, birthTime)
EMPTY_ANSWER(bool, isFile)
EMPTY_ANSWER(bool, isDir)
EMPTY_ANSWER(bool, isSymLink)
EMPTY_ANSWER(bool, isReadable)
EMPTY_ANSWER(bool, isWritable)
EMPTY_ANSWER(bool, isExecutable)
EMPTY_ANSWER(QFileDevice::Permissions, permissions)
EMPTY_ANSWER(QString, owner)
EMPTY_ANSWER(QMimeType, mimeType)
EMPTY_ANSWER(QIcon, fileIcon)

#undef EMPTY_ANSWER

bool FileInfo::isHidden() const
{
    return fileName().startsWith(QLatin1Char('.'));
}

QString FileInfo::mimeTypeName() const
{
    return mimeType().name();
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

// Each query asks the proxy; without one the answer is the empty value of
// its type.
#define PROXY_QUERY(Type, name)                                                                                        \
    Type ProxyFileInfo::name() const                                                                                   \
    {                                                                                                                  \
        return proxy ? proxy->name() : Type();                                                                         \
    }
#define PROXY_QUERY_OF(Type, name, Arg)                                                                                \
    Type ProxyFileInfo::name(Arg arg) const                                                                            \
    {                                                                                                                  \
        return proxy ? proxy->name(arg) : Type();                                                                      \
    }

PROXY_QUERY_OF(QUrl, urlOf, FileUrlInfoType)
PROXY_QUERY(bool, exists)
PROXY_QUERY(QString, fileName)
PROXY_QUERY(QString, baseName)
PROXY_QUERY(QString, suffix)
PROXY_QUERY(QString, displayName)
PROXY_QUERY(QString, absoluteFilePath)
PROXY_QUERY(QString, absolutePath)
PROXY_QUERY(qint64, size)
PROXY_QUERY(QDateTime, lastModified)
PROXY_QUERY(QDateTime, lastRead)
PROXY_QUERY(QDateTime, birthTime)
PROXY_QUERY(bool, isFile)
PROXY_QUERY(bool, isDir)
PROXY_QUERY(bool, isSymLink)
PROXY_QUERY(bool, isHidden)
PROXY_QUERY(bool, isReadable)
PROXY_QUERY(bool, isWritable)
PROXY_QUERY(bool, isExecutable)
PROXY_QUERY(QFileDevice::Permissions, permissions)
PROXY_QUERY(QString, owner)
PROXY_QUERY(QMimeType, mimeType)
PROXY_QUERY(QString, mimeTypeName)
PROXY_QUERY(QIcon, fileIcon)
PROXY_QUERY_OF(bool, canAttributes, FileCanType)
PROXY_QUERY_OF(QString, viewOfTip, ViewType)

#undef PROXY_QUERY
#undef PROXY_QUERY_OF

void ProxyFileInfo::refresh()
{
    if (proxy)
        proxy->refresh();
}

int ProxyFileInfo::countChildFile() const
{
    return proxy ? proxy->countChildFile() : -1;
}

}   // namespace hfmbase
