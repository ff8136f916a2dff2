// SPDX-License-Identifier: GPL-3.0-or-later
// The file-system work behind copy, cut and delete: free names on clashes,
// whole trees, links kept as links, and never an overwritten or lost file.
#include "core/filejobs.h"
#include "filetestutils.h"

#include <hostcommon/urlhelpers.h>

#include <QTemporaryDir>

#include <cstring>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace filetest;
using hdeapp::TransferResult;

namespace {

// Drops from the calling thread's effective capabilities those that let
// root ignore mode bits, and puts them back when it goes out of scope; for
// other users it changes nothing.
class ModeBitsApply
{
public:
    ModeBitsApply()
    {
        header.version = _LINUX_CAPABILITY_VERSION_3;
        header.pid = 0;
        if (::syscall(SYS_capget, &header, saved) != 0)
            return;
        __user_cap_data_struct lowered[2];
        std::memcpy(lowered, saved, sizeof saved);
        for (int cap : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            lowered[CAP_TO_INDEX(cap)].effective &= ~CAP_TO_MASK(cap);
        dropped = ::syscall(SYS_capset, &header, lowered) == 0;
    }
    ~ModeBitsApply()
    {
        if (dropped)
            ::syscall(SYS_capset, &header, saved);
    }
    bool ok() const { return dropped; }

private:
    __user_cap_header_struct header {};
    __user_cap_data_struct saved[2] {};
    bool dropped = false;
};

// A folder on another file system than the temporary one, or null.
std::unique_ptr<QTemporaryDir> folderElsewhere()
{
    struct stat there;
    struct stat here;
    if (::stat("/dev/shm", &there) != 0 || ::stat(QFile::encodeName(QDir::tempPath()).constData(), &here) != 0
        || here.st_dev == there.st_dev)
        return nullptr;
    auto dir = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/filejobs-XXXXXX"));
    return dir->isValid() ? std::move(dir) : nullptr;
}

int modeOf(const QString &path)
{
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

// Sets an environment variable, or unsets it for a null value.
void setEnv(const char *name, const QString &value)
{
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, value.toUtf8());
}

}   // namespace

class FileJobsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { dir.reset(new QTemporaryDir); }
    void freeName_data()
    {
        QTest::addColumn<QStringList>("taken");   // "name/" a folder, "name@" a dangling link, else a file
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("folder");
        QTest::addColumn<QString>("expected");

        QTest::newRow("free name stays") << QStringList() << "a.txt" << false << "a.txt";
        QTest::newRow("first clash") << words("a.txt") << "a.txt" << false << "a (1).txt";
        QTest::newRow("second clash") << words("a.txt|a (1).txt") << "a.txt" << false << "a (2).txt";
        QTest::newRow("taken by a folder") << words("a.txt/") << "a.txt" << false << "a (1).txt";
        QTest::newRow("taken by a dangling link") << words("a.txt@") << "a.txt" << false << "a (1).txt";
        QTest::newRow("no suffix") << words("notes") << "notes" << false << "notes (1)";
        QTest::newRow("double tar suffix") << words("a.tar.gz") << "a.tar.gz" << false << "a (1).tar.gz";
        QTest::newRow("dot file") << words(".profile") << ".profile" << false << ".profile (1)";
        QTest::newRow("trailing dot") << words("odd.") << "odd." << false << "odd. (1)";
        QTest::newRow("percent signs are text") << words("%1 %2.txt") << "%1 %2.txt" << false << "%1 %2 (1).txt";
        QTest::newRow("folder keeps its dots") << words("v1.2") << "v1.2" << true << "v1.2 (1)";
        QTest::newRow("file with the same name") << words("v1.2") << "v1.2" << false << "v1 (1).2";
    }

    void freeName()
    {
        QFETCH(QStringList, taken);
        QFETCH(QString, name);
        QFETCH(bool, folder);
        QFETCH(QString, expected);
        QStringList names;
        for (const QString &entry : taken) {
            names.append(
                entry.endsWith(QLatin1Char('/')) || entry.endsWith(QLatin1Char('@')) ? entry.chopped(1) : entry);
            if (entry.endsWith(QLatin1Char('/')))
                QVERIFY(QDir().mkpath(at(names.last())));
            else if (entry.endsWith(QLatin1Char('@')))
                QVERIFY(QFile::link(at("nowhere"), at(names.last())));
            else
                writeFile(at(entry));
        }
        QCOMPARE(hdeapp::freeTargetPath(dir->path(), name, folder), at(expected));
        QCOMPARE(hdehost::freeFileName(
                     name, [&names](const QString &n) { return names.contains(n); }, folder),
            expected);
    }

    void copiesTreesWithLinks()
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

