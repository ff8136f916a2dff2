#!/usr/bin/env bash
# Installs every Debian package the project needs to build, test and run;
# with --demo only those that scripts/run-demo.sh needs. Calls apt only when
# something is missing. Safe to run again; works as root or through sudo.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config git
    qtbase5-dev qtbase5-dev-tools libqt5svg5-dev qttools5-dev qttools5-dev-tools
    xvfb xauth procps
    adwaita-icon-theme hicolor-icon-theme
    fonts-dejavu-core fonts-wqy-microhei
)
if [ "${1:-}" != --demo ]; then
    packages+=(
        libbenchmark-dev
        clang libclang-rt-14-dev
        debhelper dpkg-dev lintian locales
    )
fi

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && { echo "setup: all packages present"; exit 0; }

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
