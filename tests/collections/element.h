// Elements for the containers, which never look at what a pointer points to: the number n as one.

#ifndef KEST_TESTS_COLLECTIONS_ELEMENT_H
#define KEST_TESTS_COLLECTIONS_ELEMENT_H

#include <stdint.h>

namespace kest_test {

inline void* Element(uintptr_t n) { return reinterpret_cast<void*>(n); }

// Arguments below zero, none of which may change anything.
constexpr int kNegatives[] = {-1, -2, -1000, INT32_MIN + 1, INT32_MIN};

}  // namespace kest_test

#endif  // KEST_TESTS_COLLECTIONS_ELEMENT_H
