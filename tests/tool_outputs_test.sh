#!/usr/bin/env bash
# Where the tool writes: files, links, FIFOs, devices, full and closed outputs, signals, names of any bytes.
# Arguments: the tool, a scratch folder. As root everything is tried again as an ordinary user.
set -euo pipefail
tool=$1 script=$0
# As another user the script comes through standard input, the helpers in front of it.
if [ -z "${AS_USER:-}" ]; then
  script=$(realpath "$0")
  . "$(dirname "$script")/support/tool.sh"
fi
scratch=$(mktemp -d "$2/outputs-XXXXXX")
trap 'chmod -R u+w "$scratch"; rm -rf "$scratch"' EXIT
cd "$scratch"
export TMPDIR=$PWD
nothing_left() { [ -z "$(find . -name '.orbntf-*')" ] || fail "$1 left $(find . -name '.orbntf-*')"; }

printf 'Some words' >words.txt
printf 'P5\n60 40\n255\n%2400s' x >grey.pgm
"$tool" new -o a.ntf --image grey.pgm --text words.txt

# Regular files: permissions of a new one and of one that is replaced.
(umask 027 && "$tool" copy a.ntf -o new.ntf)
[ "$(stat -c %a new.ntf)" = 640 ] || fail "a new file has $(stat -c %a new.ntf)"
cp a.ntf old.ntf && chmod 604 old.ntf && "$tool" copy new.ntf -o old.ntf
[ "$(stat -c %a old.ntf)" = 604 ] || fail "a replaced file has $(stat -c %a old.ntf)"
cp a.ntf fixed.ntf && chmod 444 fixed.ntf
for command in "copy a.ntf" "render a.ntf --format png" "text a.ntf"; do
  # shellcheck disable=SC2086
  expect 1 'is read-only' "$tool" $command -o fixed.ntf
done
cmp -s a.ntf fixed.ntf || fail "a read-only file was replaced"
mkdir folder
expect 1 'is a folder' "$tool" copy a.ntf -o folder
expect 1 'no such file or folder' "$tool" copy a.ntf -o none/out.ntf

# Links keep pointing, also to what is not there yet.
mkdir there && ln -s there/target.ntf link.ntf && "$tool" copy a.ntf -o link.ntf
[ -L link.ntf ] && cmp -s link.ntf there/target.ntf || fail "the link's target is not written"
printf old >there/target.ntf && "$tool" copy a.ntf -o link.ntf
[ -L link.ntf ] && cmp -s a.ntf there/target.ntf || fail "the link's target is not replaced"

# A FIFO gets everything in order and stays one; TIFF and documents go back in what they write.
mkfifo pipe
"$tool" render a.ntf -o straight.tif && "$tool" render a.ntf -o straight.png
for command in "copy a.ntf" "render a.ntf --format png" "render a.ntf --format tiff" "text a.ntf"; do
  timeout 60 cat pipe >got & reader=$!
  # shellcheck disable=SC2086
  "$tool" $command -o pipe
  wait "$reader"
  [ -p pipe ] || fail "$command replaced the FIFO"
  case $command in
    copy*) cmp -s got a.ntf ;;
    *png) cmp -s got straight.png ;;
    *tiff) cmp -s got straight.tif ;;
    text*) cmp -s got words.txt ;;
  esac || fail "$command through a FIFO"
  nothing_left "$command"
done
"$tool" copy a.ntf -o - | cmp -s - a.ntf || fail "copy to standard output"

# Devices of our own making: one that takes everything, one that is full.
if [ "$(id -u)" -eq 0 ] && mknod null c 1 3 2>/dev/null && mknod full c 1 7 2>/dev/null; then
  for command in "copy a.ntf" "render a.ntf --format png" "text a.ntf"; do
    # shellcheck disable=SC2086
    expect 0 '' "$tool" $command -o null
    # shellcheck disable=SC2086
    expect 1 'no space left' "$tool" $command -o full
    [ -c null ] && [ -c full ] || fail "$command replaced a device"
  done
  for command in "info a.ntf" "info --json a.ntf" "--help" "--version" "text a.ntf" "completion bash" "copy a.ntf -o -"; do
    got=0
    # shellcheck disable=SC2086
    "$tool" $command >full 2>err.txt || got=$?
    [ "$got" -eq 1 ] || fail "$command into a full output: exit $got"
  done
fi
for command in "info a.ntf" "--version" "text a.ntf" "render a.ntf -o -"; do
  got=0
  # shellcheck disable=SC2086
  "$tool" $command >&- 2>err.txt || got=$?
  [ "$got" -eq 1 ] || fail "$command into a closed output: exit $got"
done

# Signals: nothing is left, and the tool ends by the signal.
printf 'P5\n6000 6000\n255\n' >large.pgm && head -c 36000000 /dev/zero >>large.pgm
"$tool" new -o large.ntf --image large.pgm --lossless 2>/dev/null
for signal in INT TERM HUP; do
  # A shell starts background jobs with SIGINT ignored; env starts the tool with it as usual.
  env --default-signal=INT "$tool" render large.ntf -o out.png 2>/dev/null & running=$!
  for _ in $(seq 200); do [ -z "$(find . -name '.orbntf-*')" ] || break; sleep 0.01; done
  kill -s "$signal" "$running"
  got=0
  wait "$running" || got=$?
  [ "$got" -eq $((128 + $(kill -l "$signal"))) ] || fail "SIG$signal: exit $got"
  nothing_left "SIG$signal"
  [ ! -e out.png ] || fail "SIG$signal left an output"
done
got=0
(ulimit -f 100 && "$tool" copy large.ntf -o limited.ntf) 2>/dev/null || got=$?
[ "$got" -ne 0 ] && [ ! -e limited.ntf ] || fail "a file beyond the limit: exit $got"
nothing_left "SIGXFSZ"

# Names are bytes.
name=$(printf 'n\377\303.ntf')
cp a.ntf "$name"
expect 0 '' "$tool" info "$name"
grep -qF 'n\xFF\xC3.ntf' out.txt || fail "a name's bytes are shown as they are: $(cat out.txt)"
expect 0 '' "$tool" copy "$name" -o "$(printf 'o\376.ntf')"
cmp -s "$(printf 'o\376.ntf')" a.ntf || fail "an output of any bytes"
expect 1 'x\x1B[31m.ntf: status -7: no such file' "$tool" info "$(printf 'x\033[31m.ntf')"

if [ "$(id -u)" -eq 0 ] && [ -z "${AS_USER:-}" ] && command -v setpriv >/dev/null; then
  chmod 755 "$2" 2>/dev/null || true
  user=$(mktemp -d "$2/user-XXXXXX")
  chown 65534:65534 "$user"
  if setpriv --reuid 65534 --regid 65534 --clear-groups test -x "$tool" -a -w "$user"; then
    AS_USER=1 setpriv --reuid 65534 --regid 65534 --clear-groups bash -s "$tool" "$user" \
      < <(cat "$(dirname "$script")/support/tool.sh" "$script")
  fi
  rm -rf "$user"
fi
exit 0
