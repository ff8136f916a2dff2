#!/usr/bin/env bash
# Builds the tests labelled "tsan" with ThreadSanitizer in a build directory
# of their own and runs them. Qt itself is not instrumented, so these tests
# stick to plain threads calling the plug-in's own code.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

jobs=${NUBIX_JOBS:-$(nproc 2>/dev/null || echo 2)}
build=${NUBIX_TSAN_BUILD_DIR:-$here/build-tsan}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DNUBIX_TSAN=ON -DNUBIX_BUILD_TESTS=ON -DNUBIX_BUILD_BENCHMARKS=OFF -DNUBIX_BUILD_FUZZERS=OFF

# Test names are their targets' names.
mapfile -t targets < <(cd "$build" && ctest -N -L tsan | sed -n 's/^ *Test *#[0-9]*: *//p')
if [ ${#targets[@]} -eq 0 ]; then
    echo "run-tsan-tests: no test labelled tsan" >&2
    exit 1
fi
cmake --build "$build" -j "$jobs" --target "${targets[@]}"

export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$here/scripts/tsan.supp ${TSAN_OPTIONS:-}"
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j "$jobs" -L tsan --output-on-failure)
