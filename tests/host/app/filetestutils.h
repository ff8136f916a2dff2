// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What the host's tests share: files in temporary trees, and string lists
// that keep data tables readable.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QtTest>

namespace filetest {

// Writes `data` to `path`, making the folders on the way.
inline void writeFile(const QString &path, const QByteArray &data = QByteArray("x"))
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Every entry below `root`, relative and sorted; folders end in "/", links in "@".
inline QStringList tree(const QString &root)
{
    QStringList entries;
    QDirIterator it(
        root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QString mark = it.fileInfo().isSymLink() ? QStringLiteral("@")
            : it.fileInfo().isDir()                    ? QStringLiteral("/")
                                                       : QString();
        entries.append(QDir(root).relativeFilePath(it.filePath()) + mark);
    }
    entries.sort();
    return entries;
}

// "a|b|c" as a list; "" is the empty list.
inline QStringList words(const char *text)
{
    return *text ? QString::fromUtf8(text).split(QLatin1Char('|')) : QStringList();
}

}   // namespace filetest
