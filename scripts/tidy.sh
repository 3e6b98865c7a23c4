#!/usr/bin/env bash
# Has clang-tidy read the library, the host platform, the client and the tests, with the options that BUILD-DIR compiles
# them with. With --quick, it leaves out the two slowest kinds of checks for what does not run in a telephone exchange.
# Usage: tidy.sh [--quick] BUILD-DIR
set -euo pipefail

cd "$(dirname "$0")/.."
tidy=clang-tidy-14 # Others have other checks.
if ! command -v $tidy >/dev/null && ! scripts/install-packages.sh $tidy; then
    echo "Debian 12 has $tidy; see scripts/in-debian.sh" >&2
    exit 1
fi
slow=
if [ "${1:-}" = --quick ]; then
    slow="-clang-analyzer-*,-performance-unnecessary-value-param"
    shift
fi
build=$1

read_files() { # CHECKS FIND-ARGUMENT...
    find "${@:2}" -name '*.cpp' -print0 | xargs -0 -P "$(nproc)" -n 4 "$tidy" -p "$build" --quiet --checks="$1"
}

# What people and services use; the rest of src/ is in the exchange's process.
around=(src/analysis src/administration src/records)
pruned=()
for folder in "${around[@]}"; do
    pruned+=(-path "$folder" -prune -o)
done
read_files "" src platform/host "${pruned[@]}"
read_files "$slow" "${around[@]}" tools tests
