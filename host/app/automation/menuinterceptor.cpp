// SPDX-License-Identifier: GPL-3.0-or-later
#include "menuinterceptor.h"

#include <hfmbase/abstractmenuscene.h>

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QTimer>

namespace hdeapp {

MenuInterceptor::MenuInterceptor(QObject *parent) : QObject(parent)
{
    qApp->installEventFilter(this);
}

MenuInterceptor::~MenuInterceptor()
{
    if (qApp)
        qApp->removeEventFilter(this);
}

void MenuInterceptor::arm(const QString &actionId)
{
    armed = true;
    seen = false;
    wanted = actionId;
    caught.clear();
    problem.clear();
}

void MenuInterceptor::disarm()
{
    armed = false;
}

void MenuInterceptor::setShotPath(const QString &path)
{
    shotPath = path;
}

bool MenuInterceptor::menuSeen() const
{
    return seen;
}

QVariantList MenuInterceptor::actions() const
{
    return caught;
}

QString MenuInterceptor::error() const
{
    return problem;
}

QVariantList MenuInterceptor::describe(const QMenu *menu)
{
    QVariantList list;
    const QList<QAction *> all = menu->actions();
    for (const QAction *action : all) {
        if (action->isSeparator())
            continue;
        QVariantMap entry;
        entry.insert(QStringLiteral("id"), action->property(hfmbase::ActionPropertyKey::kActionID).toString());
        entry.insert(QStringLiteral("text"), action->text().remove(QLatin1Char('&')));
        entry.insert(QStringLiteral("enabled"), action->isEnabled());
        entry.insert(QStringLiteral("visible"), action->isVisible());
        entry.insert(QStringLiteral("checked"), action->isChecked());
        list.append(entry);
        if (action->menu())
            list += describe(action->menu());
    }
    return list;
}

bool MenuInterceptor::eventFilter(QObject *watched, QEvent *event)
{
    if (!armed || event->type() != QEvent::Show)
        return false;
    auto *menu = qobject_cast<QMenu *>(watched);
    if (!menu)
        return false;
    armed = false;
    seen = true;
    caught = describe(menu);
    QPointer<QMenu> guard(menu);
    if (wanted.isEmpty()) {
        // Laid out and painted by the time the event loop turns.
        QTimer::singleShot(0, this, [guard, shot = shotPath] {
            if (!guard)
                return;
            if (!shot.isEmpty())
                guard->grab().save(shot, "PNG");
            guard->close();
        });
        return false;
    }
    QAction *target = nullptr;
    const QList<QAction *> all = menu->actions();
    for (QAction *action : all) {
        if (action->property(hfmbase::ActionPropertyKey::kActionID).toString() == wanted) {
            target = action;
            break;
        }
    }
    if (!target || !target->isVisible() || !target->isEnabled()) {
        problem = !target ? QStringLiteral("the menu has no action \"%1\"").arg(wanted)
                          : QStringLiteral("the action \"%1\" is hidden or disabled").arg(wanted);
        QTimer::singleShot(0, this, [guard] {
            if (guard)
                guard->close();
        });
        return false;
    }
    QPointer<QAction> action(target);
    QTimer::singleShot(0, this, [guard, action] {
        if (!guard || !action)
            return;
        guard->setActiveAction(action);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(guard, &press);
    });
    return false;
}

}   // namespace hdeapp
