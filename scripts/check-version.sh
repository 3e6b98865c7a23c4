#!/usr/bin/env bash
# Compares the version in the header in C, where the build takes it from, with the newest section of
# CHANGELOG.md, the Debian changelog, and the versions of the exported symbols.
# Usage: check-version.sh
set -euo pipefail

cd "$(dirname "$0")/.."
part() { sed -n "s/^#define CALLRECORDING_VERSION_$1 \([0-9]*\).*/\1/p" include/callrecordingutils/callrecordingutils.h; }
version=$(part MAJOR).$(part MINOR).$(part PATCH)
newest=$(sed -n 's/^## //p' CHANGELOG.md | head -n 1)
package=$(sed -n '1s/.*(\([^)]*\)).*/\1/p' debian/changelog)
for found in "CHANGELOG.md has $newest" "debian/changelog has $package"; do
    [ "${found##* }" = "$version" ] || { echo "The header has $version, but $found" >&2 && exit 1; }
done
grep -q "^CALLRECORDINGUTILS_${version%.*} {" src/exports.map ||
    { echo "src/exports.map has no CALLRECORDINGUTILS_${version%.*}" >&2 && exit 1; }
echo "$version everywhere"
