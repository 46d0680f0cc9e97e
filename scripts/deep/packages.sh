#!/usr/bin/env bash
# Builds the Debian packages for i386 and amd64, asks lintian, installs, uses and removes them, in fresh roots below build/deep/packages
#
# Each architecture is built in a Debian of its own, which has no more than debian/control asks for. Takes
# root, for chroot; what the machine's apt is told about its sources holds for the fresh ones too.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"
need debootstrap git
[ "$(id -u)" -eq 0 ] || die 'packages: a fresh root takes root'

work=$deep/packages
rm -rf --one-file-system "$work"
trap 'rm -rf --one-file-system "$work"/{i386,amd64,user}' EXIT
mkdir -p "$work/packages"
sources=$(git ls-files -co --exclude-standard)

# inside ROOT COMMAND: mounts are the namespace's own, and gone with it.
inside() {
  env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    unshare --mount --pid --fork --mount-proc="$work/$1/proc" chroot "$work/$1" /bin/bash -ec "$2"
}

# make_root NAME ARCHITECTURE
make_root() {
  unshare --mount debootstrap --variant=minbase --arch="$2" --include=ca-certificates bookworm "$work/$1" || return
  apt-config dump Acquire >"$work/$1/etc/apt/apt.conf.d/00machine"
  echo 'APT::Install-Recommends "false";' >"$work/$1/etc/apt/apt.conf.d/01small"
  cp /etc/resolv.conf "$work/$1/etc/resolv.conf"
}

# build ARCHITECTURE KIND: KIND is what dpkg-buildpackage builds, any for one architecture's packages or
# binary for those of all architectures too.
build() {
  mkdir -p "$work/$1/root/kest"
  tar -cT - <<<"$sources" | tar -x -C "$work/$1/root/kest"
  inside "$1" "cd /root/kest
    apt-get update
    apt-get install -y build-essential
    apt-get build-dep -y $([ "$2" = any ] && echo --arch-only) ./
    dpkg-buildpackage -us -uc --build=$2" && cp "$work/$1"/root/*.{deb,changes,buildinfo} "$work/packages"
}

# Errors and warnings fail; what is overridden has its reason beside it.
lint() {
  mkdir -p "$work/amd64/root/packages"
  cp "$work/packages"/* "$work/amd64/root/packages"
  inside amd64 'apt-get install -y lintian
    cd /root/packages
    for changes in *.changes; do
      echo "== $changes"
      lintian --allow-root --fail-on error,warning --display-info "$changes"
    done'
}

# What both architectures put in the same place has to be the same, or they do not install together.
share() {
  local package file status=0 shared=0
  for package in libkest1 libkest-dev; do
    for architecture in i386 amd64; do
      rm -rf "$work/content-$architecture"
      dpkg -x "$work/packages/$package"_*_$architecture.deb "$work/content-$architecture" || return 1
    done
    while read -r file; do
      [ -e "$work/content-amd64/$file" ] || continue
      shared=$((shared + 1))
      cmp "$work/content-i386/$file" "$work/content-amd64/$file" || status=1
    done < <(cd "$work/content-i386" && find . -type f)
  done
  rm -rf "$work"/content-*
  echo "$shared files are shared"
  return $((status || shared < 10))
}

install_all() {
  mkdir -p "$work/user/root/packages" "$work/user/root/tests"
  cp "$work/packages"/*.deb "$work/user/root/packages"
  cp -r tests/consumers "$work/user/root/tests"
  inside user 'dpkg --add-architecture i386
    apt-get update
    apt-get install -y g++-multilib cmake ninja-build pkgconf man-db
    cd /root/packages
    apt-get install -y ./libkest1_*.deb ./libkest-dev_*.deb ./libkest-doc_*.deb ./kest-examples_*.deb
    ldconfig -p | grep libKest
    [ "$(ldconfig -p | grep -c libKest.so.1)" -eq 2 ]
    dpkg --verify libkest1:i386 libkest1:amd64 libkest-dev:i386 libkest-dev:amd64 libkest-doc kest-examples'
}

use() {
  inside user 'cd /root
    for bits in 32 64; do
      for method in find_package pkg-config; do
        mkdir $method-$bits
        bash tests/consumers/consume.sh $method $bits g++ /usr $method-$bits
      done
      cmake -G Ninja -S /usr/share/doc/kest-examples/examples -B examples-$bits -DKEST_BITS=$bits
      cmake --build examples-$bits
      for expected in /usr/share/doc/kest-examples/examples/*/expected; do
        name=$(basename "$(dirname "$expected")")
        [ -e "$(dirname "$expected")/$name.cpp" ] || continue  # calls, which is no program but several
        examples-$bits/$name examples-$bits | diff "$expected" -
        echo "$name as expected, $bits bits"
      done
      examples-$bits/census/kest-census /usr/share/doc -o census-$bits
    done
    [ -s /usr/share/doc/libkest-dev/README.md ]'
}

remove() {
  inside user 'apt-get purge -y libkest1:i386 libkest1:amd64 libkest-dev:i386 libkest-dev:amd64 libkest-doc kest-examples
    left=$(find /usr /etc /opt /var -xdev -iname "*kest*" ! -path "/var/cache/apt/*" ! -path "/var/log/*")
    [ -z "$left" ] || { echo "left behind:"; echo "$left"; exit 1; }
    ! ldconfig -p | grep libKest'
}

step 'make a fresh amd64 root' deep-packages-amd64-root make_root amd64 amd64
cp -a "$work/amd64" "$work/user"
step 'make a fresh i386 root' deep-packages-i386-root make_root i386 i386
step 'build for amd64 and for all' deep-packages-amd64 build amd64 binary
step 'build for i386' deep-packages-i386 build i386 any
step 'lintian' deep-packages-lintian lint
step 'compare what is shared' deep-packages-share share
step 'install both architectures' deep-packages-install install_all
step 'use them' deep-packages-use use
step 'remove them' deep-packages-remove remove
figure 'Debian packages' "$(find "$work/packages" -name '*.deb' ! -name '*-dbgsym_*' | wc -l)"
