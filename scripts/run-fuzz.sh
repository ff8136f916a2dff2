#!/usr/bin/env bash
# Builds the transport fuzzer with clang in a build directory of its own and
# runs it for N seconds (default 60) on a copy of the seed corpus. Exits
# non-zero when the fuzzer finds a crash, a sanitizer report, a leak or a
# time-out; the failing input is left in the current directory.
set -euo pipefail
seconds=${1:-60}
here=$(cd "$(dirname "$0")/.." && pwd)
build=${NUBIX_FUZZ_BUILD_DIR:-$here/build-fuzz}
jobs=${NUBIX_JOBS:-$(nproc 2>/dev/null || echo 2)}

CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DNUBIX_BUILD_FUZZERS=ON -DNUBIX_BUILD_TESTS=OFF -DNUBIX_BUILD_BENCHMARKS=OFF
cmake --build "$build" --target fuzz_nubix_transport -j "$jobs"

corpus=$(mktemp -d "${TMPDIR:-/tmp}/nubix-fuzz-corpus.XXXXXX")
trap 'rm -rf "$corpus"' EXIT
cp -R "$here/fuzz/src/libhfmplugin-nubix/corpus/." "$corpus/"

# Full stacks at every allocation, so that leaks inside Qt's JSON parser are
# recognised by the suppression list; Qt itself has no frame pointers.
export ASAN_OPTIONS="fast_unwind_on_malloc=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export LSAN_OPTIONS="suppressions=$here/fuzz/src/libhfmplugin-nubix/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
"$build/fuzz/src/libhfmplugin-nubix/fuzz_nubix_transport" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 "$corpus"
