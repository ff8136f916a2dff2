#!/usr/bin/env bash
# The long no-data-loss soak: the same random walk as the suite's tst_soak,
# with more steps. Usage: run-soak.sh [STEPS [SEED]] (default 1000 steps, a
# seed from the clock). The seed is printed first; run again with the same
# steps and seed to replay a failure exactly.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${NUBIX_BUILD_DIR:-$here/build}
steps=${1:-1000}
seed=${2:-$(($(date +%s) % 4294967296))}
case "$steps$seed" in *[!0-9]*) echo "usage: $0 [STEPS [SEED]]" >&2; exit 2 ;; esac
echo "run-soak: $steps steps, seed $seed (replay: $0 $steps $seed)"
# The test's own target depends on the file manager, the plug-in and the simulator.
cmake --build "$build" --target tst_soak >/dev/null
start=$(date +%s)
status=0
NUBIX_SOAK_STEPS=$steps NUBIX_SOAK_SEED=$seed QT_QPA_PLATFORM=offscreen \
    "$here/scripts/with-temp-home.sh" "$build/tests/reliability/tst_soak" -maxwarnings 0 || status=$?
echo "run-soak: $steps steps, seed $seed: $([ $status = 0 ] && echo passed || echo "FAILED ($status)")" \
     "in $(($(date +%s) - start)) s"
exit $status
