#!/usr/bin/env bash
# Fuzzes the named targets of tests/fuzz, or all: KEST_FUZZ_SECONDS each (20), a core each.
#
# KEST_FUZZ_FLAGS are further options for libFuzzer: -use_value_profile=1 also looks for the limits in
# comparisons, at half the speed.
#
# What is found stays below build/deep/fuzz: inputs that reach new code in corpus/TARGET, where the next
# run begins; scripts/fuzz_corpus.sh takes them into the tree. An input that ends a target goes to
# findings/, fails this run, and belongs into tests/fuzz/corpus/TARGET with its mend.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need g++ g++-multilib cmake ninja-build clang libclang-rt-14-dev

work=$deep/fuzz
programs=build/m32-fuzz/tests/fuzz
declare -A longest
while read -r name length; do
  longest[$name]=$length
done < <(sed -n 's/^kest_fuzz(\(.*\))$/\1/p' tests/fuzz/CMakeLists.txt)
[ $# -gt 0 ] || mapfile -t targets < <(printf '%s\n' "${!longest[@]}" | sort)
[ $# -eq 0 ] || targets=("$@")
for target in "${targets[@]}"; do
  [ -n "${longest[$target]-}" ] || die "fuzz: no such target: $target (see tests/fuzz/CMakeLists.txt)"
done

step 'configure m32-fuzz' deep-fuzz-configure cmake --preset m32-fuzz
step 'build m32-fuzz' deep-fuzz-build cmake --build build/m32-fuzz --parallel "$jobs" --target "${targets[@]/#/fuzz_}"

# fuzz TARGET: a log that does not end with "Done" says what was found.
fuzz() {
  mkdir -p "$work/corpus/$1"
  # shellcheck disable=SC2086  # one word an option
  "$programs/$1_fuzz" "$work/corpus/$1" "tests/fuzz/corpus/$1" ${KEST_FUZZ_FLAGS-} -max_len="${longest[$1]}" -timeout=60 \
    -max_total_time="${KEST_FUZZ_SECONDS:-20}" -print_final_stats=1 -artifact_prefix="$work/findings/$1-" \
    >"$work/$1.log" 2>&1
}
# As many at a time as there are cores.
fuzz_all() {
  local target
  for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n; done
    fuzz "$target" &
  done
  wait
  for target in "${targets[@]}"; do grep -q '^Done ' "$work/$target.log" || return 1; done
}
mkdir -p "$work/findings"
rm -f "$work"/*.log
repeat="./check --deep fuzz ${targets[*]}"
try_step "fuzz ${#targets[@]} targets" deep-fuzz-run fuzz_all

findings=0
for target in "${targets[@]}"; do
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$target.log")
  figure "executions: $target" "${executions:-0}" sum
  grep -q '^Done ' "$work/$target.log" && continue
  findings=$((findings + 1))
  echo "finding in $target, see $work/$target.log:"
  grep -E 'ERROR|SUMMARY|does not hold|runtime error|Test unit written' "$work/$target.log" | sed 's/^/  | /'
done
# Those of runs before count until they are taken away.
figure 'findings open' "$(find "$work/findings" -type f ! -name '*-slow-unit-*' | wc -l)"
[ $findings -eq 0 ]
