#!/usr/bin/env bash
# Builds the fuzz targets with clang in a build directory of their own and
# runs each for a time or a number of executions on a copy of its seed
# corpus, with its dictionary and the default sanitizer options.
#
#   scripts/run-fuzz.sh [SECONDS]            each target for SECONDS (default 20)
#   scripts/run-fuzz.sh --runs N             each target for N executions
#   scripts/run-fuzz.sh [...] -- TARGET...   only these (framing envelope answers portfile json
#                                            urls inicache)
#
# Prints one line of figures per target (executions, executions per second,
# peak RSS, coverage) and exits non-zero when any target finds a crash, a
# sanitizer report, a leak or a time-out; the failing input is kept under
# $NUBIX_FUZZ_ARTIFACTS (default build-fuzz/artifacts). Copy it into
# fuzz/regressions/<target>/ once fixed, so that ctest replays it.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${NUBIX_FUZZ_BUILD_DIR:-$here/build-fuzz}
jobs=${NUBIX_JOBS:-$(nproc 2>/dev/null || echo 2)}
artifacts=${NUBIX_FUZZ_ARTIFACTS:-$build/artifacts}

limit=(-max_total_time=20)
targets=(framing envelope answers portfile json urls inicache)
while [ $# -gt 0 ]; do
    case "$1" in
        --runs) limit=(-runs="$2"); shift 2 ;;
        --) shift; targets=("$@"); break ;;
        *) limit=(-max_total_time="$1"); shift ;;
    esac
done

launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" \
    -DNUBIX_BUILD_FUZZERS=ON -DNUBIX_BUILD_TESTS=OFF -DNUBIX_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j "$jobs" --target "${targets[@]/#/fuzz_nubix_}"

mkdir -p "$artifacts"
export LSAN_OPTIONS="suppressions=$here/fuzz/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
declare -A dict=([framing]=protocol [envelope]=protocol [answers]=protocol [portfile]=portfile [json]=json
    [urls]=urls [inicache]=inicache)
# Longest input. Larger inputs reach no further code in these two (the JSON
# helper's deepest cases need about 2 KB, a cache file is a few hundred bytes)
# and only made each input slower; the rest take up to 8 KB.
declare -A maxlen=([json]=4096 [inicache]=2048)
# The cache file lives in the home: never the user's. In memory where there
# is a tmpfs, since Qt's settings writer syncs the file to disk on every save
# (inicache saves once per input); the corpus copies too, as the fuzzer
# writes a file for every new input.
homes=${TMPDIR:-/tmp}
if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then homes=/dev/shm; fi
export HOME=$(mktemp -d "$homes/nubix-fuzz-home.XXXXXX")
trap 'rm -rf "$HOME"' EXIT
failed=0
printf '%-10s %12s %10s %10s %8s %s\n' target execs exec/s peak_MB cov result
for target in "${targets[@]}"; do
    corpus=$(mktemp -d "$homes/nubix-fuzz-$target.XXXXXX")
    cp -R "$here/fuzz/corpus/$target/." "$corpus/"
    log="$artifacts/$target.log"
    status=ok
    "$build/fuzz/fuzz_nubix_$target" "${limit[@]}" -timeout=10 -rss_limit_mb=2048 -max_len="${maxlen[$target]:-8192}" \
        -print_final_stats=1 -dict="$here/fuzz/dict/${dict[$target]}.dict" \
        -artifact_prefix="$artifacts/$target-" "$corpus" >"$log" 2>&1 || status=FAILED
    rm -rf "$corpus"
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
    rss=$(sed -n 's/^stat::peak_rss_mb: *//p' "$log" | tail -1)
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    printf '%-10s %12s %10s %10s %8s %s\n' "$target" "${execs:-?}" "${speed:-?}" "${rss:-?}" "${cov:-?}" "$status"
    if [ "$status" != ok ]; then
        failed=1
        tail -n 40 "$log" >&2
        # The harnesses keep allocation stacks two frames deep (fuzz/common/asanoptions.cpp).
        echo "Full allocation stacks: ASAN_OPTIONS=fast_unwind_on_malloc=0:malloc_context_size=30" \
            "$build/fuzz/fuzz_nubix_$target <input>" >&2
    fi
done
exit $failed
