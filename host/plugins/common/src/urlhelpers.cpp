// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/urlhelpers.h"

#include <hfmbase/infofactory.h>
#include <hfmbase/urlroute.h>

#include <QDir>

namespace hdehost {

QUrl urlFromUserInput(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return QUrl();
    if (trimmed.startsWith(QLatin1Char('/')))
        return QUrl::fromLocalFile(QDir::cleanPath(trimmed));
    if (trimmed == QLatin1String("~") || trimmed.startsWith(QLatin1String("~/")))
        return QUrl::fromLocalFile(QDir::cleanPath(QDir::homePath() + trimmed.mid(1)));
    const QUrl url(trimmed, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.scheme().size() == 1)
        return QUrl();
    return url;
}

QString urlDisplayText(const QUrl &url)
{
    if (url.isLocalFile())
        return url.toLocalFile();
    return url.toString();
}

QUrl normalizedUrl(const QUrl &url)
{
    if (!url.isValid())
        return url;
    // Most URLs are normal already; rebuilding the path costs more than the
    // lookups that use this. A '%' may decode to something that changes the
    // path, so such paths take the long way.
    const QString shown = url.path(QUrl::PrettyDecoded);
    if (shown.size() > 1 && !shown.endsWith(QLatin1Char('/')) && !shown.contains(QLatin1Char('%')))
        return url;
    QUrl copy(url);
    QString path = copy.path(QUrl::FullyDecoded);
    if (path.isEmpty()) {
        copy.setPath(QStringLiteral("/"));
        return copy;
    }
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    copy.setPath(path, QUrl::DecodedMode);
    return copy;
}

bool sameUrl(const QUrl &a, const QUrl &b)
{
    return normalizedUrl(a) == normalizedUrl(b);
}

QUrl parentUrl(const QUrl &url)
{
    const QUrl norm = normalizedUrl(url);
    const QString path = norm.path(QUrl::FullyDecoded);
    if (path.isEmpty() || path == QLatin1String("/"))
        return QUrl();
    QUrl parent(norm);
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    parent.setPath(slash <= 0 ? QStringLiteral("/") : path.left(slash), QUrl::DecodedMode);
    return parent;
}

QUrl childUrl(const QUrl &dir, const QString &name)
{
    QUrl child = normalizedUrl(dir);
    QString path = child.path(QUrl::FullyDecoded);
    if (!path.endsWith(QLatin1Char('/')))
        path.append(QLatin1Char('/'));
    child.setPath(path + name, QUrl::DecodedMode);
    return child;
}

QString defaultTabName(const QUrl &url)
{
    const QString path = normalizedUrl(url).path(QUrl::FullyDecoded);
    if (path.isEmpty() || path == QLatin1String("/")) {
        const QString display = hfmbase::UrlRoute::displayName(url.scheme());
        if (!display.isEmpty())
            return display;
        return url.isLocalFile() ? QStringLiteral("/") : url.scheme();
    }
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QUrl operableUrl(const QUrl &url, QString *error)
{
    if (url.isLocalFile())
        return url;
    if (!url.isValid() || url.scheme().isEmpty()) {
        if (error)
            *error = QStringLiteral("invalid URL \"%1\"").arg(url.toString());
        return QUrl();
    }
    QString infoError;
    const hfmbase::FileInfoPointer info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(
        url, hfmbase::InfoFactory::CreateType::kCreateNoCache, &infoError);
    if (info && info->canAttributes(hfmbase::FileInfo::FileCanType::kCanRedirectionFileUrl)) {
        const QUrl local = info->urlOf(hfmbase::FileInfo::FileUrlInfoType::kRedirectedFileUrl);
        if (local.isLocalFile() && !local.toLocalFile().isEmpty())
            return local;
    }
    if (error)
        *error = QStringLiteral("\"%1\" is not a local file").arg(url.toString());
    return QUrl();
}

void splitFileName(const QString &name, QString *base, QString *suffix)
{
    int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > 0) {
        const int previous = name.lastIndexOf(QLatin1Char('.'), dot - 1);
        if (previous > 0
            && name.midRef(previous, dot - previous).compare(QLatin1String(".tar"), Qt::CaseInsensitive) == 0)
            dot = previous;
    }
    if (dot <= 0 || dot == name.size() - 1) {
        *base = name;
        suffix->clear();
        return;
    }
    *base = name.left(dot);
    *suffix = name.mid(dot);
}

QString freeFileName(const QString &name, const std::function<bool(const QString &)> &taken, bool wholeName)
{
    if (!taken(name))
        return name;
    QString base = name;
    QString suffix;
    if (!wholeName)
        splitFileName(name, &base, &suffix);
    for (int n = 1; n < 100000; ++n) {
        const QString candidate = base + QLatin1String(" (") + QString::number(n) + QLatin1Char(')') + suffix;
        if (!taken(candidate))
            return candidate;
    }
    return QString();
}

}   // namespace hdehost
