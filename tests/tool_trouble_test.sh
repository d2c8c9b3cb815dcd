#!/usr/bin/env bash
# What goes wrong around the tool: reads that fail or are broken off, inputs that are none, outputs that are inputs,
# processes that die, files that ask for too much. Arguments: the tool, a scratch folder, the library of troubles.
set -euo pipefail
. "$(dirname "$0")/support/tool.sh"
tool=$1 library=$3
scratch=$(mktemp -d "$2/trouble-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
export TMPDIR=$PWD
trouble() { # MODE COMMAND...: with the system's calls going wrong
  local mode=$1
  shift
  env LD_PRELOAD="$library" TROUBLE="$mode" ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0 "$@"
}
nothing_left() { [ -z "$(find . -name '.orbntf-*')" ] || fail "$1 left $(find . -name '.orbntf-*')"; }

printf 'P5\n600 400\n255\n' >grey.pgm && head -c 240000 /dev/zero | tr '\0' 'g' >>grey.pgm
printf 'Some words' >words.txt
"$tool" new -o a.ntf --station S --image grey.pgm --lossless --text words.txt
"$tool" new -o b.ntf --station S --text words.txt

# Calls that are broken off are taken up again, wherever.
for command in "copy a.ntf -o x.ntf" "render a.ntf -o x.png" "render a.ntf -o x.tif" "extract a.ntf image:0 -o x.raw" \
  "extract a.ntf image:0 -o y.tif" "report a.ntf -o x.html" "text a.ntf -o x.txt" "check a.ntf" "info --json a.ntf" \
  "new -o x2.ntf --image grey.pgm --lossless --text words.txt" "extract a.ntf --all -O all"; do
  # shellcheck disable=SC2086
  expect 0 '' trouble interrupt "$tool" $command
done
cmp -s x.ntf a.ntf || fail "an interrupted copy"
"$tool" extract a.ntf image:0 -o whole.raw && cmp -s whole.raw x.raw || fail "interrupted samples"
"$tool" render a.ntf -o whole.tif && cmp -s whole.tif x.tif || fail "an interrupted TIFF"
"$tool" copy a.ntf -o - | cmp -s - a.ntf || fail "copy to standard output"
trouble interrupt "$tool" copy a.ntf -o - | cmp -s - a.ntf || fail "an interrupted copy to standard output"

# A read that fails is not the end of a file.
expect 1 'cannot be read: Input/output error' trouble fail:grey.pgm:1 "$tool" new -o bad.ntf --image grey.pgm --lossless
expect 1 'Input/output error' trouble fail:words.txt:1 "$tool" new -o bad.ntf --text words.txt
for n in 1 2; do
  for command in "check a.ntf" "report a.ntf -o bad.html" "info a.ntf" "diff a.ntf b.ntf" "extract a.ntf image:0 -o bad.raw" \
    "render a.ntf -o bad.png" "copy a.ntf -o bad.ntf"; do
    # shellcheck disable=SC2086
    expect 1 '' trouble "fail:a.ntf:$n" "$tool" $command
    ! grep -qE 'error |refused' out.txt || fail "$command calls a sound file broken: $(cat out.txt)"
    [ -z "$(ls bad.* 2>/dev/null)" ] || fail "$command left $(ls bad.*)"
  done
done
nothing_left "failing reads"

# No output is an input, by whatever name.
expect 2 'the output is an input' "$tool" append a.ntf -o words.txt --text words.txt
expect 2 'the output is an input' "$tool" new -o grey.pgm --image grey.pgm
ln -s words.txt other.txt
expect 2 'the output is an input' "$tool" new -o other.txt --text words.txt
mkdir -p A/sub && cp a.ntf A/one.ntf && cp b.ntf A/sub/one.ntf
expect 2 'an output is an input: A/sub/one.ntf' "$tool" copy -r A -O A/sub
cmp -s A/sub/one.ntf b.ntf || fail "an input was written over"
expect 2 'the output is the input' "$tool" report a.ntf b.ntf -o b.ntf
mkdir given && cp a.ntf given/text-0.txt
expect 2 'an output is the input' "$tool" extract given/text-0.txt --all -O given

# What is no regular file is refused; - is standard input.
mkfifo pipe
for command in "info pipe" "check pipe" "render pipe -o x.png" "copy pipe -o x2.ntf" "extract pipe text:0 -o x.txt" \
  "diff a.ntf pipe" "text pipe" "report pipe -o x.html" "set pipe -o x2.ntf FTITLE=x" "new -o x2.ntf --image pipe" \
  "graphic pipe 0 -o x.svg" "append pipe -o x2.ntf --text words.txt" "new -o x2.ntf --text pipe"; do
  # shellcheck disable=SC2086
  expect 1 'no regular file' timeout 20 "$tool" $command
done
mkdir definitions && mkfifo definitions/a.json
expect 1 'no regular file' timeout 20 "$tool" --records definitions info a.ntf
expect 0 '' "$tool" copy - -o piped.ntf <a.ntf
cmp -s piped.ntf a.ntf || fail "standard input copied"
"$tool" info - <a.ntf >out.txt && grep -q '^standard input: NITF' out.txt || fail "info of standard input"
expect 1 'standard input: status' "$tool" info - </dev/null
expect 0 '' "$tool" new -o piped.ntf --text - <words.txt
[ "$("$tool" text piped.ntf)" = 'Some words' ] || fail "a text from standard input"
nothing_left "standard input"

# Batches: what is skipped is told, names that collide name both, nothing found is no success.
mkdir -p tree/deep empty && cp a.ntf tree/a.ntf && cp b.ntf tree/deep/b.nsf
printf 'no file of the format' >tree/wrong.ntf && printf 'notes' >tree/notes.txt
expect 1 'wrong.ntf: begins with neither NITF nor NSIF' "$tool" info -r tree
grep -q '3 files, 1 failed' err.txt || fail "the count of a batch: $(cat err.txt)"
expect 1 'no file of the format was found' "$tool" check -r empty
expect 1 'no file of the format was found' "$tool" info --json -r empty
[ "$(tr -d ' \n' <out.txt)" = '[]' ] || fail "JSON of nothing: $(cat out.txt)"
mkdir one two && cp a.ntf one/a.ntf && cp a.ntf two/a.nitf
expect 2 'one/a.ntf and two/a.nitf' "$tool" render one/a.ntf two/a.nitf -O pictures
expect 0 '' "$tool" render one/a.ntf two/a.nitf --keep-ending -O pictures
[ -s pictures/a.ntf.png ] && [ -s pictures/a.nitf.png ] || fail "--keep-ending: $(ls pictures)"
# A process that dies is told and counted, and leaves nothing.
for jobs in 2 3; do
  expect 1 'deep/b.nsf: its process was ended by a signal: Killed' \
    trouble die:b.nsf "$tool" render tree/a.ntf tree/deep/b.nsf --jobs $jobs -O pictures
  grep -q '2 files, 1 failed' err.txt || fail "a death is counted: $(cat err.txt)"
  nothing_left "a death"
  for command in info check; do
    expect 1 'its process was ended' trouble die:b.nsf "$tool" $command --json tree/a.ntf tree/deep/b.nsf --jobs $jobs
    python3 - out.txt <<'PY' || fail "$command --json after a death"
import json, sys
a, b = json.load(open(sys.argv[1]))
assert a["status"] == 1 and b["status"] == -7 and b["file"].endswith("b.nsf"), (a["status"], b)
PY
  done
done
# Signals reach the processes of a batch.
printf 'P5\n6000 6000\n255\n' >large.pgm && head -c 36000000 /dev/zero >>large.pgm
"$tool" new -o large.ntf --image large.pgm --lossless 2>/dev/null
for i in 1 2 3; do cp large.ntf large$i.ntf; done
for signal in TERM KILL; do
  rm -rf pictures && mkdir pictures
  "$tool" render large1.ntf large2.ntf large3.ntf --jobs 3 -O pictures 2>/dev/null & running=$!
  for _ in $(seq 300); do [ -z "$(find pictures -name '.orbntf-*')" ] || break; sleep 0.01; done
  kill -s "$signal" "$running"
  wait "$running" || true
  for _ in $(seq 200); do pgrep -f "$PWD|large1.ntf large2.ntf" >/dev/null || break; sleep 0.05; done
  ! pgrep -f 'large1.ntf large2.ntf' >/dev/null || fail "SIG$signal left processes"
  nothing_left "SIG$signal"
done

# Reports: a missing file is told and the others are there; marks of the template are names like others.
cp a.ntf '{{TITLE}}.ntf' && cp a.ntf '{{BODY}}.ntf'
expect 1 'missing.ntf' "$tool" report '{{TITLE}}.ntf' missing.ntf '{{BODY}}.ntf' --jobs 2 -o page.html
[ "$(grep -o '<article' page.html | wc -l)" -eq 3 ] || fail "articles of a page"
grep -q '<h2>{{TITLE}}.ntf</h2>' page.html && grep -q '<h2>{{BODY}}.ntf</h2>' page.html || fail "names of a page"
"$tool" report a.ntf b.ntf -o one.html && "$tool" report a.ntf b.ntf --jobs 2 -o two.html
cmp -s one.html two.html || fail "a page by several processes is another"
# A page stays small, whatever is in its files.
python3 - <<'PY'
import random
random.seed(7)
open("noise.pgm", "wb").write(b"P5\n900 900\n255\n" + random.randbytes(810000))
PY
"$tool" new -o noise.ntf --image noise.pgm --lossless
mkdir many && for i in $(seq 30); do ln noise.ntf many/$i.ntf; done
expect 0 '' "$tool" report many/*.ntf -o many.html
[ "$(stat -c %s many.html)" -le 4194304 ] || fail "a page of $(stat -c %s many.html) bytes"
grep -q 'so that the page stays small' many.html || fail "a page says that it is shortened"
[ "$(grep -o '<article' many.html | wc -l)" -eq 30 ] || fail "files of a page"

# A limit of a file's size is a sentence.
for command in "copy large.ntf -o limited.ntf" "render large.ntf -o limited.ppm" "extract large.ntf image:0 -o limited.tif"; do
  # shellcheck disable=SC2086
  expect 1 'too large for the file system or the limit set' bash -c 'ulimit -f 100; exec "$@"' - "$tool" $command
  [ ! -e limited.ntf ] && [ ! -e limited.ppm ] && [ ! -e limited.tif ] || fail "a file beyond the limit"
done
nothing_left "a limit"

# A pipe that is closed ends the tool as it ends others, however much is written by another thread.
for form in ppm png jpeg; do
  set +e
  "$tool" render large.ntf -o - --format "$form" 2>pipe.err | head -c 100 >/dev/null
  codes=("${PIPESTATUS[@]}")
  set -e
  [ "${codes[0]}" -eq 141 ] && [ ! -s pipe.err ] || fail "a closed pipe: $form ${codes[0]} $(cat pipe.err)"
done
nothing_left "a closed pipe"

# A plugin comes from the tool's own folder alone, wherever the tool stands or is called from; without it the rest works.
plugins=$(cd "$(dirname "$tool")" && echo orbntf-*)
if [ -e "$(dirname "$tool")/$plugins/wide-jpeg.so" ]; then
  { printf 'P5\n32 32\n4095\n' && head -c 2048 /dev/zero | tr '\0' '\5'; } >deep.pgm
  "$tool" new -o deep.ntf --station S --image deep.pgm --quality 80
  mkdir alone && cp "$tool" "$(dirname "$tool")"/libhostkit.so* alone/
  mkdir "$plugins" && cp "$(dirname "$tool")/$plugins/wide-jpeg.so" "$plugins"/
  export LD_LIBRARY_PATH=$PWD/$plugins
  expect 1 'it takes the plugin wide-jpeg.so, which cannot be opened' alone/orbntf extract deep.ntf image:0 -o deep.tif
  expect 1 'is left out' alone/orbntf render deep.ntf -o deep.png
  expect 0 '' alone/orbntf render a.ntf -o a.png
  unset LD_LIBRARY_PATH
  mv "$plugins" alone/ && ln -s alone/orbntf link
  expect 0 '' ./link extract deep.ntf image:0 -o deep.tif
fi
exit 0
