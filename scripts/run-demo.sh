#!/usr/bin/env bash
# Builds the project (installing build packages only when some are missing)
# and shows the Kelo Drive plug-in in the file manager beside the Kelo Drive
# client simulator.
#
# With a display: a file manager window on the computer view; the simulator
# keeps syncing a demo folder while the window is open (files are added every
# few seconds). Close the window to end the demo.
# Without one: a walk under Xvfb through the computer view, the welcome page,
# the sidebar, the synced tree with its emblems, the banner through progress,
# pause and resume, and the drive's menu, with a screenshot of each step.
#
# Everything runs in a temporary home that is removed at the end. To keep
# the demo's synced folder, name it: KELO_DRIVE_ROOT=~/demo-drive bash scripts/run-demo.sh
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

bash scripts/setup.sh --demo

build=${NUBIX_BUILD_DIR:-$here/build-demo}
echo "run-demo: building in $build (the first time takes a while)"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DNUBIX_BUILD_TESTS=OFF -DNUBIX_BUILD_BENCHMARKS=OFF >"$build.configure.log" 2>&1 \
    || { cat "$build.configure.log"; exit 1; }
rm -f "$build.configure.log"
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null \
    || { cmake --build "$build" -j 1; exit 1; }

fm="$build/host/app/hde-file-manager"
sim="$build/tools/kelodrive-sim/kelodrive-sim"
shots="$build/demo-screenshots"

# A home of its own: the port file, the plug-in's cache file and the synced
# folder all live there, and go with it.
demo_home=$(mktemp -d "${TMPDIR:-/tmp}/kelo-demo.XXXXXX")
if [ -n "${KELO_DRIVE_ROOT:-}" ]; then
    root=$(mkdir -p "$KELO_DRIVE_ROOT" && cd "$KELO_DRIVE_ROOT" && pwd)
    echo "run-demo: syncing $root (kept after the demo)"
else
    root="$demo_home/Kelo Drive"
fi
real_home=$HOME
export HOME="$demo_home"
export XDG_CONFIG_HOME="$HOME/.config" XDG_DATA_HOME="$HOME/.local/share" XDG_CACHE_HOME="$HOME/.cache"
export XDG_RUNTIME_DIR="$HOME/.runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
# The plug-in asks "hde-file-manager -v" on PATH for the host's version.
export PATH="$build/host/app:$PATH"

mkdir -p "$root/Documents" "$root/Photos"
[ -e "$root/Welcome.txt" ] || printf 'Files in this folder are kept in sync by Kelo Drive.\n' >"$root/Welcome.txt"
[ -e "$root/Documents/Plan.md" ] || printf '# Plan\n' >"$root/Documents/Plan.md"

sim_pid=""
fm_pid=""
feeder_pid=""
cleanup() {
    set +e
    [ -n "$feeder_pid" ] && kill "$feeder_pid" 2>/dev/null && wait "$feeder_pid" 2>/dev/null
    # The end of its script ends the file manager; the simulator goes after it.
    exec 4>&- 2>/dev/null
    if [ -n "$fm_pid" ]; then
        for _ in $(seq 50); do kill -0 "$fm_pid" 2>/dev/null || break; sleep 0.1; done
        kill "$fm_pid" 2>/dev/null
        wait "$fm_pid" 2>/dev/null
    fi
    exec 3>&- 2>/dev/null
    if [ -n "$sim_pid" ]; then
        kill "$sim_pid" 2>/dev/null
        wait "$sim_pid" 2>/dev/null
    fi
    HOME=$real_home
    if [ -n "${NUBIX_DEMO_LOG:-}" ]; then cat "$demo_home"/fm.log >"$NUBIX_DEMO_LOG" 2>/dev/null; fi
    rm -rf "$demo_home"
    return 0
}
trap cleanup EXIT
trap 'exit 130' INT TERM

portfile="$HOME/.config/kelodrive/App Data/ipc"
mkfifo "$demo_home/sim.in"
"$sim" --root "$root" --pace-ms 600 <"$demo_home/sim.in" >"$demo_home/sim.log" 2>&1 &
sim_pid=$!
exec 3>"$demo_home/sim.in"
sim_cmd() { printf '%s\n' "$*" >&3; }
for _ in $(seq 100); do [ -s "$portfile" ] && break; sleep 0.1; done
[ -s "$portfile" ] || { echo "run-demo: the simulator did not start:" >&2; cat "$demo_home/sim.log" >&2; exit 1; }
echo "run-demo: Kelo Drive simulator on port $(head -n1 "$portfile"), sync root $root"

