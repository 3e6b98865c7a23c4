#!/usr/bin/env bash
# Has clang-tidy read the library, the host platform, the client and the tests, as BUILD-DIR compiles them.
# With --quick it leaves out, of the client and the tests, what takes two thirds of the time there.
# Usage: tidy.sh [--quick] BUILD-DIR
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-packages.sh clang-tidy git
slow=
[ "${1:-}" != --quick ] || { slow=-clang-analyzer-*,-performance-unnecessary-value-param && shift; }

read_files() { # CHECKS PATTERN...
    git ls-files -z "${@:2}" | xargs -0 -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet --checks="$1"
}

build=$1
read_files "" 'src/*.cpp' 'platform/host/*.cpp'
read_files "$slow" 'tools/*.cpp' 'tests/*.cpp'
