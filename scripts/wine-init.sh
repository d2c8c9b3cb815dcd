#!/bin/busybox sh
# First program of the emulated machine that wine.sh starts: unpacks the archive of the second disk onto
# the first, runs its command there and switches the machine off.
box=/bin/busybox
$box mount -t proc proc /proc
$box mount -t devtmpfs dev /dev
# Some modules need others first.
until [ -e /dev/vda ] && [ -e /dev/vdb ]; do
  for module in /modules/*.ko; do $box insmod "$module" 2>/dev/null; done
  $box sleep 0.1
done
$box mount -t ext4 /dev/vda /machine
$box tar -xf /dev/vdb -C /machine
$box mount -t proc proc /machine/proc
$box mount -t devtmpfs dev /machine/dev
$box stty -F /dev/ttyS1 raw
# Through a pipe: Wine draws a console on a terminal.
$box chroot /machine /bin/bash -c 'bash /command 2>&1 | cat; exit "${PIPESTATUS[0]}"' </dev/null >/dev/ttyS1
status=$?
printf '\nwine.sh: exit %s\n' "$status" >/dev/ttyS1
HOME=/root $box chroot /machine wineserver -k
$box umount /machine/proc /machine/dev
$box sync
$box mount -o remount,ro /machine
$box poweroff -f
