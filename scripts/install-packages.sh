#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing. With --build-depends also what debian/control names to
# build with, under the profiles in DEB_BUILD_PROFILES. Prints nothing if all are there, and never removes a package
# to make room for another.
# Usage: install-packages.sh [--build-depends] PACKAGE...
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)

build_depends() {
    local unwanted=${DEB_BUILD_PROFILES:-}
    sed -n '/^Build-Depends:/,/^[^ B]/ s/^ \([a-z].*\)/\1/p' "$source/debian/control" |
        grep -vE "<!(${unwanted// /|})>" | sed 's/[^a-z0-9.+-].*//'
}

# Several architectures may be installed side by side: what counts is ours, or one package for all.
native=$(dpkg --print-architecture)
is_installed() {
    dpkg-query -W -f '${db:Status-Status} ${Architecture}\n' "$1" 2>/dev/null |
        grep -qxE "installed ($native|all)"
}

packages=("$@")
[ "$1" != --build-depends ] || mapfile -t packages < <(printf '%s\n' g++ make "${@:2}" && build_depends)
missing=()
for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "Please install as root: apt-get install ${missing[*]}" >&2
        exit 1
    }
    root=(sudo)
fi
echo "Installing ${missing[*]}" >&2
# Only one check at a time installs packages.
exec 9>"${TMPDIR:-/tmp}/callrecordingutils-install-$(id -u).lock"
flock 9
export DEBIAN_FRONTEND=noninteractive
lock=(-o DPkg::Lock::Timeout=300) # Somebody else may be installing packages.
# A fresh machine has no lists of packages, and old lists name versions that are gone.
"${root[@]}" apt-get "${lock[@]}" update -qq >&2
"${root[@]}" apt-get "${lock[@]}" install -y -qq --no-install-recommends --no-remove \
    "${missing[@]}" >/dev/null </dev/null
