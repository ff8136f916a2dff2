#!/usr/bin/env bash
# The Debian packages as a user gets them: builds them, installs them with
# apt-get, runs the installed file manager headless beside the installed
# simulator, checks what a user would see (the plug-in loaded from its
# installed folder, the drive in the computer view's disk group, emblems, the
# German texts), then purges the packages and checks nothing of them is left.
# Needs root; says it is skipped otherwise.
#
#   bash scripts/package-test.sh [DEB_DIR]   (DEB_DIR: use packages already built there)
set -uo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)

if [ "$(id -u)" -ne 0 ]; then
    echo "package-test: skipped (needs root to install packages)"
    exit 0
fi

packages=(hde-file-manager hde-file-manager-dev hfmplugin-nubix kelodrive-sim)
for p in "${packages[@]}"; do
    if dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q installed; then
        echo "package-test: $p is already installed here; not touching this system" >&2
        exit 1
    fi
done

work=$(mktemp -d "${TMPDIR:-/tmp}/nubix-pkgtest.XXXXXX")
sim_pid=""
installed=0
failures=()
fail() { failures+=("$1"); echo "package-test: FAIL: $1"; }
pass() { echo "package-test: ok: $1"; }
finish() {
    [ -n "$sim_pid" ] && { kill "$sim_pid" 2>/dev/null; wait "$sim_pid" 2>/dev/null; }
    if [ "$installed" = 1 ]; then
        DEBIAN_FRONTEND=noninteractive apt-get purge -y -q "${packages[@]}" >"$work/purge.log" 2>&1
    fi
    rm -rf "$work"
}
trap finish EXIT

debs=${1:-$work/debs}
if [ -z "${1:-}" ]; then
    bash "$here/scripts/build-deb.sh" "$debs" || { echo "package-test: FAIL: packages did not build"; exit 1; }
fi

echo "package-test: installing ${packages[*]}"
debfiles=()
for p in "${packages[@]}"; do debfiles+=("$(ls "$debs"/"${p}"_*.deb | head -n1)"); done
if ! DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${debfiles[@]}" \
        >"$work/install.log" 2>&1; then
    tail -n 30 "$work/install.log"
    echo "package-test: FAIL: apt-get install"
    exit 1
fi
installed=1
for p in "${packages[@]}"; do dpkg-query -L "$p"; done | sort -u >"$work/files"

# The installed program must find the plug-in by itself: no build tree, no
# extra plug-in folders.
unset HDE_PLUGIN_DIRS QT_PLUGIN_PATH LD_LIBRARY_PATH
[ "$(command -v hde-file-manager)" = /usr/bin/hde-file-manager ] && pass "hde-file-manager on PATH" \
    || fail "hde-file-manager is not /usr/bin/hde-file-manager"
[ "$(bash -c "hde-file-manager -v | grep '^hde-file-manager' | awk '{print \$2}'")" = 6.0.49.25 ] \
    && pass "version gate command prints 6.0.49.25" || fail "hde-file-manager -v"
if grep -l -r --binary-files=text -e "$here" -e /tmp/nubix-deb /usr/bin/hde-file-manager /usr/bin/kelodrive-sim \
        /usr/lib/*/libhpf.so.* /usr/lib/*/libhfmbase.so.* /usr/lib/*/libhtk.so.* \
        /usr/lib/*/hde-file-manager/plugins/ /usr/lib/*/cmake/HdeSdk/ 2>/dev/null; then
    fail "installed files refer to the build tree"
else
    pass "installed files do not refer to the build tree"
fi

# A German session: the locale must exist for Qt to use it.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    localedef -i de_DE -c -f UTF-8 de_DE.UTF-8 2>/dev/null || true
fi

export HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime"
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
root="$HOME/Kelo Drive"
mkdir -p "$root/Documents" "$root/Empty"
printf 'hello\n' >"$root/Welcome.txt"
printf '# Plan\n' >"$root/Documents/Plan.md"
portfile="$HOME/.config/kelodrive/App Data/ipc"
kelodrive-sim --root "$root" --pace-ms 100 </dev/null >"$work/sim.log" 2>&1 &
sim_pid=$!
for _ in $(seq 100); do [ -s "$portfile" ] && break; sleep 0.1; done
[ -s "$portfile" ] && pass "simulator running" || fail "simulator wrote no port file"

# run_fm NAME: runs the installed file manager in a German session with the
# script on standard input; its output goes to $work/NAME.out. Each check runs
# on its own, so that one missing feature does not hide the others.
run_fm() {
    LANG=de_DE.UTF-8 LANGUAGE=de LC_ALL=de_DE.UTF-8 QT_QPA_PLATFORM=offscreen \
        timeout 120 hde-file-manager --script - >"$work/$1.out" 2>"$work/$1.err"
}

# The plug-in, loaded from its installed place (seen in the process's maps).
go="$work/go"
run_fm plugin <<SCRIPT &
echo started
wait-for file "$go" 20000
wait-for state plugins/[name=hfmplugin-nubix]/state 6 20000
echo plugin-started
SCRIPT
fm_pid=$!
plugin=$(ls /usr/lib/*/hde-file-manager/plugins/libhfmplugin-nubix.so 2>/dev/null | head -n1)
fm_real=""
for _ in $(seq 200); do
    grep -q '^started' "$work/plugin.out" 2>/dev/null && break
    sleep 0.1
