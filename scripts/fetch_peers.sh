#!/usr/bin/env bash
# fetch_peers.sh: downloads the packages that benchmarks/peers.txt names and unpacks them into
# build/bench/peers/root. Nothing is installed, and the system's own list of architectures stays as it
# is. A peer that cannot be had is left out and named in build/bench/peers/missing.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
work=$PWD/build/bench/peers
mkdir -p "$work"/apt/lists/partial "$work"/apt/cache/archives/partial "$work/debs"
cat >"$work/apt.conf" <<CONF
APT::Architecture "i386";
APT::Architectures { "i386"; };
APT::Sandbox::User "root";
Acquire::Retries "3";
Dir::State::Lists "$work/apt/lists";
Dir::Cache "$work/apt/cache";
CONF
apt-get -c "$work/apt.conf" update
rm -rf "$work/root" "$work/missing"
mkdir "$work/root"
: >"$work/missing"

while IFS=: read -r peer packages; do
  had=yes
  for package in $packages; do
    rm -f "$work/debs/${package}"_*.deb
    (cd "$work/debs" && apt-get -c "$work/apt.conf" download "$package") &&
      dpkg -x "$work/debs/${package}"_*.deb "$work/root" || { had=; echo "missing: $package"; }
  done
  [ -n "$had" ] || echo "$peer" >>"$work/missing"
done < <(grep -v '^#' benchmarks/peers.txt)

# Without Google Benchmark there is nothing to run.
! grep -qx benchmark "$work/missing" || exit 1
sha256sum benchmarks/peers.txt >"$work/fetched"
