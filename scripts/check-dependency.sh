#!/usr/bin/env bash
# Builds the library in WORK-DIR as other projects use it: as a subproject, on a platform from an SDK, and as an
# installed static library; each also from a project that knows no language but C. Each time, a program links
# it and runs.
# Usage: check-dependency.sh WORK-DIR [CMAKE-OPTION...]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/install-packages.sh" g++ make cmake pkg-config
mkdir -p "$1"
work=$(cd "$1" && pwd)
shift
sample=$source/examples/sample
decides() { "$@" "$sample" 500 0049123 | grep -F 'under rule 4'; }
configure() { cmake "$@" -DCMAKE_BUILD_TYPE=Debug; }

# PREFIX contains the library, its headers and the files that find them, and nothing else.
only_the_library() {
    local files
    files=$(cd "$1" && find . -type f -o -type l | grep -vE '^\./(include|share/doc)/')
    echo "$files"
    ! grep -vE '^\./lib/(libcallrecordingutils\.(so.*|a)|pkgconfig/.*\.pc|cmake/.*\.cmake)$' <<<"$files"
}

echo "As a subproject:"
configure -S "$source/tests/dependency" -B "$work/subproject" -DCMAKE_UNITY_BUILD=ON "$@"
cmake --build "$work/subproject" -j"$(nproc)"
decides "$work/subproject/exchange"
[ -z "$(find "$work/subproject" -name callrecordingctl -o -name '*_tests' -type f)" ]
rm -rf "$work/prefix"
cmake --install "$work/subproject" --prefix "$work/prefix"
only_the_library "$work/prefix"
[ ! -e "$work/prefix/share" ]

echo "As a subproject of a project in C:"
configure -S "$source/tests/c_only" -B "$work/c-subproject" "$@"
cmake --build "$work/c-subproject" -j"$(nproc)"
decides "$work/c-subproject/decide_call"

echo "As a static library:"
configure -S "$source" -B "$work/static" -DBUILD_SHARED_LIBS=OFF \
    -DCALLRECORDINGUTILS_BUILD_{CLIENT,TESTS,EXAMPLES}=OFF "$@"
cmake --build "$work/static" -j"$(nproc)"
rm -rf "$work/prefix"
cmake --install "$work/static" --prefix "$work/prefix"
only_the_library "$work/prefix"
configure -S "$source/tests/package" -B "$work/client" -DCMAKE_PREFIX_PATH="$work/prefix" "$@"
cmake --build "$work/client"
decides "$work/client/decide_call"
export PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig
read -ra flags < <(pkg-config --cflags --libs --static callrecordingutils)
"${CXX:-g++}" -std=c++17 "$source/examples/decide_call.cpp" "${flags[@]}" -o "$work/decide_call"
decides "$work/decide_call"
configure -S "$source/tests/c_only" -B "$work/c-client" -DINSTALLED=ON -DCMAKE_PREFIX_PATH="$work/prefix" "$@"
cmake --build "$work/c-client"
decides "$work/c-client/decide_call"
