// SPDX-License-Identifier: GPL-3.0-or-later
#include "file/cloudfileiterator.h"

#include "file/cloudproxyfileinfo.h"

#include "cloudenvironment.h"

#include <hfmbase/infofactory.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTest>

using namespace hfmplugin_nubix;

Q_DECLARE_METATYPE(QDir::Filters)
Q_DECLARE_METATYPE(QDirIterator::IteratorFlags)

namespace {

// One listed entry as the host sees it.
struct Entry
{
    QString name;
    QUrl next;
    QUrl fileUrl;
};

QList<Entry> listCloud(const QUrl &url, const QStringList &nameFilters, QDir::Filters filters,
    QDirIterator::IteratorFlags flags = QDirIterator::NoIteratorFlags)
{
    QList<Entry> entries;
    const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(url, nameFilters, filters, flags);
    if (!it)
        return entries;
    while (it->hasNext()) {
        Entry entry;
        entry.next = it->next();
        entry.name = it->fileName();
        entry.fileUrl = it->fileUrl();
        entries.append(entry);
    }
    return entries;
}

}   // namespace

class TestCloudFileIterator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(env.setUp());
        QVERIFY(env.makeFile(QStringLiteral("a.txt"), "aaa"));
        QVERIFY(env.makeFile(QStringLiteral("b.log"), "bb"));
        QVERIFY(env.makeFile(QStringLiteral(".hidden.txt")));
        QVERIFY(env.makeFile(QStringLiteral("space \u00e9t\u00e9 #1.txt"), "x"));
        QVERIFY(env.makeFile(QStringLiteral("sub/c.txt"), "cccc"));
        QVERIFY(env.makeFile(QStringLiteral("sub/deeper/d.txt")));
        QVERIFY(QDir().mkpath(env.localPath(QStringLiteral("empty"))));
    }
    void init() { CloudEnvironment::useRoot(env.root()); }

    // Whatever the host asks for, the names are those of the local folder,
    // next() stays local and fileUrl() is the cloud form of the same entry.
    void listsLikeTheLocalFolder_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QStringList>("nameFilters");
        QTest::addColumn<QDir::Filters>("filters");
        QTest::addColumn<QDirIterator::IteratorFlags>("flags");
        QTest::addColumn<int>("expectedCount");

        const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot;
        const QDirIterator::IteratorFlags flat = QDirIterator::NoIteratorFlags;
        QTest::newRow("cloud root") << QString() << QStringList() << all << flat << 5;
        QTest::newRow("missing folder") << QStringLiteral("missing") << QStringList() << all << flat << 0;
        QTest::newRow("name filter") << QString() << QStringList {QStringLiteral("*.txt")} << QDir::Filters(QDir::Files)
                                     << flat << 2;
        QTest::newRow("hidden shown") << QString() << QStringList() << (all | QDir::Hidden) << flat << 6;
        QTest::newRow("recursive") << QString() << QStringList {QStringLiteral("*.txt")} << QDir::Filters(QDir::Files)
                                   << QDirIterator::IteratorFlags(QDirIterator::Subdirectories) << 4;
    }
    void listsLikeTheLocalFolder()
    {
        QFETCH(QString, dir);
        QFETCH(QStringList, nameFilters);
        QFETCH(QDir::Filters, filters);
        QFETCH(QDirIterator::IteratorFlags, flags);
        QFETCH(int, expectedCount);

        // What the same request gives on the local folder, by relative path.
        QMap<QString, QString> expected;
        const QDir rootDir(env.root());
        QDirIterator local(env.localPath(dir), nameFilters, filters, flags);
        while (local.hasNext()) {
            const QString path = local.next();
            expected.insert(rootDir.relativeFilePath(path), local.fileName());
        }
        QCOMPARE(expected.size(), expectedCount);

        const QList<Entry> entries = listCloud(CloudEnvironment::cloud(dir), nameFilters, filters, flags);
        QCOMPARE(entries.size(), expected.size());
        for (const Entry &entry : entries) {
            QVERIFY2(entry.next.isLocalFile(), qPrintable(entry.next.toString()));
            const QString relative = rootDir.relativeFilePath(entry.next.toLocalFile());
            QVERIFY2(expected.contains(relative), qPrintable(relative));
            QCOMPARE(entry.name, expected.take(relative));
            QCOMPARE(entry.fileUrl, CloudEnvironment::cloud(relative));
        }
        QVERIFY(expected.isEmpty());
    }

    void urlIsTheListedCloudFolder_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("url");

        QTest::newRow("cloud root") << QString() << QStringLiteral("nubix:///");
        QTest::newRow("nested with trailing slash")
            << QStringLiteral("sub/deeper/") << QStringLiteral("nubix:///sub/deeper/");
    }
    void urlIsTheListedCloudFolder()
    {
        QFETCH(QString, dir);
        QFETCH(QString, url);

        const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(CloudEnvironment::cloud(dir));
        QVERIFY(it);
        QCOMPARE(it->url().toString(), url);
        QCOMPARE(it->url().path(), dir.isEmpty() ? QStringLiteral("/") : QLatin1Char('/') + dir);
    }

    void entryInfoIsTheCloudInfo()
    {
        const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            CloudEnvironment::cloud({}), {}, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
        QVERIFY(it);
        int seen = 0;
        while (it->hasNext()) {
            const QUrl local = it->next();
            const hfmbase::FileInfoPointer info = it->fileInfo();
            QVERIFY(info);
            QVERIFY(dynamic_cast<CloudProxyFileInfo *>(info.data()));
            QCOMPARE(info->fileUrl(), it->fileUrl());
            QCOMPARE(info->urlOf(hfmbase::FileInfo::FileUrlInfoType::kRedirectedFileUrl), local);

            const QFileInfo expected(local.toLocalFile());
            QCOMPARE(info->fileName(), expected.fileName());
            QCOMPARE(info->isDir(), expected.isDir());
            if (expected.isFile())
                QCOMPARE(info->size(), expected.size());
            ++seen;
        }
        QCOMPARE(seen, 5);
    }

    // The root is read on every call, so an iterator made before a change
    // answers for the new root.
    void followsTheRootWhileListing()
    {
        QTemporaryDir elsewhere;
        const auto it = hfmbase::DirIteratorFactory::create<hfmbase::AbstractDirIterator>(
            CloudEnvironment::cloud(QStringLiteral("sub")), {}, QDir::Files);
        QVERIFY(it && it->hasNext());
        it->next();
        QCOMPARE(it->fileUrl(), CloudEnvironment::cloud(QStringLiteral("sub/c.txt")));

        CloudEnvironment::useRoot(elsewhere.path());
        QVERIFY(it->fileUrl().isEmpty());
        QVERIFY(it->url().isEmpty());
        CloudEnvironment::useRoot(env.localPath(QStringLiteral("sub")));
        QCOMPARE(it->fileUrl(), CloudEnvironment::cloud(QStringLiteral("c.txt")));
    }

    // A URL the host has no local iterator for lists nothing, and every
    // question about it gets an empty answer.
    void withoutLocalIteratorListsNothing_data()
    {
        QTest::addColumn<QUrl>("url");

        QTest::newRow("other scheme") << QUrl(QStringLiteral("smb://host/share"));
    }
    void withoutLocalIteratorListsNothing()
    {
        QFETCH(QUrl, url);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^DirIteratorFactory::createIterator: ")));
        CloudFileIterator it(url, {}, QDir::AllEntries | QDir::NoDotAndDotDot);
        QVERIFY(!it.hasNext());
        QVERIFY(it.next().isEmpty());
        QVERIFY(it.fileName().isEmpty());
        QVERIFY(it.fileUrl().isEmpty());
        QVERIFY(it.url().isEmpty());
        QVERIFY(!it.fileInfo());
    }

private:
    CloudEnvironment env;
};

QTEST_GUILESS_MAIN(TestCloudFileIterator)
#include "tst_cloudfileiterator.moc"
