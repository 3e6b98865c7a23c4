#!/usr/bin/env bash
# Builds the documentation site of the public headers and of docs/ in build-docs/html. Every warning
# is a failure.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen
rm -rf build-docs
doxygen docs/Doxyfile
echo "build-docs/html/index.html"
