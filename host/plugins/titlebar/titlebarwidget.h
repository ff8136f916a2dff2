// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QVariantMap>
#include <QWidget>

#include <functional>

class QLineEdit;
class QToolButton;

namespace hfmplugin_titlebar {

// The bar above a window's workspace: back and forward, the address field,
// and the icon/list/detail buttons. Which buttons show depends on the
// scheme of the window's URL (see setSchemeSettings). GUI thread only.
class TitleBarWidget : public QWidget
{
    Q_OBJECT
public:
    // `settingsOf` gives the registered settings of a scheme.
    TitleBarWidget(quint64 windowId, std::function<QVariantMap(const QString &)> settingsOf, QWidget *parent = nullptr);

    void setUrl(const QUrl &url);
    // Re-reads the settings of the current scheme.
    void refreshButtons();
    QVariantMap state() const;
    // "back", "forward", "icon", "list" or "detail"; false for a hidden button.
    bool clickButton(const QString &name);
    // Types `text` into the address field and presses Enter.
    bool enterAddress(const QString &text);

private:
    void onAddressEntered();
    void setViewMode(int mode);
    QToolButton *buttonByName(const QString &name) const;

    quint64 windowId;
    std::function<QVariantMap(const QString &)> settingsOf;
    QUrl url;
    QToolButton *backButton;
    QToolButton *forwardButton;
    QLineEdit *address;
    QToolButton *iconButton;
    QToolButton *listButton;
    QToolButton *detailButton;
};

}   // namespace hfmplugin_titlebar
