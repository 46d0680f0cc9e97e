#!/usr/bin/env bash
# consume.sh METHOD BITS COMPILER WHERE WORK: builds the consumer project in the folder WORK and runs what
# it gives. METHOD is find_package or pkg-config, with WHERE the prefix that Kest is installed in, or
# add_subdirectory, with WHERE Kest's sources; WORK/build can be installed then. COMPILER is g++ or clang++.

method=$1 bits=$2 compiler=$3 where=$4 work=$5
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cell="$method, $bits bits, $compiler"
case $compiler in g++) c_compiler=gcc ;; *) c_compiler=${compiler%++} ;; esac
programs=$work/build/programs
mkdir -p "$programs"

fail() {
  echo "$cell: $1"
  [ ! -e "$work/log" ] || tail -n 20 "$work/log"
  exit 1
}

case $method in
  find_package | add_subdirectory)
    if [ "$method" = find_package ]; then
      options=(-DCMAKE_PREFIX_PATH="$where")
    else
      options=(-DKEST_SOURCE="$where" -DKEST_INSTALL=ON)
    fi
    cmake -G Ninja -S "$here/project" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_C_COMPILER="$c_compiler" \
      -DCMAKE_CXX_FLAGS="-m$bits" -DCMAKE_C_FLAGS="-m$bits" "${options[@]}" >"$work/log" 2>&1 || fail 'does not configure'
    cmake --build "$work/build" >"$work/log" 2>&1 || fail 'does not build' ;;
  pkg-config)
    export PKG_CONFIG_LIBDIR
    PKG_CONFIG_LIBDIR=$(dirname "$(find "$where" -name kest.pc -exec grep -l "^Name: Kest" {} + |
      if [ "$bits" = 32 ]; then grep /i386-linux-gnu/; else grep -v /i386-linux-gnu/; fi)")
    # words QUESTION...: what pkg-config answers.
    words() { read -ra answer <<<"$(pkg-config "$@" kest)"; }
    words --libs && shared=("${answer[@]}" "-Wl,-rpath,$(pkg-config --variable=libdir kest)")
    words --libs --static && static=(-static "${answer[@]}")
    words --cflags && flags=("${answer[@]}" -Wall -Wextra -Wconversion -Werror)
    # make NAME SOURCE COMPILER OPTIONS...: with the shared library, and with everything static.
    make() {
      "${@:3}" "${flags[@]}" "$here/project/$2" -o "$programs/shared-$1" "${shared[@]}" &&
        "${@:3}" "${flags[@]}" "$here/project/$2" -o "$programs/static-$1" "${static[@]}"
    }
    {
      make 17 main.cpp "$compiler" "-m$bits" -std=c++17 && make 20 main.cpp "$compiler" "-m$bits" -std=c++20 &&
        make plain main.cpp "$compiler" "-m$bits" -std=c++17 -fno-exceptions -fno-rtti &&
        make c flat.c "$c_compiler" "-m$bits" -std=c11
    } >"$work/log" 2>&1 || fail 'does not build' ;;
  *) fail 'no such method' ;;
esac

for kind in shared static; do
  for name in 17 20 plain c; do
    case $name in 17 | plain) language=C++17 ;; 20) language=C++20 ;; c) language=C ;; esac
    program=$programs/$kind-$name
    said=$("$program" 2>&1)
    [ "$said" = "$bits-bit, $language: ok" ] || fail "$kind-$name says: $said"
    # The library is the one asked for.
    needed=$(readelf -d "$program" | grep -c 'NEEDED.*\[libKest\.so\.1\]')
    [ "$needed" -eq "$([ $kind = shared ] && echo 1 || echo 0)" ] || fail "$kind-$name needs $needed shared Kest"
  done
done
