#!/usr/bin/env bash
# bridge_headers_test.sh: the headers of include/kest/bridge compile without exceptions and run-time
# types too: both compilers, both widths, C++17 and C++20. headers_test.sh does the rest.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
compilers=(g++)
command -v clang++ >/dev/null && compilers+=(clang++)
warnings=(-Wall -Wextra -Wconversion -Wold-style-cast -Wshadow -Wpedantic -Werror)
source=$(cd include && printf '#include "%s"\n' kest/bridge/*.h)
[ "$(wc -l <<<"$source")" -ge 6 ] || { echo 'hardly any header found'; exit 1; }
status=0
for compiler in "${compilers[@]}"; do
  for width in -m32 -m64; do
    for standard in c++17 c++20; do
      "$compiler" $width -std=$standard -fno-exceptions -fno-rtti "${warnings[@]}" -fsyntax-only -Iinclude \
        -x c++ - <<<"$source" || { echo "with $compiler $width -std=$standard"; status=1; }
    done
  done
done
exit $status
