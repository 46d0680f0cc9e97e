#!/usr/bin/env bash
# bridge_aliasing_test.sh: what is stored as unsigned short and read as char16_t through char16.h, or
# the other way, is read after it was stored, by optimising compilers too: both of them, both widths.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
compilers=(g++)
command -v clang++ >/dev/null && compilers+=(clang++)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/aliasing.cpp" <<'END_OF_SOURCE'
#include "kest/bridge/char16.h"

// The address comes from outside, so that the compiler cannot tell that it is the same.
__attribute__((noinline)) bool Units(unsigned short* units, const char16_t* chars) {
  const char16_t before = chars[0];
  units[0] = u'b';
  return before == u'a' && KEST::Chars(units)[0] == u'b' && chars[0] == u'b';
}
__attribute__((noinline)) bool Chars(char16_t* chars, const unsigned short* units) {
  const unsigned short before = units[0];
  chars[0] = u'b';
  return before == u'a' && KEST::Units(chars)[0] == u'b' && units[0] == u'b';
}

int main() {
  unsigned short units[] = {u'a', 0};
  char16_t chars[] = {u'a', 0};
  return Units(units, KEST::Chars(units)) && Chars(chars, KEST::Units(chars)) ? 0 : 1;
}
END_OF_SOURCE
status=0
for compiler in "${compilers[@]}"; do
  for width in -m32 -m64; do
    "$compiler" -std=c++17 $width -O2 -Iinclude "$work/aliasing.cpp" -o "$work/aliasing" &&
      "$work/aliasing" || { echo "with $compiler $width"; status=1; }
  done
done
exit $status
