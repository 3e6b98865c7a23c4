#!/usr/bin/env bash
# Makes the library's Debian packages for another architecture in DIR, with Debian's compiler and sysroot for it. Runs
# the library's tests under emulation, and checks the packages.
# Usage: cross.sh ARCH [DIR]   ARCH is one of: armhf armel arm64 mipsel mips powerpc s390x i386
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
architecture=${1:-}
toolchain=$source/cmake/toolchains/$architecture.cmake
[ -n "$architecture" ] && [ "$architecture" != debian ] && [ -e "$toolchain" ] || {
    sed -n 's/^# Usage/usage/p' "$0" >&2
    exit 2
}
directory=${2:-$source/build-$architecture}

triplet=$(sed -n 's/^set(triplet \(.*\))/\1/p' "$toolchain")
"$source/scripts/install-packages.sh" "g++-$triplet" qemu-user googletest lintian
# The client's libraries would be needed for the architecture as well.
export DEB_BUILD_PROFILES="cross pkg.callrecordingutils.noclient"
"$source/scripts/package.sh" "$directory" --host-arch "$architecture"

# debian/*.lintian-overrides say what it may find, and why.
lintian --allow-root --fail-on error,warning,info --display-info "$directory"/*.changes
depends=$(dpkg-deb -f "$directory/libcallrecordingutils1_"*.deb Depends)
echo "Depends: $depends"
# The libraries of the device, not the copies of them that a cross compiler brings.
grep -qxE 'libc6 [^,:]*, libgcc-s1 [^,:]*, libstdc\+\+6[^,:]*' <<<"$depends"
