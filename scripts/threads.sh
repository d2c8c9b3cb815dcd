#!/usr/bin/env bash
# Four threads that open, draw, edit and save by the module, and draw, read and check by the core, under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target orbntf_threads
TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp halt_on_error=1" build/tsan/bin/orbntf_threads
