// SPDX-License-Identifier: GPL-3.0-or-later
// Allocation and free stacks are stored two frames deep: Qt has no frame
// pointers, so any deeper stack through Qt is new garbage, and the store grew
// for the whole run. Reports keep the fault's full stack; ASAN_OPTIONS wins
// (fast_unwind_on_malloc=0:malloc_context_size=30 gives true full stacks).
extern "C" __attribute__((visibility("default"), used)) const char *__asan_default_options()
{
    return "malloc_context_size=2";
}
