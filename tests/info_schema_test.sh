#!/usr/bin/env bash
# What info prints of every sample and of files that tests make is what docs/info.schema.json says, alone and
# many at once, whoever shares out the work. Arguments: the tool, the project's folder, a scratch folder.
set -euo pipefail
tool=$1 project=$2
scratch=$(mktemp -d "$3/schema-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
printf 'some text' >words.txt
"$tool" new -o made.ntf --text words.txt
cp -r "$project/fuzz/corpus/filter" corpus
if [ -n "${ORBNTF_SAMPLES-}" ]; then cp -r "$ORBNTF_SAMPLES" samples; else echo "ORBNTF_SAMPLES: skipped"; fi
find . -type f >list.txt
xargs -d '\n' "$tool" info --json-lines <list.txt >lines.json 2>/dev/null || true
[ "$(wc -l <lines.json)" -eq "$(wc -l <list.txt)" ]
python3=$(command -v /usr/bin/python3 || command -v python3)
"$python3" - "$project/docs/info.schema.json" lines.json <<'PYTHON'
import json, sys
import jsonschema
schema = json.load(open(sys.argv[1]))
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
opened = 0
for line in open(sys.argv[2], encoding="utf-8"):
    file = json.loads(line)
    errors = sorted(validator.iter_errors(file), key=str)
    if errors:
        sys.exit(f"{file['file']}: {errors[0].json_path}: {errors[0].message}")
    opened += file["status"] == 1
print(opened, "files that open")
PYTHON
# As docs/scale.md shares out the work: the lines are the same, whatever their order.
if command -v parallel >/dev/null; then
  parallel --will-cite -j2 -N 20 "$tool" info --json-lines <list.txt 2>/dev/null >shared.json || true
  cmp <(sort lines.json) <(sort shared.json)
fi
