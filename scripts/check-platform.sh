#!/usr/bin/env bash
# Builds the library on the platform in DIR, and runs the tests that hold for every platform: what the library
# needs of each service, and the library on top of them. Where the platform's trace log goes, PLATFORM_LOG_FILE
# says. For another processor, options name a toolchain file, which may name an emulator.
# Usage: check-platform.sh DIR [WORK-DIR [CMAKE-OPTION...]]
set -euo pipefail

[ $# -gt 0 ] || { sed -n 's/^# Usage: /Usage: /p' "$0" >&2; exit 2; }
source=$(cd "$(dirname "$0")/.." && pwd)
platform=$(cd "$1" && pwd)
work=${2:-$source/build-platform}
"$source/scripts/install-packages.sh" g++ make cmake libgtest-dev
cmake -S "$source" -B "$work" -DCALLRECORDINGUTILS_PLATFORM="$platform" \
    -DCALLRECORDINGUTILS_BUILD_{CLIENT,EXAMPLES}=OFF -DCALLRECORDINGUTILS_BUILD_TESTS=ON "${@:3}"
cmake --build "$work" -j"$(nproc)" --target platform_contract_tests platform_library_tests
ctest --test-dir "$work" --output-on-failure --no-tests=error -R '^Platform(Contract|Library)'
