// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/hpf_global.h>

#include <QJsonObject>
#include <QSharedPointer>
#include <QStringList>

#include <memory>

namespace hpf {

class Plugin;

// What the framework knows of one plug-in library: its metadata (read before
// the library's object exists) and its state. Read-only for everybody but the
// framework; safe to read from the GUI thread.
class HPF_EXPORT PluginMetaObject
{
public:
    enum State {
        kInvalid = 0,
        kReading = 1,
        kRead = 2,
        kLoading = 3,
        kLoaded = 4,
        kInitialized = 5,
        kStarted = 6,
        kStopped = 7,
        kShutdown = 8,
    };

    struct Depend
    {
        QString name;
        QString version;
    };

    PluginMetaObject();
    ~PluginMetaObject();

    QString fileName() const;
    QString iid() const;
    QString name() const;
    QString version() const;
    QString compatVersion() const;
    QString category() const;
    QString description() const;
    QStringList license() const;
    QList<Depend> depends() const;
    // The "Custom" object of the metadata (PluginSchemes, QuickAccessDisplay).
    QJsonObject customData() const;
    // The whole metadata object as the library declares it.
    QJsonObject metaData() const;
    State pluginState() const;
    QString errorString() const;
    // The plug-in object once loaded; null before.
    Plugin *plugin() const;

private:
    friend class PluginManager;
    struct Private;
    std::unique_ptr<Private> d;
};

using PluginMetaObjectPointer = QSharedPointer<PluginMetaObject>;

}   // namespace hpf
