#!/usr/bin/env bash
# The files for desktops: the type of files, thumbnails as file managers ask for them, the entry that opens a page.
# Arguments: the tool, the project's folder, a scratch folder. Ends with 77 without the desktop's programs.
set -euo pipefail
for program in update-mime-database gio desktop-file-validate; do
  command -v $program >/dev/null || { echo "no $program"; exit 77; }
done
tool=$(realpath "$1")
desktop=$(realpath "$2")/desktop
scratch=$(mktemp -d "$3/desktop-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
mkdir -p bin data/mime/packages
ln -s "$tool" bin/orbntf
cp "$desktop/orbntf-open" bin/
# What stands for the browser.
printf '#!/bin/sh\ncp "$1" "%s/opened.html"\n' "$scratch" >bin/xdg-open
chmod +x bin/xdg-open
export PATH=$scratch/bin:$PATH XDG_DATA_HOME=$scratch/data TMPDIR=$scratch
unset XDG_RUNTIME_DIR
printf 'P5 40 30 255\n%1200s' x >a.pgm
orbntf new -o 'a file.ntf' --station S --image a.pgm

# Files are known by their names and by their first bytes.
cp "$desktop/orbntf.xml" data/mime/packages/
update-mime-database data/mime
typeOf() { gio info -a standard::content-type "$1" | sed -n 's/.*standard::content-type: //p'; }
cp 'a file.ntf' nameless
cp nameless b.nitf
for version in NSIF01.00 NITF02.00; do
  { printf %s $version; tail -c +10 nameless; } >"$version"
done
for file in 'a file.ntf' nameless b.nitf NSIF01.00 NITF02.00; do
  [ "$(typeOf "$file")" = application/vnd.nitf ] || { echo "$file is $(typeOf "$file")"; exit 1; }
done
[ "$(typeOf a.pgm)" != application/vnd.nitf ]

# Sanitizers take more memory than any limit gives.
memory=512M
[[ $(ldd "$tool") != *asan* ]] || memory=100000G
# A thumbnail, by the entry's own words with what a file manager puts into them.
thumbnail() {
  local -a words
  local size=$1 input=$2 output=$3 i
  read -ra words <<<"$(sed -n 's/^Exec=//p' "$desktop/orbntf.thumbnailer")"
  for i in "${!words[@]}"; do
    case ${words[i]} in
      %s) words[i]=$size ;;
      %i) words[i]=$input ;;
      %o) words[i]=$output ;;
      512M) words[i]=$memory ;;
    esac
  done
  "${words[@]}"
}
for size in 16 128 256; do
  thumbnail $size 'a file.ntf' "t$size.png"
  [ "$(head -c 4 "t$size.png" | tail -c 3)" = PNG ]
done
thumbnail 128 "$scratch/nameless" "$scratch/absolute.png"
# Of what is no such file, or damaged, there is none, and it ends soon.
head -c 500 nameless >cut.ntf
head -c 3000 /dev/zero >zeros.ntf
{ head -c 360 nameless; head -c 100000 /dev/urandom; } >noise.ntf
for file in cut.ntf zeros.ntf noise.ntf none.ntf; do
  code=0
  thumbnail 128 $file "$file.png" 2>words || code=$?
  [ $code -eq 0 ] || [ $code -eq 1 ] || { echo "$file ended with $code"; exit 1; }
  [ $code -eq 1 ] || [ -s "$file.png" ]
done

# The entry opens a page; what cannot be read is told.
desktop-file-validate "$desktop/org.orbntf.orbntf.desktop"
bin/orbntf-open 'a file.ntf'
grep -q '<html' opened.html
rm opened.html
if bin/orbntf-open none.ntf 2>words; then exit 1; fi
grep -q none.ntf words
[ ! -e opened.html ]
if command -v appstreamcli >/dev/null; then appstreamcli validate --no-net "$desktop/org.orbntf.orbntf.metainfo.xml"; fi
