#!/usr/bin/env bash
# Compares the library's binary interface on x86-64 (every exported symbol, and the size and layout of every type in the
# installed headers) with the description in abi/. With --accept, writes a new description, for an intended change of
# the interface.
# Usage: check-abi.sh BUILD-DIR [--accept]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
stored=$source/abi/libcallrecordingutils.abi
if [ "$(uname -m)" != x86_64 ]; then
    echo "The description is for x86-64 only: nothing was compared."
    exit 0
fi
"$source/scripts/install-packages.sh" abigail-tools
BUILD_TARGET=callrecordingutils "$source/scripts/build.sh" "$1" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS=-g -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF -DCALLRECORDINGUTILS_BUILD_TESTS=OFF \
    -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# The standard library's own types are left out: their sizes show in the layout of our records. What the checks of
# patterns return is kept, although it is inside of such types.
cat >"$scratch/suppressions" <<'END'
[suppress_type]
  name_regexp = ^(std|__gnu_cxx)::
  name_not_regexp = CallRecordingUtils::Pattern
  drop = yes
END
abidw --suppr "$scratch/suppressions" --exported-interfaces-only --drop-private-types \
    --headers-dir "$source/include" --headers-dir "$source/platform" \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --type-id-style hash \
    --out-file "$scratch/library.abi" "$1/src/libcallrecordingutils.so"
# The place where it was built is left out.
sed -i -E "s#path='[^']*/((src|platform)/[^']*)'#path='\1'#" "$scratch/library.abi"

if [ "${2:-}" = --accept ]; then
    cp "$scratch/library.abi" "$stored"
elif ! abidiff "$stored" "$scratch/library.abi"; then
    echo "The binary interface has changed. If that is intended, either programs that were built with the" >&2
    echo "old one still run, or the SONAME must change as well. To accept it:" >&2
    echo "    scripts/check-abi.sh $1 --accept" >&2
    exit 1
fi
