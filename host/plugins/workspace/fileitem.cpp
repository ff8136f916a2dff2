// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileitem.h"

namespace hfmplugin_workspace {

namespace {

QString nameOf(const hfmbase::FileInfoPointer &info, const QUrl &url)
{
    QString name = info->displayName();
    if (name.isEmpty())
        name = info->fileName();
    if (name.isEmpty())
        name = url.fileName(QUrl::FullyDecoded);
    return name;
}

// The name as it sorts: case folded, with every run of digits padded so
// that "2" comes before "10".
QString sortableName(const QString &name)
{
    constexpr int kWidth = 20;
    const QString folded = name.toCaseFolded();
    QString out;
    out.reserve(folded.size() + 8);
    int i = 0;
    while (i < folded.size()) {
        const QChar c = folded.at(i);
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            out.append(c);
            ++i;
            continue;
        }
        int end = i;
        while (end < folded.size() && folded.at(end) >= QLatin1Char('0') && folded.at(end) <= QLatin1Char('9'))
            ++end;
        const int length = end - i;
        if (length < kWidth)
            out.append(QString(kWidth - length, QLatin1Char('0')));
        out.append(folded.midRef(i, length));
        i = end;
    }
    return out;
}

}   // namespace

FileItem::FileItem(const hfmbase::FileInfoPointer &info, const QUrl &url)
    : info(info),
      url(url),
      name(nameOf(info, url)),
      isDir(info->isDir()),
      size(info->size()),
      modified(info->lastModified()),
      key(sortableName(name))
{
}

QIcon FileItem::icon() const
{
    if (!iconKnown) {
        iconCache = info->fileIcon();
        if (iconCache.isNull())
            iconCache = QIcon::fromTheme(isDir ? QStringLiteral("folder") : QStringLiteral("text-x-generic"));
        iconKnown = true;
    }
    return iconCache;
}

QString FileItem::typeName() const
{
    if (!typeKnown) {
        const QMimeType mime = info->mimeType();
        typeCache = mime.isValid() ? mime.comment() : QString();
        typeKnown = true;
    }
    return typeCache;
}

bool itemLessThan(const FileItemPointer &a, const FileItemPointer &b)
{
    if (a->isDir != b->isDir)
        return a->isDir;
    const int byKey = QString::compare(a->key, b->key, Qt::CaseSensitive);
    if (byKey != 0)
        return byKey < 0;
    return a->name < b->name;
}

FileItemPointer makeItem(const hfmbase::FileInfoPointer &info, const QUrl &url)
{
    if (!info)
        return {};
    return FileItemPointer::create(info, url.isValid() ? url : info->fileUrl());
}

}   // namespace hfmplugin_workspace
