// SPDX-License-Identifier: GPL-3.0-or-later
#include <hpf/plugin.h>

#include "hpflog.h"

namespace hpf {

Q_LOGGING_CATEGORY(logHpf, "org.sablo.hde.hpf")

Plugin::Plugin(QObject *parent) : QObject(parent) { }

Plugin::~Plugin() = default;

void Plugin::initialize() { }

void Plugin::stop() { }

}   // namespace hpf
