// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QWidget>

class QFormLayout;
class QLabel;

namespace hfmplugin_workspace {

// The side panel with the details of one file: icon, name, type, size,
// modification time and location. GUI thread only.
class DetailPane : public QWidget
{
    Q_OBJECT
public:
    explicit DetailPane(QWidget *parent = nullptr);

    void showUrl(const QUrl &url);
    QUrl shownUrl() const;

private:
    QUrl url;
    QLabel *icon;
    QLabel *name;
    QLabel *type;
    QLabel *size;
    QLabel *modified;
    QLabel *location;
};

}   // namespace hfmplugin_workspace
