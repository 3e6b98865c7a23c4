#!/usr/bin/env bash
# Edits rules under a running watch_rules: a file moved into place, a broken one, a whole one again, and a folder
# exchanged for another one.
# Usage: watch_rules_test.sh PROGRAM SAMPLE
set -euo pipefail

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cp -r "$2/." "$directory"
rules=$directory/telephony/callrecordingdb

coproc watch { "$1" "$directory"; }
expect() { # The next line of the program's output holds $1.
    local line
    read -r -t 20 line <&"${watch[0]}" || { echo "no answer, expected $1" && exit 1; }
    [[ "$line" == *"$1"* ]] || { echo "\"$line\", expected $1" && exit 1; }
}
replace() { # The rule file, the way an edit does it.
    cat >"$directory/new"
    mv "$directory/new" "$rules"
}

expect "rules"
echo "500 0900" >&"${watch[1]}"
expect "not recorded"
{ cat "$rules" && printf '{\ncallrecordingrule_id=99\ncaller_pattern=*\ncaller_call_type=3\n%s' \
    $'called_pattern=0900\ncalled_call_type=3\nrecording_rule_state=1\n}\n'; } | replace
expect "rules"
echo "500 0900" >&"${watch[1]}"
expect "recorded"
echo "{" | replace
expect "the rules stay as they were: $rules:1"
echo "500 0900" >&"${watch[1]}"
expect "recorded"
: | replace
expect "0 rules"
echo "500 0900" >&"${watch[1]}"
expect "not recorded"
mv "$directory/telephony" "$directory/v1"
mkdir "$directory/v2"
printf '{\n}\n{\n}\n' >"$directory/v2/callrecordingdb"
ln -s v1 "$directory/telephony"
ln -s v2 "$directory/new"
mv -T "$directory/new" "$directory/telephony"
expect "2 rules"
echo "the running program has followed every change"
