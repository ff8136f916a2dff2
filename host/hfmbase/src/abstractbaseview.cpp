// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/abstractbaseview.h"

#include "keyedregistry.h"

namespace hfmbase {

AbstractBaseView::~AbstractBaseView() = default;

namespace {

KeyedRegistry<ViewFactory::Creator> &registry()
{
    // Never destroyed: its creators may live in plug-ins unloaded before exit.
    static auto *r = new KeyedRegistry<ViewFactory::Creator>;
    return *r;
}

}   // namespace

bool ViewFactory::regCreator(const QString &scheme, Creator creator, QString *errorString)
{
    if (!creator) {
        const QString error = QStringLiteral("no creator given for the scheme \"%1\"").arg(scheme);
        warnAt("ViewFactory::regCreator", error);
        setError(errorString, error);
        return false;
    }
    return registry().add(scheme, std::move(creator), "ViewFactory::regCreator", "scheme", errorString);
}

AbstractBaseView *ViewFactory::create(const QUrl &url, QWidget *parent, QString *errorString)
{
    Creator creator;
    if (!url.isValid() || !registry().find(url.scheme(), &creator)) {
        const QString error = QStringLiteral("no view class is registered for the scheme \"%1\"").arg(url.scheme());
        warnAt("ViewFactory::create", error);
        setError(errorString, error);
        return nullptr;
    }
    return creator(url, parent);
}

bool ViewFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

}   // namespace hfmbase
