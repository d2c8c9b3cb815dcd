#!/usr/bin/env bash
# The example on files that the tool made and on the samples. Arguments: the tool, the example, a scratch
# folder.
set -euo pipefail
samples=${ORBNTF_SAMPLES-}
[ -n "$samples" ] || echo "ORBNTF_SAMPLES names no folder of real files: they are skipped"
scratch=$(mktemp -d "$3/example-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
# What the font library keeps is its own.
echo leak:libfontconfig >suppressions
export LSAN_OPTIONS=suppressions=$scratch/suppressions:print_suppressions=0
fail() { echo "example_test: $*" >&2; exit 1; }

printf 'Some words' >words.txt
"$1" new -o in.ntf --text words.txt
"$2" in.ntf out.ntf 'A new title' | grep -q '^text 0:'
"$1" info --json out.ntf | grep -q '"FTITLE": "A new title *"'
if "$2" missing.ntf out.ntf title 2>err.txt; then exit 1; fi
grep -q 'status -10' err.txt

# Background and extended data are kept: all but the title is as it was.
"$1" new -o empty.ntf
"$1" set empty.ntf -o bare.ntf 'FBKGC=#102030'
{
  head -c 342 bare.ntf
  printf '000000000419000419000000000000000000'
  printf '00014000TAGONE00000'
  printf '00017001TAGTWO00003abc'
} >extended.ntf
same() { # FILE: whether the example's output differs in the title only
  "$2" "$1" titled.ntf 'A new title' >/dev/null || return 0
  cp "$1" expected.ntf
  printf '%-80s' 'A new title' | dd of=expected.ntf bs=1 seek=39 conv=notrunc status=none
  cmp expected.ntf titled.ntf || fail "$1 lost something"
  "$3" info titled.ntf >/dev/null || fail "$1 does not open again"
}
same extended.ntf "$2" "$1"
"$1" info --json titled.ntf | grep -q TAGTWO00003abc || fail "the extended data"
for file in "$samples"/*.ntf; do
  [ -n "$samples" ] && [ -e "$file" ] || continue
  # The module writes some fields in forms of their own.
  "$1" copy --module "$file" -o copied.ntf
  same copied.ntf "$2" "$1"
done
