#!/usr/bin/env bash
# Takes what fuzzing found into tests/fuzz/corpus: for each named target, or all that were fuzzed, the
# fewest inputs of both that reach all that both reach. Inputs with a name of their own stay as they are;
# those that fuzzing found are named by 40 hexadecimal digits.

. "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

found=build/deep/fuzz/corpus
[ $# -gt 0 ] || mapfile -t targets < <(ls "$found")
[ $# -eq 0 ] || targets=("$@")

for target in "${targets[@]}"; do
  kept=tests/fuzz/corpus/$target
  new=build/tmp/corpus-$target
  rm -rf "$new"
  mkdir -p "$new" "$found/$target" "$kept"
  find "$kept" -type f -regextype posix-extended ! -regex '.*/[0-9a-f]{40}' -exec cp -t "$new" {} +
  step "minimise $target" "fuzz-corpus-$target" "build/m32-fuzz/tests/fuzz/${target}_fuzz" \
    -set_cover_merge=1 -use_counters=0 "$new" "$kept" "$found/$target"
  [ -n "$(ls -A "$new")" ] || die "nothing reaches anything in $target"
  rm -rf "$kept"
  mv "$new" "$kept"
done
du -sh --apparent-size tests/fuzz/corpus
