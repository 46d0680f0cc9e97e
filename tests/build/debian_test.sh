#!/usr/bin/env bash
# debian_test.sh: what debian/ says twice over agrees with the tree: the exported names, each with the version
# that it came with, and the version.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
status=0
complain() { echo "$1"; status=1; }

version=$(sed -n 's/^project(Kest VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || complain 'CMakeLists.txt has no version'
[ "$(sed -n '1s/.*(\(.*\)).*/\1/p' debian/changelog)" = "$version" ] || complain "debian/changelog does not begin with $version"

# names FILE: what a file of symbols lists, less the version that each came with.
names() { sed -n 's/^ \([^ ]*\)@KEST_1 1\.[0-9]*\.[0-9]*$/\1/p' "$1" | LC_ALL=C sort; }
for row in i386:32 amd64:64; do
  list=debian/libkest1.symbols.${row%:*}
  diff <({ echo KEST_1; grep -v '^#' "abi/libKest.m${row#*:}.symbols"; } | LC_ALL=C sort) <(names "$list") ||
    complain "$list differs from the exported names (< exported, > listed)"
  [ "$(grep -c '@' "$list")" -eq "$(names "$list" | wc -l)" ] || complain "$list has a line of another form"
  awk -v now="$version" '/@/ { split($2, v, "."); split(now, n, ".")
    if (v[1] != n[1] || v[2] > n[2]) { print FILENAME ": " $0 " is of a version to come"; bad = 1 } }
    END { exit bad }' "$list" || status=1
done
exit $status
