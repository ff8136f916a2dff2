// SPDX-License-Identifier: GPL-3.0-or-later
#include "filejobs.h"

#include <hostcommon/urlhelpers.h>

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

// `created` tells whether `target` was made here, so that only our own
// half-made copy is ever cleaned away.
bool copyEntry(
    const QString &source, const QString &target, const std::atomic<bool> *cancelled, QString *error, bool *created)
{
    *created = false;
    if (cancelled && cancelled->load()) {
        *error = QStringLiteral("cancelled");
        return false;
    }
    const QFileInfo info(source);
    if (info.isSymLink()) {
        *created = makeLink(readLink(source), target, error);
        return *created;
    }
    if (info.isDir()) {
        if (pathTaken(target) || !QDir().mkdir(target)) {
            *error = QStringLiteral("cannot create the folder \"%1\"").arg(target);
            return false;
        }
        *created = true;
        QFile::setPermissions(target, info.permissions() | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QDirIterator it(source, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
        bool ok = true;
        while (it.hasNext()) {
            it.next();
            QString childError;
            bool childCreated = false;
            if (!copyEntry(
                    it.filePath(), target + QLatin1Char('/') + it.fileName(), cancelled, &childError, &childCreated)) {
                if (ok)
                    *error = childError;
                ok = false;
                if (cancelled && cancelled->load())
                    return false;
            }
        }
        QFile::setPermissions(target, info.permissions());
        return ok;
    }
    if (!info.exists()) {
        *error = QStringLiteral("\"%1\" does not exist").arg(source);
        return false;
    }
    QFile file(source);
    if (!file.copy(target)) {
        *error = QStringLiteral("cannot copy \"%1\" to \"%2\": %3").arg(source, target, file.errorString());
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
        QString error;
        // A rename keeps the inode and is atomic; it never replaces a name
        // that appeared meanwhile. Across file systems it fails and the long
        // way is taken.
        if (move
            && ::renameat2(AT_FDCWD, QFile::encodeName(clean).constData(), AT_FDCWD,
                   QFile::encodeName(destination).constData(), RENAME_NOREPLACE)
                == 0) {
            result.targets.append(destination);
            continue;
        }
        bool created = false;
        if (!copyEntry(clean, destination, cancelled, &error, &created)) {
            // What arrived of a failed copy is ours and incomplete.
            QString ignored;
            if (created)
                removePath(destination, &ignored);
            fail(error);
            continue;
        }
        result.targets.append(destination);
        // The copy is whole; a source that cannot go is reported, the copy stays.
        if (move && !removePath(clean, &error))
            fail(error);
    }
    return result;
}

}   // namespace hdeapp
