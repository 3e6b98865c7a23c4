#!/usr/bin/env bash
# Compares what a release build of the library exports with src/exported-symbols.txt. Every export
# has to carry a version. With --accept the list is written anew, for a change of the interface that is
# meant.
# Usage: check-symbols.sh LIBRARY [--accept]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
list=$source/src/exported-symbols.txt
exported=$(mktemp)
trap 'rm -f "$exported"' EXIT

version=CALLRECORDINGUTILS_1.0
if nm -D --defined-only "$1" | grep -vE "@@$version\$| A $version\$"; then
    echo "These carry no version; src/exports.map says which." >&2
    exit 1
fi

# Names only, each once (constructors stand twice in a library), sorted alike everywhere.
nm -D --defined-only -C "$1" |
    sed -e "/ A $version/d" -e "s/@@$version//" -e 's/^[0-9a-f]* . //' \
        -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    LC_ALL=C sort -u >"$exported"

if [ "${2:-}" = --accept ]; then
    cp "$exported" "$list"
elif ! diff -U0 --label "${list#"$source/"}" --label "$1" "$list" "$exported"; then
    echo "The exported symbols (+) are not those of the list (-). If they are meant to be:" >&2
    echo "    scripts/check-symbols.sh $1 --accept" >&2
    exit 1
fi
