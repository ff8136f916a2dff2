// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/abstractfilewatcher.h>
#include <hfmbase/abstractfilewatcherprivate.h>
#include <hfmbase/fileinfo.h>

// The "hosttest" scheme: hosttest:///a/b is $HOSTTEST_ROOT/a/b. Lists,
// describes and watches through the host's own local classes, as a cloud
// plug-in would.
namespace hosttest {

QString rootPath();
QUrl toLocal(const QUrl &testUrl);
QUrl toTest(const QUrl &localUrl);

class TestFileInfo : public hfmbase::ProxyFileInfo
{
public:
    explicit TestFileInfo(const QUrl &url);
    QUrl urlOf(FileUrlInfoType type) const override;
    bool canAttributes(FileCanType type) const override;
    QString viewOfTip(ViewType type) const override;
};

class TestDirIterator : public hfmbase::AbstractDirIterator
{
    Q_OBJECT
public:
    TestDirIterator(
        const QUrl &url, const QStringList &nameFilters, QDir::Filters filters, QDirIterator::IteratorFlags flags);
    QUrl next() override { return local ? toTest(local->next()) : QUrl(); }
    bool hasNext() const override { return local && local->hasNext(); }
    QString fileName() const override { return local ? local->fileName() : QString(); }
    QUrl fileUrl() const override { return local ? toTest(local->fileUrl()) : QUrl(); }
    QUrl url() const override { return dir; }
    hfmbase::FileInfoPointer fileInfo() const override;

private:
    QUrl dir;
    hfmbase::AbstractDirIteratorPointer local;
};

class TestWatcherPrivate : public hfmbase::AbstractFileWatcherPrivate
{
    Q_OBJECT
public:
    TestWatcherPrivate(const QUrl &url, hfmbase::AbstractFileWatcher *qq) : AbstractFileWatcherPrivate(url, qq) { }
    bool start() override;
    bool stop() override;

private:
    hfmbase::AbstractFileWatcherPointer local;
};

class TestWatcher : public hfmbase::AbstractFileWatcher
{
    Q_OBJECT
public:
    explicit TestWatcher(const QUrl &url) : AbstractFileWatcher(new TestWatcherPrivate(url, this)) { }
    friend class TestWatcherPrivate;
};

}   // namespace hosttest
