#!/usr/bin/env bash
# The library as others use it: installed, found by CMake and by pkg-config, used from C99 and C++17.
# Arguments: the project's folder, the installed prefix, a scratch folder. With the prefix / it is the system's.
set -euo pipefail
project=$1 prefix=$2
scratch=$(mktemp -d "$3/consumer-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
fail() { echo "consumer_test: $*" >&2; exit 1; }
if [ "$prefix" != / ]; then
  export PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name orbntf.pc)") CMAKE_PREFIX_PATH=$prefix
  export LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH") PATH=$prefix/bin:$PATH
fi
cp -r "$project/docs/example" example
cmake -S example -B build >/dev/null && cmake --build build >/dev/null
read -ra flags <<<"$(pkg-config --cflags --libs orbntf)"
cc -std=c99 -pedantic -Wall -Wextra -Werror example/list.c -o list99 "${flags[@]}"
c++ -std=c++17 -pedantic -Wall -Wextra -Werror example/render_ppm.cpp -o render17 "${flags[@]}"
c++ -std=c++17 -pedantic -Wall -Wextra -Werror example/core_look.cpp -o look17 $(pkg-config --cflags --libs orbntf-core)
build/append_image one.ntf
build/append_image one.ntf two.ntf
./list99 two.ntf >list.txt
[ "$(grep -c '^image .* C3, 64 x 48' list.txt)" -eq 2 ] || fail "$(cat list.txt)"
build/edit_title two.ntf titled.ntf 'A title' >/dev/null
./render17 titled.ntf out.ppm
orbntf render titled.ntf -o tool.ppm
cmp out.ppm tool.ppm
for look in build/core_look ./look17; do
  $look titled.ntf >look.txt
  grep -q '^FTITLE   A title' look.txt && tail -1 look.txt | grep -qE '^([0-9a-f]{2} ){11}[0-9a-f]{2}$' || fail "$(cat look.txt)"
done
if ./look17 example/list.c 2>words.txt; then fail "no NITF file for the core"; fi
grep -q 'no NITF 2.1' words.txt
if ./render17 example/list.c out.ppm 2>words.txt; then fail "no NITF file"; fi
grep -q 'not the expected NITF structure' words.txt
