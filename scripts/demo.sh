#!/usr/bin/env bash
# Installs what is missing, builds the release preset, makes a NITF file of two pictures, a drawing and a
# text, and renders it to out/demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake --preset release
cmake --build --preset release
bin=build/release/bin
mkdir -p out
"$bin/make_demo" out
"$bin/orbntf" new -o out/demo.ntf --station Demo --image out/demo-terrain.png --quality 20 --image out/demo-chart.png \
  --at 36,420 --quality 2 --graphic out/demo-symbols.cgm --at 150,60 --text out/demo-notes.txt
"$bin/orbntf" info out/demo.ntf
"$bin/orbntf" render out/demo.ntf -o out/demo.png
echo "rendered to out/demo.png"
