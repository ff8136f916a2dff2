#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Takes the user-interface screenshots of docs/screenshots/ under Xvfb: the
# file manager with the plug-in, against the Kelo Drive simulator, both in a
# throw-away HOME.  Usage: scripts/ui-screenshots.sh [BUILD_DIR] [OUT_DIR]
set -euo pipefail

SRC=$(cd "$(dirname "$0")/.." && pwd)
BUILD=$(cd "${1:-$SRC/build}" && pwd)
OUT=$(mkdir -p "${2:-$SRC/docs/screenshots}" && cd "${2:-$SRC/docs/screenshots}" && pwd)
FM="$BUILD/host/app/hde-file-manager"
SIM="$BUILD/tools/kelodrive-sim/kelodrive-sim"

WORK=$(mktemp -d)
export HOME="$WORK/home" XDG_DATA_HOME="$WORK/home/.local/share" XDG_CONFIG_HOME="$WORK/home/.config"
export XDG_RUNTIME_DIR="$WORK/run" QT_LOGGING_RULES="*.debug=false;*.info=false"
export PATH="$(dirname "$FM"):$PATH"
mkdir -p "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
ROOT="$WORK/Kelo Drive"

DISPLAY_NUM=${DISPLAY_NUM:-97}
Xvfb ":$DISPLAY_NUM" -screen 0 1280x900x24 -nolisten tcp >/dev/null 2>&1 &
XVFB=$!
export DISPLAY=":$DISPLAY_NUM" QT_QPA_PLATFORM=xcb

SIM_PID=
FM_PID=
cleanup() {
    exec 3>&- 4>&- 2>/dev/null || true
    [ -n "$FM_PID" ] && kill "$FM_PID" 2>/dev/null || true
    [ -n "$SIM_PID" ] && kill "$SIM_PID" 2>/dev/null || true
    kill "$XVFB" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf "$WORK"
}
trap cleanup EXIT

# Waits until FILE has a line equal to TEXT.
wait_line() {
    for _ in $(seq 1 300); do
        grep -qxF "$2" "$1" 2>/dev/null && return 0
        sleep 0.1
    done
    echo "timed out waiting for '$2' in $1" >&2
    tail -n 5 "$1" "$WORK/fm.err" >&2 || true
    exit 1
}

start_sim() {
    rm -f "$WORK/sim.in" && mkfifo "$WORK/sim.in"
    "$SIM" "$@" <"$WORK/sim.in" >"$WORK/sim.out" 2>"$WORK/sim.err" &
    SIM_PID=$!
    exec 4>"$WORK/sim.in"
    for _ in $(seq 1 100); do grep -q '^port ' "$WORK/sim.out" && break; sleep 0.1; done
}
sim() { printf '%s\n' "$@" >&4; }
stop_sim() {
    sim quit || true
    exec 4>&-
    wait "$SIM_PID" 2>/dev/null || true
    SIM_PID=
}

MARK=0
start_fm() {
    rm -f "$WORK/fm.in" && mkfifo "$WORK/fm.in"
    "$FM" --script - <"$WORK/fm.in" >"$WORK/fm.out" 2>"$WORK/fm.err" &
    FM_PID=$!
    exec 3>"$WORK/fm.in"
}
# Runs file-manager script lines and waits until they are done.
fm() {
    MARK=$((MARK + 1))
    printf '%s\n' "$@" "echo done-$MARK" >&3
    wait_line "$WORK/fm.out" "done-$MARK"
}
stop_fm() {
    printf 'quit\n' >&3 || true
    exec 3>&-
    wait "$FM_PID" 2>/dev/null || true
    FM_PID=
}

seed_root() {
    rm -rf "$ROOT"
    mkdir -p "$ROOT/Documents" "$ROOT/Photos" "$ROOT/Private"
    printf 'minutes\n' >"$ROOT/Documents/minutes.txt"
    printf 'plan\n' >"$ROOT/plan.odt"
    printf 'old\n' >"$ROOT/broken.bad"
    printf 'notes\n' >"$ROOT/notes.txt"
}

# 1. The tree: syncing, paused, then the client stopped.
seed_root
start_sim --root "$ROOT" --pace-ms 4000 --fail-pattern '*.bad' --ban /Private --used 5368709120 --total 107374182400
start_fm
fm "open nubix:///" "wait-for url last nubix:///" "wait-for loaded last" "resize last 960 560" "wait 800"
for name in report.pdf budget.ods slides.odp photo-01.jpg; do printf 'new\n' >"$ROOT/$name"; done
fm "wait-for item last photo-01.jpg" "wait 2500" "screenshot last $OUT/tree-syncing.png"
sim pause
fm "wait 1500" "screenshot last $OUT/tree-paused.png"
stop_sim
fm "wait 1500" "screenshot last $OUT/tree-client-stopped.png"
stop_fm

# 2. The computer view and the drive's menu, online and offline.
seed_root
start_sim --root "$ROOT" --used 5368709120 --total 107374182400
start_fm
fm "open computer:///" "resize last 960 520" "wait 1500" "screenshot last $OUT/computer-view.png"
fm "menu-shot $OUT/menu-online.png entry last entry:///nubix.nubix"
stop_sim
fm "wait 1000" "menu-shot $OUT/menu-offline.png entry last entry:///nubix.nubix"
stop_fm

seed_root
start_sim --root "$ROOT" --used 1073741824 --quota -3
start_fm
fm "open computer:///" "resize last 960 520" "wait 1500" "screenshot last $OUT/computer-view-used-space.png"
stop_fm
stop_sim

# 3. The welcome page, light and dark.
start_sim --no-root
start_fm
fm "open nubix-login:///" "resize last 960 600" "wait 1200" "theme light" "wait 300" \
    "screenshot last $OUT/welcome-light.png" "theme dark" "wait 300" "screenshot last $OUT/welcome-dark.png"
stop_fm
stop_sim

# 4. The banner, the drive's menu and the welcome page in German and Chinese,
# to see that no translated text is clipped.
for lang in de_DE zh_CN; do
    tag=${lang%_*}
    export LANG="$lang.UTF-8" LANGUAGE="$lang"
    seed_root
    start_sim --root "$ROOT" --pace-ms 4000 --used 5368709120 --total 107374182400
    start_fm
    fm "open nubix:///" "wait-for url last nubix:///" "wait-for loaded last" "resize last 960 560" "wait 800"
    for name in report.pdf budget.ods slides.odp; do printf 'new\n' >"$ROOT/$name"; done
    fm "wait-for item last slides.odp" "wait 2500" "screenshot last $OUT/tree-syncing-$tag.png"
    sim pause
    fm "wait 1500" "screenshot last $OUT/tree-paused-$tag.png"
    fm "open computer:///" "wait 1200" "menu-shot $OUT/menu-online-$tag.png entry last entry:///nubix.nubix"
    stop_fm
    stop_sim
    start_sim --no-root
    start_fm
    fm "open nubix-login:///" "resize last 960 600" "wait 1200" "screenshot last $OUT/welcome-$tag.png"
    stop_fm
    stop_sim
done
unset LANGUAGE
echo "screenshots in $OUT"
