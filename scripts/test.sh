#!/usr/bin/env bash
# Installs what is missing, builds the sanitized debug preset and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh test
cmake --preset dev
cmake --build --preset dev
ctest --preset dev -j "$(nproc)"
