#!/usr/bin/env bash
# Fails if lintian has anything to say about the given Debian packages but that the copyright files are
# missing (the licence is the owner's choice) and that the compiler's name is left in.
# Usage: content-lintian.sh PACKAGE...
set -euo pipefail

"$(dirname "$0")/install-packages.sh" lintian
lintian --display-info --display-experimental --fail-on error,warning,info,experimental \
    --suppress-tags no-copyright-file,binary-has-unneeded-section "$@"
