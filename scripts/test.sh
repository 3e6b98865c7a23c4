#!/usr/bin/env bash
# Installs what is missing, builds, and runs all tests.
# Usage: test.sh [BUILD-DIR [CMAKE-OPTION...]]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$source/build}
"$source/scripts/build.sh" "$build" "${@:2}"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
