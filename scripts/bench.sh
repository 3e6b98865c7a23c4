#!/usr/bin/env bash
# Installs what is missing, builds in release mode, and prints the benchmark's tables. Takes about ten
# minutes on an idle machine; --quick takes a third of that, leaves out the longest lists and is less
# steady. With --write the table and the plot of docs/performance.md are replaced.
# Usage: bench.sh [--quick] [--write]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
docs=$source/docs
options=()
plot=false
for option in "$@"; do
    options+=("$option")
    if [ "$option" = --write ]; then
        options+=("$docs/performance.md")
        plot=true
    fi
done
"$source/scripts/install-packages.sh" g++ make cmake pkg-config libbenchmark-dev libfmt-dev \
    libinih-dev libpcre2-dev libre2-dev gnuplot-nox
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
if $plot; then
    gnuplot -e "data='decisions.dat'; output='$docs/performance.svg'" "$source/bench/plot.gnuplot"
fi
bench/analysis_bench
