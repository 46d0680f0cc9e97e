#!/usr/bin/env bash
# first_program_test.sh COMPILER BITS LIBRARY: the README's first program compiles, without a
# warning, and prints what the README says.

compiler=$1 bits=$2 library=$3
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The first block of each kind: the program, and under "prints" its output.
awk '/^```cpp$/ && !done { on = 1; next } /^```$/ && on { on = 0; done = 1 } on' "$source/README.md" >"$work/first.cpp"
awk '/^```text$/ && !done { on = 1; next } /^```$/ && on { on = 0; done = 1 } on' "$source/README.md" >"$work/expected"
[ -s "$work/first.cpp" ] && [ -s "$work/expected" ] || { echo 'README.md has no first program, or no output of it'; exit 1; }

"$compiler" -m"$bits" -std=c++17 -Wall -Wextra -Wconversion -Werror -I"$source/include" "$work/first.cpp" \
  -o "$work/first" "$library" -Wl,-rpath,"$(dirname "$library")" || exit 1
"$work/first" >"$work/actual" || { echo "it exits with $?"; exit 1; }
diff "$work/expected" "$work/actual"
