#!/usr/bin/env bash
# Makes the Debian packages and tries them in a bare Debian 12 root: the tool, its manual and completion, and
# programs in C and C++ that are built against the installed library.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh package
cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr >/dev/null
cmake --build --preset release
rm -rf build/package
mkdir build/package
(cd build/release && cpack -G DEB -B ../package | grep 'package:')

lintian --fail-on error build/package/*.deb >build/package/lintian.log 2>&1 ||
  { cat build/package/lintian.log >&2; exit 1; }

# A prefix given to the installation, a program of another folder that takes in this one, and the static library.
build/release/bin/orbntf --version | grep -qE 'Cairo [0-9]' || { echo "package.sh: no version of Cairo" >&2; exit 1; }
readelf -d build/release/bin/orbntf build/release/bin/lib*.so | grep -E 'RUNPATH|RPATH' |
  grep -E '\[:|::|:\]' && { echo "package.sh: a search path has an empty element" >&2; exit 1; }
nm -DC --defined-only build/release/bin/liborbntf-core.so | cut -d' ' -f3- |
  grep -vE '^(orbntf::core::|(typeinfo|typeinfo name|vtable) for orbntf::core::Error$)' &&
  { echo "package.sh: liborbntf-core exports more than its header declares" >&2; exit 1; }
cmake --install build/release --prefix "$PWD/build/package/moved" >/dev/null
tests/consumer_test.sh "$PWD" "$PWD/build/package/moved" build/package
tests/subproject_test.sh "$PWD" build/package

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
root=$PWD/build/bare
trap '"${as_root[@]}" rm -rf --one-file-system "$root"' EXIT
"${as_root[@]}" rm -rf --one-file-system "$root"
if ! "${as_root[@]}" debootstrap --variant=minbase bookworm "$root" >build/package/root.log 2>&1; then
  echo "################################################################" >&2
  echo "### package.sh: THE PACKAGES WERE MADE BUT NOT TRIED, because ###" >&2
  echo "### a bare root could not be made: build/package/root.log    ###" >&2
  echo "################################################################" >&2
  exit 0
fi
inside() { "${as_root[@]}" chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive "$@"; }
"${as_root[@]}" mkdir "$root/orbntf"
"${as_root[@]}" cp -r build/package/*.deb docs tests "$root/orbntf"
inside apt-get update -qq
inside bash -c 'cd /orbntf && apt-get install -y -qq --no-install-recommends ./orbntf_*.deb ./liborbntf?_*.deb' >>build/package/root.log 2>&1
inside orbntf --version
inside bash -c 'cd /tmp && printf "P6 2 2 255 abcdefghijkl" >a.ppm && orbntf new -o a.ntf --image a.ppm && orbntf render a.ntf -o a.png && orbntf info a.ntf'
# The plugin is found from where the program is installed.
inside bash -c 'cd /tmp && { printf "P5 16 16 4095 " && head -c 512 /dev/zero; } >deep.pgm && orbntf new -o deep.ntf --image deep.pgm --quality 80 && orbntf extract deep.ntf image:0 -o deep.tif'
inside apt-get install -y -qq --no-install-recommends man-db bash-completion >>build/package/root.log 2>&1
inside man orbntf | grep -q 'Draw the composite, or one image'
for section in EXAMPLES FIELDS; do inside man orbntf | grep -q "^$section"; done
inside bash -c 'source /usr/share/bash-completion/bash_completion; _completion_loader orbntf || true; complete -p orbntf' |
  grep -q _orbntf
inside bash -c 'cd /orbntf && apt-get install -y -qq --no-install-recommends ./liborbntf-core*.deb ./liborbntf-dev_*.deb g++ cmake make pkg-config' >>build/package/root.log 2>&1
inside man orbntf.h | grep -q Orb_NITFCreate
inside bash /orbntf/tests/consumer_test.sh /orbntf / /tmp
inside bash -c 'cd /orbntf && apt-get install -y -qq --no-install-recommends ./orbntf-desktop_*.deb ./python3-orbntf_*.deb libglib2.0-bin' >>build/package/root.log 2>&1
inside bash -c 'cd /tmp && python3 -c "
import orbntf
with orbntf.open(\"a.ntf\") as f:
    assert f.images[0].shape == (3, 2, 2) and f.render().shape == (2, 2, 3), f.images[0].shape
with orbntf.open(\"deep.ntf\") as f:
    assert f.images[0].read().shape == (1, 16, 16)
orbntf.new(\"b.ntf\", images=[f_ for f_ in [orbntf.open(\"a.ntf\").render()[..., 0]]])
"'
inside bash -c 'cd /tmp && $(sed -n "s/^Exec=//p" /usr/share/thumbnailers/orbntf.thumbnailer | sed "s/%s/128/;s/%i/a.ntf/;s/%o/thumbnail.png/") && test -s thumbnail.png'
inside update-mime-database /usr/share/mime
inside bash -c 'cd /tmp && gio info -a standard::content-type a.ntf' | grep -q application/vnd.nitf
inside man orbntf-render | grep -q '^EXAMPLES'
test -s "$root/usr/share/doc/orbntf/tool.md"
echo "package: 6 packages work in a bare root"
