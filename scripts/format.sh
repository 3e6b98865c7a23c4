#!/usr/bin/env bash
# Says where the layout of the C++ code is not what .clang-format asks for; with --fix corrects it. Takes a second, and
# can be a git hook:
#     ln -s "$PWD/scripts/format.sh" "$(git rev-parse --git-path hooks)/pre-commit"
# Usage: format.sh [--fix]
set -euo pipefail

cd "$(dirname "$(readlink -f "$0")")/.."
version=14 # Others lay out hundreds of lines differently.
formatter=clang-format-$version
if ! command -v "$formatter" >/dev/null && ! scripts/install-packages.sh "$formatter"; then
    echo "The layout is that of $formatter, which Debian 12 has. On another release, and as root:" >&2
    echo "    scripts/in-debian.sh bookworm build-bookworm scripts/format.sh" >&2
    exit 1
fi
options=(--dry-run -Werror)
[ "${1:-}" != --fix ] || options=(-i)
find . -path './build*' -prune -o -path ./.git -prune -o \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 "$formatter" "${options[@]}"
