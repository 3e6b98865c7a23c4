#!/usr/bin/env bash
# Makes calls through Kamailio and rtpengine on loopback, with the service and the library of BUILD-DIR, and looks at
# which of them were recorded. It runs in a temporary folder and on free ports, and ends all that it has started.
# With --quick only a few calls, in half a minute. BUILD-DIR is built first, if it is missing.
# Usage: check-telephony.sh [--quick] [BUILD-DIR]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
quick=()
if [ "${1:-}" = --quick ]; then
    quick=(--quick)
    shift
fi
build=${1:-$source/build}
"$source/scripts/install-packages.sh" python3 kamailio kamailio-python3-modules rtpengine-daemon sip-tester
[ -x "$build/tools/callrecordingd/callrecordingd" ] && [ -e "$build/src/libcallrecordingutils.so.1" ] ||
    "$source/scripts/build.sh" "$build" -DCMAKE_BUILD_TYPE=Release -DCALLRECORDINGUTILS_BUILD_TESTS=OFF
exec timeout 600 python3 "$source/tests/telephony/check_kamailio.py" "$build" "${quick[@]}"
