#!/usr/bin/env bash
# Builds the library for another processor with Debian's compiler and sysroot, and runs the library's tests
# under emulation. With --package also makes its Debian packages, and looks at their architecture.
# Usage: cross.sh ARCH [--package] [BUILD-DIR [CMAKE-OPTION...]], ARCH one of cmake/toolchains:
#        armhf armel arm64 mipsel mips powerpc s390x i386
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
architecture=${1:-}
toolchain=$source/cmake/toolchains/$architecture.cmake
[ -n "$architecture" ] && [ "$architecture" != debian ] && [ -e "$toolchain" ] || {
    sed -n 's/^# //; 4,5p' "$0" >&2
    exit 2
}
shift
package=
[ "${1:-}" != --package ] || { package=yes && shift; }
build=${1:-$source/build-$architecture}

triplet=$(sed -n 's/^set(triplet \(.*\))/\1/p' "$toolchain")
"$source/scripts/install-packages.sh" "g++-$triplet" qemu-user googletest make cmake

# GoogleTest is built along: Debian's binaries of it are for other processors.
options=(-DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCALLRECORDINGUTILS_GTEST_SOURCE=/usr/src/googletest
    -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF "${@:2}")
# What is packaged is what is tested.
if [ -n "$package" ]; then
    "$source/scripts/package.sh" "$build" "${options[@]}" -DCALLRECORDINGUTILS_BUILD_TESTS=ON \
        -DCMAKE_BUILD_TYPE=Release
    for file in "$build"/packages/*.deb; do
        [ "$(dpkg-deb -f "$file" Architecture)" = "$architecture" ]
    done
    depends=$(dpkg-deb -f "$build"/packages/libcallrecordingutils1_*.deb Depends)
    echo "Depends: $depends"
    grep -qxE 'libc6 [^,:]*, libgcc-s1 [^,:]*, libstdc\+\+6[^,:]*' <<<"$depends"
    "$source/scripts/content-lintian.sh" "$build"/packages/*.deb
else
    "$source/scripts/build.sh" "$build" "${options[@]}"
fi
# Time under emulation says nothing, and a fork in a process with threads may hang for the emulator's own
# locks.
ctest --test-dir "$build" --output-on-failure -j"$(nproc)" -E 'ForkedChild|TimeGrows'
