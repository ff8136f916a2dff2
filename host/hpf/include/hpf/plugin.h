// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/hpf_global.h>

#include <QObject>

namespace hpf {

// Base class of every plug-in object. The framework calls initialize() on all
// plug-ins first, then start() on each (dependencies first), all on the GUI
// thread. The framework owns the object.
class HPF_EXPORT Plugin : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Plugin)
public:
    explicit Plugin(QObject *parent = nullptr);
    ~Plugin() override;

    virtual void initialize();
    // Returns false when the plug-in cannot run; it then stays initialised.
    virtual bool start() = 0;
    virtual void stop();
};

}   // namespace hpf

Q_DECLARE_INTERFACE(hpf::Plugin, HPF_PLUGIN_IID)
