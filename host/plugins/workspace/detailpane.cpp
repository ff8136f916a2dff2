// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailpane.h"

#include <hfmbase/infofactory.h>
#include <hostcommon/urlhelpers.h>

#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace hfmplugin_workspace {

DetailPane::DetailPane(QWidget *parent)
    : QWidget(parent),
      icon(new QLabel(this)),
      name(new QLabel(this)),
      type(new QLabel(this)),
      size(new QLabel(this)),
      modified(new QLabel(this)),
      location(new QLabel(this))
{
    setObjectName(QStringLiteral("hde-detailpane"));
    setMinimumWidth(200);
    setMaximumWidth(320);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    icon->setAlignment(Qt::AlignCenter);
    icon->setFixedHeight(110);
    name->setAlignment(Qt::AlignCenter);
    name->setWordWrap(true);
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    layout->addWidget(icon);
    layout->addWidget(name);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    for (QLabel *label : {type, size, modified, location}) {
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    form->addRow(tr("Type"), type);
    form->addRow(tr("Size"), size);
    form->addRow(tr("Modified"), modified);
    form->addRow(tr("Location"), location);
    layout->addLayout(form);
    layout->addStretch(1);
}

void DetailPane::showUrl(const QUrl &newUrl)
{
    url = newUrl;
    const auto info = hfmbase::InfoFactory::create<hfmbase::FileInfo>(url);
    if (!info) {
        icon->clear();
        name->setText(hdehost::defaultTabName(url));
        for (QLabel *label : {type, size, modified, location})
            label->clear();
        return;
    }
    icon->setPixmap(info->fileIcon().pixmap(96, 96));
    name->setText(info->displayName().isEmpty() ? hdehost::defaultTabName(url) : info->displayName());
    type->setText(info->isDir() ? tr("Folder") : info->mimeType().comment());
    const int children = qMax(0, info->countChildFile());
    size->setText(info->isDir() ? (children == 1 ? tr("1 item") : tr("%1 items").arg(children))
                                : QLocale().formattedDataSize(info->size()));
    modified->setText(QLocale().toString(info->lastModified(), QLocale::ShortFormat));
    location->setText(hdehost::urlDisplayText(hdehost::parentUrl(url)));
}

QUrl DetailPane::shownUrl() const
{
    return url;
}

}   // namespace hfmplugin_workspace
