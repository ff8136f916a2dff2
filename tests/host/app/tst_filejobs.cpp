// SPDX-License-Identifier: GPL-3.0-or-later
// The file-system work behind copy, cut and delete: free names on clashes,
// whole trees, links kept as links, and never an overwritten or lost file.
#include "core/filejobs.h"

#include <hostcommon/urlhelpers.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using hdeapp::TransferResult;

namespace {

void writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

QStringList tree(const QString &root)
{
    QStringList entries;
    QDirIterator it(
        root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        entries.append(QDir(root).relativeFilePath(it.filePath())
            + (it.fileInfo().isSymLink()    ? QStringLiteral("@")
                    : it.fileInfo().isDir() ? QStringLiteral("/")
                                            : QString()));
    }
    entries.sort();
    return entries;
}

}   // namespace

class FileJobsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freeName_data();
    void freeName();
    void copyKeepsEverythingAndTakesFreeNames_data();
    void copyKeepsEverythingAndTakesFreeNames();
    void copiesTreesWithLinks();
    void moveRenamesAndLeavesNothingBehind();
    void refusals_data();
    void refusals();
    void removeNeverFollowsLinks();
};

void FileJobsTest::freeName_data()
{
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("folder");

    QTest::newRow("free name stays") << QStringList() << "a.txt"
                                     << "a.txt" << false;
    QTest::newRow("first clash") << QStringList {QStringLiteral("a.txt")} << "a.txt"
                                 << "a (1).txt" << false;
    QTest::newRow("clashes counted on") << QStringList {QStringLiteral("a.txt"), QStringLiteral("a (1).txt"),
        QStringLiteral("a (2).txt")} << "a.txt"
                                        << "a (3).txt" << false;
    QTest::newRow("no suffix") << QStringList {QStringLiteral("notes")} << "notes"
                               << "notes (1)" << false;
    QTest::newRow("double tar suffix") << QStringList {QStringLiteral("a.tar.gz")} << "a.tar.gz"
                                       << "a (1).tar.gz" << false;
    QTest::newRow("dot file") << QStringList {QStringLiteral(".profile")} << ".profile"
                              << ".profile (1)" << false;
    QTest::newRow("trailing dot") << QStringList {QStringLiteral("odd.")} << "odd."
                                  << "odd. (1)" << false;
    QTest::newRow("percent signs are text") << QStringList {QStringLiteral("%1 %2.txt")} << "%1 %2.txt"
                                            << "%1 %2 (1).txt" << false;
    QTest::newRow("folder keeps its dots") << QStringList {QStringLiteral("v1.2")} << "v1.2"
                                           << "v1.2 (1)" << true;
    QTest::newRow("file with the same name") << QStringList {QStringLiteral("v1.2")} << "v1.2"
                                             << "v1 (1).2" << false;
}

void FileJobsTest::freeName()
{
    QFETCH(QStringList, taken);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QFETCH(bool, folder);
    QTemporaryDir dir;
    for (const QString &existing : taken)
        writeFile(dir.filePath(existing), "x");
    QCOMPARE(hdeapp::freeTargetPath(dir.path(), name, folder), dir.filePath(expected));
    QCOMPARE(hdehost::freeFileName(
                 name, [&taken](const QString &n) { return taken.contains(n); }, folder),
        expected);
}

void FileJobsTest::copyKeepsEverythingAndTakesFreeNames_data()
{
    QTest::addColumn<QStringList>("inTarget");
    QTest::addColumn<QString>("arrivesAs");

    QTest::newRow("empty target") << QStringList() << "a.txt";
    QTest::newRow("same name in target") << QStringList {QStringLiteral("a.txt")} << "a (1).txt";
    QTest::newRow("same name twice") << QStringList {QStringLiteral("a.txt"), QStringLiteral("a (1).txt")}
                                     << "a (2).txt";
    QTest::newRow("folder of that name") << QStringList {QStringLiteral("a.txt/")} << "a (1).txt";
}

void FileJobsTest::copyKeepsEverythingAndTakesFreeNames()
{
    QFETCH(QStringList, inTarget);
    QFETCH(QString, arrivesAs);
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("src/a.txt")), "source");
    QDir().mkpath(dir.filePath(QStringLiteral("dst")));
    for (const QString &existing : inTarget) {
        if (existing.endsWith(QLatin1Char('/')))
            QDir().mkpath(dir.filePath(QStringLiteral("dst/") + existing));
        else
            writeFile(dir.filePath(QStringLiteral("dst/") + existing), "old " + existing.toUtf8());
    }
    const TransferResult result
        = hdeapp::transfer({dir.filePath(QStringLiteral("src/a.txt"))}, dir.filePath(QStringLiteral("dst")), false);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(result.targets, QStringList {dir.filePath(QStringLiteral("dst/") + arrivesAs)});
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/") + arrivesAs)), QByteArray("source"));
    QCOMPARE(readFile(dir.filePath(QStringLiteral("src/a.txt"))), QByteArray("source"));
    for (const QString &existing : inTarget) {
        if (!existing.endsWith(QLatin1Char('/')))
            QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/") + existing)), "old " + existing.toUtf8());
    }
}

