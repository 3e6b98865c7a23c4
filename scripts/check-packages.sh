#!/usr/bin/env bash
# Makes the Debian packages in BUILD-DIR, lets lintian look at them, looks into them, extracts them into a
# scratch root, and uses what lies there: the client, and the examples, built with CMake and pkg-config.
# Usage: check-packages.sh BUILD-DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" binutils pkg-config
"$source/scripts/package.sh" "$@"
build=$(cd "$1" && pwd)

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

package() { # The file of package $1.
    echo "$build/packages/$1"_*.deb
}

# Package $1 holds the files and links named in the other arguments (patterns for the shell), and nothing
# else outside of the documents.
holds() {
    local path found=0
    while read -r path; do
        for wanted in "${@:2}"; do
            # shellcheck disable=SC2053
            [[ $path == $wanted ]] && found=$((found + 1)) && continue 2
        done
        echo "$path is not expected" && return 1
    done < <(dpkg-deb -c "$(package "$1")" | awk '$1 !~ /^d/ {print substr($6, 3)}' |
        grep -v '^usr/share/doc/')
    [ "$found" -ge $(($# - 1)) ] || { echo "only $found of the files are there" && return 1; }
}

# The packages hold each of these paths, directories end in "/".
ship() {
    local list
    list=$(for file in "$build"/packages/*.deb; do dpkg-deb -c "$file"; done | awk '{print substr($6, 2)}')
    for path in "$@"; do
        grep -qxF "$path" <<<"$list" || { echo "$path is missing" && return 1; }
    done
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
    local runtime=$scratch/runtime
    dpkg-deb -e "$(package libcallrecordingutils1)" "$runtime" &&
        grep -Fx 'libcallrecordingutils 1 libcallrecordingutils1 (>= '"$version"')' "$runtime/shlibs" &&
        grep -q CCallRecordingAssistantC1Eb "$runtime/symbols" && grep ldconfig "$runtime/triggers"
}

is_hardened() {
    readelf -d "$root/usr/bin/callrecordingctl" | grep 'NOW PIE' &&
        readelf -d "$libdir/libcallrecordingutils.so.1" | grep 'Flags: NOW' &&
        nm -D "$libdir/libcallrecordingutils.so.1" | grep __stack_chk_fail
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
        QUVA_PATH=$config "$client" add --from '*' --to '1{00-99}' &&
        QUVA_PATH=$config "$client" list | grep -F '1{00-99}' &&
        QUVA_PATH=$config "$client" decide --from 201 --to 150
}

build_with_cmake() {
    cmake -S "$source/tests/package" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$root/usr" &&
        cmake --build "$scratch/cmake" && "$scratch/cmake/edit_rules" "$sample" &&
        "$scratch/cmake/decide_call" "$sample" 500 0049123 | grep -F 'under rule 4'
}

# A sysroot's files name the paths that the device will have; pkg-config puts the sysroot before them.
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

# Whatever lies earlier on the include path, the headers take their own.
take_their_own() {
    mkdir "$scratch/foreign"
    for header in CallParams LogStream MultiSectionFile PlatformExport ThreadMutex StringLayout Export; do
        echo '#error This is not the header that is meant.' >"$scratch/foreign/$header.h"
    done
    compile_headers -I"$scratch/foreign"
}

refuse_other_strings() {
    ! compile_headers -D_GLIBCXX_USE_CXX11_ABI=0 2>"$scratch/errors" &&
        grep "std::string is laid out differently" "$scratch/errors"
}

version=$(dpkg-deb -f "$(package libcallrecordingutils1)" Version)
check "lintian is content" "$source/scripts/content-lintian.sh" "$build"/packages/*.deb
check "runtime: files" holds libcallrecordingutils1 \
    "usr/lib/$multiarch/libcallrecordingutils.so.1" "usr/lib/$multiarch/libcallrecordingutils.so.1.0"
check "runtime: dependencies" says libcallrecordingutils1 Depends 'libc6 (>=' 'libstdc++6 (>='
check "runtime: is known to the linker and to packages that need it" registers_library
check "development: files" holds libcallrecordingutils-dev 'usr/include/callrecordingutils/*.h' \
    usr/include/callrecordingutils/platform/{CallParams,LogStream,MultiSectionFile,PlatformExport,ThreadMutex}.h \
    "usr/lib/$multiarch/libcallrecordingutils.so" \
    "usr/lib/$multiarch/pkgconfig/callrecordingutils.pc" \
    "usr/lib/$multiarch/cmake/callrecordingutils"/callrecordingutils{Config,ConfigVersion,Targets,Targets-release}.cmake
check "development: dependencies" says libcallrecordingutils-dev Depends \
    "libcallrecordingutils1 (= $version)"
check "the rules' directory, changelogs, documents and examples" ship /etc/quva-conf/telephony/ \
    /usr/share/doc/{libcallrecordingutils1,libcallrecordingutils-dev}/changelog.gz \
    /usr/share/doc/libcallrecordingutils-dev/{docs/integration.md,examples/decide_call.cpp}
check "packages extract" extract
if [ -e "$root/usr/bin/callrecordingctl" ]; then
    check "client: files" holds callrecordingctl usr/bin/callrecordingctl \
        'usr/share/*/completions/*' usr/share/fish/vendor_completions.d/callrecordingctl.fish \
        usr/share/zsh/site-functions/_callrecordingctl usr/share/man/man1/callrecordingctl.1.gz
    check "client: dependencies" says callrecordingctl Depends \
        "libcallrecordingutils1 (= $version)" 'libc6 (>='
    check "client: runs" client_runs
    check "both are hardened" is_hardened
else
    echo "skipped client: it is not part of this build"
fi
check "exported symbols" "$source/scripts/check-symbols.sh" "$libdir/libcallrecordingutils.so.1"
check "a project is built with CMake and runs" build_with_cmake
check "a program is built with pkg-config in a sysroot and runs" build_with_pkg_config
check "the headers compile" compile_headers
check "the headers take their own" take_their_own
check "the headers refuse another std::string" refuse_other_strings
exit $((failures > 0))
