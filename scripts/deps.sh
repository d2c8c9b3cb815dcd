#!/usr/bin/env bash
# Installs the Debian packages that building and testing take. Works as root and as a user with sudo.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config ca-certificates)
libraries=(
  libjpeg62-turbo-dev libopenjp2-7-dev libtiff-dev libcairo2-dev libpng-dev libfontconfig-dev
  libdcmtk-dev libcli11-dev nlohmann-json3-dev libxxhash-dev libexpat1-dev libgeographiclib-dev libgeotiff-dev libproj-dev proj-data fonts-liberation2
  python3-dev pybind11-dev python3-numpy
)
case "$*" in
  windows | wine | emulation) ;;  # cross-builds take none of them
  *) packages+=("${libraries[@]}") ;;
esac
for group in "$@"; do
  case "$group" in
    test)
      packages+=(libgtest-dev parallel python3 python3-jsonschema python3-tifffile python3-pytest python3-pil
        python3-dask python3-distributed python3-setuptools python3-venv
        shared-mime-info libglib2.0-bin desktop-file-utils appstream chromium libjpeg-turbo-progs libopenjp2-tools libtiff-tools)
      command -v node >/dev/null && command -v npm >/dev/null || packages+=(nodejs npm)
      ;;
    check) packages+=(clang clang-tidy clang-format libclang-rt-14-dev llvm-14 python3) ;;
    bench) packages+=(libbenchmark-dev) ;;
    windows) packages+=(g++-mingw-w64-i686 googletest) ;;
    wine) packages+=(debootstrap) ;;
    package) packages+=(debootstrap dpkg-dev file lintian) ;;
    reference) packages+=(doxygen) ;;
    emulation) packages+=(qemu-system-x86 busybox-static cpio e2fsprogs) ;;
    *) echo "deps.sh: unknown group $group" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ "${#missing[@]}" -eq 0 ] && exit 0

root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
"${root[@]}" apt-get update -qq
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
