#!/usr/bin/env bash
# Lets five machines on loopback, each in a folder of its own, pull their rules from a repository into which two writers
# push, and a real Prometheus look at three. Prints what a pull takes. With --quick fewer pushes, in a minute. BUILD-DIR
# is built first, if it is missing.
# Usage: check-fleet.sh [--quick] [BUILD-DIR]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
quick=()
if [ "${1:-}" = --quick ]; then
    quick=(--quick)
    shift
fi
build=${1:-$source/build}
"$source/scripts/install-packages.sh" python3 git openssh-client prometheus
[ -x "$build/tools/callrecordingd/callrecordingd" ] && [ -x "$build/tools/callrecordingctl/callrecordingctl" ] ||
    "$source/scripts/build.sh" "$build" -DCMAKE_BUILD_TYPE=Release -DCALLRECORDINGUTILS_BUILD_TESTS=OFF
timeout 900 python3 "$source/tests/fleet/check_fleet.py" "$build" "${quick[@]}"
exec timeout 300 python3 "$source/tests/fleet/check_alerts.py" "$build"
