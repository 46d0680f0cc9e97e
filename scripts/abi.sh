#!/usr/bin/env bash
# scripts/abi.sh [BUILD]: writes abi/libKest.mBITS.abi anew from a built library, build/m32's or
# build/m64's or that of the folder named. Only for a change of the interface that is meant.

set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."
[ $# -gt 0 ] || set -- build/m32 build/m64
for build in "$@"; do
  bits=$(sed -n 's/^KEST_BITS:STRING=//p' "$build/CMakeCache.txt")
  abidw --no-show-locs --no-corpus-path --no-comp-dir-path --out-file "abi/libKest.m$bits.abi" "$build/libKest.so.1"
done
