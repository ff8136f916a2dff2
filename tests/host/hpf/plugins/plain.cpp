// SPDX-License-Identifier: GPL-3.0-or-later
// A shared library without plug-in metadata.
extern "C" __attribute__((visibility("default"))) int hpftestPlainFunction()
{
    return 42;
}
