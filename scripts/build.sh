#!/usr/bin/env bash
# Installs what a build needs, configures DIR with the given CMake options, and builds everything, or only the target
# named in BUILD_TARGET. Prints warnings and, if it fails, all output.
# Usage: build.sh DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" --build-depends
build=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "Building ..." >&2
if ! { cmake -S "$source" -B "$build" "$@" &&
    cmake --build "$build" --target "${BUILD_TARGET:-all}" -j"$(nproc)"; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
grep -E 'warning:' "$log" >&2 || true
