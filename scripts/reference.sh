#!/usr/bin/env bash
# Makes the API reference from the public headers, build/reference/html; a warning is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh reference
mkdir -p build
doxygen docs/Doxyfile
echo "reference: build/reference/html/index.html"
