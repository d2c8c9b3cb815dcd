#!/usr/bin/env bash
# Draws small files that ask for much work and holds time and memory against what SECURITY.md promises.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh bench
cmake --preset bench >/dev/null
cmake --build --preset bench --target make_bombs orbntf_tool
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
build/bench/bin/make_bombs "$folder"
python3 scripts/budget.py build/bench/bin/orbntf "$folder" "$@"
