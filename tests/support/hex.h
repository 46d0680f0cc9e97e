// Bytes as text, for tables of expected values and readable failures.

#ifndef KEST_TESTS_SUPPORT_HEX_H
#define KEST_TESTS_SUPPORT_HEX_H

#include <stddef.h>

#include <string>
#include <vector>

namespace kest_test {

inline std::string Hex(const unsigned char* bytes, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += "0123456789abcdef"[bytes[i] >> 4];
    text += "0123456789abcdef"[bytes[i] & 15];
  }
  return text;
}

inline std::string Hex(const std::vector<unsigned char>& bytes) {
  return Hex(bytes.data(), bytes.size());
}

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_HEX_H
