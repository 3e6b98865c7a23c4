#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing. Quiet unless something is.
set -euo pipefail

missing=()
for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
        missing+=("$package")
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
export DEBIAN_FRONTEND=noninteractive
"${root[@]}" apt-get update -qq >&2
"${root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
