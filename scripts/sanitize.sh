#!/usr/bin/env bash
# Builds the library's tests with sanitizers, and runs those whose names match PATTERN: "address" is address and
# undefined behaviour, with clang, and all tests; "thread" is data races, with g++, and the tests with threads.
# Usage: sanitize.sh address|thread DIR [PATTERN]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
case ${1:-} in
    address)
        compiler=clang++ sanitizers=address,undefined pattern=${3:-.}
        "$source/scripts/install-packages.sh" clang "libclang-rt-dev"
        ;;
    thread) compiler=g++ sanitizers=thread pattern=${3:-Threads|Reload} ;;
    *)
        sed -n 's/^# Usage/usage/p' "$0" >&2
        exit 2
        ;;
esac
export CXX=$compiler TSAN_OPTIONS="suppressions=$source/tests/tsan.supp" UBSAN_OPTIONS=print_stacktrace=1
"$source/scripts/build.sh" "$2" -DCMAKE_BUILD_TYPE=Debug -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF \
    -DCMAKE_CXX_FLAGS="-O1 -fsanitize=$sanitizers -fno-sanitize-recover=all -fno-omit-frame-pointer"
ctest --test-dir "$2" --output-on-failure -j"$(nproc)" -R "$pattern"
