#!/usr/bin/env bash
# Fuzzes patterns, their analysis, parties and the sectioned file with clang's libFuzzer, each for the given time,
# starting with the inputs in fuzz/corpus. Interesting new inputs go to build-fuzz/corpus, and the next run uses them,
# too. Stops at the first finding, and names the file that reproduces it.
# Usage: fuzz.sh [SECONDS-PER-TARGET]   (60)
# FUZZ_SEED chooses the random inputs; without it they are others every time.
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
duration=${1:-60}
[[ $duration =~ ^[1-9][0-9]*$ ]] || { echo "usage: fuzz.sh [SECONDS-PER-TARGET]" >&2 && exit 2; }

"$source/scripts/install-packages.sh" clang libclang-rt-dev make cmake
build=$source/build-fuzz
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
if ! { cmake -S "$source/fuzz" -B "$build" -DCMAKE_CXX_COMPILER=clang++ &&
    cmake --build "$build" -j"$(nproc)"; } >"$scratch/log" 2>&1; then
    cat "$scratch/log" >&2
    exit 1
fi
mkdir -p "$build/findings"

# Files are written in memory if possible: every save waits for the disk.
[ ! -w /dev/shm ] || files=$(mktemp -d -p /dev/shm)
trap 'rm -rf "$scratch" "${files:-}"' EXIT
export TMPDIR=${files:-$scratch}

for program in "$source"/fuzz/fuzz_*.cpp; do
    target=$(basename "$program" .cpp)
    target=${target#fuzz_}
    mkdir -p "$build/corpus/$target"
    if "$build/fuzz_$target" -seed="${FUZZ_SEED:-0}" -max_total_time="$duration" -max_len=256 -timeout=10 -rss_limit_mb=1024 \
        -artifact_prefix="$build/findings/$target-" \
        "$build/corpus/$target" "$source/fuzz/corpus/$target" >"$scratch/log" 2>&1; then
        echo "ok: $target, $(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$scratch/log") inputs"
        continue
    fi
    grep -av '^#' "$scratch/log" | tail -n 60 >&2
    finding=$(sed -n 's/.*Test unit written to //p' "$scratch/log" | tail -n 1)
    echo "FAILED: $target. Again: $build/fuzz_$target $finding" >&2
    exit 1
done
