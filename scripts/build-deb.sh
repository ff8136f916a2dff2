#!/usr/bin/env bash
# Builds the Debian packages from debian/ with Debian's own tools and checks
# them with lintian: hde-file-manager, hde-file-manager-dev, hfmplugin-nubix
# and kelodrive-sim (plus their -dbgsym packages).
#
#   bash scripts/build-deb.sh [OUTPUT_DIR]     (default: build-deb/ in the tree)
#
# The build runs in a copy of the tree, so the working tree stays clean. It
# skips tests (nocheck) and uses two jobs unless DEB_BUILD_OPTIONS says
# otherwise. With ccache installed and NUBIX_DEB_CCACHE=1 compilations go
# through it.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
out=$(mkdir -p "${1:-$here/build-deb}" && cd "${1:-$here/build-deb}" && pwd)

for tool in dpkg-buildpackage dh lintian; do
    command -v "$tool" >/dev/null || { echo "build-deb: $tool is missing; run scripts/setup.sh" >&2; exit 1; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/nubix-deb.XXXXXX")
trap 'rm -rf "$work"' EXIT
src="$work/hfmplugin-nubix"
mkdir -p "$src"
# Only what the repository tracks (plus files not yet committed), never build trees.
if git -C "$here" rev-parse --git-dir >/dev/null 2>&1; then
    git -C "$here" ls-files -z --cached --others --exclude-standard \
        | (cd "$here" && xargs -0 cp --parents -t "$src" 2>/dev/null || true)
else
    tar -C "$here" --exclude='./build*' --exclude=./.git -cf - . | tar -C "$src" -xf -
fi

export DEB_BUILD_OPTIONS="${DEB_BUILD_OPTIONS:-nocheck parallel=2}"
if [ "${NUBIX_DEB_CCACHE:-0}" = 1 ] && command -v ccache >/dev/null; then
    export NUBIX_CMAKE_EXTRA="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache"
    export CCACHE_BASEDIR="$work"
fi

echo "build-deb: building in $src (DEB_BUILD_OPTIONS=$DEB_BUILD_OPTIONS)"
(cd "$src" && dpkg-buildpackage -b -uc -us) >"$work/build.log" 2>&1 || {
    tail -n 60 "$work/build.log" >&2
    echo "build-deb: dpkg-buildpackage failed" >&2
    exit 1
}

rm -f "$out"/*.deb "$out"/*.ddeb "$out"/*.changes "$out"/*.buildinfo
cp "$work"/*.deb "$out"/
cp "$work"/*.ddeb "$out"/ 2>/dev/null || true
cp "$work"/*.changes "$work"/*.buildinfo "$out"/
cp "$work/build.log" "$out/build.log"

# Errors fail the build; warnings are listed (debian/README.source says
# which ones are expected and why).
lintian_log="$out/lintian.log"
lintian --fail-on error \
    "$out"/*.changes >"$lintian_log" 2>&1 || {
    cat "$lintian_log" >&2
    echo "build-deb: lintian found errors" >&2
    exit 1
}
if [ -s "$lintian_log" ]; then
    echo "build-deb: lintian:"
    sed 's/^/  /' "$lintian_log"
fi
echo "build-deb: packages in $out:"
(cd "$out" && ls -1 *.deb | sed 's/^/  /')
