#!/usr/bin/env bash
# Installs what is missing, builds, and shows what the library is for with the sample rule file: the rules, and what they
# decide for a few calls.
# Usage: demo.sh [BUILD-DIR]
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$source/build}
BUILD_TARGET=callrecordingctl "$source/scripts/build.sh" "$build"

export QUVA_PATH=$source/examples/sample/
run() {
    echo "\$ callrecordingctl $*"
    "$build/tools/callrecordingctl/callrecordingctl" "$@" || [ $? -eq 1 ] # 1: no rule matches.
    echo
}
run list
run decide --from 201 --to 0044123456
run decide --from 213 --to 0044123456
run decide --from 213 --to 0041123456
run decide --from alice@pbx.example.com --to 450
run decide --from agent07@gw2.partner.example:5080 --to 345
run decide --from bob@pbx.example.com:5060 --to board1@pbx.example.com
run decide --from 500 --to 501 --explain
cd "$source"
run replay examples/calls/november.csv
