#!/usr/bin/env bash
# guide_programs_test.sh COMPILER BITS LIBRARY: every whole program in the guides compiles, without a
# warning, and prints what the block behind it says, where there is one.

compiler=$1 bits=$2 library=$3
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
programs=0

for page in "$source"/docs/*.md; do
  # A block of C++ with a main becomes NUMBER.cpp, a block of text that follows "prints" its output.
  rm -f "$work"/*
  awk -v folder="$work" '
    /^```cpp$/ { on = 1; block = ""; next }
    /^```text$/ && last == "prints" { on = 2; block = ""; next }
    /^```$/ && on {
      if (on == 1 && block ~ /\nint main\(/) printf "%s", block >(folder "/" ++count ".cpp")
      if (on == 2 && count) printf "%s", block >(folder "/" count ".expected")
      on = 0
    }
    on { block = block $0 "\n" }
    !on && NF { last = $0 }' "$page"
  for program in "$work"/*.cpp; do
    [ -f "$program" ] || continue
    programs=$((programs + 1))
    name=${program%.cpp}
    "$compiler" -m"$bits" -std=c++17 -Wall -Wextra -Wconversion -Werror -I"$source/include" "$program" -o "$name" \
      "$library" -Wl,-rpath,"$(dirname "$library")" || { echo "$page: its program does not compile"; status=1; continue; }
    timeout 60 "$name" >"$name.actual" || { echo "$page: its program exits with $?"; status=1; }
    [ ! -f "$name.expected" ] || diff "$name.expected" "$name.actual" || { echo "$page: its program prints that"; status=1; }
  done
done
[ "$programs" -ge 5 ] || { echo "only $programs programs found"; status=1; }
exit $status
