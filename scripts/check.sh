#!/usr/bin/env bash
# Format, structure, documentation and clang-tidy over the whole tree.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
refuse() {
  echo "check.sh: $1" >&2
  sed 's/^/  /' >&2
  exit 1
}
scripts/includes.py
# What a host answers has a name in Common/.
found=$(grep -nE '\b(Kernel|Vector|FileFormat|ImageEffects|Display)[A-Za-z]*\(.*\)+ [!=<>]=? -?[1-9]|\breturn -[0-9]' \
  -r Common || true)
[ -z "$found" ] || refuse "numbers that stand for a host's answer" <<<"$found"
# Files of at most 400 lines, the public header aside; functions of at most 40.
found=$(git ls-files '*.cpp' '*.h' '*.c' ':!include/orbntf/orbntf.h' | xargs wc -l | awk '$2 != "total" && $1 > 400')
[ -z "$found" ] || refuse "files of more than 400 lines" <<<"$found"
found=$(git ls-files '*.cpp' '*.h' '*.c' | xargs awk -v limit=40 '
  FNR == 1 { close_ = ""; head = 0 }
  # Where a declaration that is spread over lines begins.
  { match($0, /^ */); if (RLENGTH <= 4 && /[(,)]$/) head = RLENGTH }
  close_ == "" && /\) *(const *)?(noexcept *)?(-> [A-Za-z:<>0-9_ ]+ )?\{$/ &&
      !/^ *(if|for|while|switch|else|\}|namespace|return|case)/ {
    match($0, /^ */)
    indent = RLENGTH > 4 ? head : RLENGTH
    if (/^ *: /) indent = RLENGTH - 4  # the members of a constructor
    close_ = sprintf("%*s}", indent, ""); start = FNR; next
  }
  close_ != "" && index($0, close_) == 1 {
    if (FNR - start + 1 > limit) print FILENAME ":" start ": " FNR - start + 1 " lines"
    close_ = ""
  }')
[ -z "$found" ] || refuse "functions of more than 40 lines" <<<"$found"
# Every test that the documentation names exists.
grep -oE '\b[A-Z][A-Za-z]+\.[A-Z][A-Za-z0-9]+\b' docs/behaviour.md | sort -u | while IFS=. read -r suite name; do
  grep -qE "TEST(_[FP])?\($suite, $name\)" tests/*.cpp || { echo "docs/behaviour.md: no test $suite.$name"; exit 1; }
done
cmake --preset dev >/dev/null
git ls-files 'media/*.cpp' 'core/*.cpp' 'Common/*.cpp' 'hostkit/*.cpp' 'tools/*.cpp' 'python/*.cpp' ':!*_windows.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --extra-arg=-Wno-unknown-warning-option --quiet --warnings-as-errors='*' 2>/dev/null
