#!/usr/bin/env bash
# reproducible_test.sh BUILD COMPILER BITS: the same sources in folders of other names give the same
# bytes as the libraries in BUILD.

build=$1 compiler=$2 bits=$3
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cache() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
if [ -n "$(cache CMAKE_CXX_COMPILER_LAUNCHER)" ]; then
  echo 'skipped: a compiler cache may write paths its own way'
  exit 77
fi

mkdir "$work/sources"
cp -r "$source"/{CMakeLists.txt,cmake,include,src,abi,tools} "$work/sources"
{
  cmake -G Ninja -S "$work/sources" -B "$work/elsewhere/build" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_BUILD_TYPE="$(cache CMAKE_BUILD_TYPE)" -DCMAKE_CXX_FLAGS="$(cache CMAKE_CXX_FLAGS)" \
    -DKEST_BITS="$bits" -DKEST_EXPORT_NEW="$(cache KEST_EXPORT_NEW)" -DKEST_BUILD_EXAMPLES=OFF &&
    cmake --build "$work/elsewhere/build" --target kest kest_static
} >"$work/log" 2>&1 || { tail -n 20 "$work/log"; exit 1; }

status=0
for library in libKest.so libKest.a; do
  cmp "$build/$library" "$work/elsewhere/build/$library" || status=1
done
exit $status
