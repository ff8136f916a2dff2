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

}   // namespace

FileItem::FileItem(const hfmbase::FileInfoPointer &info, const QUrl &url, const QCollator &collator)
    : info(info),
      url(url),
      name(nameOf(info, url)),
      isDir(info->isDir()),
      size(info->size()),
      modified(info->lastModified()),
      key(collator.sortKey(name))
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
    const int byKey = a->key.compare(b->key);
    if (byKey != 0)
        return byKey < 0;
    return a->name < b->name;
}

QCollator makeCollator()
{
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

FileItemPointer makeItem(const hfmbase::FileInfoPointer &info, const QUrl &url, const QCollator &collator)
{
    if (!info)
        return {};
    return FileItemPointer::create(info, url.isValid() ? url : info->fileUrl(), collator);
}

}   // namespace hfmplugin_workspace
