#!/usr/bin/env bash
# Builds the whole test suite with AddressSanitizer and UndefinedBehaviorSanitizer
# in a build directory of its own and runs it: any memory error, leak or
# undefined behaviour fails the run. A Debug build keeps Qt's and our own
# assertions on; -O1 keeps it fast enough for CI. Benchmarks and fuzzers are
# left out (they have their own builds; the fuzz replays still run), and so
# are the ThreadSanitizer tests.
#
# NUBIX_ASAN_EXCLUDE_LABELS is the ctest label pattern left out (default
# "tsan"); slow end-to-end labels can join it when CI time is short, e.g.
#   NUBIX_ASAN_EXCLUDE_LABELS='tsan|reliability' scripts/run-asan-tests.sh
# Further arguments go to ctest (e.g. -R tst_hostplugins).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

jobs=${NUBIX_JOBS:-$(nproc 2>/dev/null || echo 2)}
build=${NUBIX_ASAN_BUILD_DIR:-$here/build-asan}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" \
      -DNUBIX_ASAN=ON -DNUBIX_BUILD_TESTS=ON -DNUBIX_BUILD_BENCHMARKS=OFF -DNUBIX_BUILD_FUZZERS=OFF
cmake --build "$build" -j "$jobs"

export ASAN_OPTIONS="halt_on_error=1 detect_leaks=1 fast_unwind_on_malloc=0 ${ASAN_OPTIONS:-}"
export LSAN_OPTIONS="suppressions=$here/scripts/lsan.supp print_suppressions=0 ${LSAN_OPTIONS:-}"
export UBSAN_OPTIONS="halt_on_error=1 print_stacktrace=1 ${UBSAN_OPTIONS:-}"
exclude=${NUBIX_ASAN_EXCLUDE_LABELS:-tsan}
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j "$jobs" -LE "$exclude" --output-on-failure "$@")
