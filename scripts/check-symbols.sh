#!/usr/bin/env bash
# Compares the symbols that a release build of the library exports with src/exported-symbols.txt. Every one must have a
# version. With --accept, writes a new list, for an intended change of the interface.
# Usage: check-symbols.sh LIBRARY [--accept]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
list=$source/src/exported-symbols.txt
exported=$(mktemp)
trap 'rm -f "$exported"' EXIT

version=CALLRECORDINGUTILS_1.0
if nm -D --defined-only "$1" | grep -vE "@@$version\$| A $version\$"; then
    echo "These symbols have no version, or another one than in src/exports.map." >&2
    exit 1
fi

# Names only, each once (a library has every constructor twice), in the same order everywhere.
nm -D --defined-only -C "$1" |
    sed -e "/ A $version/d" -e "s/@@$version//" -e 's/^[0-9a-f]* . //' \
        -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    LC_ALL=C sort -u >"$exported"

if [ "${2:-}" = --accept ]; then
    cp "$exported" "$list"
elif ! diff -U0 --label "${list#"$source/"}" --label "$1" "$list" "$exported"; then
    echo "The exported symbols (+) differ from the list (-). If that is intended:" >&2
    echo "    scripts/check-symbols.sh $1 --accept" >&2
    exit 1
fi
