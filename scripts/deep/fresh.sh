#!/usr/bin/env bash
# Runs ./try twice, or the commands it is given, in a fresh Debian with nothing but git, below build/deep/fresh
#
#   ./check --deep fresh              ./try, and once more, which has to take less than 10 seconds
#   ./check --deep fresh COMMAND...   these instead, one after the other: ./check './bench wide_strings'
#
# Takes root, for chroot; what the machine's apt is told about its sources holds for the fresh one too.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"
need debootstrap git
[ "$(id -u)" -eq 0 ] || die 'fresh: a fresh root takes root'

fresh=$deep/fresh
rm -rf "$fresh"
trap 'rm -rf "$fresh"' EXIT
mkdir -p "$fresh"

# Mounts are the namespace's own, and gone with it.
inside() {
  env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
    unshare --mount --pid --fork --mount-proc="$fresh/proc" chroot "$fresh" /bin/bash -c "$1"
}
make_root() {
  debootstrap --variant=minbase --include=git,ca-certificates bookworm "$fresh" || return
  apt-config dump Acquire >"$fresh/etc/apt/apt.conf.d/00machine"
  cp /etc/resolv.conf "$fresh/etc/resolv.conf"
  git clone -q --no-hardlinks . "$fresh/root/kest"
}
# run NAME COMMAND: a step. Says in took how many seconds it was.
run() {
  local begin=$EPOCHREALTIME
  step "$1" "deep-fresh" inside "mount -t devtmpfs dev /dev 2>/dev/null; cd /root/kest && $2"
  took=$(seconds_since "$begin")
}

step 'make a fresh root' deep-fresh-root make_root
if [ $# -gt 0 ]; then
  for command in "$@"; do run "$command" "$command"; done
  exit
fi
run './try' ./try
figure 'seconds, first ./try' "$took"
run './try, again' ./try
figure 'seconds, second ./try' "$took"
[ "${took%.*}" -lt 10 ] || die "fresh: the second ./try took $took seconds"
