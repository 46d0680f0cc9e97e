#!/usr/bin/env bash
# [ROUNDS]: the message queue as a descriptor: its system calls counted with strace, a million close/wait races, a million posts

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

rounds=${1-1000000}
work=$deep/eventfd
mkdir -p "$work"

# trace PRESET: strace of the probe, which prints lines between its parts: a line a system call, without
# the number of the process.
trace() {
  strace -f -o "$work/$1.strace" "build/$1/tests/bridge/eventfd_probe" >"$work/$1.out" 2>&1 &&
    sed 's/^[0-9]* *//' "$work/$1.strace" >"$work/$1.calls"
}

# part PRESET FROM TO: the calls between two of the lines that the probe prints.
part() { awk -v from="$2" -v to="$3" 'index($0, "write(1, \"" to) { on = 0 } on; index($0, "write(1, \"" from) { on = 1 }' "$work/$1.calls"; }

# tally PRESET: holds the counts against what they have to be.
tally() {
  local posting idle writes reads waits
  posting=$(part "$1" posting idle) idle=$(part "$1" idle end)
  writes=$(grep -c '^write(' <<<"$posting") reads=$(grep -c '^read(' <<<"$posting") waits=$(grep -c '^poll(' <<<"$posting")
  # Blocks of the queue may take memory from the system on the way; nothing else may be called.
  others=$(grep -cvE '^(write|read|poll|brk|mmap2?|munmap|mremap)\(' <<<"$posting")
  echo "$1: $writes writes, $reads reads, $waits waits, $others others for a million posts with 100 edges; idle:"
  echo "$idle"
  [ "$writes" -eq 100 ] && [ "$reads" -eq 100 ] && [ "$waits" -eq 100 ] && [ "$others" -eq 0 ] &&
    [ "$(wc -l <<<"$idle")" -eq 1 ] && [[ $idle == poll\(*Timeout* ]]
}

need g++ g++-multilib cmake ninja-build googletest clang libclang-rt-14-dev libssl-dev libgmp-dev util-linux strace
for preset in m32 m64; do
  step "configure $preset" "deep-eventfd-$preset-configure" cmake --preset "$preset"
  step "build $preset" "deep-eventfd-$preset-build" cmake --build "build/$preset" --parallel "$jobs" \
    --target bridge_eventfd_probe bridge_eventfd_test
  step "strace, $preset" "deep-eventfd-$preset-strace" trace "$preset"
  step "count, $preset" "deep-eventfd-$preset-count" tally "$preset"
  figure "writes for 1000000 posts with 100 edges, $preset" "$(part "$preset" posting idle | grep -c '^write(')"
  figure "system calls in two idle seconds, $preset" "$(part "$preset" idle end | wc -l)"
  step "posts, $preset" "deep-eventfd-$preset-posts" "build/$preset/tests/bridge/eventfd_test" --gtest_filter='*.NoWakeUpIsLost'
  figure "posts without a lost wake-up, $preset" 1000000 sum
  step "close/wait races, $preset" "deep-eventfd-$preset-races" env KEST_TEST_CASES="$rounds" \
    "build/$preset/tests/bridge/eventfd_test" --gtest_filter='*.CloseAndWaitRace'
  figure "close/wait races, $preset" "$rounds" sum
done
step 'configure m64-tsan' deep-eventfd-m64-tsan-configure cmake --preset m64-tsan
step 'build m64-tsan' deep-eventfd-m64-tsan-build cmake --build build/m64-tsan --parallel "$jobs" --target bridge_eventfd_test
step 'close/wait races, m64-tsan' deep-eventfd-m64-tsan-races env KEST_TEST_CASES=$((rounds / 10)) \
  setarch -R build/m64-tsan/tests/bridge/eventfd_test --gtest_filter='*.CloseAndWaitRace'
figure 'close/wait races, thread sanitizer' $((rounds / 10)) sum
