// SPDX-License-Identifier: GPL-3.0-or-later
#include "hostcommon/widgetprobe.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMetaObject>
#include <QRegularExpression>
#include <QWidget>

namespace hdehost {

namespace {

QStringList linksOf(const QString &text)
{
    static const QRegularExpression href(QStringLiteral("href\\s*=\\s*[\"']([^\"']*)[\"']"));
    QStringList links;
    auto it = href.globalMatch(text);
    while (it.hasNext())
        links.append(it.next().captured(1));
    return links;
}

// Children in creation order; visibility judged against `root`.
template <class T> QList<T *> visibleChildren(const QWidget *root)
{
    QList<T *> result;
    const QList<T *> all = root->findChildren<T *>();
    for (T *child : all) {
        if (child->isVisibleTo(root))
            result.append(child);
    }
    return result;
}

QString iconNameOf(const QWidget *widget)
{
    const QVariant own = widget->property("iconName");
    if (own.canConvert<QString>() && !own.toString().isEmpty())
        return own.toString();
    const QList<QWidget *> children = widget->findChildren<QWidget *>();
    for (const QWidget *child : children) {
        const QVariant value = child->property("iconName");
        if (value.canConvert<QString>() && !value.toString().isEmpty())
            return value.toString();
    }
    return QString();
}

}   // namespace

QVariantMap describeWidget(const QWidget *widget)
{
    QVariantMap map;
    if (!widget)
        return map;
    map.insert(QStringLiteral("class"), QString::fromLatin1(widget->metaObject()->className()));
    map.insert(QStringLiteral("visible"), !widget->isHidden());
    QStringList texts;
    QStringList links;
    if (auto *label = qobject_cast<const QLabel *>(widget)) {
        texts.append(label->text());
        links += linksOf(label->text());
    }
    for (QLabel *label : visibleChildren<QLabel>(widget)) {
        if (label->text().isEmpty())
            continue;
        texts.append(label->text());
        links += linksOf(label->text());
    }
    QStringList buttons;
    for (QAbstractButton *button : visibleChildren<QAbstractButton>(widget)) {
        if (!button->text().isEmpty())
            buttons.append(button->text().remove(QLatin1Char('&')));
    }
    map.insert(QStringLiteral("texts"), texts);
    map.insert(QStringLiteral("text"), texts.join(QLatin1Char('\n')));
    map.insert(QStringLiteral("links"), links);
    map.insert(QStringLiteral("buttons"), buttons);
    map.insert(QStringLiteral("icon"), iconNameOf(widget));
    return map;
}

bool activateLink(QWidget *widget, const QString &link)
{
    if (!widget)
        return false;
    QList<QLabel *> labels = visibleChildren<QLabel>(widget);
    if (auto *self = qobject_cast<QLabel *>(widget))
        labels.prepend(self);
    for (QLabel *label : qAsConst(labels)) {
        if (linksOf(label->text()).contains(link)) {
            Q_EMIT label->linkActivated(link);
            return true;
        }
    }
    return false;
}

bool clickButton(QWidget *widget, const QString &text)
{
    if (!widget)
        return false;
    for (QAbstractButton *button : visibleChildren<QAbstractButton>(widget)) {
        if (button->isEnabled() && button->text().remove(QLatin1Char('&')) == text) {
            button->click();
            return true;
        }
    }
    return false;
}

}   // namespace hdehost
