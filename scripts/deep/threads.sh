#!/usr/bin/env bash
# [PART [TIMES]]: floods of messages, cancels, lives of threads, start/stop cycles, hand-overs; all parts, or one, repeated TIMES times

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

only=${1-} times=${2-}
known=

# run PART PRESET PROGRAM TIMES FIGURE: all tests of the program, which repeat TIMES times between them.
run() {
  local part=$1 preset=$2 program=build/$2/tests/stress/$3 tests each launcher=()
  known="$known $part"
  [ "${only:-$part}" = "$part" ] || return 0
  [ "$preset" != m64-tsan ] || launcher=(setarch -R)  # the address layout that the sanitizer was built for
  step "configure $preset" "deep-threads-$preset-configure" cmake --preset "$preset"
  step "build $preset $3" "deep-threads-$part-build" cmake --build "build/$preset" --parallel "$jobs" --target "stress_$3"
  tests=$("${launcher[@]}" "$program" --gtest_list_tests | grep -c '^  ')
  each=$((${times:-$4} / tests / 8 * 8))  # whole numbers for up to eight threads
  repeat="KEST_TEST_CASES=$each $program" \
    step "$part: $((each * tests))" "deep-threads-$part" env KEST_TEST_CASES=$each "${launcher[@]}" "$program"
  figure "$5" $((each * tests)) sum
}

need g++ g++-multilib cmake ninja-build googletest clang libclang-rt-14-dev libssl-dev libgmp-dev util-linux
run messages      m32      message_stress_test   1000000000 'messages from 8 producers, 32 bit'
run messages-tsan m64-tsan message_stress_test    100000000 'messages from 8 producers, thread sanitizer'
run cancels       m32      cancel_stress_test        600000 'asynchronous cancels, 32 bit'
run lives         m32      thread_stress_test       1000000 'lives of threads, 32 bit'
run lives-tsan    m64-tsan thread_stress_test        200000 'lives of threads, thread sanitizer'
run cycles        m32      lifecycle_stress_test    1000000 'start/stop cycles, 32 bit'
run hand-overs    m32      condition_stress_test    1000000 'hand-overs through a condition, 32 bit'

case "$known " in
  *" ${only:-messages} "*) ;;
  *) die "threads: no such part: $only (there are$known)" ;;
esac
