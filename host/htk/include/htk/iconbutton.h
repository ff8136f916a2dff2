// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <htk/htk_global.h>

#include <QToolButton>

namespace htk {

// A flat button that shows only an icon.
class HTK_EXPORT IconButton : public QToolButton
{
    Q_OBJECT
public:
    explicit IconButton(QWidget *parent = nullptr);
    explicit IconButton(const QIcon &icon, QWidget *parent = nullptr);
};

}   // namespace htk
