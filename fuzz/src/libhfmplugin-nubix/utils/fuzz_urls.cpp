// SPDX-License-Identifier: GPL-3.0-or-later
// The mapping between local files under the sync root and "nubix" URLs. The
// first line of the input is the sync root as the client reports it; the
// rest is one piece of text, used as a URL the host hands over, as a local
// path and as a path in the tree. Checked:
// - only "file" URLs map to the tree and only "nubix" URLs map back;
// - a local path that starts with the root maps to that path with every
//   occurrence of the root taken out (a reference written here);
// - for a usable root (absolute, clean, no slash at the end), a file below it
//   maps to the tree and back to the same file, and an item of the tree maps
//   to a local file and back to the same item, as long as the root's text
//   does not recur in the item's path.
#include "caches/nubixcaches.h"
#include "fuzzsupport.h"
#include "utils/nubixutils.h"

#include <QDir>

#include <cstdlib>

using hfmplugin_nubix::NubixCaches;
using hfmplugin_nubix::NubixUtils;
using hfmplugin_nubix::SyncInfo;

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

// The root's text removed wherever it occurs, left to right, without overlaps.
QString withoutRoot(const QString &path, const QString &root)
{
    QString out;
    out.reserve(path.size());
    int from = 0;
    for (int at = path.indexOf(root, from); at >= 0; at = path.indexOf(root, from)) {
        out += path.midRef(from, at - from);
        from = at + root.size();
    }
    out += path.midRef(from);
    return out;
}

bool usableRoot(const QString &root)
{
    return root.size() > 1 && root.startsWith(QLatin1Char('/')) && !root.startsWith(QLatin1String("//"))
        && !root.endsWith(QLatin1Char('/')) && QDir::cleanPath(root) == root && !root.contains(QChar(0));
}

// A path below the root made of the text: relative, without empty, "." or
// ".." segments, so that it names one item. Built in one allocation: a
// string of thousands of segments, grown one segment at a time, was half
// of the target's time.
QString itemPath(const QString &text)
{
    QString path;
    path.reserve(text.size() + 1);
    const QVector<QStringRef> segments = text.splitRef(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QStringRef &segment : segments) {
        if (segment == QLatin1String(".") || segment == QLatin1String(".."))
            continue;
        path.append(QLatin1Char('/')).append(segment);
    }
    return path;
}

void checkLocalToCloud(const QUrl &url, const QString &root)
{
    const QUrl cloud = NubixUtils::localToCloud(url);
    if (url.scheme() != QLatin1String("file")) {
        check(cloud.isEmpty());
        return;
    }
    const QString path = url.path(QUrl::FullyDecoded);
    if (!path.startsWith(root)) {
        check(cloud.isEmpty());
        return;
    }
    check(cloud.scheme() == QLatin1String("nubix"));
    if (cloud.isValid())
        check(cloud.path(QUrl::FullyDecoded) == (root.isEmpty() ? path : withoutRoot(path, root)));
}

}   // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    nubixfuzz::setUp(argc, argv);
    NubixCaches::instance();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
    const int newline = bytes.indexOf('\n');
    SyncInfo info;
    info.syncRoot = QString::fromUtf8(bytes.left(newline < 0 ? 0 : newline));
    const QString root = info.syncRoot;
    NubixCaches::instance()->setSyncInfo(info);
    const QString text = QString::fromUtf8(bytes.mid(newline + 1));

    // Whatever the host hands over: any URL, a local file, a tree item.
    const QUrl given(text);
    checkLocalToCloud(given, root);
    const QUrl back = NubixUtils::cloudToLocal(given);
    check(given.scheme() == QLatin1String("nubix") ? back.isEmpty() || back.isLocalFile() : back.isEmpty());
    checkLocalToCloud(QUrl::fromLocalFile(text), root);
    QUrl cloudGiven;
    cloudGiven.setScheme(QStringLiteral("nubix"));
    cloudGiven.setPath(text, QUrl::DecodedMode);
    (void)NubixUtils::cloudToLocal(cloudGiven);

    if (!usableRoot(root))
        return 0;
    const QString item = itemPath(text);
    if (item.contains(root) || item.contains(QChar(0)))
        return 0;
    // A file below the root and back.
    const QString local = root + (item.isEmpty() ? QStringLiteral("/") : item);
    const QUrl cloud = NubixUtils::localToCloud(QUrl::fromLocalFile(local));
    check(cloud.isValid() && cloud.path(QUrl::FullyDecoded) == (item.isEmpty() ? QStringLiteral("/") : item));
    check(NubixUtils::cloudToLocal(cloud).toLocalFile() == local);
    // An item of the tree and back.
    QUrl tree;
    tree.setScheme(QStringLiteral("nubix"));
    tree.setPath(item.isEmpty() ? QStringLiteral("/") : item, QUrl::DecodedMode);
    tree.setHost(QStringLiteral(""), QUrl::DecodedMode);
    const QUrl there = NubixUtils::cloudToLocal(tree);
    check(there.toLocalFile() == local);
    check(NubixUtils::localToCloud(there) == tree);
    return 0;
}
