#!/usr/bin/env bash
# Installs what is missing, builds the release preset, makes a NITF file and renders it to out/demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake --preset release
cmake --build --preset release
bin=build/release/bin
mkdir -p out
"$bin/make_demo" out/demo.ntf
"$bin/orbntf" info out/demo.ntf
"$bin/orbntf" render out/demo.ntf -o out/demo.png
echo "rendered to out/demo.png"
