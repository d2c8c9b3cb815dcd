#!/usr/bin/env bash
# fuzz/run.sh MINUTES [TARGET...]: runs every target for its share of the time, from the kept corpus and the
# seeds that the tests make, and keeps what reaches new code in fuzz/corpus. Findings lie in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:?usage: fuzz/run.sh MINUTES [TARGET...]}
shift
targets=("$@")
[ $# -gt 0 ] || targets=(filter api jpeg jpeg2000 facsimile vector drawing input insight core edit place)
scripts/deps.sh test check
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz >/dev/null
build=build/fuzz
if [ ! -d $build/seeds ] && [ -x build/dev/bin/orbntf_tests ]; then
  mkdir -p $build/kept
  ORBNTF_KEPT_FILES=$PWD/$build/kept build/dev/bin/orbntf_tests --gtest_filter='-*StreamsBeyond*' >/dev/null 2>&1 || true
  $build/bin/make_seeds $build/seeds $build/kept
  rm -rf $build/kept
fi
mkdir -p $build/findings
export ASAN_OPTIONS=quarantine_size_mb=8:allocator_release_to_os_interval_ms=500:detect_leaks=0
for target in "${targets[@]}"; do
  work=$build/grown/$target
  kept=fuzz/corpus/$target
  mkdir -p "$work" $build/seeds/"$target" "$kept" fuzz/regressions/"$target"
  # What takes whole files begins with those that the module is fuzzed with, too.
  more=()
  case $target in insight | core | edit | place) more=(fuzz/corpus/filter $build/seeds/filter) ;; esac
  echo "== $target"
  "$build/bin/fuzz_$target" -max_total_time=$((minutes * 60 / ${#targets[@]})) -timeout=2 -rss_limit_mb=512 \
    -max_len=262144 -dict=fuzz/nitf.dict -print_final_stats=1 -artifact_prefix=$build/findings/"$target"- \
    "$work" "$kept" fuzz/regressions/"$target" $build/seeds/"$target" "${more[@]}" 2>&1 |
    grep -E '^stat::|SUMMARY|INITED|DONE|not so|held:' || true
done
# The smallest inputs that reach what all reach, as many as a share of 2 MB holds.
for target in "${targets[@]}"; do
  small=$build/small/$target
  rm -rf "$small"
  mkdir -p "$small"
  "$build/bin/fuzz_$target" -merge=1 -timeout=2 -rss_limit_mb=512 "$small" fuzz/corpus/"$target" \
    $build/grown/"$target" $build/seeds/"$target" >/dev/null 2>&1 || true
  rm -rf fuzz/corpus/"$target"
  mkdir -p fuzz/corpus/"$target"
  (cd "$small" && ls -Sr) | {
    left=240000
    while read -r name; do
      size=$(stat -c %s "$small/$name")
      [ "$left" -ge "$size" ] || break
      left=$((left - size))
      cp "$small/$name" fuzz/corpus/"$target"/
    done
  }
done
du -sh fuzz/corpus
