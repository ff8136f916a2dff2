// SPDX-License-Identifier: GPL-3.0-or-later
#include "utils/nubixutils.h"

#include "caches/nubixcaches.h"
#include "nubixglobal.h"

#include <htk/messagedialog.h>

#include <QIcon>
#include <QObject>

namespace hfmplugin_nubix {

namespace {
const QString kLocalScheme = QStringLiteral("file");
const QString kEntryUrl = QStringLiteral("entry:///nubix.nubix");
const QString kErrorIcon = QStringLiteral("dialog-error");

QUrl schemeRoot(const QString &scheme)
{
    QUrl url;
    url.setScheme(scheme);
    url.setPath(QStringLiteral("/"));
    // An empty but present host (not a null one) makes the URL print with three slashes.
    url.setHost(QStringLiteral(""), QUrl::DecodedMode);
    return url;
}
}   // namespace

QUrl NubixUtils::loginRoot()
{
    return schemeRoot(Schemes::kNubixLogin);
}

QUrl NubixUtils::nubixRoot()
{
    return schemeRoot(Schemes::kNubix);
}

QUrl NubixUtils::computerEntryUrl()
{
    return QUrl(kEntryUrl);
}

QUrl NubixUtils::localToCloud(const QUrl &url)
{
    if (url.scheme() != kLocalScheme)
        return QUrl();

    const QString root = NubixCaches::instance()->syncRoot();
    QString path = url.path(QUrl::FullyDecoded);
    // A plain text prefix: a sibling such as "<root>2/x" passes too, and
    // every repetition of the root further down is dropped as well. Callers
    // rely on exactly this.
    if (!path.startsWith(root, Qt::CaseSensitive))
        return QUrl();
    if (!root.isEmpty())
        path.remove(root, Qt::CaseSensitive);

    QUrl cloud;
    cloud.setScheme(Schemes::kNubix);
    cloud.setPath(path, QUrl::DecodedMode);
    cloud.setHost(QStringLiteral(""), QUrl::DecodedMode);
    return cloud;
}

QUrl NubixUtils::cloudToLocal(const QUrl &url)
{
    if (url.scheme() != Schemes::kNubix)
        return QUrl();

    const QString root = NubixCaches::instance()->syncRoot();
    const QUrl local = QUrl::fromLocalFile(root + url.path(QUrl::FullyDecoded));
    // A path Qt cannot hold as a local file (with no root, "//[x" reads as a
    // network host that fails to parse) names nothing of ours.
    return local.isValid() ? local : QUrl();
}

bool NubixUtils::readyToAccess()
{
    return !NubixCaches::instance()->syncRoot().isEmpty();
}

void NubixUtils::showDialog(const QString &title, const QString &message, QWidget *parent)
{
    htk::MessageDialog dialog(parent);
    dialog.setIcon(QIcon::fromTheme(kErrorIcon));
    dialog.setTitle(title);
    dialog.setMessage(message);
    dialog.addButton(QObject::tr("Confirm"), false, htk::MessageDialog::ButtonNormal);
    dialog.exec();
}

}   // namespace hfmplugin_nubix
