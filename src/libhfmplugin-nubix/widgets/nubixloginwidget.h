// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hfmbase/abstractbaseview.h>

#include <QUrl>
#include <QWidget>

namespace hfmplugin_nubix {

// The welcome page shown for "nubix-login" while there is no usable sync
// root: the product, three feature tiles and a button that starts the sync
// client. Static apart from following the light/dark theme. GUI thread; the
// host owns the view.
class NubixLoginWidget : public QWidget, public hfmbase::AbstractBaseView
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixLoginWidget)
public:
    explicit NubixLoginWidget(const QUrl &url, QWidget *parent = nullptr);
    ~NubixLoginWidget() override;

    QWidget *widget() const override;
    QUrl rootUrl() const override;
    // Keeps the URL; the page does not change.
    bool setRootUrl(const QUrl &url) override;

    // One feature tile: theme icon, title and a two-line description.
    QWidget *createFunctionWidget(const QString &icon, const QString &title, const QString &description);

public Q_SLOTS:
    // Starts the sync client (even when it already runs) and connects to it.
    void openNubix();

private:
    void setupUI();

    QUrl root;
};

}   // namespace hfmplugin_nubix
