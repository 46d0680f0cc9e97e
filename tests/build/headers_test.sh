#!/usr/bin/env bash
# headers_test.sh: each public header compiles alone, twice in a row and with all others, without a
# warning: both compilers, both widths, with and without hidden visibility.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
compilers=(g++)
command -v clang++ >/dev/null && compilers+=(clang++)
status=0
for header in include/kest/*.h; do
  name=kest/$(basename "$header")
  source=$(printf '#include "%s"\n' "$name" "$name"; for other in include/kest/*.h; do echo "#include \"kest/$(basename "$other")\""; done)
  for compiler in "${compilers[@]}"; do
    for width in -m32 -m64; do
      for visibility in default hidden; do
        output=$("$compiler" -std=c++17 -Wall -Wextra -Wconversion -Werror $width -fvisibility=$visibility \
          -fsyntax-only -Iinclude -x c++ - 2>&1 <<<"$source") || {
          echo "$name with $compiler $width -fvisibility=$visibility:"
          head -n 20 <<<"$output"
          status=1
        }
      done
    done
  done
done
exit $status
