// Skips a test where thread sanitizer itself cannot follow what the test does.

#ifndef KEST_TESTS_SUPPORT_THREAD_SANITIZER_H
#define KEST_TESTS_SUPPORT_THREAD_SANITIZER_H

#include <gtest/gtest.h>

#if defined(__SANITIZE_THREAD__)
#define KEST_TESTS_UNDER_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KEST_TESTS_UNDER_TSAN 1
#endif
#endif

#ifdef KEST_TESTS_UNDER_TSAN
#define KEST_SKIP_UNDER_TSAN(why) GTEST_SKIP() << "thread sanitizer " why
#else
#define KEST_SKIP_UNDER_TSAN(why) static_cast<void>(0)
#endif

#endif  // KEST_TESTS_SUPPORT_THREAD_SANITIZER_H
