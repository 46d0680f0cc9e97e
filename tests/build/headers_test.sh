#!/usr/bin/env bash
# headers_test.sh: each public header compiles alone, twice in a row and with all others, without a
# warning: both compilers, both widths, C++17 and C++20, with and without hidden visibility.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
warnings='-Wall -Wextra -Wconversion -Wold-style-cast -Wshadow -Wpedantic -Werror'
compilers=(g++)
command -v clang++ >/dev/null && compilers+=(clang++)
mapfile -t headers < <(cd include && find kest -name '*.h' | sort)
[ ${#headers[@]} -gt 10 ] || { echo "only ${#headers[@]} headers found"; exit 1; }
status=0

# compiles NAME COMPILER FLAGS...: the source on the standard input.
compiles() {
  local output
  # shellcheck disable=SC2086  # one word a flag
  output=$("$2" $warnings -fsyntax-only -Iinclude "${@:3}" -x c++ - 2>&1) && return
  echo "$1 with ${*:2}:"
  head -n 20 <<<"$output"
  status=1
}

for compiler in "${compilers[@]}"; do
  for width in -m32 -m64; do
    for how in '-std=c++17 -fvisibility=default' '-std=c++20 -fvisibility=hidden'; do
      for header in "${headers[@]}"; do
        # shellcheck disable=SC2086
        compiles "$header" "$compiler" $width $how <<<"#include \"$header\""$'\n'"#include \"$header\""
      done
      # shellcheck disable=SC2086
      compiles 'all headers' "$compiler" $width $how < <(printf '#include "%s"\n' "${headers[@]}")
      # shellcheck disable=SC2086
      compiles 'all headers, the last first,' "$compiler" $width $how < <(printf '#include "%s"\n' "${headers[@]}" | tac)
    done
  done
done
exit $status
