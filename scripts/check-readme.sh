#!/usr/bin/env bash
# Compares what the demonstration prints, with the client in BUILD-DIR, with what README.md says that it prints.
# Usage: check-readme.sh BUILD-DIR
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
said=$(awk '/^The first one prints:/ {on = 1} on && /^```$/ {++fences; next} fences == 1 && !/^callrecordingctl: /' \
    "$source/README.md") # The client prints notes on standard error.
printed=$("$source/scripts/demo.sh" "$1")
diff -U1 --label README.md --label demo.sh <(echo "$said") <(echo "$printed")
