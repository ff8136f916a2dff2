// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/hfmbase_global.h>

#include <QUrl>

#include <functional>

class QWidget;

namespace hfmbase {

// A view of one URL shown by the workspace; GUI thread only. The view's
// widget belongs to the workspace once created.
class HFMBASE_EXPORT AbstractBaseView
{
public:
    virtual ~AbstractBaseView();

    virtual QWidget *widget() const = 0;
    virtual QUrl rootUrl() const = 0;
    virtual bool setRootUrl(const QUrl &url) = 0;
};

// View classes by scheme; a view class is constructed as T(url, parent).
class HFMBASE_EXPORT ViewFactory
{
public:
    using Creator = std::function<AbstractBaseView *(const QUrl &url, QWidget *parent)>;

    template <class T> static bool regClass(const QString &scheme, QString *errorString = nullptr)
    {
        return regCreator(
            scheme, [](const QUrl &url, QWidget *parent) -> AbstractBaseView * { return new T(url, parent); },
            errorString);
    }

    static bool regCreator(const QString &scheme, Creator creator, QString *errorString);
    // Null, with errorString, when no view class serves the scheme.
    static AbstractBaseView *create(const QUrl &url, QWidget *parent, QString *errorString = nullptr);
    static bool isRegistered(const QString &scheme);
};

}   // namespace hfmbase
