#!/usr/bin/env bash
# The tool as a person uses it. Arguments: the tool, a scratch folder.
set -euo pipefail
. "$(dirname "$0")/support/tool.sh"
tool=$1
scratch=$(mktemp -d "$2/tool-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

printf 'P6\n4 3\n255\n%s' "abcdefghijklmnopqrstuvwxyzABCDEFGHIJ" >tiny.ppm
printf 'Some words' >words.txt
expect 0 '' "$tool" new -o empty.ntf
expect 0 '' "$tool" render empty.ntf --module --fixed-canvas --scale 1/64 -o empty.png
expect 0 '' "$tool" new -o first.ntf --text words.txt --image empty.png --at 5,7 --quality 2 --image empty.png
expect 0 '' "$tool" info --json first.ntf
grep -q '"ILOC": "0000500007"' out.txt || fail "--at places the image before it"
grep -q '"width": 39' out.txt || fail "the composite reaches the placed image"
expect 0 '' "$tool" text first.ntf 0
[ "$(cat out.txt)" = 'Some words' ] || fail "text"
expect 0 '' "$tool" set first.ntf -o second.ntf FTITLE=Title FBKGC=#102030 image:1 IID1=Second ILOC=1,2 text:0 TXTITL=T
expect 0 '' "$tool" info second.ntf
grep -q '"Second".*row 1, column 2' out.txt || fail "set"
grep -q 'background #102030' out.txt || fail "set FBKGC"
expect 0 '' "$tool" append second.ntf -o third.ntf --text words.txt
expect 0 '' "$tool" copy third.ntf -o fourth.ntf
cmp third.ntf fourth.ntf
expect 0 '' "$tool" render fourth.ntf -o picture.ppm
[ "$(head -c 2 picture.ppm)" = P6 ] || fail "ppm"
"$tool" render fourth.ntf -o - | head -c 8 | grep -q PNG || fail "PNG on standard output"

expect 1 'orbntf: info: missing.ntf: status -7:' "$tool" info missing.ntf
expect 1 'status -7' "$tool" info --json missing.ntf first.ntf
grep -q '"status": -7' out.txt && grep -q '"status": 1' out.txt || fail "JSON is printed on failure too"
head -c 500 first.ntf >short.ntf
expect 1 ', at IID2, byte ' "$tool" copy --module short.ntf -o x.ntf
expect 1 'missing.ntf: no such file' "$tool" copy missing.ntf -o x.ntf
expect 1 'missing.txt: no such file' "$tool" new -o x.ntf --text missing.txt
expect 2 'takes 2 to 255' "$tool" new -o x.ntf --image empty.png --quality 1
expect 1 'status 87' "$tool" graphic first.ntf 0 -o x.svg
expect 1 'status -5' "$tool" copy first.ntf -o no/such/folder.ntf
expect 1 'status -1:' "$tool" --max-pixels 100 render first.ntf -o x.png
expect 2 'no such field' "$tool" set first.ntf -o x.ntf NOFIELD=1
for field in FL HL NUMI NUMT UDHDL; do expect 2 'follows from' "$tool" set first.ntf -o x.ntf $field=1; done
for field in NBANDS IMDATOFF; do expect 2 "$field" "$tool" set first.ntf -o x.ntf image:0 $field=1; done
# Segments go, come from other files, and get other data.
expect 0 '' "$tool" remove third.ntf text:1 -o removed.ntf
cmp second.ntf removed.ntf || fail "append, then remove"
expect 0 '' "$tool" merge first.ntf second.ntf -o merged.ntf
expect 0 '' "$tool" info merged.ntf
grep -q 'image 3: "Second".*level 4 on 0' out.txt || fail "merge"
printf 'Other words' >other.txt
expect 0 '' "$tool" replace first.ntf text:0=@other.txt -o replaced.ntf
[ "$("$tool" text replaced.ntf)" = 'Other words' ] || fail "replace"
expect 0 '' "$tool" recompress first.ntf image:1 --jpeg2000 lossless --block 512 -o packed.ntf
"$tool" extract first.ntf image:1 -o whole.raw && "$tool" extract packed.ntf image:1 -o packed.raw
cmp whole.raw packed.raw || fail "recompress"
expect 0 '' "$tool" append first.ntf -o onto.ntf --image tiny.ppm --lossless --on image:1 --at 2,3 --data XML_DATA_CONTENT:1=@words.txt
expect 0 '' "$tool" info onto.ntf
grep -q 'image 2:.*level 3 on 2, at row 2, column 3' out.txt || fail "--on"
printf 'data of a record' >record.bin
expect 0 '' "$tool" set first.ntf -o tagged.ntf image:0 record:MADEUP=@record.bin
expect 0 '' "$tool" extract tagged.ntf record:MADEUP -o record.back && cmp record.bin record.back
expect 0 '' "$tool" set tagged.ntf -o untagged.ntf image:0 record:MADEUP=
cmp first.ntf untagged.ntf || fail "a record comes and goes"
head -c 900 first.ntf >cut.ntf
expect 0 'mended: FL was' "$tool" copy cut.ntf --mend -o mended.ntf
expect 2 'the output is the input' "$tool" copy first.ntf -o ./first.ntf
expect 2 '1/N' "$tool" render first.ntf -o x.png --scale 3
expect 1 'nothing in it to draw' "$tool" render empty.ntf -o x.png
expect 2 'add --module' "$tool" render first.ntf -o x.png --lift-dark
expect 2 "not the module's" "$tool" render first.ntf -o x.png --module --size 10
expect 2 '--stretch takes' "$tool" render first.ntf -o x.png --stretch most
expect 2 'did you mean render?' "$tool" rendr first.ntf
expect 2 'did you mean info?' "$tool" --max-pixels 100 inf first.ntf
expect 2 '--help lists them' "$tool" entirely-different
expect 2 '--memory-limit takes' "$tool" info --memory-limit 3x first.ntf
expect 1 'longer than --time-limit' "$tool" --time-limit 1 info - < <(sleep 5)
# Sanitizers take more memory than any limit gives.
if [[ $(ldd "$tool") != *asan* ]]; then
  expect 1 'out of memory' "$tool" --memory-limit 1K report first.ntf -o limited.html
  expect 0 '' "$tool" render --time-limit 60 --memory-limit 2G first.ntf -o limited.png
fi
expect 2 '--size and --scale both say' "$tool" render first.ntf -o x.png --scale 1/2 --size 10
expect 2 '' "$tool" render first.ntf
expect 2 '' "$tool"
ls | grep -q '^x\.' && fail "a failed command left an output: $(ls)"
exit 0
