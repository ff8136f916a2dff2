#!/usr/bin/env bash
# check-install.sh BUILD_DIR: installs the build into a temporary DESTDIR
# under /usr and checks the installed layout: every piece in its place, no
# file referring to the build or source tree, no RPATH/RUNPATH, and the
# installed file manager finding and starting its plug-ins and the Kelo Drive
# plug-in by itself.
set -uo pipefail
build=$(cd "$1" && pwd)
source=$(cd "$(dirname "$0")/../.." && pwd)
stage=$(mktemp -d "${TMPDIR:-/tmp}/nubix-install.XXXXXX")
trap 'rm -rf "$stage"' EXIT
failed=0
fail() { echo "FAIL: $*"; failed=1; }

if ! DESTDIR="$stage" cmake --install "$build" --prefix /usr --strip >"$stage/install.log" 2>&1; then
    cat "$stage/install.log"
    exit 1
fi
usr="$stage/usr"
plugins=$(ls -d "$usr"/lib/*/hde-file-manager/plugins "$usr"/lib/hde-file-manager/plugins 2>/dev/null | head -n1)
libdir=$(dirname "$(dirname "$plugins")")

for f in bin/hde-file-manager bin/kelodrive-sim \
         share/sablo-nubix/translations/hfmplugin-nubix_de.qm \
         share/sablo-nubix/translations/hfmplugin-nubix_zh_CN.qm \
         share/hde-file-manager/translations/hde-file-manager_de.qm \
         share/hde-file-manager/translations/hde-file-manager_zh_CN.qm \
         share/applications/org.sablo.hde.filemanager.desktop \
         share/metainfo/org.sablo.hde.filemanager.metainfo.xml \
         share/metainfo/org.sablo.hde.filemanager.plugin.nubix.metainfo.xml \
         include/hpf/plugin.h; do
    [ -f "$usr/$f" ] || fail "missing /usr/$f"
done
[ -f "$plugins/libhfmplugin-nubix.so" ] || fail "the plug-in is not in the host's plug-in folder"
for p in workspace computer sidebar emblem titlebar menu; do
    [ -f "$plugins/hfmplugin-$p.so" ] || fail "host plug-in $p missing"
done
[ -f "$libdir/cmake/HdeSdk/HdeSdkConfig.cmake" ] || fail "missing the HdeSdk CMake package"
icons=("$source"/src/libhfmplugin-nubix/resources/icons/*.svg)
if [ -e "${icons[0]}" ]; then
    for icon in "${icons[@]}"; do
        [ -f "$usr/share/icons/hicolor/scalable/apps/$(basename "$icon")" ] || fail "icon $(basename "$icon") not in hicolor"
    done
fi

# Sanitizer instrumentation records every object's source file name, which
# no prefix map rewrites; only an uninstrumented build can be held to this.
if grep -q -E '^NUBIX_(ASAN|TSAN):BOOL=ON' "$build/CMakeCache.txt" 2>/dev/null; then
    echo "note: sanitizer build, not checked for references to the build or source tree"
elif grep -r -l --binary-files=text -e "$build" -e "$source" "$usr" 2>/dev/null; then
    fail "the files above refer to the build or source tree"
fi
while IFS= read -r elf; do
    if readelf -d "$elf" 2>/dev/null | grep -q -e RPATH -e RUNPATH; then
        fail "$elf has an RPATH/RUNPATH"
    fi
done < <(find "$usr" -type f \( -name '*.so*' -o -path '*/bin/*' \))

# The staged program on its own: the libraries come from the stage, the
# plug-ins from the folder beside the program, the version from PATH.
home=$(mktemp -d "$stage/home.XXXXXX")
output=$(env -u HDE_PLUGIN_DIRS HOME="$home" LD_LIBRARY_PATH="$libdir" PATH="$usr/bin:$PATH" \
    QT_QPA_PLATFORM=offscreen "$usr/bin/hde-file-manager" --script - 2>"$home/err" <<'SCRIPT'
wait-for state plugins/[name=hfmplugin-nubix]/state 6 20000
state plugins
quit
SCRIPT
)
code=$?
if [ "$code" -ne 0 ]; then
    fail "the installed file manager did not start the plug-in (exit $code): $output"
    tail -n 20 "$home/err"
fi
for p in hfmplugin-workspace hfmplugin-computer hfmplugin-sidebar hfmplugin-emblem hfmplugin-titlebar hfmplugin-menu; do
    grep -q "\"name\":\"$p\"" <<<"$output" || fail "host plug-in $p not loaded"
done
exit $failed
