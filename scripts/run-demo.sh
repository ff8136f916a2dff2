#!/usr/bin/env bash
# Sets up and builds the project, then runs the file manager with the Kelo
# Drive plug-in beside the Kelo Drive client simulator. With a display the
# file manager opens a window; without one it runs under Xvfb, walks through
# the drive, prints what it shows and writes a screenshot.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"

bash scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)
build=${NUBIX_BUILD_DIR:-$here/build-demo}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DNUBIX_BUILD_TESTS=OFF -DNUBIX_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j "$jobs"

sim="$build/tools/kelodrive-sim/kelodrive-sim"
# The plug-in asks "hde-file-manager -v" on PATH for the host's version.
export PATH="$build/host/app:$PATH"

root="${KELO_DRIVE_ROOT:-$HOME/Kelo Drive}"
mkdir -p "$root/Documents" "$root/Photos"
[ -e "$root/Welcome.txt" ] || printf 'Files in this folder are kept in sync by Kelo Drive.\n' >"$root/Welcome.txt"
[ -e "$root/Documents/Plan.md" ] || printf '# Plan\n' >"$root/Documents/Plan.md"

# The plug-in starts and looks for the client at its installed path; point
# that path at the simulator when we may.
client="$sim"
made_link=0
link=/opt/apps/com.kelo.drive/files/kelodrive
if { [ -L "$link" ] || [ ! -e "$link" ]; } && mkdir -p "$(dirname "$link")" 2>/dev/null \
   && ln -sfn "$sim" "$link" 2>/dev/null; then
    client="$link"
    made_link=1
fi

portfile="$HOME/.config/kelodrive/App Data/ipc"
rm -f "$portfile"
"$client" --root "$root" --pace-ms 700 </dev/null &
sim_pid=$!
# Take the link away again, so nothing else starts the simulator by accident.
cleanup() {
    kill "$sim_pid" 2>/dev/null || true
    wait "$sim_pid" 2>/dev/null || true
    [ "$made_link" = 1 ] && rm -f "$link"
    return 0
}
trap cleanup EXIT
for _ in $(seq 100); do [ -s "$portfile" ] && break; sleep 0.1; done
echo "run-demo: Kelo Drive simulator on port $(head -n1 "$portfile" 2>/dev/null || echo '?'), sync root $root"

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    "$build/host/app/hde-file-manager" computer:///
    exit 0
fi

shot="$build/demo.png"
echo "run-demo: no display; running headless under Xvfb"
QT_LOGGING_RULES="org.sablo.hde.filemanager.plugin.hfmplugin_nubix.debug=false" \
xvfb-run -a -s "-screen 0 1280x800x24" "$build/host/app/hde-file-manager" --script - <<SCRIPT
open computer:///
wait-for loaded last 10000
wait 1500
echo sidebar:
state sidebar
echo computer view:
state computer
screenshot last $shot
quit
SCRIPT
echo "run-demo: screenshot written to $shot"
