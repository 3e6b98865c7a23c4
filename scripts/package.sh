#!/usr/bin/env bash
# Builds BUILD-DIR for /usr with Debian's hardening flags, and makes the Debian packages of it in
# BUILD-DIR/packages.
# Usage: package.sh BUILD-DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" dpkg-dev file gzip
mkdir -p "$1"
build=$(cd "$1" && pwd)

export DEB_BUILD_MAINT_OPTIONS=hardening=+all
# Without -g: the packages are stripped, and the bytes do not depend on the place of the sources then.
flags() { dpkg-buildflags --get "$1" | sed "s#-f[a-z-]*-map=[^ ]*##g; s#-O2##; s#^-g ##"; }
"$source/scripts/build.sh" "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DCALLRECORDINGUTILS_BUILD_TESTS=OFF -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF \
    -DCMAKE_CXX_FLAGS="$(flags CXXFLAGS) $(flags CPPFLAGS)" \
    -DCMAKE_SHARED_LINKER_FLAGS="$(flags LDFLAGS)" -DCMAKE_EXE_LINKER_FLAGS="$(flags LDFLAGS) -pie" \
    "${@:2}"
rm -f "$build"/packages/*.deb
cd "$build"
cpack -G DEB -B "$build/packages" >"$build/packages.log" 2>&1 || { cat "$build/packages.log" >&2 && exit 1; }

# cpack adds scripts that call ldconfig, which the package's trigger does already.
runtime=$(echo "$build"/packages/libcallrecordingutils1_*.deb)
dpkg-deb -R "$runtime" "$build/packages/runtime"
rm -f "$build"/packages/runtime/DEBIAN/post{inst,rm}
dpkg-deb --root-owner-group -Zxz -b "$build/packages/runtime" "$runtime" >/dev/null
rm -r "$build/packages/runtime"
ls "$build"/packages/*.deb
