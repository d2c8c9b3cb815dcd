#!/usr/bin/env bash
# Lines and branches of Common/, hostkit/, media/ and core/ that the tests execute; fails below the least that is wanted.
# `scripts/coverage.sh FILE` shows a file's lines instead, with their counts.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/coverage
if [ $# -eq 0 ]; then
  cmake --preset coverage >/dev/null
  cmake --build --preset coverage
  rm -f $build/*.profraw
  # Tests in processes of their own: what one leaves behind is not another's.
  LLVM_PROFILE_FILE="$PWD/$build/%p.profraw" ctest --test-dir $build -j "$(nproc)" --output-on-failure \
    -E 'kept_files|c_example' | tail -3
  # A process whose own writes a test made fail leaves no whole profile.
  llvm-profdata-14 merge -failure-mode=all -sparse -o $build/tests.profdata $build/*.profraw
  rm -f $build/*.profraw
fi
objects=($build/bin/orbntf_tests -object $build/bin/libhostkit.so)
for program in orbntf_faults; do
  [ ! -x $build/bin/$program ] || objects+=(-object $build/bin/$program)
done
if [ $# -gt 0 ]; then
  llvm-cov-14 show "${objects[@]}" -instr-profile=$build/tests.profdata "$@"
  exit
fi
for format in lcov text; do
  llvm-cov-14 export "${objects[@]}" -instr-profile=$build/tests.profdata -format=$format >$build/coverage.$format
done
python3 scripts/coverage.py $build/coverage.lcov $build/coverage.text
