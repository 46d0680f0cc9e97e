#!/usr/bin/env bash
# mismatch_test.sh COMPILER BITS LIBRARIES: a program that asks whether its headers and the library belong
# together hears the truth from the library in the folder LIBRARIES and from libraries of other versions.

compiler=$1 bits=$2 libraries=$3
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

cat >"$work/program.cpp" <<'END'
#include <stdio.h>
#include "kest/bridge/version.h"
int main() { puts(KEST::IsLibraryCompatible() ? "belongs" : "does not belong"); }
END
"$compiler" -std=c++17 -m"$bits" -I"$source/include" "$work/program.cpp" -o "$work/program" -L"$libraries" -lKest ||
  exit 1

# runs FOLDER EXPECTED WITH
runs() {
  local said
  said=$(LD_LIBRARY_PATH=$1 "$work/program" 2>&1)
  [ "$said" = "$2" ] || { echo "with $3 it says: $said"; status=1; }
}
runs "$libraries" belongs 'the library'

number() { sed -n "s/^#define KEST_VERSION_$1 //p" "$source/include/kest/kest.h"; }
major=$(number MAJOR) minor=$(number MINOR)
# The symbol's version is part of the binary interface.
echo 'KEST_1 { global: KestGetVersion; local: *; };' >"$work/map"
while read -r version expected; do
  mkdir "$work/$version"
  echo "extern \"C\" const char* KestGetVersion() { return \"$version\"; }" >"$work/library.cpp"
  "$compiler" -m"$bits" -shared -fPIC -Wl,-soname,libKest.so.1 -Wl,--version-script="$work/map" "$work/library.cpp" \
    -o "$work/$version/libKest.so.1" || exit 1
  runs "$work/$version" "$expected" "version $version"
done <<END
$major.$minor.7 belongs
$major.$((minor + 1)).0 belongs
$((major - 1)).$((minor + 9)).0 does not belong
$((major + 1)).$minor.0 does not belong
END
exit $status
