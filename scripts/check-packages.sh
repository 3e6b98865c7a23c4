#!/usr/bin/env bash
# Builds the Debian packages in BUILD-DIR, looks into them, extracts them into a scratch root, and
# uses what lies there: the client, and the examples, built with CMake and with pkg-config.
# A build that is there already becomes one for /usr, and keeps its other options.
# Usage: check-packages.sh BUILD-DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$1"
build=$(cd "$1" && pwd)
"$source/scripts/install-packages.sh" dpkg-dev file pkg-config
options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr)
[ -e "$build/CMakeCache.txt" ] ||
    options+=(-DCALLRECORDINGUTILS_BUILD_TESTS=OFF -DCALLRECORDINGUTILS_BUILD_EXAMPLES=OFF)
"$source/scripts/build.sh" "$build" "${options[@]}" "${@:2}"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
multiarch=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
sample=$source/examples/sample
libdir=$root/usr/lib/$multiarch
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

make_packages() {
    rm -f "$build"/packages/*.deb
    cpack --config "$build/CPackConfig.cmake" -G DEB -B "$build/packages"
}

package() { # The file of package $1.
    echo "$build/packages/$1"_*.deb
}

# Package $1 holds the files and links named in the other arguments, and nothing else.
holds() {
    diff <(printf '%s\n' "${@:2}" | sort) \
        <(dpkg-deb -c "$(package "$1")" | awk '$1 !~ /^d/ {print substr($6, 3)}' | sort)
}

# The field $2 of package $1 holds each of the other arguments.
says() {
    local value
    value=$(dpkg-deb -f "$(package "$1")" "$2")
    for wanted in "${@:3}"; do
        [[ "$value" == *"$wanted"* ]] || { echo "$2 is \"$value\", lacks \"$wanted\"" && return 1; }
    done
}

registers_library() {
    dpkg-deb -I "$(package libcallrecordingutils1)" shlibs |
        grep -Fx 'libcallrecordingutils 1 libcallrecordingutils1 (>= '"$version"')' &&
        dpkg-deb -I "$(package libcallrecordingutils1)" postinst | grep -q ldconfig
}

extract() {
    for file in "$build"/packages/*.deb; do
        dpkg-deb -x "$file" "$root" || return
    done
}

client_runs() {
    local config=$scratch/config/ client=$root/usr/bin/callrecordingctl
    mkdir -p "${config}telephony"
    "$client" --version | grep -F "$version" &&
        QUVA_PATH=$config "$client" add --to '1{00-99}' &&
        QUVA_PATH=$config "$client" list | grep -F '1{00-99}' &&
        QUVA_PATH=$config "$client" decide --from 201 --to 150
}

build_with_cmake() {
    cmake -S "$source/tests/package" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$root/usr" &&
        cmake --build "$scratch/cmake" && "$scratch/cmake/edit_rules" "$sample" &&
        "$scratch/cmake/decide_call" "$sample" 500 0049123 | grep -F 'under rule 4'
}

build_with_pkg_config() {
    local -a flags
    export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
    pkg-config --print-errors --exists "callrecordingutils = $version" &&
        read -ra flags < <(pkg-config --cflags --libs callrecordingutils) &&
        "${CXX:-g++}" -std=c++17 "$source/examples/check_pattern.cpp" "${flags[@]}" \
            -o "$scratch/check_pattern" &&
        "$scratch/check_pattern" '0{01-20}' | grep -F '0<01-20>' &&
        printf '#include <%s>\n' "${headers[@]#usr/include/}" "${platform_headers[@]#*/platform/}" |
        "${CXX:-g++}" -std=c++17 -Werror -x c++ -fsyntax-only "${flags[@]}" -
}

check "packages are made" make_packages
version=$(dpkg-deb -f "$(package libcallrecordingutils1)" Version)

check "runtime: files" holds libcallrecordingutils1 \
    "usr/lib/$multiarch/libcallrecordingutils.so.1" "usr/lib/$multiarch/libcallrecordingutils.so.1.0"
check "runtime: dependencies" says libcallrecordingutils1 Depends 'libc6 (>=' 'libstdc++6 (>='
check "runtime: is known to the linker and to packages that need it" registers_library

mapfile -t headers < <(cd "$source/include" && printf 'usr/include/%s\n' callrecordingutils/*.h)
platform_headers=(
    usr/include/callrecordingutils/platform/{CallParams,MultiSectionFile,PlatformExport,ThreadMutex}.h)
check "development: files" holds libcallrecordingutils-dev "${headers[@]}" "${platform_headers[@]}" \
    "usr/lib/$multiarch/libcallrecordingutils.so" \
    "usr/lib/$multiarch/pkgconfig/callrecordingutils.pc" \
    "usr/lib/$multiarch/cmake/callrecordingutils"/callrecordingutils{Config,ConfigVersion,Targets,Targets-release}.cmake
check "development: dependencies" says libcallrecordingutils-dev Depends \
    "libcallrecordingutils1 (= $version)"

check "packages extract" extract
if grep -q '^CALLRECORDINGUTILS_BUILD_CLIENT:BOOL=ON' "$build/CMakeCache.txt"; then
    check "client: files" holds callrecordingctl usr/bin/callrecordingctl \
        usr/share/bash-completion/completions/callrecordingctl usr/share/man/man1/callrecordingctl.1.gz
    check "client: dependencies" says callrecordingctl Depends 'libc6 (>=' 'libfmt'
    check "client: runs" client_runs
else
    echo "skipped client: it is not part of this build"
fi
check "a project is built with CMake and runs" build_with_cmake
check "a program is built with pkg-config and runs" build_with_pkg_config
exit $((failures > 0))
