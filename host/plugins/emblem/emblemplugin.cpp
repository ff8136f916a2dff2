// SPDX-License-Identifier: GPL-3.0-or-later
#include "emblemplugin.h"

#include <hostcommon/hostkeys.h>
#include <hostcommon/hostmetatypes.h>
#include <hpf/event/event.h>

#include <QLoggingCategory>
#include <QPainter>

Q_LOGGING_CATEGORY(logEmblem, "org.sablo.hde.filemanager.plugin.emblem")

namespace hfmplugin_emblem {

using namespace hdehost;

void EmblemPlugin::initialize()
{
    registerHostMetaTypes();
    hpf::sequence()->declare(Space::kEmblem, Topic::kCustomEmblemsFetch);
    hpf::channel()->connect(Space::kEmblem, Topic::kEmblemPaint, this, &EmblemPlugin::paintEmblems);
    hpf::channel()->connect(Space::kEmblem, Topic::kEmblemNames, this, &EmblemPlugin::emblemNames);
}

bool EmblemPlugin::start()
{
    return true;
}

QList<QIcon> EmblemPlugin::fetchEmblems(const QUrl &url)
{
    QList<QIcon> icons;
    if (!url.isValid())
        return icons;
    QList<QIcon> *out = &icons;
    hpf::sequence()->run(Space::kEmblem, Topic::kCustomEmblemsFetch, url, out);
    QList<QIcon> usable;
    for (const QIcon &icon : qAsConst(icons)) {
        if (!icon.isNull())
            usable.append(icon);
        if (usable.size() == kMaxEmblems)
            break;
    }
    return usable;
}

bool EmblemPlugin::paintEmblems(QPainter *painter, const QRect &iconRect, const QUrl &url)
{
    if (!painter || !iconRect.isValid())
        return false;
    const QList<QIcon> icons = fetchEmblems(url);
    if (icons.isEmpty())
        return false;
    const int side = qBound(10, iconRect.width() / 3, 32);
    // Bottom right first, then the other corners clockwise.
    const QPoint corners[kMaxEmblems] = {
        QPoint(iconRect.right() - side + 1, iconRect.bottom() - side + 1),
        QPoint(iconRect.left(), iconRect.bottom() - side + 1),
        QPoint(iconRect.left(), iconRect.top()),
        QPoint(iconRect.right() - side + 1, iconRect.top()),
    };
    for (int i = 0; i < icons.size(); ++i)
        icons.at(i).paint(painter, QRect(corners[i], QSize(side, side)));
    return true;
}

QStringList EmblemPlugin::emblemNames(const QUrl &url)
{
    QStringList names;
    const QList<QIcon> icons = fetchEmblems(url);
    for (const QIcon &icon : icons)
        names.append(icon.name());
    return names;
}

}   // namespace hfmplugin_emblem
