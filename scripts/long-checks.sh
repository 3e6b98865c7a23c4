#!/usr/bin/env bash
# What takes too long for every push: the tests under emulation of all processors, under valgrind, all of
# clang-tidy, and fuzzing. Goes on after a failure, prints one line a check, and fails if one did. Some two
# hours on an idle machine.
# Usage: long-checks.sh [SECONDS-OF-FUZZING]   (3600, shared by all targets)
set -uo pipefail

cd "$(dirname "$0")/.." || exit
work=$PWD/build-long
mkdir -p "$work"
failed=0
check() { # check NAME COMMAND...
    local started=$SECONDS verdict=ok
    "${@:2}" >"$work/$1.log" 2>&1 || { verdict=FAILED && failed=1; }
    echo "$verdict: $1 ($((SECONDS - started)) s, $work/$1.log)"
}

under_valgrind() {
    scripts/install-packages.sh valgrind
    BUILD_TARGET=library_tests scripts/build.sh "$work/valgrind" -DCMAKE_BUILD_TYPE=Debug \
        -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF &&
        valgrind --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite \
            "$work/valgrind/tests/library_tests" --gtest_filter='-*TimeGrows*' # There it says nothing.
}

tidy() {
    scripts/build.sh "$work/tidy" -DCMAKE_BUILD_TYPE=Release && scripts/tidy.sh "$work/tidy"
}

for toolchain in cmake/toolchains/*.cmake; do
    architecture=$(basename "$toolchain" .cmake)
    [ "$architecture" = debian ] || check "$architecture" scripts/cross.sh "$architecture" "$work/$architecture" -DCMAKE_BUILD_TYPE=Release
done
check valgrind under_valgrind
check tidy tidy
targets=$(sed -n 's/^foreach(target \(.*\))/\1/p' fuzz/CMakeLists.txt | wc -w)
check fuzzing scripts/fuzz.sh $((${1:-3600} / targets + 1))
exit $failed
