#!/usr/bin/env bash
# Runs a 32-bit Windows program under Wine:
#
#   wine.sh PROGRAM [ARGUMENT...]   from the project's folder or below; gives the program's exit status
#   wine.sh --prepare               makes what that takes; fails, saying why, where it cannot be made
#
# Wine lives in a Debian root of its own in build/wine. A kernel that runs 32-bit programs runs it in a
# chroot; where the kernel does not, a small emulated machine is started for each program.
set -euo pipefail
project=$(cd "$(dirname "$0")/.." && pwd)
home=$project/build/wine
root=$home/root
environment=(HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 WINEDEBUG=-all
  "WINEDLLOVERRIDES=mscoree,mshtml=")

# Sets Wine's folders up and waits until everything is on the disk.
boot=(bash -c 'wineboot -i && wineserver -w')

as_root=()
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo -n); fi

fail() {
  echo "wine.sh: $*" >&2
  exit 1
}

# Wine does not run on a translator of single programs, which may stand in for the kernel here.
runs_32_bit() {
  ! grep -qs '^enabled' /proc/sys/fs/binfmt_misc/qemu-i386* &&
    "${as_root[@]}" chroot "$root" /lib/ld-linux.so.2 --version >/dev/null 2>&1
}

# A Debian of this machine's own architecture with Wine's 32-bit packages beside: nothing of those runs
# while they are installed.
make_root() {
  [ -e "$root" ] && return
  "$project/scripts/deps.sh" wine || return 1
  "${as_root[@]}" umount "$root.part/proc" "$root.part/sys" 2>/dev/null || true  # of a run cut short
  "${as_root[@]}" rm -rf --one-file-system "$root.part"
  "${as_root[@]}" debootstrap --variant=minbase bookworm "$root.part" >"$home/root.log" 2>&1 || return 1
  in_part() { "${as_root[@]}" chroot "$root.part" env DEBIAN_FRONTEND=noninteractive "$@" >>"$home/root.log" 2>&1; }
  in_part dpkg --add-architecture i386 && in_part apt-get update -q &&
    in_part apt-get install -q -y --no-install-recommends wine wine32:i386 && in_part apt-get clean || return 1
  "${as_root[@]}" mv "$root.part" "$root"
}

# ---------------------------------------------------------------- in a chroot

# The mounts end with the namespace that they are made in.
run_in_chroot() {
  "${as_root[@]}" unshare --mount --propagation private bash -euc '
    root=$1 project=$2 folder=$3; shift 3
    mkdir -p "$root$project"
    mount --bind "$project" "$root$project"
    mount -t proc proc "$root/proc"
    exec chroot "$root" bash -c "cd \"\$0\" && \"\$@\"; status=\$?; HOME=/root wineserver -k; exit \$status" \
      "$folder" env -i "$@"' - "$root" "$project" "$PWD" "${environment[@]}" "$@"
}

# ---------------------------------------------------------------- in an emulated machine

kernel() { echo "$home"/kernel/boot/vmlinuz*; }

make_kernel() {
  [ "$home/initrd" -nt "$project/scripts/wine-init.sh" ] && return
  if [ ! -e "$(kernel)" ]; then
    local package
    package=$(apt-cache depends linux-image-cloud-amd64 | awk '/Depends: linux-image/ { print $2; exit }')
    rm -rf "$home/download" "$home/kernel" && mkdir -p "$home/download" || return 1
    (cd "$home/download" && apt-get download -q "$package") >>"$home/root.log" 2>&1 || return 1
    dpkg -x "$home"/download/linux-image-*.deb "$home/kernel" || return 1
  fi
  rm -rf "$home/initrd.d" && mkdir -p "$home/initrd.d"/{bin,dev,machine,modules,proc} || return 1
  cp /bin/busybox "$home/initrd.d/bin/" && cp "$project/scripts/wine-init.sh" "$home/initrd.d/init" || return 1
  find "$home/kernel" -path '*/drivers/*' \( -name 'virtio*ring.ko' -o -name virtio.ko -o -name virtio_blk.ko \
    -o -name 'virtio_pci*.ko' \) -exec cp {} "$home/initrd.d/modules/" ';' || return 1
  (cd "$home/initrd.d" && find . | cpio --quiet -o -H newc | gzip -1) >"$home/initrd.part" || return 1
  mv "$home/initrd.part" "$home/initrd"
}

make_disk() {
  [ -e "$home/disk" ] && return
  truncate -s 3G "$home/disk.part"
  "${as_root[@]}" mke2fs -F -q -t ext4 -d "$root" "$home/disk.part" || return 1
  disk=$home/disk.part run_in_machine "${boot[@]}" >>"$home/root.log" 2>&1 || return 1
  mv "$home/disk.part" "$home/disk"
}

# The machine gets the programs, what the tests read of the sources, and the command, as an archive on its
# second disk; it answers on its second serial line, the exit status last.
run_in_machine() {
  local job keep=()
  job=$(mktemp -d)
  if [ -z "${disk-}" ]; then keep=(-snapshot); fi
  printf 'mkdir -p %q && cd %q && exec ' "$PWD" "$PWD" >"$job/command"
  printf '%q ' env -i "${environment[@]}" "$@" >>"$job/command"
  tar -cf "$job/archive" -C "$job" command -C / "${project#/}"/{docs,include,build/windows-x86/bin}
  truncate -s %1M "$job/archive"
  local status=0
  timeout 1400 qemu-system-x86_64 -accel tcg,thread=multi -m 2048 -smp 2 -display none -no-reboot \
    -nic none -kernel "$(kernel)" -initrd "$home/initrd" -append 'console=ttyS0 quiet mitigations=off panic=-1' \
    -serial null -serial stdio "${keep[@]}" -drive "file=${disk-$home/disk},format=raw,if=virtio" \
    -drive "file=$job/archive,format=raw,if=virtio" </dev/null |
    awk 'BEGIN { status = 125 } /^wine.sh: exit / { status = $3; next } { print; fflush() } END { exit status }' ||
    status=$?
  rm -rf "$job"
  return "$status"
}

# ---------------------------------------------------------------- the two calls

if [ "${1-}" = --prepare ]; then
  mkdir -p "$home"
  "${as_root[@]}" true 2>/dev/null || fail "no root rights"
  make_root || fail "no Debian root with Wine could be made; see build/wine/root.log"
  if runs_32_bit; then
    echo "wine.sh: programs run in a chroot"
    rm -f "$home/disk"
    if [ ! -e "$home/booted" ]; then
      run_in_chroot "${boot[@]}" >>"$home/root.log" 2>&1 || fail "Wine does not start; see build/wine/root.log"
      touch "$home/booted"
    fi
  else
    echo "wine.sh: this kernel runs no 32-bit programs; they run in an emulated machine"
    "$project/scripts/deps.sh" emulation
    make_kernel || fail "no kernel for the emulated machine could be had; see build/wine/root.log"
    make_disk || fail "Wine does not start in the emulated machine; see build/wine/root.log"
  fi
  exit
fi

[ -e "$root" ] || fail "run scripts/wine.sh --prepare first"
if [ -e "$home/disk" ]; then run_in_machine wine "$@"; else run_in_chroot wine "$@"; fi
