#!/usr/bin/env bash
# Format, documentation and clang-tidy over the whole tree.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
# Every test that the documentation names exists.
grep -oE '\b[A-Z][A-Za-z]+\.[A-Z][A-Za-z0-9]+\b' docs/behaviour.md | sort -u | while IFS=. read -r suite name; do
  grep -qE "TEST(_[FP])?\($suite, $name\)" tests/*.cpp || { echo "docs/behaviour.md: no test $suite.$name"; exit 1; }
done
cmake --preset dev >/dev/null
git ls-files 'Common/*.cpp' 'hostkit/*.cpp' 'tools/*.cpp' ':!*_windows.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p build/dev --quiet --warnings-as-errors='*' 2>/dev/null
