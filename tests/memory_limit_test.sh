#!/usr/bin/env bash
# Every command with little memory, from 40 MB up, ends with a status and never with a signal.
# usage: memory_limit_test.sh TOOL FOLDER
set -uo pipefail
tool=$1
work=$(mktemp -d "$2/memory.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
printf 'some words\n' >text.txt
"$tool" new -o first.ntf --station S --text text.txt || exit 1
"$tool" render first.ntf -o picture.png --module --fixed-canvas || exit 1
# A metafile of a square and a word.
printf '\x00\x22\x01t\x00\x62\x01p\x20\x42\x00\x01\x00\x80\x52\xC2\x00\x01' >drawing.cgm
printf '\x41\x68\x00\x0A\x00\x0A\x00\x32\x00\x28\x40\x8B\x00\x07\x00\x08\x00\x01\x04text\x00' >>drawing.cgm
printf '\x00\xA0\x00\x40' >>drawing.cgm
"$tool" new -o file.ntf --station S --image picture.png --graphic drawing.cgm --text text.txt || exit 1
"$tool" render file.ntf -o whole.ppm || exit 1
failed=0
codes=
# Whether libraries end the program with so little memory before anything of its own runs. They lie elsewhere each time.
dies_early() {
  local kilobytes=$1
  for _ in $(seq 0 19); do
    (
      ulimit -v "$kilobytes" -c 0
      "$tool" --version
    ) >/dev/null 2>&1
    [ $? -gt 125 ] && return 0
  done
  return 1
}
try() {
  local kilobytes=$1
  shift
  (
    ulimit -v "$kilobytes" -c 0
    exec "$@"
  ) >out 2>err
  local code=$?
  # 126 and 127: the system could not load the program at all.
  if [ "$code" -gt 127 ] && ! dies_early "$kilobytes"; then
    echo "$kilobytes KB: $* ended with $code: $(tail -1 err)"
    failed=1
  fi
  codes="$codes $code"
  rm -f ./*.out.*
}
for step in $(seq 0 29); do
  kilobytes=$((40000 + step * 1600))
  try $kilobytes "$tool" info file.ntf
  try $kilobytes "$tool" info --json file.ntf
  try $kilobytes "$tool" check file.ntf
  try $kilobytes "$tool" report file.ntf -o x.out.html
  try $kilobytes "$tool" extract file.ntf image:0 -o x.out.tif
  try $kilobytes "$tool" diff file.ntf first.ntf
  try $kilobytes "$tool" render file.ntf -o x.out.png
  try $kilobytes "$tool" render file.ntf --scale 1/4 -o x.out.ppm
  try $kilobytes "$tool" render file.ntf --module -o x.out.ppm
  try $kilobytes "$tool" copy file.ntf -o x.out.ntf
  try $kilobytes "$tool" set file.ntf FTITLE=words -o x.out.ntf
  try $kilobytes "$tool" new --image picture.png --text text.txt -o x.out.ntf
  try $kilobytes "$tool" append file.ntf --image picture.png -o x.out.ntf
  try $kilobytes "$tool" text file.ntf
  try $kilobytes "$tool" graphic file.ntf 0 -o x.out.png
done
# Some found too little, and some enough.
[[ $codes == *" 1"* && $codes == *" 0"* ]] || failed=1
exit $failed
