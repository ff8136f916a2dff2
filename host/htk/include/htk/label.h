// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <htk/htk_global.h>

#include <QLabel>

namespace htk {

// A label that follows the theme's text colour.
class HTK_EXPORT Label : public QLabel
{
    Q_OBJECT
public:
    explicit Label(QWidget *parent = nullptr);
    explicit Label(const QString &text, QWidget *parent = nullptr);
};

// Secondary text: smaller and dimmed, refreshed when the theme changes.
class HTK_EXPORT TipLabel : public Label
{
    Q_OBJECT
public:
    explicit TipLabel(QWidget *parent = nullptr);
    explicit TipLabel(const QString &text, QWidget *parent = nullptr);

private:
    void applyTheme();
};

}   // namespace htk
