#!/usr/bin/env bash
# Other people's projects in every combination: three ways to get at Kest, shared and static, both widths, both compilers
#
# The library is built with each compiler for each width, as a folder of a project; what is installed
# from there, both widths in one prefix, then serves projects of either compiler. Each project is built
# in C++17, in C++20, without exceptions and type information, and in C.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"
need g++ g++-multilib clang cmake ninja-build pkgconf binutils

work=$deep/consumers
rm -rf "$work"

# consume LIBRARY METHOD BITS COMPILER WHERE: LIBRARY is the compiler that the library was built with.
consume() {
  local name=$2-$3-$4-$1
  mkdir -p "$work/$name"
  try_step "$2, $3 bits, $4${5:+, with the library of $1}" "deep-consumers-$name" \
    bash tests/consumers/consume.sh "$2" "$3" "$4" "${5:-$root}" "$work/$name" || return
  projects=$((projects + 1))
}

projects=0 failed=
for library in g++ clang++; do
  for bits in 32 64; do
    consume $library add_subdirectory $bits $library || { failed=yes; continue; }
    step "install it" "deep-consumers-install-$library-$bits" \
      cmake --install "$work/add_subdirectory-$bits-$library-$library/build" --prefix "$work/prefix-$library"
  done
  for bits in 32 64; do
    for method in find_package pkg-config; do
      for compiler in g++ clang++; do consume $library $method $bits $compiler "$work/prefix-$library" || failed=yes; done
    done
  done
done
figure 'projects that use the library' $projects
figure 'programs in them' $((8 * projects))
[ -z "$failed" ]
