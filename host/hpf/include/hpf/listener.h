// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/hpf_global.h>

#include <QObject>

namespace hpf {

// Announces the framework's progress. Signals are emitted on the GUI thread.
class HPF_EXPORT Listener : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Listener)
public:
    static Listener *instance();

Q_SIGNALS:
    void pluginInitialized(const QString &iid, const QString &name);
    void pluginStarted(const QString &iid, const QString &name);
    void pluginsInitialized();
    void pluginsStarted();

private:
    Listener();
};

}   // namespace hpf
