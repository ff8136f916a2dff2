// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/event/event.h>
#include <hpf/plugin.h>

// Reports each life-cycle call to the test through the slot channel, so the
// test sees the order in which the framework drives the plug-ins.
class RecordingPlugin : public hpf::Plugin
{
public:
    RecordingPlugin(const char *name, bool startResult)
        : m_name(QString::fromUtf8(name)), m_startResult(startResult) { }

    void initialize() override { record(QStringLiteral("init:")); }
    bool start() override
    {
        record(QStringLiteral("start:"));
        return m_startResult;
    }
    void stop() override { record(QStringLiteral("stop:")); }

private:
    void record(const QString &what)
    {
        hpf::channel()->push(QStringLiteral("hpftest"), QStringLiteral("slot_Record"), QString(what + m_name));
    }

    QString m_name;
    bool m_startResult;
};
