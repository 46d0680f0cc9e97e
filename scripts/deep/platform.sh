#!/usr/bin/env bash
# Refuses calls of the system, in the scenarios of tests/platform and each in turn to examples/census; arguments name builds
#
# The census is a host with files, directories, modules, threads and messages. Whatever is refused,
# it ends by itself with a status that it documents (0, 1 or 3), and m32-asan finds nothing lost.
# The builds are m32, m64 and m32-asan. In m64 the library's last call in a function is a jump, so
# the preload library cannot tell whose it is: no census there.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need g++ g++-multilib cmake ninja-build googletest libssl-dev libgmp-dev

work=$deep/platform
rm -rf "$work"
mkdir -p "$work/tree/d/e" "$work/system"
for name in a d/a d/e/a; do echo census >"$work/tree/$name"; done
head -c 10000 /dev/zero >"$work/tree/d/zero"

# Ways to refuse, in the order in which the preload library numbers them: "fread short". The census
# takes it for granted that a plain mutex and condition start and work, as they always do with this
# C library.
mapfile -t ways < <(sed -n 's/^    {"\(.*\)", "\(.*\)", .*},$/\1 \2/p' tests/platform/refusals.cpp)
granted='^pthread_(mutex_(init|lock|unlock)|cond_(init|signal)) '

# census PRESET WAY CALL: false when there was no such call.
census() {
  local run=$work/$2.$1 status
  rm -rf "$run" && mkdir "$run"
  timeout -k 5 60 env KEST_TEST_REFUSE="$2 $3" KEST_TEST_REFUSED="$run/refused" \
    LD_PRELOAD="$root/build/$1/tests/platform/libplatform_refusals.so" \
    ASAN_OPTIONS=verify_asan_link_order=0:exitcode=86 UBSAN_OPTIONS=exitcode=86 \
    "build/$1/examples/census/kest-census" "$work/tree" -o "$run/out" --system "$work/system" --workers 2 \
    >"$run/log" 2>&1
  status=$?
  [ -e "$run/refused" ] || return 1
  case $status in 0 | 1 | 3) return 0 ;; esac
  echo "status $status with call $3 of ${ways[$2]}refused"
  grep -E 'ERROR|SUMMARY|runtime error' "$run/log"
  return 0
}

# sweep PRESET WAY: calls 1, 2, ... until there is none.
sweep() {
  local call=0
  while census "$1" "$2" $((call + 1)); do call=$((call + 1)); done
  echo "refused $call ${ways[$2]}"
}

# sweep_all PRESET: whatever ended ill is said in a line that begins with "status".
sweep_all() {
  local way
  for way in "${!ways[@]}"; do
    [[ ${ways[way]} =~ $granted ]] && continue
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n; done
    sweep "$1" "$way" >"$work/$way.$1.log" &
  done
  wait
  cat "$work"/*."$1".log
  ! grep -q '^status' "$work"/*."$1".log
}

# scenarios PRESET: the two programs as a whole, whose last words are figures.
scenarios() {
  "build/$1/tests/platform/refusal_test" && "build/$1/tests/platform/limits_test"
}

failed=
[ $# -gt 0 ] || set -- m32 m64 m32-asan
for preset; do
  step "configure $preset" "deep-platform-$preset-configure" cmake --preset "$preset"
  step "build $preset" "deep-platform-$preset-build" cmake --build "build/$preset" --parallel "$jobs" \
    --target platform_refusal_test platform_limits_test kest-census example_greeter
  log=deep-platform-$preset-scenarios
  try_step "scenarios $preset" "$log" scenarios "$preset" || failed=yes
  read -r functions _ _ _ count _ scenarios _ runs _ < <(grep 'functions refused in' "$logs/$log.log")
  figure 'functions refused' "${functions:-0}"
  figure 'ways to fail' "${count:-0}"
  figure 'scenarios' "${scenarios:-0}"
  figure "scenarios run with a refusal, $preset" "${runs:-0}"
  [ "$preset" != m64 ] || continue
  try_step "census $preset" "deep-platform-$preset-census" sweep_all "$preset" || failed=yes
  figure "calls refused to the census, $preset" "$(awk '/^refused/ { n += $2 } END { print n + 0 }' "$work"/*."$preset".log)"
done
[ -z "$failed" ]
