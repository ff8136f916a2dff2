// SPDX-License-Identifier: GPL-3.0-or-later
#include "testscheme.h"

#include <hfmbase/infofactory.h>

#include <QDir>

namespace hosttest {

QString rootPath()
{
    return QDir::cleanPath(qEnvironmentVariable("HOSTTEST_ROOT", QDir::tempPath()));
}

QUrl toLocal(const QUrl &testUrl)
{
    if (testUrl.scheme() != QLatin1String("hosttest"))
        return QUrl();
    return QUrl::fromLocalFile(QDir::cleanPath(rootPath() + QLatin1Char('/') + testUrl.path(QUrl::FullyDecoded)));
}

QUrl toTest(const QUrl &localUrl)
{
    const QString path = QDir::cleanPath(localUrl.toLocalFile());
    const QString root = rootPath();
    if (path != root && !path.startsWith(root + QLatin1Char('/')))
        return QUrl();
    // "hosttest:///x": an empty authority, as the URLs typed by people have.
    QUrl url(QStringLiteral("hosttest:///"));
    url.setPath(path == root ? QStringLiteral("/") : path.mid(root.size()), QUrl::DecodedMode);
    return url;
}

TestFileInfo::TestFileInfo(const QUrl &url) : ProxyFileInfo(url)
{
    setProxy(hfmbase::InfoFactory::create<hfmbase::FileInfo>(
        toLocal(url), hfmbase::InfoFactory::CreateType::kCreateNoCache));
}

QUrl TestFileInfo::urlOf(FileUrlInfoType type) const
{
    if (type == FileUrlInfoType::kRedirectedFileUrl)
        return toLocal(url);
    return type == FileUrlInfoType::kUrl ? url : ProxyFileInfo::urlOf(type);
}

bool TestFileInfo::canAttributes(FileCanType type) const
{
    return type == FileCanType::kCanRedirectionFileUrl || ProxyFileInfo::canAttributes(type);
}

QString TestFileInfo::viewOfTip(ViewType type) const
{
    return type == ViewType::kEmptyDir ? QStringLiteral("Nothing in the test place") : ProxyFileInfo::viewOfTip(type);
}

TestDirIterator::TestDirIterator(
    const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags)
    : AbstractDirIterator(url, nameFilters, filters, flags),
      dir(url),
      local(hfmbase::DirIteratorFactory::create(toLocal(url), nameFilters, filters, flags))
{
}

hfmbase::FileInfoPointer TestDirIterator::fileInfo() const
{
    return hfmbase::FileInfoPointer(new TestFileInfo(fileUrl()));
}

bool TestWatcherPrivate::start()
{
    local = hfmbase::WatcherFactory::create(toLocal(url), false);
    if (!local)
        return false;
    auto *watcher = static_cast<TestWatcher *>(q);
    for (auto signal : {&hfmbase::AbstractFileWatcher::subfileCreated, &hfmbase::AbstractFileWatcher::fileDeleted,
             &hfmbase::AbstractFileWatcher::fileAttributeChanged}) {
        connect(local.data(), signal, watcher, [watcher, signal](const QUrl &u) {
            Q_EMIT(watcher->*signal)(toTest(u));
        });
    }
    connect(local.data(), &hfmbase::AbstractFileWatcher::fileRename, watcher,
        [watcher](const QUrl &from, const QUrl &to) { Q_EMIT watcher->fileRename(toTest(from), toTest(to)); });
    return local->startWatcher();
}

bool TestWatcherPrivate::stop()
{
    if (local)
        local->stopWatcher();
    local.reset();
    return true;
}

}   // namespace hosttest
