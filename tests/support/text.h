// Text in tests: std::u16string prints well and counts its zero units, as TBstr does.

#ifndef KEST_TESTS_SUPPORT_TEXT_H
#define KEST_TESTS_SUPPORT_TEXT_H

#include <string>

#include "kest/string.h"

namespace kest_test {

// The whole text, inner zero units included.
inline std::u16string TextOf(const KEST::TBstr& s) {
  return std::u16string(s.GetString(), s.GetString() + s.GetLength());
}

inline const unsigned short* Units(const std::u16string& s) {
  return reinterpret_cast<const unsigned short*>(s.c_str());
}

inline KEST::TBstr Bstr(const std::u16string& s) {
  return KEST::TBstr(Units(s), static_cast<int>(s.size()));
}

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_TEXT_H
