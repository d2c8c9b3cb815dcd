#!/usr/bin/env bash
# What the tool tells of files. Arguments: the tool, a scratch folder.
set -euo pipefail
. "$(dirname "$0")/support/tool.sh"
tool=$1
scratch=$(mktemp -d "$2/insight-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
holds() { grep -qF -- "$1" out.txt || fail "'$1' not in: $(head -c 2000 out.txt)"; }
valid() { python3 -m json.tool out.txt >/dev/null || fail "no JSON"; }

printf 'P6\n4 3\n255\n%s' "abcdefghijklmnopqrstuvwxyzABCDEFGHIJ" >tiny.ppm
printf 'Some words\r\n' >words.txt
expect 0 '' "$tool" new -o good.ntf --station S --image tiny.ppm --lossless --text words.txt
[ ! -s err.txt ] || fail "a sound file is written without a word: $(cat err.txt)"
printf 'A\n\x80' >odd.txt
expect 1 'not written: it would break a rule: text.characters' "$tool" new -o bad.ntf --text odd.txt
expect 0 'orbntf: new: bad.ntf: warning: text.characters: text 0' "$tool" new -o bad.ntf --text odd.txt --force
grep -qF 'text.lines' err.txt && fail "warnings are for check"

# check
expect 0 '' "$tool" check good.ntf
holds 'good.ntf: drawn, 4 x 3'
holds '0 errors, 0 warnings, 0 notes'
expect 1 '' "$tool" check good.ntf bad.ntf
holds 'error text.characters: text 0, TXTFMT, byte '
expect 1 '' "$tool" check --json good.ntf bad.ntf
valid
holds '"rule": "text.characters"'
printf 'A\n' >lines.txt
expect 0 '' "$tool" new -o lines.ntf --station S --text lines.txt
expect 0 '' "$tool" check lines.ntf
expect 1 '' "$tool" check --strict lines.ntf
expect 1 'no such file' "$tool" check missing.ntf
expect 1 '' "$tool" check --json missing.ntf
valid
cp good.ntf refused.ntf && printf 'NSIF01.00' | dd of=refused.ntf conv=notrunc status=none
expect 0 '' "$tool" check refused.ntf
holds 'refused.ntf: refused, status -78: version "01.00"'
holds 'by the published standard: drawn, 4 x 3'
expect 0 '' "$tool" check --rules
[ "$(wc -l <out.txt)" -ge 70 ] || fail "rules"
expect 2 'FILE is required' "$tool" check
head -c 400 good.ntf >short.ntf
expect 1 '' "$tool" check short.ntf
holds 'error file.length'
: >empty.ntf
expect 1 '' "$tool" check empty.ntf

# Tagged records, from a folder of definitions too.
mkdir mine
echo '{"tag": "OWNTAG", "title": "Mine", "fields": [{"name": "N", "width": 3, "kind": "number", "unit": "m"}]}' >mine/a.json
python3 - good.ntf tagged.ntf <<'PYTHON'
import sys
file = open(sys.argv[1], "rb").read()
records = b"OWNTAG00003042" + b"NOSUCH00002\x01z"

header = int(file[354:360])
assert file[header - 10:header] == b"0000000000"
length = 3 + len(records)
front = file[:header - 5] + b"%05d000" % length + records
file = front + file[header:]
grown = length
file = file[:342] + b"%012d%06d" % (len(file), header + grown) + file[360:]
open(sys.argv[2], "wb").write(file)
PYTHON
expect 0 '' "$tool" info tagged.ntf
holds 'records: OWNTAG NOSUCH'
expect 0 '' "$tool" --records mine info --records tagged.ntf
holds 'N: 042 m'
holds 'NOSUCH in XHD, 2 bytes at '
holds 'no definition: 017a'
expect 0 '' "$tool" --records mine info --json tagged.ntf
valid
holds '"N": 42'
expect 2 'good.ntf: ' "$tool" --records good.ntf info tagged.ntf
expect 0 '' "$tool" set tagged.ntf -o kept.ntf FTITLE=Other
expect 0 '' "$tool" extract kept.ntf record:NOSUCH -o -
[ "$(od -An -tx1 out.txt | tr -d ' \n')" = 017a ] || fail "set keeps the bytes of records"

# extract
expect 0 '' "$tool" extract good.ntf image:0 -o image.raw
tail -c 36 tiny.ppm | cmp - image.raw
expect 0 '' "$tool" extract good.ntf image:0 --region 1,2,1,2 --bands 2,0 -o piece.raw
[ "$(wc -c <piece.raw)" -eq 4 ] || fail "a piece has its samples"
expect 1 'lies outside' "$tool" extract good.ntf image:0 --region 9000,0,1,1 -o x.raw
expect 2 'are for samples' "$tool" extract good.ntf text:0 --bands 1 -o x.txt
expect 0 '' "$tool" extract good.ntf text:0 -o - && cmp out.txt words.txt
expect 0 '' "$tool" extract tagged.ntf --all -O all
[ "$(ls all | tr '\n' ' ')" = 'image-0.tif record-1-OWNTAG.bin record-2-NOSUCH.bin text-0.txt ' ] || fail "$(ls all)"
expect 1 'status 87: no image:7' "$tool" extract good.ntf image:7 -o x.tif
expect 1 'status 87: no record NONE' "$tool" extract good.ntf record:NONE -o x.bin
expect 0 '' "$tool" extract good.ntf image:0 --reduce 1 -o half.raw
expect 1 'no picture is as small as that' "$tool" extract good.ntf image:0 --reduce 20 -o x.tif
expect 1 'status -7' "$tool" extract missing.ntf image:0 -o x.tif
expect 2 'ends in .tif' "$tool" extract good.ntf image:0 -o x.bmp
expect 2 'a part is' "$tool" extract good.ntf picture -o x.tif
expect 2 'give -o and, of several, a PART' "$tool" extract good.ntf
expect 2 'the output is the input' "$tool" extract good.ntf text:0 -o ./good.ntf
ls | grep -q '^x\.' && fail "a failed command left an output"

# diff
expect 0 '' "$tool" diff good.ntf good.ntf
[ ! -s out.txt ] || fail "a file is the same as itself"
expect 0 '' "$tool" set good.ntf -o other.ntf FTITLE=Other image:0 ILOC=1,0
expect 1 '' "$tool" diff good.ntf other.ntf
holds 'file header, FTITLE: "" | "Other"'
holds 'pixels: 4 x 3 | 4 x 4'
sed 's/abcdef/abcdeX/' tiny.ppm >changed.ppm
expect 0 '' "$tool" new -o changed.ntf --station S --image changed.ppm --lossless --text words.txt
expect 1 '' "$tool" diff --json good.ntf changed.ntf
valid
holds '"firstOffset": 25'
holds '"count": 1'
holds '"largest": 14'
expect 1 '' "$tool" diff good.ntf changed.ntf --pixels difference.ppm
holds 'image 0: 1 of 36 samples differ, by up to 14, by 0.388889 on average'
[ "$(tail -c 36 difference.ppm | tr -d '\0' | od -An -tx1 | tr -d ' ')" = ff ] || fail "the difference picture"
expect 2 "name ends in .png" "$tool" diff good.ntf changed.ntf --pixels x.bmp
expect 1 '' "$tool" diff good.ntf tagged.ntf
holds 'record of file header, OWNTAG: (none) | "042"'
expect 1 'no such file' "$tool" diff good.ntf missing.ntf

# locate
expect 0 '' "$tool" set good.ntf -o placed.ntf image:0 ICORDS=D IGEOLO=+52.000+010.000+52.000+011.000+51.000+011.000+51.000+010.000
expect 0 '' "$tool" locate placed.ntf --pixel 0,0 --at 52,10 --height 5
expect 0 '' "$tool" set good.ntf -o degrees.ntf image:0 ICORDS=D 'IGEOLO=52,10 52,11 51,11 51,10'
cmp placed.ntf degrees.ntf || fail "corners in degrees"
expect 0 '' "$tool" locate placed.ntf --pixel 0,0 --at 52,10 --height 5
holds '{"row":0,"column":0,"latitude":52,"longitude":10,"height":5.0,"height_above":"WGS 84 ellipsoid","model":"IGEOLO","error_m":111.32}'
[ "$(wc -l <out.txt)" -eq 2 ] || fail "two points"
printf '0,1\nword\n1,1\n' | { expect 1 '' "$tool" locate placed.ntf --pixels -; }
[ "$(sed -n 2p out.txt)" = '{"error":"not ROW,COL"}' ] && [ "$(wc -l <out.txt)" -eq 3 ] || fail "a line that is no point"
{ head -c 3000000 /dev/zero | tr '\0' 1; printf '\n0,1'; } | { expect 1 '' "$tool" locate placed.ntf --pixels -; }
[ "$(wc -l <out.txt)" -eq 2 ] && [ "$(head -1 out.txt)" = '{"error":"not ROW,COL"}' ] || fail "a line that is too long"
expect 1 'nothing that is used tells where image 0 lies' "$tool" locate good.ntf --pixel 0,0
expect 2 'give --pixel' "$tool" locate placed.ntf

# The standard's picture, and pages.
expect 1 'status -78' "$tool" render --module refused.ntf -o x.ppm
expect 0 '' "$tool" render refused.ntf -o standard.ppm
expect 0 '' "$tool" render good.ntf -o own.ppm
cmp standard.ppm own.ppm
expect 0 '' "$tool" render --region 1,1,2,2 refused.ntf -o part.ppm
[ "$(head -c 9 part.ppm | tr '\n' ' ')" = 'P6 2 2 25' ] || fail "a region of the standard's picture"
expect 0 '' "$tool" report good.ntf bad.ntf refused.ntf -O pages
[ "$(ls pages | tr '\n' ' ')" = 'bad.html good.html refused.html ' ] || fail "pages"
expect 0 '' "$tool" report good.ntf -o - && holds '</html>'
expect 1 'status -7' "$tool" report missing.ntf -o x.html
expect 2 'either -o or -O' "$tool" report good.ntf
expect 2 'the output is the input' "$tool" report good.ntf -o ./good.ntf
# Tables, maps, and findings as review systems take them.
expect 0 '' "$tool" info --csv good.ntf tagged.ntf
python3 -c 'import csv,sys; rows=list(csv.DictReader(open("out.txt"))); assert [r["images"] for r in rows] == ["1", "1"], rows'
expect 1 '' "$tool" info --csv good.ntf missing.ntf
python3 -c 'import csv; rows=list(csv.DictReader(open("out.txt"))); assert rows[1]["problem"], rows'
expect 0 '' "$tool" info --csv --records tagged.ntf
python3 -c 'import csv; rows=list(csv.DictReader(open("out.txt"))); assert rows and rows[0]["tag"], rows'
expect 0 '' "$tool" info --geojson good.ntf bad.ntf
python3 -c 'import json; d=json.load(open("out.txt")); assert d["type"] == "FeatureCollection" and len(d["features"]) == 2, d'
expect 2 'give one' "$tool" info --csv --geojson good.ntf
expect 1 '' "$tool" check --sarif good.ntf bad.ntf missing.ntf
python3 - <<'PY' || fail "check --sarif: $(cat out.txt)"
import json
runs = json.load(open("out.txt"))["runs"]
assert [len(run["results"]) for run in runs[:1]] == [0] and runs[1]["results"], runs
rules = {rule["id"] for rule in runs[1]["tool"]["driver"]["rules"]}
assert all(result["ruleId"] in rules for result in runs[1]["results"]), runs
assert not runs[2]["invocations"][0]["executionSuccessful"], runs
PY
expect 0 '' "$tool" check --explain text.lines
holds 'keeps it:  lines that end in CR LF'
expect 2 'no such rule' "$tool" check --explain nonesuch
expect 2 '--profile takes' "$tool" check --profile best good.ntf
exit 0
