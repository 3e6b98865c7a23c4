#!/usr/bin/env bash
# Builds and tests the sources on another release of Debian than this machine's: in DIR, where debootstrap puts a small
# system of that release. Takes root. DIR is used again by the next run, and its sources are replaced.
# Usage: in-debian.sh RELEASE DIR [COMMAND...]   COMMAND runs in the sources; without one, scripts/test.sh
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
release=$1 root=$2
shift 2
[ $# -gt 0 ] || set -- scripts/test.sh build -DCMAKE_BUILD_TYPE=Release
[ "$(id -u)" -eq 0 ] || { echo "in-debian.sh takes root, for chroot" >&2 && exit 1; }

"$source/scripts/install-packages.sh" debootstrap
if [ ! -e "$root/complete" ]; then
    rm -rf "$root"
    debootstrap --variant=minbase "$release" "$root" >&2
    touch "$root/complete"
fi
rm -rf "$root/sources"
mkdir "$root/sources"
tar -C "$source" -c --exclude-vcs --exclude='./build*' . | tar -x -C "$root/sources"
cp -L /etc/resolv.conf "$root/etc/"
cp /etc/apt/apt.conf.d/*proxy* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true

# The mounts and whatever still runs there end with the command. A compiler launcher like ccache is not there.
exec env -u CMAKE_C_COMPILER_LAUNCHER -u CMAKE_CXX_COMPILER_LAUNCHER unshare --mount --pid --fork --kill-child sh -c '
    mount -t proc proc "$0/proc" && mount --rbind /dev "$0/dev" && cd / &&
        exec chroot "$0" sh -c '\''cd /sources && exec "$@"'\'' sh "$@"' "$root" "$@"
