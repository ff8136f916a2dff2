// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLayout>

namespace hfmplugin_computer {

// Places its widgets left to right and wraps to a new row when the width
// runs out; its height follows the width.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget *parent = nullptr, int spacing = 12);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    void setGeometry(const QRect &rect) override;

private:
    int arrange(const QRect &rect, bool apply) const;

    QList<QLayoutItem *> items;
    int gap;
};

}   // namespace hfmplugin_computer
