// SPDX-License-Identifier: GPL-3.0-or-later
// The file-system work behind copy, cut and delete: free names on clashes,
// whole trees, links kept as links, and never an overwritten or lost file.
#include "core/filejobs.h"
#include "filetestutils.h"

#include <hostcommon/urlhelpers.h>

#include <QTemporaryDir>

using namespace filetest;
using hdeapp::TransferResult;

class FileJobsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { dir.reset(new QTemporaryDir); }
    void freeName_data();
    void freeName();
    void copyKeepsEverythingAndTakesFreeNames_data();
    void copyKeepsEverythingAndTakesFreeNames();
    void copiesTreesWithLinks();
    void moveRenamesAndLeavesNothingBehind();
    void refusals_data();
    void refusals();
    void removeNeverFollowsLinks();

private:
    QString at(const QString &relative) const { return dir->filePath(relative); }
    QString at(const char *relative) const { return at(QString::fromUtf8(relative)); }
    TransferResult transfer(const QStringList &sources, const char *target, bool move) const
    {
        QStringList paths;
        for (const QString &source : sources)
            paths.append(at(source));
        return hdeapp::transfer(paths, at(target), move);
    }

    std::unique_ptr<QTemporaryDir> dir;
};

void FileJobsTest::freeName_data()
{
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("folder");
    QTest::addColumn<QString>("expected");

    QTest::newRow("free name stays") << QStringList() << "a.txt" << false << "a.txt";
    QTest::newRow("first clash") << words("a.txt") << "a.txt" << false << "a (1).txt";
    QTest::newRow("clashes counted on") << words("a.txt|a (1).txt|a (2).txt") << "a.txt" << false << "a (3).txt";
    QTest::newRow("no suffix") << words("notes") << "notes" << false << "notes (1)";
    QTest::newRow("double tar suffix") << words("a.tar.gz") << "a.tar.gz" << false << "a (1).tar.gz";
    QTest::newRow("dot file") << words(".profile") << ".profile" << false << ".profile (1)";
    QTest::newRow("trailing dot") << words("odd.") << "odd." << false << "odd. (1)";
    QTest::newRow("percent signs are text") << words("%1 %2.txt") << "%1 %2.txt" << false << "%1 %2 (1).txt";
    QTest::newRow("folder keeps its dots") << words("v1.2") << "v1.2" << true << "v1.2 (1)";
    QTest::newRow("file with the same name") << words("v1.2") << "v1.2" << false << "v1 (1).2";
}

void FileJobsTest::freeName()
{
    QFETCH(QStringList, taken);
    QFETCH(QString, name);
    QFETCH(bool, folder);
    QFETCH(QString, expected);
    for (const QString &existing : taken)
        writeFile(at(existing));
    QCOMPARE(hdeapp::freeTargetPath(dir->path(), name, folder), at(expected));
    QCOMPARE(hdehost::freeFileName(
                 name, [&taken](const QString &n) { return taken.contains(n); }, folder),
        expected);
}

void FileJobsTest::copyKeepsEverythingAndTakesFreeNames_data()
{
    QTest::addColumn<QStringList>("inTarget");
    QTest::addColumn<QString>("arrivesAs");

    QTest::newRow("empty target") << QStringList() << "a.txt";
    QTest::newRow("same name in target") << words("a.txt") << "a (1).txt";
    QTest::newRow("same name twice") << words("a.txt|a (1).txt") << "a (2).txt";
    QTest::newRow("folder of that name") << words("a.txt/") << "a (1).txt";
}

void FileJobsTest::copyKeepsEverythingAndTakesFreeNames()
{
    QFETCH(QStringList, inTarget);
    QFETCH(QString, arrivesAs);
    writeFile(at("src/a.txt"), "source");
    QDir().mkpath(at("dst"));
    for (const QString &existing : inTarget) {
        if (existing.endsWith(QLatin1Char('/')))
            QDir().mkpath(at(QStringLiteral("dst/") + existing));
        else
            writeFile(at(QStringLiteral("dst/") + existing), "old " + existing.toUtf8());
    }
    const TransferResult result = transfer(words("src/a.txt"), "dst", false);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(result.targets, QStringList {at(QStringLiteral("dst/") + arrivesAs)});
    QCOMPARE(readFile(at(QStringLiteral("dst/") + arrivesAs)), QByteArray("source"));
    QCOMPARE(readFile(at("src/a.txt")), QByteArray("source"));
    for (const QString &existing : inTarget) {
        if (!existing.endsWith(QLatin1Char('/')))
            QCOMPARE(readFile(at(QStringLiteral("dst/") + existing)), "old " + existing.toUtf8());
    }
}

