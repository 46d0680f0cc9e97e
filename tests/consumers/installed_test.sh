#!/usr/bin/env bash
# installed_test.sh BUILD BITS: what BUILD installs is complete, serves from a place that it was moved to, and
# is refused where it does not fit; what CPack packs is the same.

build=$1 bits=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
complain() { echo "$1"; status=1; }

cmake --install "$build" --prefix "$work/first" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
mv "$work/first" "$work/moved"

# content FOLDER: the files in it, of which some have the build type in their names. Where gdb's printers lie
# depends on the prefix; their own test looks for them.
content() {
  (cd "$1" && find . ! -type d) | sed 's/^..//; s/-[a-z]*\.cmake$/-TYPE.cmake/; s,.*/\(libKest\.so.*-gdb\.py\)$,\1,' | sort
}
libraries=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$build/CMakeCache.txt")
[ -n "$libraries" ] && [ "$bits" = 64 ] || libraries=lib/i386-linux-gnu
expected() {
  (cd "$here/../../include" && find kest -type f | sed 's,^,include/,')
  printf '%s\n' "$libraries"/{libKest.a,libKest.so,libKest.so.1,libKest.so.1.0.0,pkgconfig/kest.pc} \
    lib/cmake/Kest/{KestBits,KestConfig,KestConfigVersion}.cmake \
    lib/cmake/Kest/Kest{Targets$bits,Targets$bits-TYPE,Version$bits}.cmake libKest.so.1.0.0-gdb.py
}
diff <(expected | sort) <(content "$work/moved") || complain 'that is not what is to be installed (< expected, > installed)'
grep -rqF "$work" "$work/moved" && complain 'an installed file names the place where it was put first'

mkdir "$work/shared" "$work/archive" "$work/packed"
bash "$here/consume.sh" find_package "$bits" g++ "$work/moved" "$work/shared" || status=1

# The examples are a project too.
if {
  cmake -G Ninja -S "$here/../../examples" -B "$work/examples" -DCMAKE_CXX_COMPILER=g++ -DKEST_BITS="$bits" \
    -DCMAKE_PREFIX_PATH="$work/moved" && cmake --build "$work/examples" --target example_strings
} >"$work/log" 2>&1; then
  "$work/examples/strings" | diff "$here/../../examples/strings/expected" - || complain 'an example built by itself differs'
else
  complain 'the examples do not build by themselves:'
  tail -n 20 "$work/log"
fi

# refuses WHAT WIDTH VERSION MESSAGE: find_package does not find it, and says so.
refuses() {
  echo "find_package(Kest $3 REQUIRED)" >"$work/find.cmake"
  cmake -DCMAKE_SIZEOF_VOID_P=$(($2 / 8)) -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF \
    -P "$work/find.cmake" >"$work/log" 2>&1 && complain "$1 is not refused"
  grep -q "$4" "$work/log" || { complain "$1 is not refused with: $4"; cat "$work/log"; }
}
refuses 'the other width' $((96 - bits)) 1.0 "KestConfig.cmake, version: not here for $((96 - bits)) bits"
refuses 'the other width, of any version,' $((96 - bits)) '' "KestConfig.cmake, version: not here for $((96 - bits)) bits"
refuses 'a version to come' "$bits" 1.999 'KestConfig.cmake, version: 1\.'
refuses 'the next major version' "$bits" 2.0 'KestConfig.cmake, version: 1\.'
refuses 'the last major version' "$bits" 0.9 'KestConfig.cmake, version: 1\.'

if (cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/packed") >"$work/log" 2>&1; then
  tar -xzf "$work/packed/"kest-*-linux-x86-"$bits".tar.gz -C "$work/archive" --strip-components=1
  diff <(content "$work/moved") <(content "$work/archive") || complain 'the archive differs (< installed, > packed)'
  bash "$here/consume.sh" pkg-config "$bits" clang++ "$work/archive" "$work/packed" || status=1
else
  complain 'CPack fails:'
  tail -n 20 "$work/log"
fi
exit $status
