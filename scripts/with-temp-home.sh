#!/usr/bin/env bash
# Runs a command with HOME and the XDG folders in a fresh temporary directory,
# removed afterwards, so tests never read or write the real home.
set -u
tmp=$(mktemp -d "${TMPDIR:-/tmp}/nubix-home.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
export HOME="$tmp" XDG_CONFIG_HOME="$tmp/.config" XDG_DATA_HOME="$tmp/.local/share" \
       XDG_CACHE_HOME="$tmp/.cache" XDG_RUNTIME_DIR="$tmp/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
"$@"