void FileJobsTest::copiesTreesWithLinks()
{
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("src/tree/top.txt")), "top");
    writeFile(dir.filePath(QStringLiteral("src/tree/deep/er/leaf.txt")), "leaf");
    writeFile(dir.filePath(QStringLiteral("src/tree/.hidden-file")), "h");
    QVERIFY(QFile::link(QStringLiteral("top.txt"), dir.filePath(QStringLiteral("src/tree/relative-link"))));
    QDir().mkpath(dir.filePath(QStringLiteral("dst")));

    const TransferResult result
        = hdeapp::transfer({dir.filePath(QStringLiteral("src/tree"))}, dir.filePath(QStringLiteral("dst")), false);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(tree(dir.filePath(QStringLiteral("dst/tree"))), tree(dir.filePath(QStringLiteral("src/tree"))));
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/tree/deep/er/leaf.txt"))), QByteArray("leaf"));
    // The link still points at its sibling, not back into the source tree.
    QCOMPARE(QFileInfo(dir.filePath(QStringLiteral("dst/tree/relative-link"))).symLinkTarget(),
        dir.filePath(QStringLiteral("dst/tree/top.txt")));

    // Copying the folder next to itself gives it a free name.
    const TransferResult again
        = hdeapp::transfer({dir.filePath(QStringLiteral("src/tree"))}, dir.filePath(QStringLiteral("src")), false);
    QVERIFY2(again.ok(), qPrintable(again.error));
    QCOMPARE(again.targets, QStringList {dir.filePath(QStringLiteral("src/tree (1)"))});
    QCOMPARE(tree(dir.filePath(QStringLiteral("src/tree (1)"))), tree(dir.filePath(QStringLiteral("src/tree"))));
}

void FileJobsTest::moveRenamesAndLeavesNothingBehind()
{
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("src/a.txt")), "a");
    writeFile(dir.filePath(QStringLiteral("src/folder/inner.txt")), "inner");
    writeFile(dir.filePath(QStringLiteral("dst/a.txt")), "already there");

    const TransferResult result
        = hdeapp::transfer({dir.filePath(QStringLiteral("src/a.txt")), dir.filePath(QStringLiteral("src/folder"))},
            dir.filePath(QStringLiteral("dst")), true);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(result.targets,
        (QStringList {dir.filePath(QStringLiteral("dst/a (1).txt")), dir.filePath(QStringLiteral("dst/folder"))}));
    QCOMPARE(tree(dir.filePath(QStringLiteral("src"))), QStringList());
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/a.txt"))), QByteArray("already there"));
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/a (1).txt"))), QByteArray("a"));
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/folder/inner.txt"))), QByteArray("inner"));

    // Moving into the folder the file is in changes nothing.
    const TransferResult stay
        = hdeapp::transfer({dir.filePath(QStringLiteral("dst/a.txt"))}, dir.filePath(QStringLiteral("dst")), true);
    QVERIFY(stay.ok());
    QCOMPARE(stay.targets, QStringList {dir.filePath(QStringLiteral("dst/a.txt"))});
    QCOMPARE(readFile(dir.filePath(QStringLiteral("dst/a.txt"))), QByteArray("already there"));
}

void FileJobsTest::refusals_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("move");
    QTest::addColumn<QString>("errorPart");

    QTest::newRow("folder into itself") << "tree"
                                        << "tree/sub" << false << "into itself";
    QTest::newRow("folder moved into itself") << "tree"
                                              << "tree" << true << "into itself";
    QTest::newRow("missing source") << "nothing-here"
                                    << "out" << false << "does not exist";
    QTest::newRow("target is a file") << "tree/file.txt"
                                      << "tree/file.txt" << false << "not a folder";
    QTest::newRow("target missing") << "tree/file.txt"
                                    << "no-such-folder" << true << "not a folder";
}

void FileJobsTest::refusals()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(bool, move);
    QFETCH(QString, errorPart);
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("tree/file.txt")), "keep");
    QDir().mkpath(dir.filePath(QStringLiteral("tree/sub")));
    QDir().mkpath(dir.filePath(QStringLiteral("out")));
    const QStringList before = tree(dir.path());

    const TransferResult result = hdeapp::transfer({dir.filePath(source)}, dir.filePath(target), move);
    QVERIFY(!result.ok());
    QVERIFY2(result.error.contains(errorPart), qPrintable(result.error));
    QVERIFY(result.targets.isEmpty());
    QCOMPARE(tree(dir.path()), before);
}

void FileJobsTest::removeNeverFollowsLinks()
{
    QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("kept/precious.txt")), "precious");
    writeFile(dir.filePath(QStringLiteral("doomed/file.txt")), "x");
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("kept")), dir.filePath(QStringLiteral("doomed/link-to-kept"))));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("kept")), dir.filePath(QStringLiteral("top-link"))));

    QString error;
    QVERIFY(hdeapp::removePath(dir.filePath(QStringLiteral("doomed")), &error));
    QVERIFY(hdeapp::removePath(dir.filePath(QStringLiteral("top-link")), &error));
    QCOMPARE(tree(dir.path()), (QStringList {QStringLiteral("kept/"), QStringLiteral("kept/precious.txt")}));
    QVERIFY(!hdeapp::removePath(dir.filePath(QStringLiteral("doomed")), &error));
    QVERIFY(error.contains(QLatin1String("does not exist")));
}

QTEST_GUILESS_MAIN(FileJobsTest)
#include "tst_filejobs.moc"
