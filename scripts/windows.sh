#!/usr/bin/env bash
# Cross-builds both 32-bit Windows DLLs and the tests, checks what the DLLs export and import, and runs the
# tests under Wine where that can be had.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh windows
cmake --preset windows-x86
cmake --build --preset windows-x86
bin=build/windows-x86/bin
objdump=i686-w64-mingw32-objdump

# The names of a DLL's export table.
exports_of() {
  $objdump -p "$1" | awk '/^\[Ordinal\/Name Pointer\] Table/ { inside = 1; next } inside && !NF { inside = 0 } inside { print $NF }' | sort
}
# The functions that headers declare with a macro.
declared_in() {
  local macro=$1
  shift
  cat "$@" | tr '\n' ' ' | grep -oP "\b$macro\b[^;{#]*?\bORB_CALL\s+\K\w+(?=\()" | sort -u
}
check() {
  local title=$1
  shift
  diff -u "$@" || { echo "windows.sh: $title" >&2; exit 1; }
}

echo "exports of orbntf.dll:"
exports_of "$bin/orbntf.dll" | sed 's/^/  /'
check "orbntf.dll does not export what its header declares" \
  <(declared_in ORB_API include/orbntf/orbntf.h) <(exports_of "$bin/orbntf.dll")
# The handlers belong to the Windows calls, which Windows supplies itself.
check "hostkit.dll does not export what the host's headers declare" \
  <(declared_in ORB_HOST_API host/{kernel,display,vector,fileformat}.h include/orbntf/host.h hostkit/hostkit.h |
    grep -v '^HostkitSet.*Handler$') <(exports_of "$bin/hostkit.dll")

for dll in orbntf hostkit; do
  foreign=$($objdump -p "$bin/$dll.dll" | awk '/DLL Name:/ { print tolower($3) }' |
    grep -vxE '(kernel32|user32|gdi32|msvcrt|hostkit)\.dll' || true)
  [ -z "$foreign" ] || { echo "windows.sh: $dll.dll needs $foreign" >&2; exit 1; }
done
echo "windows.sh: exports and imports of both DLLs are as they should be"

if scripts/wine.sh --prepare; then
  ctest --preset windows-x86
else
  echo "################################################################" >&2
  echo "### windows.sh: THE WINDOWS TESTS WERE BUILT BUT NOT RUN,    ###" >&2
  echo "### because Wine could not be made ready (see above).        ###" >&2
  echo "################################################################" >&2
fi
