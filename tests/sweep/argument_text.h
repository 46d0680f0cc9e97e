// The text that the sweeps pass: "abc", or null.

#ifndef KEST_TESTS_SWEEP_ARGUMENT_TEXT_H
#define KEST_TESTS_SWEEP_ARGUMENT_TEXT_H

#include <string>

#include "support/text.h"
#include "sweep/argument_sweep.h"

namespace kest_test {

using Units16 = GuardedBlock<unsigned short>;
using Bytes8 = GuardedBlock<char>;

const std::u16string kText = u"abc";
constexpr int kLength = 3;

// Units in the longest text that there is.
constexpr int kLongestBstr = 0x7FFFFFFC;

// "abc" with its terminator, or null.
inline const unsigned short* Abc(bool given) {
  static const Units16 text(std::u16string(u"abc", 4));
  return given ? text.Get() : nullptr;
}
inline const char* AbcBytes(bool given) {
  static const Bytes8 text(std::string("abc", 4));
  return given ? text.Get() : nullptr;
}

// What the library takes that for.
inline std::u16string Given(bool given) { return given ? kText : u""; }

// The text is as expected, in both forms, and can still be changed.
inline void ExpectText(const std::u16string& expected, KEST::TBstr& text) {
  EXPECT_EQ(expected, TextOf(text));
  std::string bytes;
  for (char16_t unit : expected) bytes += unit < 256 ? static_cast<char>(unit) : '?';
  EXPECT_EQ(bytes, std::string(text.GetMultibyteString(), bytes.size()));
  text.Append(u'!');
  EXPECT_EQ(expected + u"!", TextOf(text));
}

// Whether the sweep's allocator has room for a text of that many units.
inline bool Fits(unsigned long long units) { return 2 * units + 6 <= kLargestBlock; }

}  // namespace kest_test

#endif  // KEST_TESTS_SWEEP_ARGUMENT_TEXT_H
