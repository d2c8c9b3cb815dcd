#!/usr/bin/env bash
# Times whole commands on files that it makes, against floors measured in the same run:
# scripts/bench.sh [--side 8192] [--runs 5] [--write] [CASE…]. With --write the table and the growth plot
# of docs/performance.md are made anew.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh bench
cmake --preset bench >/dev/null
cmake --build --preset bench --target make_files floor orbntf_tool
exec python3 scripts/bench.py "$@"
