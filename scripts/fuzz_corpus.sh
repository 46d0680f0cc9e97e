#!/usr/bin/env bash
# Takes what fuzzing found into tests/fuzz/corpus: for each named target, or all that were fuzzed, the
# fewest inputs of both that do all that both do. That means values compared, where 250 inputs and 40 KB
# are enough for it, else how often code runs, else that it runs.
#
# Inputs with a name of their own stay as they are; those that fuzzing found are named by 40
# hexadecimal digits.

. "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

found=build/deep/fuzz/corpus
[ $# -gt 0 ] || mapfile -t targets < <(ls "$found")
[ $# -eq 0 ] || targets=("$@")

for target in "${targets[@]}"; do
  kept=tests/fuzz/corpus/$target
  new=build/tmp/corpus-$target
  mkdir -p "$found/$target" "$kept"
  for measure in -use_value_profile=1 -use_counters=1 -use_counters=0; do
    rm -rf "$new"
    mkdir -p "$new"
    find "$kept" -type f -regextype posix-extended ! -regex '.*/[0-9a-f]{40}' -exec cp -t "$new" {} +
    step "minimise $target" "fuzz-corpus-$target" "build/m32-fuzz/tests/fuzz/${target}_fuzz" \
      -set_cover_merge=1 "$measure" "$new" "$kept" "$found/$target"
    inputs=$(find "$new" -type f | wc -l)
    bytes=$(cat "$new"/* | wc -c)
    [ "$inputs" -le 250 ] && [ "$bytes" -le 40000 ] && break
  done
  [ "$inputs" -gt 0 ] || die "nothing reaches anything in $target"
  rm -rf "$kept"
  mv "$new" "$kept"
  echo "  $inputs inputs, $bytes bytes"
done
du -sh --apparent-size tests/fuzz/corpus
