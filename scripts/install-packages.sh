#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing. Quiet unless something is. Never removes
# a package to make room for another.
set -euo pipefail

# On a machine that has packages of several architectures too: ours, or one for all, has to be there.
native=$(dpkg --print-architecture)
is_installed() {
    dpkg-query -W -f '${db:Status-Status} ${Architecture}\n' "$1" 2>/dev/null |
        grep -qxE "installed ($native|all)"
}

missing=()
for package in "$@"; do
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
exec 9>"${TMPDIR:-/tmp}/callrecordingutils-install-$(id -u).lock" # One at a time, where checks run side by side.
flock 9
export DEBIAN_FRONTEND=noninteractive
lock=(-o DPkg::Lock::Timeout=300) # Another installation may be running.
# A fresh machine knows no packages yet, and an old one knows versions that are gone.
"${root[@]}" apt-get "${lock[@]}" update -qq >&2
"${root[@]}" apt-get "${lock[@]}" install -y -qq --no-install-recommends --no-remove \
    "${missing[@]}" >/dev/null </dev/null
