// How often a stress test repeats what it does.

#ifndef KEST_TESTS_STRESS_REPEATS_H
#define KEST_TESTS_STRESS_REPEATS_H

#include "support/random.h"
#include "support/thread_sanitizer.h"

namespace kest_test {

// As often as KEST_TEST_CASES says. Unless told, the plain 32-bit build repeats most, the thread
// sanitizer's as often as fits into the same time, and the others a tenth.
inline int Repeats(int reference, int underThreadSanitizer) {
#if defined(KEST_TESTS_UNDER_TSAN)
  static_cast<void>(reference);
  return Random::Cases(underThreadSanitizer);
#elif defined(__SANITIZE_ADDRESS__)
  static_cast<void>(underThreadSanitizer);
  return Random::Cases(reference / 10);
#else
  static_cast<void>(underThreadSanitizer);
  return Random::Cases(sizeof(void*) == 4 ? reference : reference / 10);
#endif
}

}  // namespace kest_test

#endif  // KEST_TESTS_STRESS_REPEATS_H
