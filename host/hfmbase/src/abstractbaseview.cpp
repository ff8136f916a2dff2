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
    return registry().addCreator(scheme, std::move(creator), "ViewFactory::regCreator", "scheme", errorString);
}

AbstractBaseView *ViewFactory::create(const QUrl &url, QWidget *parent, QString *errorString)
{
    Creator creator;
    if (!url.isValid() || !registry().find(url.scheme(), &creator)) {
        warnAt("ViewFactory::create",
            QStringLiteral("no view class is registered for the scheme \"%1\"").arg(url.scheme()), errorString);
        return nullptr;
    }
    return creator(url, parent);
}

bool ViewFactory::isRegistered(const QString &scheme)
{
    return registry().contains(scheme);
}

}   // namespace hfmbase
