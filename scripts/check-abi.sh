#!/usr/bin/env bash
# Compares the library's binary interface (every exported symbol, and the size and layout of every type
# that the installed headers show) with the description in abi/, which is that of x86-64. With --accept
# the description is written anew, for a change of the interface that is meant.
# Usage: check-abi.sh BUILD-DIR [--accept]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
stored=$source/abi/libcallrecordingutils.abi
if [ "$(uname -m)" != x86_64 ]; then
    echo "The description is that of x86-64: nothing compared."
    exit 0
fi
"$source/scripts/install-packages.sh" abigail-tools
BUILD_TARGET=callrecordingutils "$source/scripts/build.sh" "$1" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS=-g -DCALLRECORDINGUTILS_BUILD_CLIENT=OFF -DCALLRECORDINGUTILS_BUILD_TESTS=OFF \
    -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# The standard library's types are its own business: what they take of a record shows in its layout. But
# what the checks of patterns return lies in them.
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
# No trace of where it was built.
sed -i -E "s#path='[^']*/((src|platform)/[^']*)'#path='\1'#" "$scratch/library.abi"

if [ "${2:-}" = --accept ]; then
    cp "$scratch/library.abi" "$stored"
elif ! abidiff "$stored" "$scratch/library.abi"; then
    echo "The binary interface is not the stored one. If that is meant, the programs that were built" >&2
    echo "with the old one still run, or the SONAME changes with it:" >&2
    echo "    scripts/check-abi.sh $1 --accept" >&2
    exit 1
fi
