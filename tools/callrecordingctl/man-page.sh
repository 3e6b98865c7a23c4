#!/bin/sh
# Writes the manual page of the client to FILE: callrecordingctl.1.md, with what the client itself says about its
# commands and options in the place of the comment there.
# Usage: man-page.sh FILE VERSION CLIENT...   CLIENT is the command that runs the client
set -e

page=$(dirname "$0")/callrecordingctl.1.md
file=$1 version=$2
shift 2
commands=$("$@" __manual)
{
    sed '/^<!--/,$d' "$page"
    printf '%s\n\n' "$commands"
    sed '1,/^<!--/d' "$page"
} | lowdown -s -t man --out-no-smarty --parse-no-autolink --parse-no-math --parse-no-metadata \
    -m title=CALLRECORDINGCTL -m section=1 -m date= -m source="callrecordingutils $version" -m volume="User Commands" -o "$file"
