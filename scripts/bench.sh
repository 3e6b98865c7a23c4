#!/usr/bin/env bash
# Installs what is missing, builds in release mode, and prints the benchmark's tables. Takes about ten
# minutes of an idle machine; --quick takes a third of that, leaves the longest lists out and is less
# steady. With --write the tables and the plot in docs/ are made anew.
# Usage: bench.sh [--quick] [--write]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
options=()
for option in "$@"; do
    options+=("$option")
    [ "$option" != --write ] || options+=("$source/docs")
done
"$source/scripts/install-packages.sh" g++ make cmake pkg-config libbenchmark-dev libfmt-dev \
    libinih-dev libpcre2-dev libre2-dev
build=$source/build-bench
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { cmake -S "$source" -B "$build" -DCMAKE_BUILD_TYPE=Release \
    -DCALLRECORDINGUTILS_BUILD_{CLIENT,EXAMPLES,TESTS}=OFF -DCALLRECORDINGUTILS_BUILD_BENCH=ON &&
    cmake --build "$build" -j"$(nproc)"; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
cd "$build" # The rule files of the run are made here and removed at its end.
bench/callrecording_bench "${options[@]}"
bench/analysis_bench
