#!/usr/bin/env bash
# The C example on a file that the tool made. Arguments: the tool, the example, a scratch folder.
set -euo pipefail
scratch=$(mktemp -d "$3/example-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
printf 'Some words' >words.txt
"$1" new -o in.ntf --text words.txt
"$2" in.ntf out.ntf 'A new title' | grep -q '^text 0:'
"$1" info --json out.ntf | grep -q '"FTITLE": "A new title *"'
if "$2" missing.ntf out.ntf title 2>err.txt; then exit 1; fi
grep -q 'status -10' err.txt
