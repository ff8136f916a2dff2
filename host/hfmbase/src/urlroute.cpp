// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/urlroute.h"

#include "keyedregistry.h"

namespace hfmbase {

namespace {

struct Route
{
    QString root;
    QIcon icon;
    bool isVirtual = false;
    QString displayName;
};

QString normalizedRoot(const QString &root)
{
    QString path = root.isEmpty() ? QStringLiteral("/") : root;
    if (!path.startsWith(QLatin1Char('/')))
        path.prepend(QLatin1Char('/'));
    return path;
}

QString withoutTrailingSlash(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && p.endsWith(QLatin1Char('/')))
        p.chop(1);
    return p;
}

KeyedRegistry<Route> &table()
{
    static auto *t = makeSchemeRegistry(Route {QStringLiteral("/"), QIcon(), false, QString()}, "UrlRoute::regScheme");
    return *t;
}

}   // namespace

bool UrlRoute::regScheme(const QString &scheme, const QString &root, const QIcon &icon, bool isVirtual,
    const QString &displayName, QString *errorString)
{
    return table().add(scheme, Route {normalizedRoot(root), icon, isVirtual, displayName}, "UrlRoute::regScheme",
        "scheme", errorString);
}

bool UrlRoute::hasScheme(const QString &scheme)
{
    return table().contains(scheme);
}

QStringList UrlRoute::schemes()
{
    return table().keys();
}

QUrl UrlRoute::rootUrl(const QString &scheme)
{
    Route route;
    if (!table().find(scheme, &route))
        return QUrl();
    QUrl url;
    url.setScheme(scheme);
    url.setPath(route.root, QUrl::DecodedMode);
    // An empty but present host makes it print as "scheme:///".
    url.setHost(QStringLiteral(""), QUrl::DecodedMode);
    return url;
}

QString UrlRoute::rootPath(const QString &scheme)
{
    Route route;
    return table().find(scheme, &route) ? route.root : QString();
}

QIcon UrlRoute::icon(const QString &scheme)
{
    Route route;
    return table().find(scheme, &route) ? route.icon : QIcon();
}

bool UrlRoute::isVirtual(const QString &scheme)
{
    Route route;
    return table().find(scheme, &route) && route.isVirtual;
}

QString UrlRoute::displayName(const QString &scheme)
{
    Route route;
    return table().find(scheme, &route) ? route.displayName : QString();
}

bool UrlRoute::isRootUrl(const QUrl &url)
{
    Route route;
    if (!url.isValid() || !table().find(url.scheme(), &route))
        return false;
    const QString path = url.path(QUrl::FullyDecoded);
    const QString p = path.isEmpty() ? QStringLiteral("/") : withoutTrailingSlash(path);
    return p == withoutTrailingSlash(route.root);
}

QUrl UrlRoute::urlParent(const QUrl &url)
{
    if (!url.isValid() || url.isEmpty())
        return QUrl();
    Route route;
    const bool known = table().find(url.scheme(), &route);
    const QString path = withoutTrailingSlash(url.path(QUrl::FullyDecoded));
    if (path.isEmpty() || path == QLatin1String("/"))
        return QUrl();
    if (known && path == withoutTrailingSlash(route.root))
        return QUrl();

    const int slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QUrl();
    QString parentPath = path.left(slash);
    if (parentPath.isEmpty())
        parentPath = QStringLiteral("/");
    // A URL below the root never climbs above it.
    const QString root = withoutTrailingSlash(route.root);
    if (known && root != QLatin1String("/") && parentPath != root && !parentPath.startsWith(root + QLatin1Char('/')))
        return QUrl();

    QUrl parent(url);
    parent.setQuery(QString());
    parent.setFragment(QString());
    parent.setPath(parentPath, QUrl::DecodedMode);
    return parent;
}

}   // namespace hfmbase
