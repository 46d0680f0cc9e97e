#!/usr/bin/env bash
# Changes src in one place at a time and counts what the tests see: for 15 minutes, N, or "all" there is.
#
# Further arguments are the files or folders to change. Verdicts are kept, so that runs add up to all.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need g++ g++-multilib cmake ninja-build googletest binutils python3 python3-clang-14 libclang1-14

minutes=${1:-15}
for preset in m32 m32-asan; do
  step "configure $preset" "deep-mutation-$preset-configure" cmake --preset "$preset"
  step "build $preset" "deep-mutation-$preset-build" cmake --build "build/$preset" --parallel "$jobs"
done
[ "$minutes" = all ] && minutes=1000000
step 'mutants' deep-mutation-run scripts/mutate.py --minutes "$minutes" "${@:2}"

found=$(scripts/mutate.py --report docs/mutation-survivors.md)
status=$?
while IFS=$'\t' read -r name value; do figure "$name" "$value"; done <<<"$found"
exit $status
