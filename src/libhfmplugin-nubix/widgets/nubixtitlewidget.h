// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "caches/syncrecords.h"

#include <QWidget>

QT_BEGIN_NAMESPACE
class QLabel;
QT_END_NAMESPACE

namespace htk {
class IconButton;
}

namespace hfmplugin_nubix {

// The one-line strip above the file view of the cloud tree: what the sync
// client is doing, with links that act on it. Reads the cache and the
// client's notifications only; clicking a link sends one request. GUI thread;
// the host owns the widget.
class NubixTitleWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(NubixTitleWidget)
    // The status icon's theme name, for automation and accessibility tools.
    Q_PROPERTY(QString iconName READ iconName)
public:
    explicit NubixTitleWidget(QWidget *parent = nullptr);
    ~NubixTitleWidget() override;

    void updateTitle(const QString &text, const QString &iconName);

    // What the strip shows now: rich text, plain text and icon name.
    QString text() const;
    QString plainText() const;
    QString iconName() const;
    bool isSyncing() const { return syncing; }

public Q_SLOTS:
    void onSyncInfoUpdated();
    void onSyncProgressUpdated(const SyncQuantity &quantity);
    void doCheckUpdate();
    void onLinkActivated(const QString &link);

private:
    void setupUI();
    void connects();

    QLabel *iconLabel = nullptr;
    QLabel *textLabel = nullptr;
    htk::IconButton *refreshButton = nullptr;
    bool syncing = false;
    QString currentIcon;
};

}   // namespace hfmplugin_nubix