# The file manager's log goes to a file of the demo home; NUBIX_DEMO_LOG=FILE
# copies it there at the end.
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    echo "run-demo: opening the file manager; new files appear in $root and sync while it is open."
    echo "run-demo: close the window to end the demo."
    (
        for i in $(seq 1 12); do
            sleep 5
            printf 'Note %s, written by the demo.\n' "$i" >"$root/Documents/Note $i.txt"
        done
    ) &
    feeder_pid=$!
    "$fm" computer:/// 2>"$demo_home/fm.log" || true
    echo "run-demo: done"
    exit 0
fi

command -v xvfb-run >/dev/null || { echo "run-demo: no display and no xvfb-run" >&2; exit 1; }
rm -rf "$shots"
mkdir -p "$shots"
echo "run-demo: no display; walking through the drive under Xvfb"

# The file manager reads its script from a pipe, so that each step can wait
# for the previous one and look at the state before going on.
out="$demo_home/fm.out"
mkfifo "$demo_home/fm.in"
xvfb-run -a -s "-screen 0 1280x800x24" \
    "$fm" --script - <"$demo_home/fm.in" >"$out" 2>"$demo_home/fm.log" &
fm_pid=$!
exec 4>"$demo_home/fm.in"
marker=0
# fm CMD...: sends the commands and waits until the file manager ran them.
fm() {
    local cmd
    for cmd in "$@"; do printf '%s\n' "$cmd" >&4; done
    marker=$((marker + 1))
    printf 'echo @done %s\n' "$marker" >&4
    for _ in $(seq 600); do
        grep -q "^@done $marker\$" "$out" 2>/dev/null && return 0
        kill -0 "$fm_pid" 2>/dev/null || { echo "run-demo: the file manager stopped:" >&2; tail -n 5 "$demo_home/fm.log" >&2; exit 1; }
        sleep 0.1
    done
    echo "run-demo: the file manager did not answer" >&2
    exit 1
}
# last_line: the last JSON line the file manager printed.
last_line() { grep -v '^@done' "$out" | tail -n 1; }
# shows TEXT: whether the current tab of the window lists an item named TEXT.
shows() {
    fm "state windows/-1/tabs"
    last_line | grep -qF "\"name\":\"$1\""
}
step=0
shot() {
    step=$((step + 1))
    local file
    file="$shots/$(printf '%02d' "$step")-$1.png"
    fm "screenshot last $file"
    printf 'run-demo: %-44s %s\n' "$2" "$file"
}

fm "open computer:///" "wait-for loaded last 10000" "wait 1500"
fm "state computer"
if last_line | grep -q 'nubix.nubix'; then
    shot computer-view "the drive in the computer view"
else
    shot computer-view "the computer view (no drive entry yet)"
fi

# Without a sync root the drive shows its welcome page.
sim_cmd "root none"
fm "wait 800" "cd last nubix-login:///" "wait 1500"
shot welcome-page "the welcome page (client without a sync root)"

# The root comes back: the sidebar item leads into the synced tree.
sim_cmd "root $root"
fm "wait 1500" "state sidebar"
if last_line | grep -q 'nubix'; then
    item=$(last_line | grep -o '"url":"nubix[^"]*"' | head -n1 | cut -d'"' -f4)
    fm "sidebar-activate last $item" "wait 1500"
    shot sidebar "the sidebar item opens the drive"
fi
fm "cd last nubix:///" "wait 1500"
shot synced-tree "the synced tree with its emblems"

# New files: emblems and the banner follow the sync.
for i in 1 2 3 4 5 6; do
    printf 'Report %s\n' "$i" >"$root/Report $i.txt"
done
sim_cmd "rescan"
fm "wait 1200"
shot syncing "files syncing (emblems and banner progress)"
fm "wait 6000"
shot synced "all files synced"

sim_cmd "pause"
fm "wait 1200"
shot paused "sync paused (banner)"
sim_cmd "resume"
fm "wait 1500"
shot resumed "sync resumed"

# menu_shot NAME CAPTION TARGET [ITEM]: opens a menu, writes its picture and
# prints the actions it shows.
menu_shot() {
    step=$((step + 1))
    local file items
    file="$shots/$(printf '%02d' "$step")-$1.png"
    fm "menu-shot $file $3 last ${4:-}"
    items=$(last_line | sed 's/},{/}\n{/g' | grep '"visible":true' |
        sed -n 's/.*"text":"\([^"]*\)".*/\1/p' | paste -sd '|' | sed 's/|/, /g')
    printf 'run-demo: %-44s %s\n          %s\n' "$2" "$file" "$items"
}
if shows Welcome.txt; then
    menu_shot file-menu "a file's menu in the tree" item Welcome.txt
fi
fm "cd last computer:///" "wait 1500" "state computer"
if last_line | grep -q 'nubix.nubix'; then
    menu_shot drive-menu "the drive's menu" entry entry:///nubix.nubix
fi
shot computer-again "back in the computer view"

printf 'quit\n' >&4
wait "$fm_pid" 2>/dev/null || true
fm_pid=""
echo "run-demo: screenshots in $shots"
