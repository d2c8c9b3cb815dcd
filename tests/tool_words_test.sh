#!/usr/bin/env bash
# What the tool says of files, how it takes many, and what it makes. Arguments: the tool, a scratch folder.
set -euo pipefail
. "$(dirname "$0")/support/tool.sh"
tool=$1
scratch=$(mktemp -d "$2/words-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
# shows WORDS COMMAND...: words on standard output.
shows() {
  local words=$1 got=0
  shift
  "$@" >out.txt 2>err.txt || got=$?
  grep -qF -- "$words" out.txt || fail "$*: '$words' not in: $(cat out.txt)"
}
# patched FILE OFFSET TEXT: a copy with other bytes, named patched.ntf.
patched() {
  cp "$1" patched.ntf
  printf '%b' "$3" | dd of=patched.ntf bs=1 seek="$2" conv=notrunc status=none
}

printf 'P5\n6 4\n255\n%24s' x >grey.pgm
printf 'line one\nline \033[31mtwo' >words.txt
export SOURCE_DATE_EPOCH=1700000000
"$tool" new -o a.ntf --force --image grey.pgm --at 3,4 --text words.txt --title 'A title' --station Depot --class S \
  --field 'ONAME=Someone' --field image:0 --field IID1=First 2>/dev/null

# Why a file is refused.
expect 1 'status -7: no such file' "$tool" info none.ntf
mkdir folder
expect 1 'status -7: is a folder' "$tool" info folder
expect 1 ': is a folder' "$tool" render folder -o x.png
patched a.ntf 4 01.00
expect 1 'version "01.00"; this reader takes 02.10' "$tool" copy --module patched.ntf -o x.ntf
expect 1 'is NITF, version "01.00"; NITF 02.10 and NSIF 01.00 are changed' "$tool" set patched.ntf -o x.ntf FTITLE=x
expect 1 'status -78' "$tool" info patched.ntf
patched a.ntf 0 NSIF01.0005
shows 'image 0: "First' "$tool" info patched.ntf
shows '"status": -78' "$tool" info --json patched.ntf
shows '"CLEVEL": "05"' "$tool" info --json patched.ntf
expect 0 '' "$tool" text patched.ntf -o - && cmp out.txt words.txt
expect 1 'status -78' "$tool" render --module patched.ntf -o x.png
expect 0 '' "$tool" render patched.ntf -o x.png
patched a.ntf 9 05
expect 1 'complexity level "05"; this reader takes 03, at CLEVEL, byte 9 (Unsupported CLEVEL)' "$tool" render --module patched.ntf -o x.png
[ "$(grep -c 'Unsupported CLEVEL' err.txt)" -eq 1 ] || fail "the box's text appears once"
patched a.ntf 0 GIF8
expect 1 'it begins with "GIF8"' "$tool" info patched.ntf
image=$(grep -abo 'IMFirst' a.ntf | head -1 | cut -d: -f1)
pvtype=$((image + 349))
patched a.ntf "$pvtype" XYZ
shows 'module: refused, status -700000: image 0 has PVTYPE "XYZ"' "$tool" info patched.ntf
shows 'A title' "$tool" info patched.ntf
shows '"texts": [' "$tool" info --json patched.ntf
shows '"TEXTID"' "$tool" info --json patched.ntf
patched a.ntf 39 'bad\033[31mname'
shows 'bad\x1B[31mname' "$tool" info patched.ntf
head -c 900 a.ntf >short.ntf
expect 1 'the file has 900' "$tool" info short.ntf

# Typed values.
shows '"FDT": "2023-11-14T22:13:20Z"' "$tool" info --json a.ntf
shows '"NROWS": 4' "$tool" info --json a.ntf
shows '"IMAG": 1.0' "$tool" info --json a.ntf
shows '"FBKGC": "#000000"' "$tool" info --json a.ntf
shows '"dataLength"' "$tool" info --json a.ntf
tr -d ' \n' <out.txt | grep -qF '"ILOC":[3,4]' || fail "ILOC is a place"
shows 'class S' "$tool" info a.ntf
grep -q 'ISCLAS": "S"' <("$tool" info --json a.ntf) || fail "--class is for segments too"
"$tool" set a.ntf -o geo.ntf image:0 ICORDS=D IGEOLO=+10.500-020.250+10.500-019.250+09.500-019.250+09.500-020.250
"$tool" info --json geo.ntf | tr -d ' \n' | grep -qF '"coordinates":[[[-20.25,10.5],[-20.25,9.5]' || fail "GeoJSON"

# What set refuses, and takes with --force.
for change in FDT=20230230000000 FSCLAS=X FSDGDT=2023 'OSTAID= ' FL=1 NUMI=2 'OSTAID=é'; do
  expect 2 "${change%%=*}: " "$tool" set a.ntf -o x.ntf "$change"
done
for change in IDATIM=20231301000000 IGEOLO=nowhere ISDCTP=QQ IDLVL=0 NROWS=9 IC=NC; do
  expect 2 "${change%%=*}: " "$tool" set a.ntf -o x.ntf image:0 "$change"
done
expect 0 'warning: security.type: image 0' "$tool" set a.ntf -o forced.ntf --force image:0 ISDCTP=QQ
expect 1 'not written: it would break a rule: level.number' "$tool" set a.ntf -o x.ntf CLEVEL=08
for jobs in 0 257; do expect 2 'jobs' "$tool" set a.ntf a.ntf -O sets --jobs $jobs FTITLE=x; done
expect 2 'mend' "$tool" new -o x.ntf --image colour.ppm --mend
expect 2 'the classification system' "$tool" set a.ntf -o x.ntf --class T
expect 0 '' "$tool" set a.ntf -o secret.ntf --class T all:CLSY=US
[ "$("$tool" info --json secret.ntf | grep -c 'CLAS": "T"')" -eq 3 ] || fail "all headers are classified"
expect 0 '2 files, 0 failed' "$tool" set a.ntf secret.ntf -O titled FTITLE=Both
cmp <("$tool" text titled/a.ntf) words.txt || fail "many files are changed"
printf '<a><b>text</b></a>' >small.xml
expect 0 '' "$tool" append patched.ntf -o xml.ntf --data XML_DATA_CONTENT:1=@small.xml
[ "$("$tool" text xml.ntf data:0)" = "$(printf '<a>\n  <b>text</b>\n</a>')" ] || fail "XML is indented: $("$tool" text xml.ntf data:0)"
expect 1 '' "$tool" text xml.ntf data:1
expect 1 '' "$tool" text xml.ntf one
expect 2 'describes the pixels' "$tool" set a.ntf -o x.ntf --force image:0 NROWS=9

# Pictures at their own depth.
printf 'P5\n3 2\n65535\n\001\002\003\004\005\006\007\010\011\012\013\014' >deep.pgm
expect 1 '--lossless' "$tool" new -o x.ntf --image deep.pgm
expect 0 '' "$tool" new -o deep.ntf --image deep.pgm --lossless
shows 'NC, 3 x 2 in 1 x 1 blocks, 1 band of 16 bits' "$tool" info deep.ntf
tail -c 12 deep.ntf | cmp - <(tail -c 12 deep.pgm) || fail "samples are stored as they are"
printf 'P6\n2 1\n255\nabcdef' >colour.ppm
expect 0 '' "$tool" new -o colour.ntf --image colour.ppm --lossless
expect 0 '' "$tool" render colour.ntf -o colour.back.ppm
cmp colour.ppm colour.back.ppm || fail "colours come back"
for ending in png tif jpg; do
  "$tool" render colour.ntf -o colour.$ending
  expect 0 '' "$tool" new -o again.ntf --image colour.$ending --lossless
  [ $ending = jpg ] || { "$tool" render again.ntf -o again.ppm && cmp colour.ppm again.ppm; } || fail "$ending"
done
printf 'P5\n9000 2\n255\n' >wide.pgm && head -c 18000 /dev/zero >>wide.pgm
expect 0 'wide.ntf: CLEVEL is 06; the module opens files of level 03' "$tool" new -o wide.ntf --image wide.pgm --lossless
shows 'in 9 x 1 blocks' "$tool" info wide.ntf

# One image, a part.
"$tool" render a.ntf --segment image:0 -o alone.ppm
[ "$(head -c 9 alone.ppm | tr '\n' ' ')" = 'P6 6 4 25' ] || fail "one image alone"
"$tool" render a.ntf --region 3,4,2,5 -o part.ppm
[ "$(head -c 9 part.ppm | tr '\n' ' ')" = 'P6 5 2 25' ] || fail "a part"
expect 1 'not on the picture' "$tool" render a.ntf --region 3,4,200,5 -o x.ppm
expect 1 'status 87' "$tool" render a.ntf --segment image:7 -o x.ppm

# Many files.
mkdir -p in/deeper && cp a.ntf in && cp deep.ntf in/deeper && printf 'NITF but no more' >in/broken.ntf && echo no >in/not.txt
for jobs in 1 3; do
  expect 1 'orbntf: info: 3 files, 1 failed' "$tool" info --json -r in --jobs $jobs
  python3 -c 'import json; print([f["status"] for f in json.load(open("out.txt"))])' | grep -qF '[1, -78, 1]' || fail "statuses"
  expect 1 '' "$tool" info --json-lines -r in --jobs $jobs
  [ "$(wc -l <out.txt)" -eq 3 ] || fail "an object a line"
  expect 1 '3 files, 1 failed' "$tool" render -r in -O pictures-$jobs --jobs $jobs
  [ -s pictures-$jobs/a.png ] && [ -s pictures-$jobs/deeper/deep.png ] || fail "names are kept"
done
expect 0 'orbntf: copy: 2 files, 0 failed' "$tool" copy in/a.ntf in/deeper/deep.ntf -O copies
cmp a.ntf copies/a.ntf
[ "$(wc -l <err.txt)" -eq 1 ] || fail "nothing else when all is well: $(cat err.txt)"
expect 2 'two files would be written' "$tool" copy a.ntf in/a.ntf -O copies
expect 2 'give either' "$tool" copy a.ntf
if ls .orbntf-* x.* 2>/dev/null; then fail "something is left"; fi

# Completion, as the shells take it; the version.
"$tool" completion bash >complete.bash
bash -c 'source ./complete.bash; COMP_WORDS=(orbntf ren); COMP_CWORD=1; _orbntf; [ "${COMPREPLY[*]}" = render ]' || fail bash
bash -c 'source ./complete.bash; COMP_WORDS=(orbntf render --reg); COMP_CWORD=2; _orbntf; [ "${COMPREPLY[*]}" = --region ]' || fail bash
shows '#compdef orbntf' "$tool" completion zsh
shows 'complete -c orbntf' "$tool" completion fish
shows 'OpenJPEG' "$tool" --version
exit 0
