// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QVariantList>

namespace hdeapp {

// What the host did that a script may want to check: the result events as
// they reached their listeners (after any filter), the files it opened and
// the folders it opened a terminal in. GUI thread only.
class OperationLog : public QObject
{
    Q_OBJECT
public:
    explicit OperationLog(QObject *parent = nullptr);
    ~OperationLog() override;

    // Subscribes to the result events.
    void attach();

    void addOpened(const QUrl &requested, const QUrl &local, const QString &app);
    void addTerminal(const QUrl &dir);
    // Restoring from the trash publishes no event: its result is recorded
    // with event 0 and "operation": "restore".
    void addRestored(
        quint64 windowId, const QList<QUrl> &sources, const QList<QUrl> &targets, bool ok, const QString &error);

    // [{"event", "ok", "error", "window", "sources", "targets"}]
    QVariantList results() const;
    // [{"url", "requested", "app"}]
    QVariantList opened() const;
    QVariantList terminals() const;
    void clear();

Q_SIGNALS:
    void resultRecorded(int event);

private:
    void record(int event, const QVariantList &args);

    QVariantList resultList;
    QVariantList openedList;
    QVariantList terminalList;
};

}   // namespace hdeapp
