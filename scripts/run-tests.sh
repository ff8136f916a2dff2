#!/usr/bin/env bash
# Sets up a fresh machine, builds everything and runs every test:
# the unit and integration tests, the ThreadSanitizer stress tests, the
# whole suite again under AddressSanitizer and UBSan, and a 20-second
# fuzzing smoke of every target.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

bash scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)
build=${NUBIX_BUILD_DIR:-$here/build}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DNUBIX_BUILD_TESTS=ON -DNUBIX_BUILD_BENCHMARKS=ON
cmake --build "$build" -j "$jobs"
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j "$jobs" --output-on-failure -LE 'tsan')

if [ -x scripts/run-tsan-tests.sh ]; then bash scripts/run-tsan-tests.sh; fi
# The end-to-end fault and soak runs hold the file manager to one-second
# answers, which a Debug sanitizer build cannot keep; they ran above.
if [ -x scripts/run-asan-tests.sh ]; then
    NUBIX_ASAN_EXCLUDE_LABELS=${NUBIX_ASAN_EXCLUDE_LABELS:-'tsan|reliability'} bash scripts/run-asan-tests.sh
fi
if [ -x scripts/run-fuzz.sh ]; then bash scripts/run-fuzz.sh 20; fi
# The Debian packages installed, used and purged (root only; skipped otherwise).
bash scripts/package-test.sh