        // Moving into the folder it is in changes nothing.
        const TransferResult stay = transfer(words("src/tree"), "src", true);
        QVERIFY(stay.ok());
        QCOMPARE(stay.targets, QStringList {at("src/tree")});
        QCOMPARE(tree(at("src/tree")), tree(at("dst/tree")));
    }

    void refusals_data()
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

    void refusals()
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

    void removeNeverFollowsLinks()
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

    void trashFollowsTheHomeTrashLayout_data()
    {
        QTest::addColumn<QString>("xdgDataHome");   // in the test folder; "@x" is "x" as given
        QTest::addColumn<bool>("hasHome");
        QTest::addColumn<QStringList>("existing");   // made before with mode 0755; folders unless *.txt
        QTest::addColumn<QString>("trash");   // expected trash folder, empty: trashing fails
        QTest::addColumn<QString>("name");   // expected name in files/
        QTest::addColumn<QStringList>("privateFolders");   // folders that must have been created with 0700

        const QString home = QStringLiteral("home/.local/share/Trash");
        const char *homeFolders = "home/.local|home/.local/share|home/.local/share/Trash|"
                                  "home/.local/share/Trash/files|home/.local/share/Trash/info";
        // clang-format off
        QTest::newRow("no data folder yet") << "" << true << words("") << home << "a.txt" << words(homeFolders);
        QTest::newRow("XDG_DATA_HOME not there yet") << "data" << true << words("") << "data/Trash" << "a.txt" << words("data|data/Trash|data/Trash/files");
        QTest::newRow("relative XDG_DATA_HOME ignored") << "@relative/data" << true << words("") << home << "a.txt" << words("home/.local/share/Trash");
        QTest::newRow("existing trash keeps its mode") << "" << true << words("home/.local/share/Trash") << home << "a.txt" << words("home/.local/share/Trash/info");
        QTest::newRow("name taken in the trash") << "" << true << words("home/.local/share/Trash/files/a.txt") << home << "a (1).txt" << words("");
        QTest::newRow("no home at all") << "" << false << words("") << "" << "" << words("");
        // clang-format on
    }

    void trashFollowsTheHomeTrashLayout()
    {
        QFETCH(QString, xdgDataHome);
        QFETCH(bool, hasHome);
        QFETCH(QStringList, existing);
        QFETCH(QString, trash);
        QFETCH(QString, name);
        QFETCH(QStringList, privateFolders);

        QDir().mkpath(at("home"));
        QDir().mkpath(at("cwd"));
        for (const QString &entry : existing) {
            if (entry.endsWith(QLatin1String(".txt")))
                writeFile(at(entry), "older");
            else
                QVERIFY(QDir().mkpath(at(entry)));
            QFile::setPermissions(at(entry), QFileDevice::Permissions(0x7755));
        }
        writeFile(at("docs/a.txt"), "a");
        const QString xdg = xdgDataHome.isEmpty()      ? QString()
            : xdgDataHome.startsWith(QLatin1Char('@')) ? xdgDataHome.mid(1)
                                                       : at(xdgDataHome);
        setEnv("HOME", hasHome ? at("home") : QString());
        setEnv("XDG_DATA_HOME", xdg);
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(at("cwd"));

        QString inTrash;
        QString error;
        const bool ok = hdeapp::moveToTrash(at("docs/a.txt"), &inTrash, &error);
        QDir::setCurrent(cwd);

        // Nothing ever lands in the working folder.
        QCOMPARE(tree(at("cwd")), QStringList());
        if (trash.isEmpty()) {
            QVERIFY(!ok);
            QVERIFY2(error.contains(QLatin1String("no home folder")), qPrintable(error));
            QCOMPARE(readFile(at("docs/a.txt")), QByteArray("a"));
            return;
        }
        QVERIFY2(ok, qPrintable(error));
        QCOMPARE(inTrash, at(trash + QStringLiteral("/files/") + name));
        QCOMPARE(readFile(inTrash), QByteArray("a"));
        QVERIFY(!QFileInfo::exists(at("docs/a.txt")));
        const QByteArray info = readFile(at(trash + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo")));
        QVERIFY2(
            info.startsWith("[Trash Info]\nPath=" + QUrl::toPercentEncoding(at("docs/a.txt"), "/") + "\nDeletionDate="),
            info.constData());
        for (const QString &folder : privateFolders)
            QCOMPARE(QString::number(modeOf(at(folder)), 8), QStringLiteral("700"));
        for (const QString &entry : existing) {
            if (!entry.endsWith(QLatin1String(".txt")))
                QCOMPARE(QString::number(modeOf(at(entry)), 8), QStringLiteral("755"));
        }
    }

    void specialFilesNeverBlock_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("source");   // "folder" holds a.txt and the FIFO "pipe"
        QTest::addColumn<QStringList>("expectedTree");   // of "dst" afterwards
        QTest::addColumn<bool>("sourceStays");
        QTest::addColumn<QStringList>("problemParts");   // one entry per expected problem line

        // clang-format off
        QTest::newRow("copy a folder holding a FIFO") << "copy" << "folder" << words("folder/|folder/a.txt") << true << words("skipped|pipe|a FIFO");
        QTest::newRow("copy a FIFO alone") << "copy" << "folder/pipe" << words("") << true << words("a FIFO");
        QTest::newRow("move a folder holding a FIFO") << "move" << "folder" << words("folder/|folder/a.txt|folder/pipe") << false << words("");
        QTest::newRow("move across file systems keeps the source whole") << "move-other-fs" << "folder" << words("") << true << words("a FIFO|was not moved");
        QTest::newRow("trash a folder holding a FIFO") << "trash" << "folder" << words("") << false << words("");
        QTest::newRow("delete a folder holding a FIFO") << "delete" << "folder" << words("") << false << words("");
        // clang-format on
    }

    void specialFilesNeverBlock()
    {
        QFETCH(QString, operation);
        QFETCH(QString, source);
        QFETCH(QStringList, problemParts);

        writeFile(at("folder/a.txt"), "a");
        QVERIFY(::mkfifo(QFile::encodeName(at("folder/pipe")).constData(), 0644) == 0);
        QDir().mkpath(at("dst"));
        QString dst = at("dst");
        std::unique_ptr<QTemporaryDir> elsewhere;
        if (operation == QLatin1String("move-other-fs")) {
            // Another file system forces the copy-then-remove way.
            if (!(elsewhere = folderElsewhere()))
                QSKIP("no second file system at /dev/shm");
            dst = elsewhere->path();
        }
        QStringList problems;
        if (operation.startsWith(QLatin1String("copy")) || operation.startsWith(QLatin1String("move"))) {
            const TransferResult result = hdeapp::transfer({at(source)}, dst, operation != QLatin1String("copy"));
            problems = result.problems;
        } else if (operation == QLatin1String("trash")) {
            setEnv("XDG_DATA_HOME", at("data"));
            QString inTrash;
            QString error;
            QVERIFY2(hdeapp::moveToTrash(at(source), &inTrash, &error), qPrintable(error));
            QCOMPARE(tree(at("data/Trash/files")), words("folder/|folder/a.txt|folder/pipe"));
        } else {
            QString error;
            QVERIFY2(hdeapp::removePath(at(source), &error), qPrintable(error));
        }

        QTEST(tree(dst), "expectedTree");
        QTEST(QFileInfo::exists(at(source)), "sourceStays");
        if (QFileInfo::exists(at("folder")))
            QCOMPARE(readFile(at("folder/a.txt")), QByteArray("a"));
        // Every problem is named by one line; none when all was done.
        QCOMPARE(problems.size(), problemParts.isEmpty() ? 0 : 1);
        for (const QString &part : problemParts)
            QVERIFY2(problems.value(0).contains(part), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    void cutOutOfReadOnlyFolder_data()
    {
        QTest::addColumn<bool>("otherFileSystem");
        QTest::addColumn<QStringList>("arrived");   // tree of the target folder afterwards
        QTest::addColumn<QStringList>("stayed");   // tree of the read-only folder afterwards
        QTest::addColumn<QStringList>("problemParts");   // all in the one problem line, if any

        // A rename is refused: nothing is copied, the folder keeps its content.
        QTest::newRow("same file system: nothing moved")
            << false << QStringList() << words("folder/|folder/a.txt|folder/sub/|folder/sub/b.txt")
            << words("nothing was moved");
        // Copied, then removed as far as the read-only parent allows: the
        // files moved, the emptied folder stayed, and the line says just that.
        QTest::newRow("other file system: files moved, empty folder stayed")
            << true << words("folder/|folder/a.txt|folder/sub/|folder/sub/b.txt") << words("folder/")
            << words(
                   "was copied to|the old place still holds|locked/folder\" (Permission denied)|the rest was removed");
    }

    void cutOutOfReadOnlyFolder()
    {
        QFETCH(bool, otherFileSystem);
        QFETCH(QStringList, arrived);

        writeFile(at("locked/folder/a.txt"), "a");
        writeFile(at("locked/folder/sub/b.txt"), "b");
        QString dst = at("dst");
        QDir().mkpath(dst);
        std::unique_ptr<QTemporaryDir> elsewhere;
        if (otherFileSystem) {
            if (!(elsewhere = folderElsewhere()))
                QSKIP("no second file system at /dev/shm");
            dst = elsewhere->path();
        }
        QVERIFY(QFile::setPermissions(at("locked"), QFileDevice::ReadOwner | QFileDevice::ExeOwner));

        TransferResult result;
        {
            // Root too is held to the mode bits while this lives.
            ModeBitsApply modeBits;
            QVERIFY(modeBits.ok());
            result = hdeapp::transfer({at("locked/folder")}, dst, true);
        }
        QFile::setPermissions(at("locked"), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

        // Per item, the report matches the disk.
        QCOMPARE(tree(dst), arrived);
        QTEST(tree(at("locked")), "stayed");
        QCOMPARE(result.targets.size(), arrived.isEmpty() ? 0 : 1);
        QVERIFY(!result.ok());
        QCOMPARE(result.problems.size(), 1);
        QFETCH(QStringList, problemParts);
        for (const QString &part : qAsConst(problemParts))
            QVERIFY2(result.problems.first().contains(part), qPrintable(result.problems.first()));
        if (!arrived.isEmpty()) {
            QCOMPARE(readFile(dst + QStringLiteral("/folder/a.txt")), QByteArray("a"));
            QCOMPARE(readFile(dst + QStringLiteral("/folder/sub/b.txt")), QByteArray("b"));
        }
    }

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

QTEST_GUILESS_MAIN(FileJobsTest)
#include "tst_filejobs.moc"
