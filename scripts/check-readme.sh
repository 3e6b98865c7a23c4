#!/usr/bin/env bash
# Compares what README.md says that the demonstration and the tests print with what they do print, in
# BUILD-DIR, which is built with the client and all tests.
# Usage: check-readme.sh BUILD-DIR
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
said=$(awk '/^The first one prints:/ {on = 1} on && /^```$/ {++fences; next} fences == 1 && !/^callrecordingctl: /' \
    "$source/README.md") # Notes of the client come on standard error.
printed=$("$source/scripts/demo.sh" "$1")
diff -U1 --label README.md --label demo.sh <(echo "$said") <(echo "$printed")

count=$(ctest --test-dir "$1" -N | sed -n 's/^Total Tests: //p')
grep -qx "100% tests passed, 0 tests failed out of $count" "$source/README.md" ||
    { echo "README.md has not the number of tests, $count" >&2 && exit 1; }