void FileJobsTest::copiesTreesWithLinks()
{
    writeFile(at("src/tree/top.txt"), "top");
    writeFile(at("src/tree/deep/er/leaf.txt"), "leaf");
    writeFile(at("src/tree/.hidden-file"), "h");
    QVERIFY(QFile::link(QStringLiteral("top.txt"), at("src/tree/relative-link")));
    QDir().mkpath(at("dst"));

    const TransferResult result = transfer(words("src/tree"), "dst", false);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(tree(at("dst/tree")), tree(at("src/tree")));
    QCOMPARE(readFile(at("dst/tree/deep/er/leaf.txt")), QByteArray("leaf"));
    // The link still points at its sibling, not back into the source tree.
    QCOMPARE(QFileInfo(at("dst/tree/relative-link")).symLinkTarget(), at("dst/tree/top.txt"));

    // Copying the folder next to itself gives it a free name.
    const TransferResult again = transfer(words("src/tree"), "src", false);
    QVERIFY2(again.ok(), qPrintable(again.error));
    QCOMPARE(again.targets, QStringList {at("src/tree (1)")});
    QCOMPARE(tree(at("src/tree (1)")), tree(at("src/tree")));
}

void FileJobsTest::moveRenamesAndLeavesNothingBehind()
{
    writeFile(at("src/a.txt"), "a");
    writeFile(at("src/folder/inner.txt"), "inner");
    writeFile(at("dst/a.txt"), "already there");

    const TransferResult result = transfer(words("src/a.txt|src/folder"), "dst", true);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(result.targets, (QStringList {at("dst/a (1).txt"), at("dst/folder")}));
    QCOMPARE(tree(at("src")), QStringList());
    QCOMPARE(readFile(at("dst/a.txt")), QByteArray("already there"));
    QCOMPARE(readFile(at("dst/a (1).txt")), QByteArray("a"));
    QCOMPARE(readFile(at("dst/folder/inner.txt")), QByteArray("inner"));

    // Moving into the folder the file is in changes nothing.
    const TransferResult stay = transfer(words("dst/a.txt"), "dst", true);
    QVERIFY(stay.ok());
    QCOMPARE(stay.targets, QStringList {at("dst/a.txt")});
    QCOMPARE(readFile(at("dst/a.txt")), QByteArray("already there"));
}

void FileJobsTest::refusals_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("move");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("errorPart");

    // clang-format off
    QTest::newRow("folder into itself") << "tree" << false << "tree/sub" << "into itself";
    QTest::newRow("folder moved into itself") << "tree" << true << "tree" << "into itself";
    QTest::newRow("missing source") << "nothing-here" << false << "out" << "does not exist";
    QTest::newRow("target is a file") << "tree/file.txt" << false << "tree/file.txt" << "not a folder";
    QTest::newRow("target missing") << "tree/file.txt" << true << "no-such-folder" << "not a folder";
    // clang-format on
}

void FileJobsTest::refusals()
{
    QFETCH(QString, source);
    QFETCH(bool, move);
    QFETCH(QString, target);
    QFETCH(QString, errorPart);
    writeFile(at("tree/file.txt"), "keep");
    QDir().mkpath(at("tree/sub"));
    QDir().mkpath(at("out"));
    const QStringList before = tree(dir->path());

    const TransferResult result = hdeapp::transfer({at(source)}, at(target), move);
    QVERIFY(!result.ok());
    QVERIFY2(result.error.contains(errorPart), qPrintable(result.error));
    QVERIFY(result.targets.isEmpty());
    QCOMPARE(tree(dir->path()), before);
}

void FileJobsTest::removeNeverFollowsLinks()
{
    writeFile(at("kept/precious.txt"), "precious");
    writeFile(at("doomed/file.txt"), "x");
    QVERIFY(QFile::link(at("kept"), at("doomed/link-to-kept")));
    QVERIFY(QFile::link(at("kept"), at("top-link")));

    QString error;
    QVERIFY(hdeapp::removePath(at("doomed"), &error));
    QVERIFY(hdeapp::removePath(at("top-link"), &error));
    QCOMPARE(tree(dir->path()), words("kept/|kept/precious.txt"));
    QVERIFY(!hdeapp::removePath(at("doomed"), &error));
    QVERIFY(error.contains(QLatin1String("does not exist")));
}

QTEST_GUILESS_MAIN(FileJobsTest)
#include "tst_filejobs.moc"
