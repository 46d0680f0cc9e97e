#!/usr/bin/env bash
# both_widths_test.sh BUILD: a project that has Kest's sources in a folder builds it for 64 bits; installed
# from there beside the 32-bit library of BUILD, each width is found by those who want it.

build=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
cell=0

# consume METHOD BITS COMPILER WHERE
consume() {
  cell=$((cell + 1))
  mkdir "$work/$cell"
  bash "$here/consume.sh" "$@" "$work/$cell" || status=1
}
consume add_subdirectory 64 clang++ "$here/../.."
for tree in "$build" "$work/1/build"; do
  cmake --install "$tree" --prefix "$work/prefix" >"$work/log" 2>&1 || { tail "$work/log"; exit 1; }
done
consume find_package 64 g++ "$work/prefix"
consume pkg-config 64 clang++ "$work/prefix"
consume find_package 32 clang++ "$work/prefix"
consume pkg-config 32 g++ "$work/prefix"

# A project in C alone, which says what it wants instead of setting compiler flags.
for bits in 32 64; do
  {
    cmake -G Ninja -S "$here/project/c" -B "$work/c$bits" -DKEST_BITS=$bits -DCMAKE_PREFIX_PATH="$work/prefix" &&
      cmake --build "$work/c$bits"
  } >"$work/log" 2>&1 || { echo "a project in C, $bits bits:"; tail -n 20 "$work/log"; status=1; }
  for program in shared static; do
    said=$("$work/c$bits/$program" 2>&1)
    [ "$said" = "$bits-bit, C: ok" ] || { echo "the $program program in C says: $said"; status=1; }
  done
done
exit $status
