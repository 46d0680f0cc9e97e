#!/usr/bin/env bash
# Measures what the 32-bit tests run of src: all lines and functions, and no branch left without its reason.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need g++ g++-multilib cmake ninja-build googletest gcovr

work=$deep/coverage
report=$deep/coverage.json
step 'configure coverage' deep-coverage-configure cmake -S . -B "$work" -G Ninja -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS='--coverage -fprofile-update=atomic -O0' -DKEST_BUILD_TESTS=ON \
  -DKEST_TEST_TIMEOUT=900
step 'build coverage' deep-coverage-build cmake --build "$work" --parallel "$jobs"
find "$work" -name '*.gcda' -delete
# Scripts and examples build what they run on their own. The library calls the C library more often when
# it is not optimised, and a cancel that hits some of its string functions ends the process. What counts
# coverage opens and closes files of its own, which the tests of refused calls take for the library's.
step 'test coverage' deep-coverage-test ctest --test-dir "$work" -j "$jobs" --output-on-failure \
  -E '^(build|examples)/|^stress/cancel_stress_test|^platform/refusal_test'
step 'gather coverage' deep-coverage-gather gcovr --root "$root" --filter src/ --exclude-throw-branches \
  --json "$report" "$work/CMakeFiles/kest_objects.dir"

found=$(scripts/coverage.py "$report" docs/untaken-branches.md)
status=$?
while IFS=$'\t' read -r name value; do figure "$name" "$value"; done <<<"$found"
exit $status
