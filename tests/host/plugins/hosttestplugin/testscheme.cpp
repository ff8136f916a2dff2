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
    if (type == FileUrlInfoType::kUrl)
        return url;
    return ProxyFileInfo::urlOf(type);
}

bool TestFileInfo::canAttributes(FileCanType type) const
{
    if (type == FileCanType::kCanRedirectionFileUrl)
        return true;
    return ProxyFileInfo::canAttributes(type);
}

QString TestFileInfo::viewOfTip(ViewType type) const
{
    if (type == ViewType::kEmptyDir)
        return QStringLiteral("Nothing in the test place");
    return ProxyFileInfo::viewOfTip(type);
}

TestDirIterator::TestDirIterator(
    const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags)
    : AbstractDirIterator(url, nameFilters, filters, flags),
      dir(url),
      local(hfmbase::DirIteratorFactory::create(toLocal(url), nameFilters, filters, flags))
{
}

QUrl TestDirIterator::next()
{
    return local ? toTest(local->next()) : QUrl();
}

bool TestDirIterator::hasNext() const
{
    return local && local->hasNext();
}

QString TestDirIterator::fileName() const
{
    return local ? local->fileName() : QString();
}

QUrl TestDirIterator::fileUrl() const
{
    return local ? toTest(local->fileUrl()) : QUrl();
}

QUrl TestDirIterator::url() const
{
    return dir;
}

hfmbase::FileInfoPointer TestDirIterator::fileInfo() const
{
    return hfmbase::FileInfoPointer(new TestFileInfo(fileUrl()));
}

TestWatcherPrivate::TestWatcherPrivate(const QUrl &url, hfmbase::AbstractFileWatcher *qq)
    : AbstractFileWatcherPrivate(url, qq)
{
}

bool TestWatcherPrivate::start()
{
    local = hfmbase::WatcherFactory::create(toLocal(url), false);
    if (!local)
        return false;
    auto *watcher = static_cast<TestWatcher *>(q);
    connect(local.data(), &hfmbase::AbstractFileWatcher::subfileCreated, watcher,
        [watcher](const QUrl &u) { Q_EMIT watcher->subfileCreated(toTest(u)); });
    connect(local.data(), &hfmbase::AbstractFileWatcher::fileDeleted, watcher,
        [watcher](const QUrl &u) { Q_EMIT watcher->fileDeleted(toTest(u)); });
    connect(local.data(), &hfmbase::AbstractFileWatcher::fileAttributeChanged, watcher,
        [watcher](const QUrl &u) { Q_EMIT watcher->fileAttributeChanged(toTest(u)); });
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

TestWatcher::TestWatcher(const QUrl &url) : AbstractFileWatcher(new TestWatcherPrivate(url, this)) { }

}   // namespace hosttest
