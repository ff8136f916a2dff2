// SPDX-License-Identifier: GPL-3.0-or-later
#include "computerview.h"

#include "computerstore.h"
#include "entrytile.h"
#include "flowlayout.h"

#include <QCursor>
#include <QLabel>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

namespace hfmplugin_computer {

namespace {

QList<ComputerView *> &liveViews()
{
    static QList<ComputerView *> views;
    return views;
}

}   // namespace

ComputerView::ComputerView(const QUrl &url, QWidget *parent)
    : QWidget(parent), root(url), area(new QScrollArea(this)), repaintTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("hde-computer-view"));
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(area);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    liveViews().append(this);
    repaintTimer->setInterval(3000);
    connect(repaintTimer, &QTimer::timeout, this, [this] {
        for (const auto &tile : qAsConst(tiles)) {
            if (tile && isVisible())
                tile->update();
        }
    });
    repaintTimer->start();
    connect(ComputerStore::instance(), &ComputerStore::changed, this, &ComputerView::rebuild);
    rebuild();
}

ComputerView::~ComputerView()
{
    liveViews().removeAll(this);
}

QWidget *ComputerView::widget() const
{
    return const_cast<ComputerView *>(this);
}

QUrl ComputerView::rootUrl() const
{
    return root;
}

bool ComputerView::setRootUrl(const QUrl &url)
{
    root = url;
    return true;
}

QList<ComputerView *> ComputerView::views()
{
    return liveViews();
}

EntryTile *ComputerView::tileFor(const QString &key) const
{
    for (const auto &tile : tiles) {
        if (!tile)
            continue;
        const ComputerEntry &entry = tile->entry();
        if (entry.url.toString() == key || (entry.entity && entry.entity->displayName() == key))
            return tile;
    }
    return nullptr;
}

bool ComputerView::hdeActivate(const QString &key)
{
    EntryTile *tile = tileFor(key);
    return tile && tile->activate();
}

bool ComputerView::hdeContextMenu(const QString &key)
{
    EntryTile *tile = tileFor(key);
    if (!tile)
        return false;
    select(tile);
    return tile->showContextMenu(QCursor::pos());
}

void ComputerView::rebuild()
{
    tiles.clear();
    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(24, 16, 24, 16);
    layout->setSpacing(8);
    ComputerStore *store = ComputerStore::instance();
    const QStringList groups = store->groups();
    for (const QString &group : groups) {
        const QList<ComputerEntry> entries = store->entries(group);
        if (entries.isEmpty())
            continue;
        auto *title = new QLabel(group, content);
        QFont font = title->font();
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 1.1);
        title->setFont(font);
        layout->addWidget(title);
        auto *box = new QWidget(content);
        auto *flow = new FlowLayout(box, 12);
        flow->setContentsMargins(0, 4, 0, 12);
        for (const ComputerEntry &entry : entries) {
            auto *tile = new EntryTile(entry, box);
            connect(tile, &EntryTile::pressed, this, &ComputerView::select);
            flow->addWidget(tile);
            tiles.append(tile);
        }
        layout->addWidget(box);
    }
    layout->addStretch(1);
    // The old content may be running this very rebuild's caller.
    if (QWidget *old = area->takeWidget())
        old->deleteLater();
    area->setWidget(content);
}

void ComputerView::select(EntryTile *selectedTile)
{
    for (const auto &tile : qAsConst(tiles)) {
        if (tile)
            tile->setSelected(tile == selectedTile);
    }
}

void ComputerView::showEvent(QShowEvent *event)
{
    for (const auto &tile : qAsConst(tiles)) {
        if (tile && tile->entry().entity)
            tile->entry().entity->refresh();
    }
    QWidget::showEvent(event);
}

}   // namespace hfmplugin_computer
