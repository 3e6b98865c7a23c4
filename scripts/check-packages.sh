#!/usr/bin/env bash
# Lets lintian look at the Debian packages in DIR, unpacks them into a scratch root, and uses what lies there: the
# client, and the examples, built with CMake and pkg-config. With OTHER-DIR, packages of another architecture must be
# installable beside them.
# Usage: check-packages.sh DIR [OTHER-DIR]   both made by package.sh or cross.sh
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" cmake fakeroot g++ lintian make man-db pkg-config systemd
packages=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
libdir=$root/usr/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
sample=$source/examples/sample
version=$(dpkg-deb -f "$packages"/libcallrecordingutils1_*.deb Version)
export LD_LIBRARY_PATH=$libdir

# check NAME COMMAND...: one line, and what the command printed when it fails.
failures=0
check() {
    if "${@:2}" >"$scratch/output" 2>&1; then
        echo "ok      $1"
    else
        echo "FAILED  $1"
        sed 's/^/        /' "$scratch/output"
        failures=$((failures + 1))
    fi
}

# Unpacks the packages as an installation does, which refuses a file that a package of another architecture has with
# other bytes. Nothing is configured, so what the packages need need not be there.
unpack() {
    mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
    touch "$root/var/lib/dpkg/status"
    local command=(dpkg --root="$root" --force-not-root --force-depends --force-bad-path --force-script-chrootless)
    [ "$(id -u)" -eq 0 ] || command=(fakeroot "${command[@]}")
    local architecture
    for architecture in "${@:2}"; do
        "${command[@]}" --add-architecture "$architecture"
    done
    # shellcheck disable=SC2086 # The names of the packages have no blanks.
    "${command[@]}" --unpack $1
}

unpack_beside() {
    local architecture
    architecture=$(dpkg-deb -f "$1"/libcallrecordingutils1_*.deb Architecture)
    unpack "$(echo "$1"/libcallrecordingutils*_"$architecture".deb)" "$architecture" &&
        [ "$(find "$root" -name 'libcallrecordingutils.so.1.0' | wc -l)" -eq 2 ]
}

client_runs() {
    local config=$scratch/config/ client=$root/usr/bin/callrecordingctl
    mkdir -p "${config}telephony"
    "$client" --version | grep -F "$version" &&
        QUVA_PATH=$config "$client" add --from '*' --to '1{00-99}' &&
        QUVA_PATH=$config "$client" list | grep -F '1{00-99}' &&
        QUVA_PATH=$config "$client" decide --from 201 --to 150
}

manual_shows() {
    local program
    for program in callrecordingctl callrecordingd; do
        MANROFFOPT=-ww man --warnings -E UTF-8 -l "$root/usr/share/man/man1/$program.1.gz" >"$scratch/manual" &&
            grep -q -- '--config-dir DIR' "$scratch/manual" || return 1
    done
}

# In tenths; 2.0 is the limit, and what systemd calls safe.
service_is_confined() {
    systemd-analyze security --offline=true --threshold=20 "$root/lib/systemd/system/callrecordingd.service" &&
        test -f "$root/lib/systemd/system/callrecordingd.socket" &&
        test -f "$root/usr/lib/sysusers.d/callrecordingd.conf"
}

build_with_cmake() {
    cmake -S "$source/tests/package" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$root/usr" &&
        cmake --build "$scratch/cmake" && "$scratch/cmake/edit_rules" "$sample" &&
        "$scratch/cmake/decide_call" "$sample" 500 0049123 | grep -F 'under rule 4'
}

# The files name the paths that the device will have; pkg-config puts the sysroot in front of them.
build_with_pkg_config() {
    local -a flags
    export PKG_CONFIG_LIBDIR=$libdir/pkgconfig PKG_CONFIG_SYSROOT_DIR=$root
    grep -x 'prefix=/usr' "$libdir/pkgconfig/callrecordingutils.pc" &&
        pkg-config --print-errors --exists "callrecordingutils = $version" &&
        PKG_CONFIG_ALLOW_SYSTEM_CFLAGS=1 PKG_CONFIG_ALLOW_SYSTEM_LIBS=1 \
            pkg-config --cflags --libs callrecordingutils >"$scratch/flags" &&
        read -ra flags <"$scratch/flags" &&
        "${CXX:-g++}" -std=c++17 "$source/examples/check_pattern.cpp" "${flags[@]}" \
            -o "$scratch/check_pattern" &&
        "$scratch/check_pattern" '0{01-20}' | grep -F '0<01-20>'
}

# Compiles all C++ headers, with the options given.
compile_headers() {
    (cd "$root/usr/include" && printf '#include <%s>\n' callrecordingutils/*.h) |
        "${CXX:-g++}" -std=c++17 -Werror -x c++ -fsyntax-only "$@" -I"$root/usr/include" -
}

# Headers of the same names that come earlier on the include path are not taken for the library's.
take_their_own() {
    mkdir "$scratch/foreign"
    for header in CallParams LogStream MultiSectionFile PlatformExport ThreadMutex StringLayout Export; do
        echo '#error A header of another project' >"$scratch/foreign/$header.h"
    done
    compile_headers -I"$scratch/foreign"
}

refuse_other_strings() {
    ! compile_headers -D_GLIBCXX_USE_CXX11_ABI=0 2>"$scratch/errors" &&
        grep "std::string is laid out differently" "$scratch/errors"
}

# debian/*.lintian-overrides say what it may find, and why.
check "lintian finds nothing" lintian --allow-root --display-info --display-experimental \
    --fail-on error,warning,info,experimental "$packages"/*.changes
check "the packages can be unpacked" unpack "$(echo "$packages"/*.deb)"
check "the rules' directory is there" test -d "$root/etc/quva-conf/telephony"
check "the client runs" client_runs
check "the manual pages have no faults" manual_shows
check "the service is confined" service_is_confined
check "exported symbols" "$source/scripts/check-symbols.sh" "$libdir/libcallrecordingutils.so.1"
check "a project is built with CMake and runs" build_with_cmake
check "a program is built with pkg-config in a sysroot and runs" build_with_pkg_config
check "the headers compile" compile_headers
check "the headers include each other, not headers of the same names" take_their_own
check "the headers refuse another std::string" refuse_other_strings
[ $# -lt 2 ] || check "another architecture's packages can be installed beside them" unpack_beside "$2"
exit $((failures > 0))
