#!/usr/bin/env bash
# install_test.sh BUILD BITS: an installed tree serves pkg-config's flags and find_package, from a
# place that it was moved to.

build=$1 bits=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
mv "$work/first" "$work/moved"
mkdir "$work/client"
cat >"$work/client/main.cpp" <<'END'
#include "kest/kest.h"
int main() { return kest_ucslen(KEST_TEXT("abc")) == 3 && KestInitialize(nullptr) == 1 ? 0 : 1; }
END
cat >"$work/client/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(client CXX)
find_package(Kest 1.0 REQUIRED)
add_executable(shared main.cpp)
target_link_libraries(shared Kest::Kest)
add_executable(static main.cpp)
target_link_libraries(static Kest::Static)
END
{
  cmake -G Ninja -S "$work/client" -B "$work/client/build" -DCMAKE_PREFIX_PATH="$work/moved" &&
    cmake --build "$work/client/build" && "$work/client/build/shared" && "$work/client/build/static"
} >"$work/log" 2>&1 || { echo 'find_package does not serve:'; tail -n 20 "$work/log"; exit 1; }

# What pkg-config would print, without asking for pkg-config.
pc=$(find "$work/moved" -name kest.pc)
value() { sed -n "s/^$1: //p" "$pc" | sed "s,\${includedir},$work/moved/include,; s,\${libdir},$(dirname "$(dirname "$pc")"),"; }
libdir=$(dirname "$(dirname "$pc")")
# shellcheck disable=SC2046  # one word a flag
g++ -std=c++17 $(value Cflags) "$work/client/main.cpp" -o "$work/client/flags" $(value Libs) -Wl,-rpath,"$libdir" &&
  "$work/client/flags" || { echo "kest.pc does not serve $bits bits"; cat "$pc"; exit 1; }
