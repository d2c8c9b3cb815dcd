#!/usr/bin/env bash
# The tests of the Python package. Arguments: the interpreter, the tool, the folder of the built package, and libraries that
# come before the interpreter. Ends with 77 without pytest.
set -euo pipefail
python3=$1
"$python3" -c 'import pytest, numpy' 2>/dev/null || { echo "no pytest"; exit 77; }
export ORBNTF_TOOL=$2 PYTHONPATH=$3 PYTHONDONTWRITEBYTECODE=1
if [ -n "$4" ]; then
  export LD_PRELOAD=$4 ASAN_OPTIONS=detect_leaks=0:${ASAN_OPTIONS:-}
fi
exec "$python3" -m pytest -q -p no:cacheprovider "$(dirname "$0")/tests"
