// SPDX-License-Identifier: GPL-3.0-or-later
#include <hfmbase/abstractdiriterator.h>
#include <hfmbase/infofactory.h>

#include <QtTest>

using hfmbase::AbstractDirIterator;
using hfmbase::DirIteratorFactory;
using hfmbase::FileInfo;

Q_DECLARE_METATYPE(QDir::Filters)
Q_DECLARE_METATYPE(QDirIterator::IteratorFlags)

class TestDirIterator : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(tmp.isValid());
        QDir root(tmp.path());
        QVERIFY(root.mkpath(QStringLiteral("docs/deep")));
        QVERIFY(root.mkpath(QStringLiteral(".config")));
        for (const char *name :
            {"a.txt", "b.TXT", ".secret.txt", "docs/readme.md", "docs/deep/x.txt", ".config/rc", "with space.txt"}) {
            QFile f(root.filePath(QLatin1String(name)));
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(name);
        }
        QVERIFY(QFile::link(root.filePath(QStringLiteral("a.txt")), root.filePath(QStringLiteral("link.txt"))));
    }

    void listsLikeQDirIterator_data()
    {
        QTest::addColumn<QStringList>("nameFilters");
        QTest::addColumn<QDir::Filters>("filters");
        QTest::addColumn<QDirIterator::IteratorFlags>("flags");
        const QDirIterator::IteratorFlags flat = QDirIterator::NoIteratorFlags;
        const QDir::Filters entries = QDir::AllEntries;
        // The listing is QDirIterator's: one row per kind of request.
        QTest::newRow("no filter") << QStringList() << QDir::Filters(QDir::NoFilter) << flat;
        QTest::newRow("hidden files too") << QStringList() << (entries | QDir::Hidden | QDir::NoDotAndDotDot) << flat;
        QTest::newRow("name filter") << QStringList {QStringLiteral("*.txt")} << QDir::Filters(QDir::Files) << flat;
        QTest::newRow("recursive following symlinks") << QStringList() << (QDir::Files | QDir::NoDotAndDotDot)
                                                      << (QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
    }
    void listsLikeQDirIterator()
    {
        QFETCH(QStringList, nameFilters);
        QFETCH(QDir::Filters, filters);
        QFETCH(QDirIterator::IteratorFlags, flags);

        QStringList expected;
        QDirIterator reference(tmp.path(), nameFilters, filters, flags);
        while (reference.hasNext())
            expected << reference.next();

        const QUrl dirUrl = QUrl::fromLocalFile(tmp.path());
        auto it = DirIteratorFactory::create<AbstractDirIterator>(dirUrl, nameFilters, filters, flags);
        QStringList listed;
        while (it->hasNext()) {
            const QUrl next = it->next();
            QCOMPARE(it->fileName(), next.fileName());
            const auto info = it->fileInfo();
            QCOMPARE(info->fileUrl(), next);
            QCOMPARE(info->size(), QFileInfo(next.toLocalFile()).size());
            listed << next.toLocalFile();
        }
        QCOMPARE(listed, expected);
        QVERIFY(it->next().isEmpty());   // past the end: nothing, no crash
    }

    void listingRefreshesTheInfoCache()
    {
        const QString path = tmp.filePath(QStringLiteral("a.txt"));
        const QUrl url = QUrl::fromLocalFile(path);
        auto stale = hfmbase::InfoFactory::create<FileInfo>(url);
        const qint64 before = stale->size();
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::Append));
            f.write("more");
        }
        auto it = DirIteratorFactory::create<AbstractDirIterator>(
            QUrl::fromLocalFile(tmp.path()), {QStringLiteral("a.txt")}, QDir::Files);
        QVERIFY(it->hasNext());
        it->next();
        const auto listed = it->fileInfo();
        QCOMPARE(listed->size(), before + 4);
        // The fresh info replaced the stale one for everybody else.
        QCOMPARE(hfmbase::InfoFactory::create<FileInfo>(url), listed);
    }

    void closeEndsTheListing()
    {
        auto it = DirIteratorFactory::create<AbstractDirIterator>(QUrl::fromLocalFile(tmp.path()));
        QVERIFY(it->hasNext());
        it->next();
        it->close();
        QVERIFY(!it->hasNext());
    }

    void badUrlsListNothing_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<bool>("made");
        QTest::newRow("missing directory") << QUrl::fromLocalFile(tmp.filePath(QStringLiteral("nope"))) << true;
        QTest::newRow("a file, not a directory") << QUrl::fromLocalFile(tmp.filePath(QStringLiteral("a.txt"))) << true;
        QTest::newRow("file scheme without a path") << QUrl(QStringLiteral("file:")) << true;
        QTest::newRow("unknown scheme") << QUrl(QStringLiteral("nowhere:///x")) << false;
    }
    void badUrlsListNothing()
    {
        QFETCH(QUrl, url);
        QFETCH(bool, made);
        QString error;
        if (!made || url.toLocalFile().isEmpty())
            QTest::ignoreMessage(QtWarningMsg,
                QRegularExpression(
                    QStringLiteral("^(DirIteratorFactory::createIterator|LocalDirIterator::LocalDirIterator): ")));
        auto it = DirIteratorFactory::create<AbstractDirIterator>(
            url, {}, QDir::NoFilter, QDirIterator::NoIteratorFlags, &error);
        QCOMPARE(bool(it), made);
        QCOMPARE(error.isEmpty(), made);
        if (it) {
            QVERIFY(!it->hasNext());
            QVERIFY(it->next().isEmpty());
            QVERIFY(it->fileName().isEmpty());
            QVERIFY(!it->fileInfo());
        }
    }

private:
    QTemporaryDir tmp;
};

QTEST_GUILESS_MAIN(TestDirIterator)
#include "tst_diriterator.moc"
