#!/usr/bin/env bash
# Builds the library and the tests for 32-bit x86 in BUILD-DIR, where long has 32 bits, runs the tests
# and compares the exported symbols.
# Usage: check-32bit.sh BUILD-DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" g++-multilib googletest
# GoogleTest is built along: Debian has no 32-bit binary of it for a 64-bit compiler.
options=(-DCMAKE_CXX_FLAGS=-m32 -DCALLRECORDINGUTILS_GTEST_SOURCE=/usr/src/googletest
    -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF)

# Not every 64-bit kernel runs 32-bit programs.
probe=$(mktemp)
trap 'rm -f "$probe"' EXIT
echo 'int main() {}' | g++ -m32 -x c++ - -o "$probe"
if ! "$probe" 2>/dev/null; then
    "$source/scripts/install-packages.sh" qemu-user
    options+=(-DCMAKE_CROSSCOMPILING_EMULATOR=qemu-i386)
fi

"$source/scripts/test.sh" "$1" "${options[@]}" "${@:2}"
"$source/scripts/check-symbols.sh" "$1/src/libcallrecordingutils.so"
