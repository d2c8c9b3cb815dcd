#!/usr/bin/env bash
# What check --sarif prints of files of every kind is what the format's own schema says. Arguments: the tool, the
# project's folder, a scratch folder. Ends with 77 where the package that holds the schema cannot be had.
set -euo pipefail
tool=$1 project=$2 schema=$3/sarif-2.1.0.json
scratch=$(mktemp -d "$3/sarif-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
if [ ! -s "$schema" ]; then
  command -v npm >/dev/null && npm pack --silent @microsoft/sarif-multitool-linux@5.7.0 >/dev/null 2>&1 &&
    tar xzf ./*.tgz package/sarif-2.1.0.json || { echo "no schema"; exit 77; }
  mv package/sarif-2.1.0.json "$schema"
fi
printf 'some text' >words.txt
"$tool" new -o 'made with a space.ntf' --text words.txt
"$tool" check --sarif made*.ntf missing.ntf "$project"/fuzz/corpus/filter/* ${ORBNTF_SAMPLES:+"$ORBNTF_SAMPLES"/*.n?f} >log.json || true
python3=$(command -v /usr/bin/python3 || command -v python3)
"$python3" - "$schema" log.json <<'PYTHON'
import json, sys
import jsonschema
schema = json.load(open(sys.argv[1]))
log = json.load(open(sys.argv[2], encoding="utf-8"))
errors = list(jsonschema.validators.validator_for(schema)(schema).iter_errors(log))
if errors:
    sys.exit(f"{errors[0].json_path}: {errors[0].message}")
results = sum(len(run["results"]) for run in log["runs"])
assert results > 20, results
print(results, "results")
PYTHON