done
# The installed program among the processes started for this run.
pids=("$fm_pid")
for _ in 1 2 3; do
    for p in "${pids[@]}"; do
        [ "$(readlink "/proc/$p/exe" 2>/dev/null)" = /usr/bin/hde-file-manager ] && fm_real=$p
        while read -r c; do pids+=("$c"); done < <(pgrep -P "$p")
    done
done
if [ -n "$plugin" ] && grep -q " $plugin\$" "/proc/$fm_real/maps" 2>/dev/null; then
    pass "plug-in loaded from $plugin"
else
    fail "plug-in not loaded from its installed folder"
fi
touch "$go"
wait "$fm_pid"
grep -q '^plugin-started' "$work/plugin.out" && pass "plug-in started" || fail "plug-in did not start"

run_fm drive <<'SCRIPT'
open computer:///
wait-for loaded last 10000
wait-for state "computer/groups/[name=Laufwerke]/entries/[url=entry:///nubix.nubix]/exists" true 20000
echo drive-in-disks
menu entry last entry:///nubix.nubix
SCRIPT
grep -q '^drive-in-disks' "$work/drive.out" && pass "drive in the host's disk group, named in German (Laufwerke)" \
    || fail "drive not in the German disk group \"Laufwerke\""

run_fm emblems <<'SCRIPT'
open nubix:///
wait-for state "windows/-1/tabs/[current=true]/view/items/[name=Welcome.txt]/emblems/0" fbnubix_file_done 30000
echo emblems-shown
wait 1000
state windows/-1/tabs/[current=true]/top
SCRIPT
grep -q '^emblems-shown' "$work/emblems.out" && pass "emblems on synced files" || fail "no emblem on a synced file"

run_fm tip <<'SCRIPT'
open nubix:///Empty
wait 2000
state windows/-1/tabs/[current=true]/view/tip
SCRIPT
if grep -q -e 'Willkommen' -e 'Ziehen oder kopieren' "$work/tip.out"; then
    pass "German plug-in text in the empty folder's tip"
else
    fail "no German plug-in text in the empty folder's tip"
fi
if grep -q -e 'Synchronisierung' -e 'synchronisiert' "$work/drive.out" "$work/emblems.out"; then
    pass "German plug-in texts in the drive's menu or the banner"
else
    fail "no German text in the drive's menu or the banner"
fi

kill "$sim_pid" 2>/dev/null; wait "$sim_pid" 2>/dev/null; sim_pid=""

echo "package-test: purging"
if DEBIAN_FRONTEND=noninteractive apt-get purge -y -q "${packages[@]}" >"$work/purge.log" 2>&1; then
    installed=0
else
    fail "apt-get purge"
fi
left=$(dpkg-query -W -f='${Package} ${Status}\n' "${packages[@]}" 2>/dev/null | grep -v 'not-installed' || true)
[ -z "$left" ] && pass "packages gone from dpkg" || fail "dpkg still knows: $left"
remaining=()
while IFS= read -r f; do
    # Folders shared with other packages (/usr/share/icons/hicolor/...) stay.
    [ -e "$f" ] && ! [ -d "$f" ] && remaining+=("$f")
done <"$work/files"
for d in /usr/share/sablo-nubix /usr/share/hde-file-manager /usr/lib/*/hde-file-manager /usr/lib/*/cmake/HdeSdk \
         /usr/include/hpf /usr/include/hfmbase /usr/include/htk /opt/apps/com.kelo.drive; do
    [ -e "$d" ] && remaining+=("$d")
done
[ ${#remaining[@]} -eq 0 ] && pass "nothing of the packages left" || fail "left behind: ${remaining[*]}"

if [ ${#failures[@]} -ne 0 ]; then
    echo "package-test: ${#failures[@]} check(s) failed"
    exit 1
fi
echo "package-test: all checks passed"
