// SPDX-License-Identifier: GPL-3.0-or-later
#include "filejobs.h"

#include <hostcommon/urlhelpers.h>

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace hdeapp {

namespace {

QString systemError()
{
    return QString::fromLocal8Bit(strerror(errno));
}

// Removes a file, a link or a folder with its content, bottom up, as far as
// it goes. Returns one line for each entry that stayed for a reason of its
// own; a folder that stayed only because something in it stayed is not named.
QStringList removeTree(const QString &path)
{
    const QByteArray encoded = QFile::encodeName(path);
    auto stayed = [&path] { return QStringList {QStringLiteral("\"%1\" (%2)").arg(path, systemError())}; };
    struct stat st;
    if (::lstat(encoded.constData(), &st) != 0)
        return errno == ENOENT ? QStringList() : stayed();
    if (!S_ISDIR(st.st_mode))
        return ::unlink(encoded.constData()) == 0 ? QStringList() : stayed();
    QStringList inside;
    const QStringList names
        = QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : names)
        inside += removeTree(path + QLatin1Char('/') + name);
    if (!inside.isEmpty())
        return inside;
    return ::rmdir(encoded.constData()) == 0 ? QStringList() : stayed();
}

// The text a symbolic link holds, relative targets kept relative.
QString readLink(const QString &path)
{
    const QByteArray encoded = QFile::encodeName(path);
    QByteArray buffer(4096, Qt::Uninitialized);
    const ssize_t size = ::readlink(encoded.constData(), buffer.data(), size_t(buffer.size()));
    if (size < 0)
        return QString();
    return QFile::decodeName(buffer.left(int(size)));
}

bool makeLink(const QString &target, const QString &linkPath, QString *error)
{
    if (::symlink(QFile::encodeName(target).constData(), QFile::encodeName(linkPath).constData()) != 0) {
        *error = QStringLiteral("cannot create the link \"%1\": %2").arg(linkPath, systemError());
        return false;
    }
    return true;
}

bool isInside(const QString &path, const QString &dir)
{
    const QString cleanPath = QDir::cleanPath(path);
    const QString cleanDir = QDir::cleanPath(dir);
    return cleanPath == cleanDir || cleanPath.startsWith(cleanDir + QLatin1Char('/'));
}

// What kind of special file `mode` is, or empty for files, folders and links.
QString specialKind(mode_t mode)
{
    if (S_ISFIFO(mode))
        return QStringLiteral("a FIFO");
    if (S_ISSOCK(mode))
        return QStringLiteral("a socket");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("a device");
    return QString();
}

// Copies `source` to `target`, adding one line to `problems` for each item
// that could not be copied (special files are skipped: opening a FIFO would
// block the job for ever). `created` tells whether `target` was made here,
// so that only our own copy is ever cleaned away. True when everything
// arrived.
bool copyEntry(const QString &source, const QString &target, const std::atomic<bool> *cancelled, QStringList *problems,
    bool *created)
{
    *created = false;
    if (cancelled && cancelled->load()) {
        problems->append(QStringLiteral("cancelled"));
        return false;
    }
    struct stat st;
    if (::lstat(QFile::encodeName(source).constData(), &st) != 0) {
        problems->append(QStringLiteral("\"%1\" does not exist").arg(source));
        return false;
    }
    if (S_ISLNK(st.st_mode)) {
        QString error;
        *created = makeLink(readLink(source), target, &error);
        if (!*created)
            problems->append(error);
        return *created;
    }
    const QString special = specialKind(st.st_mode);
    if (!special.isEmpty()) {
        problems->append(QStringLiteral("skipped \"%1\": it is %2").arg(source, special));
        return false;
    }
    const QFileInfo info(source);
    if (S_ISDIR(st.st_mode)) {
        if (pathTaken(target) || !QDir().mkdir(target)) {
            problems->append(QStringLiteral("cannot create the folder \"%1\"").arg(target));
            return false;
        }
        *created = true;
        QFile::setPermissions(target, info.permissions() | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QDirIterator it(source, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
        bool ok = true;
        while (it.hasNext()) {
            it.next();
            bool childCreated = false;
            if (!copyEntry(
                    it.filePath(), target + QLatin1Char('/') + it.fileName(), cancelled, problems, &childCreated)) {
                ok = false;
                if (cancelled && cancelled->load())
                    break;
            }
        }
        QFile::setPermissions(target, info.permissions());
        return ok;
    }
    QFile file(source);
    if (!file.copy(target)) {
        problems->append(QStringLiteral("cannot copy \"%1\" to \"%2\": %3").arg(source, target, file.errorString()));
        return false;
    }
    *created = true;
    return true;
}

}   // namespace

bool pathTaken(const QString &path)
{
    struct stat st;
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0;
}

QString freeTargetPath(const QString &dir, const QString &name, bool folder)
{
    const QString base = QDir::cleanPath(dir);
    const QString free = hdehost::freeFileName(
        name, [&base](const QString &candidate) { return pathTaken(base + QLatin1Char('/') + candidate); }, folder);
    return free.isEmpty() ? QString() : base + QLatin1Char('/') + free;
}

bool removePath(const QString &path, QString *error)
{
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        *error = QStringLiteral("\"%1\" does not exist").arg(path);
        return false;
    }
    bool ok = false;
    if (info.isDir() && !info.isSymLink())
        ok = QDir(path).removeRecursively();
    else
        ok = QFile::remove(path);
    if (!ok)
        *error = QStringLiteral("cannot remove \"%1\"").arg(path);
    return ok;
}

TransferResult transfer(
    const QStringList &sources, const QString &targetDir, bool move, const std::atomic<bool> *cancelled)
{
    TransferResult result;
    auto fail = [&result](const QString &error) {
        if (result.error.isEmpty())
            result.error = error;
        result.problems.append(error);
    };
    const QFileInfo dirInfo(targetDir);
    if (!dirInfo.isDir()) {
        fail(QStringLiteral("the target \"%1\" is not a folder").arg(targetDir));
        return result;
    }
    const QString target = QDir::cleanPath(dirInfo.absoluteFilePath());
    for (const QString &sourcePath : sources) {
        if (cancelled && cancelled->load()) {
            fail(QStringLiteral("cancelled"));
            break;
        }
        const QFileInfo source(sourcePath);
        const QString clean = QDir::cleanPath(source.absoluteFilePath());
        if (!source.exists() && !source.isSymLink()) {
            fail(QStringLiteral("\"%1\" does not exist").arg(sourcePath));
            continue;
        }
        if (source.isDir() && !source.isSymLink() && isInside(target, clean)) {
            fail(QStringLiteral("cannot put the folder \"%1\" into itself").arg(sourcePath));
            continue;
        }
        if (move && QDir::cleanPath(source.absolutePath()) == target) {
            result.targets.append(clean);
            continue;
        }
        const QString destination = freeTargetPath(target, source.fileName(), source.isDir() && !source.isSymLink());
        if (destination.isEmpty()) {
            fail(QStringLiteral("no free name for \"%1\" in \"%2\"").arg(source.fileName(), target));
            continue;
        }
        // A rename keeps the inode and is atomic; it never replaces a name
        // that appeared meanwhile. Only across file systems is the long way
        // (copy, then remove) taken: any other refusal (a read-only folder)
        // would refuse the removal as well, after the copy.
        if (move) {
            if (::renameat2(AT_FDCWD, QFile::encodeName(clean).constData(), AT_FDCWD,
                    QFile::encodeName(destination).constData(), RENAME_NOREPLACE)
                == 0) {
                result.targets.append(destination);
                continue;
            }
            if (errno != EXDEV) {
                fail(QStringLiteral("cannot move \"%1\": %2; nothing was moved").arg(sourcePath, systemError()));
                continue;
            }
        }
        QStringList problems;
        bool created = false;
        const bool whole = copyEntry(clean, destination, cancelled, &problems, &created);
        const bool stopped = cancelled && cancelled->load();
        if (!whole && (move || stopped || !created)) {
            // A move keeps its source whole, so a partial copy of it goes;
            // a cancelled copy leaves nothing half made.
            QString ignored;
            if (created)
                removePath(destination, &ignored);
            for (const QString &problem : problems)
                fail(move ? QStringLiteral("%1; \"%2\" was not moved").arg(problem, sourcePath) : problem);
            continue;
        }
        // A copy keeps what arrived and names each item that did not.
        for (const QString &problem : problems)
            fail(problem);
        result.targets.append(destination);
        if (!move)
            continue;
        // Whatever could be removed is gone (a folder's files, say, while the
        // folder stays because its own folder is read-only): the line names
        // exactly what is still in the old place.
        const QStringList stayed = removeTree(clean);
        if (!stayed.isEmpty())
            fail(QStringLiteral("\"%1\" was copied to \"%2\"; the old place still holds %3, the rest was removed")
                     .arg(sourcePath, destination, stayed.join(QStringLiteral(", "))));
    }
    return result;
}

QString homeTrashPath()
{
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (data.isEmpty() || !QDir::isAbsolutePath(data)) {
        const QString home = qEnvironmentVariable("HOME");
        if (home.isEmpty() || !QDir::isAbsolutePath(home))
            return QString();
        data = home + QStringLiteral("/.local/share");
    }
    return QDir::cleanPath(data) + QStringLiteral("/Trash");
}

namespace {

// Creates `path` and its missing parents with mode 0700; an existing folder
// keeps its mode.
bool makePrivatePath(const QString &path, QString *error)
{
    const QStringList parts = QDir::cleanPath(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString current;
    for (const QString &part : parts) {
        current += QLatin1Char('/') + part;
        const QByteArray encoded = QFile::encodeName(current);
        struct stat st;
        if (::stat(encoded.constData(), &st) == 0) {
            if (S_ISDIR(st.st_mode))
                continue;
            *error = QStringLiteral("\"%1\" is not a folder").arg(current);
            return false;
        }
        if (::mkdir(encoded.constData(), 0700) != 0 && errno != EEXIST) {
            *error = QStringLiteral("cannot create the folder \"%1\": %2").arg(current, systemError());
            return false;
        }
    }
    return true;
}

}   // namespace

bool moveToTrash(const QString &path, QString *inTrash, QString *error)
{
    const QString trash = homeTrashPath();
    if (trash.isEmpty()) {
        *error = QStringLiteral("cannot move \"%1\" to the trash: there is no home folder").arg(path);
        return false;
    }
    const QString source = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    if (!pathTaken(source)) {
        *error = QStringLiteral("cannot move \"%1\" to the trash: it does not exist").arg(path);
        return false;
    }
    if (isInside(trash, source)) {
        *error = QStringLiteral("cannot move \"%1\" to the trash: the trash is inside it").arg(path);
        return false;
    }
    QString why;
    if (!makePrivatePath(trash + QStringLiteral("/files"), &why)
        || !makePrivatePath(trash + QStringLiteral("/info"), &why)) {
        *error = QStringLiteral("cannot move \"%1\" to the trash: %2").arg(path, why);
        return false;
    }
    // The info file is made first and exclusively: it reserves the name.
    const QString name = QFileInfo(source).fileName();
    QString infoPath;
    QString filesPath;
    int fd = -1;
    const bool folder = QFileInfo(source).isDir() && !QFileInfo(source).isSymLink();
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        const QString candidate = hdehost::freeFileName(
            name,
            [&trash](const QString &c) {
                return pathTaken(trash + QStringLiteral("/files/") + c)
                    || pathTaken(trash + QStringLiteral("/info/") + c + QStringLiteral(".trashinfo"));
            },
            folder);
        if (candidate.isEmpty())
            break;
        filesPath = trash + QStringLiteral("/files/") + candidate;
        infoPath = trash + QStringLiteral("/info/") + candidate + QStringLiteral(".trashinfo");
        fd = ::open(QFile::encodeName(infoPath).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0 && errno != EEXIST) {
            *error = QStringLiteral("cannot move \"%1\" to the trash: %2").arg(path, systemError());
            return false;
        }
    }
    if (fd < 0) {
        *error = QStringLiteral("cannot move \"%1\" to the trash: no free name").arg(path);
        return false;
    }
    const QByteArray info = "[Trash Info]\nPath=" + QUrl::toPercentEncoding(source, "/")
        + "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).left(19).toUtf8() + "\n";
    const bool written = ::write(fd, info.constData(), size_t(info.size())) == ssize_t(info.size());
    ::close(fd);
    if (!written
        || ::renameat2(AT_FDCWD, QFile::encodeName(source).constData(), AT_FDCWD,
               QFile::encodeName(filesPath).constData(), RENAME_NOREPLACE)
            != 0) {
        const QString reason = written
            ? (errno == EXDEV ? QStringLiteral("it is on another file system") : systemError())
            : QStringLiteral("cannot write its trash record");
        ::unlink(QFile::encodeName(infoPath).constData());
        *error = QStringLiteral("cannot move \"%1\" to the trash: %2").arg(path, reason);
        return false;
    }
    *inTrash = filesPath;
    return true;
}

bool restoreFromTrash(const QString &inTrash, QString *restored, QString *error)
{
    const QString trash = homeTrashPath();
    const QFileInfo item(QDir::cleanPath(QFileInfo(inTrash).absoluteFilePath()));
    const QString name = item.fileName();
    if (trash.isEmpty() || item.absolutePath() != trash + QStringLiteral("/files") || name.isEmpty()) {
        *error = QStringLiteral("cannot restore \"%1\": it is not in the trash").arg(inTrash);
        return false;
    }
    if (!pathTaken(item.filePath())) {
        *error = QStringLiteral("cannot restore \"%1\": it does not exist").arg(inTrash);
        return false;
    }
    // The record is small; a huge or special file is not one of ours.
    const QString infoPath = trash + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo");
    QFile info(infoPath);
    const QFileInfo infoFile(infoPath);
    QString original;
    if (infoFile.isFile() && !infoFile.isSymLink() && info.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = info.read(64 * 1024).split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith("Path="))
                original = QDir::cleanPath(QString::fromUtf8(QByteArray::fromPercentEncoding(line.mid(5).trimmed())));
    }
    if (original.isEmpty() || !QDir::isAbsolutePath(original) || original == QStringLiteral("/")) {
        *error = QStringLiteral("cannot restore \"%1\": its trash record does not say where it came from").arg(inTrash);
        return false;
    }
    const QString folder = QFileInfo(original).absolutePath();
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir()) {
        *error = QStringLiteral("cannot restore \"%1\": cannot create the folder \"%2\"").arg(inTrash, folder);
        return false;
    }
    const bool isFolder = item.isDir() && !item.isSymLink();
    // Nothing is overwritten: a name taken in the meantime gets a free one.
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString target = freeTargetPath(folder, QFileInfo(original).fileName(), isFolder);
        if (::renameat2(AT_FDCWD, QFile::encodeName(item.filePath()).constData(), AT_FDCWD,
                QFile::encodeName(target).constData(), RENAME_NOREPLACE)
            == 0) {
            ::unlink(QFile::encodeName(infoPath).constData());
            *restored = target;
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    const QString reason = errno == EXDEV ? QStringLiteral("its place is on another file system") : systemError();
    *error = QStringLiteral("cannot restore \"%1\" to \"%2\": %3").arg(inTrash, original, reason);
    return false;
}

}   // namespace hdeapp
