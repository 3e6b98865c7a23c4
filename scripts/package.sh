#!/usr/bin/env bash
# Makes the Debian packages in DIR from a copy of the sources there, and prints their names. The tests run along,
# unless DEB_BUILD_OPTIONS holds nocheck.
# Usage: package.sh DIR [OPTION-OF-DPKG-BUILDPACKAGE...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" --build-depends dpkg-dev debhelper
rm -rf "$1"
mkdir -p "$1/source"
cd "$1"
tar -C "$source" -c --exclude-vcs --exclude='./build*' . | tar -x -C source
cd source
if ! dpkg-buildpackage -b -us -uc -d "${@:2}" >../log 2>&1; then
    tail -n 150 ../log >&2
    exit 1
fi
grep -E 'warning:' ../log >&2 || true
ls "$PWD"/../*.deb
