#!/usr/bin/env bash
# The checks that take too long for every change. Runs those that are named, or all of them (some three hours on an idle
# machine); goes on after a failure, prints one line for each, and fails if one failed.
# Usage: long-checks.sh [--list | NAME...]
set -uo pipefail

cd "$(dirname "$0")/.." || exit
work=$PWD/build-long
mkdir -p "$work"

# A check is the name of an architecture, or of a function here.
architectures=()
for toolchain in cmake/toolchains/*.cmake; do
    name=$(basename "$toolchain" .cmake)
    [ "$name" = debian ] || architectures+=("$name")
done
names=("${architectures[@]}" valgrind tidy clang reproducible trixie fuzzing telephony asterisk fleet)

valgrind() {
    scripts/install-packages.sh valgrind
    BUILD_TARGET=library_tests scripts/build.sh "$work/valgrind" -DCMAKE_BUILD_TYPE=Debug \
        -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF &&
        command valgrind --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite \
            "$work/valgrind/tests/library_tests" --gtest_filter='-*TimeGrows*' # Time means nothing there.
}

tidy() {
    scripts/build.sh "$work/tidy" -DCMAKE_BUILD_TYPE=Release && scripts/tidy.sh "$work/tidy"
}

# Everything, client included, and no warning.
clang() {
    scripts/install-packages.sh clang
    CXX=clang++ CC=clang scripts/test.sh "$work/clang" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-Werror
}

# The packages have the same bytes when they are made elsewhere, by somebody with other settings.
reproducible() {
    scripts/package.sh "$work/packages" || return
    (umask 077 && TZ=Asia/Tokyo LC_ALL=C scripts/package.sh "$work/elsewhere") || return
    for file in "$work"/packages/*.deb; do
        cmp "$file" "$work/elsewhere/${file##*/}" || return
    done
}

trixie() {
    scripts/in-debian.sh trixie "$work/trixie"
}

fuzzing() {
    scripts/fuzz.sh 1200
}

telephony() {
    scripts/build.sh "$work/telephony" -DCMAKE_BUILD_TYPE=Release -DCALLRECORDINGUTILS_BUILD_TESTS=OFF &&
        scripts/check-telephony.sh "$work/telephony"
}

# Debian 12 has no Asterisk.
asterisk() {
    scripts/install-packages.sh python3 sip-tester
    scripts/build.sh "$work/telephony" -DCMAKE_BUILD_TYPE=Release -DCALLRECORDINGUTILS_BUILD_TESTS=OFF &&
        scripts/in-debian.sh bullseye "$work/bullseye" scripts/install-packages.sh asterisk &&
        timeout 600 python3 tests/telephony/check_asterisk.py "$work/telephony" "$work/bullseye"
}

fleet() {
    scripts/test.sh "$work/fleet" -DCMAKE_BUILD_TYPE=Release &&
        python3 tests/fleet/pull_test.py "$work/fleet/tools/callrecordingctl/callrecordingctl" \
            "$work/fleet/tests/libclient_faults.so" --all &&
        scripts/check-fleet.sh "$work/fleet"
}

is_in() { # NAME NAME...: the first is one of the others.
    [[ " ${*:2} " == *" $1 "* ]]
}

if [ "${1:-}" = --list ]; then
    echo "${names[*]}"
    exit 0
fi
for name in "$@"; do
    is_in "$name" "${names[@]}" || { echo "$name is not one of: ${names[*]}" >&2 && exit 2; }
done
[ $# -gt 0 ] || set -- "${names[@]}"
failed=0
for name in "$@"; do
    started=$SECONDS verdict=ok command=("$name")
    is_in "$name" "${architectures[@]}" && command=(scripts/cross.sh "$name" "$work/$name")
    "${command[@]}" >"$work/$name.log" 2>&1 || { verdict=FAILED && failed=1; }
    echo "$verdict: $name ($((SECONDS - started)) s, $work/$name.log)"
done
exit $failed
