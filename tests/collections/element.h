// Elements for the containers, which never look at what a pointer points to: the number n as one.

#ifndef KEST_TESTS_COLLECTIONS_ELEMENT_H
#define KEST_TESTS_COLLECTIONS_ELEMENT_H

#include <stdint.h>

#include <vector>

namespace kest_test {

using Elements = std::vector<void*>;

inline void* Element(uintptr_t n) { return reinterpret_cast<void*>(n); }

// The elements 1 to count.
inline Elements Numbers(int count) {
  Elements elements;
  for (int i = 1; i <= count; ++i) elements.push_back(Element(static_cast<uintptr_t>(i)));
  return elements;
}

// Arguments below zero, none of which may change anything.
constexpr int kNegatives[] = {-1, -2, -1000, INT32_MIN + 1, INT32_MIN};

}  // namespace kest_test

#endif  // KEST_TESTS_COLLECTIONS_ELEMENT_H
