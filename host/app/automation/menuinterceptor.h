// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QVariantList>

class QMenu;

namespace hdeapp {

// Catches the next context menu that pops up anywhere in the application,
// the way a user meets it: it either reads the menu's actions and closes it,
// or picks the action with a given id and presses Enter on it, so that the
// code that showed the menu gets that action back from QMenu::exec(). GUI
// thread only.
class MenuInterceptor : public QObject
{
    Q_OBJECT
public:
    explicit MenuInterceptor(QObject *parent = nullptr);
    ~MenuInterceptor() override;

    // Empty `actionId`: list and close. Otherwise trigger that action.
    void arm(const QString &actionId = QString());
    void disarm();
    // Non-empty: a listed menu is also saved there as a PNG before it closes.
    void setShotPath(const QString &path);
    bool menuSeen() const;
    // [{"id", "text", "enabled", "visible", "checked"}] of the caught menu,
    // submenu actions flattened after their parent.
    QVariantList actions() const;
    // Empty, or why the wanted action could not be triggered.
    QString error() const;

    static QVariantList describe(const QMenu *menu);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool armed = false;
    bool seen = false;
    QString wanted;
    QString shotPath;
    QVariantList caught;
    QString problem;
};

}   // namespace hdeapp
