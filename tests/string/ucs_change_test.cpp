#include <gtest/gtest.h>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::Text;

using TChange = unsigned short* (*)(unsigned short*);

std::u16string Changed(TChange change, std::u16string s) {
  unsigned short* units = reinterpret_cast<unsigned short*>(&s[0]);
  EXPECT_EQ(units, change(units)) << "the result is the text itself";
  return s;
}

TEST(UcsChange, MapsAsciiLettersAlone) {
  EXPECT_EQ(u"", Changed(KEST::ucsupr, u""));
  EXPECT_EQ(u"HELLO, WORLD! 123 @[`{", Changed(KEST::ucsupr, u"Hello, World! 123 @[`{"));
  EXPECT_EQ(u"hello, world! 123 @[`{", Changed(KEST::ucslwr, u"Hello, World! 123 @[`{"));
  EXPECT_EQ(u"\u00E9\u00DF\u0161A", Changed(KEST::ucsupr, u"\u00E9\u00DF\u0161a"));
  EXPECT_EQ(u"\u00C9\u0141\u0391a", Changed(KEST::ucslwr, u"\u00C9\u0141\u0391A"));
}

TEST(UcsChange, StopsAtTheTerminator) {
  EXPECT_EQ(std::u16string(u"AB\0cd", 5), Changed(KEST::ucsupr, std::u16string(u"ab\0cd", 5)));
  EXPECT_EQ(std::u16string(u"ab\0CD", 5), Changed(KEST::ucslwr, std::u16string(u"AB\0CD", 5)));
  EXPECT_EQ(std::u16string(u"ba\0cd", 5), Changed(KEST::ucsrev, std::u16string(u"ab\0cd", 5)));
}

TEST(UcsChange, EveryUnitGoesThroughTheMapping) {
  for (unsigned int ch = 1; ch < 0x10000; ++ch) {
    unsigned short s[2] = {static_cast<unsigned short>(ch), 0};
    ASSERT_EQ(KEST::touupper(s[0]), KEST::ucsupr(s)[0]);
    s[0] = static_cast<unsigned short>(ch);
    ASSERT_EQ(KEST::toulower(s[0]), KEST::ucslwr(s)[0]);
  }
}

TEST(UcsChange, ReversesUnits) {
  EXPECT_EQ(u"", Changed(KEST::ucsrev, u""));
  EXPECT_EQ(u"a", Changed(KEST::ucsrev, u"a"));
  EXPECT_EQ(u"ba", Changed(KEST::ucsrev, u"ab"));
  EXPECT_EQ(u"cba", Changed(KEST::ucsrev, u"abc"));
  EXPECT_EQ(std::u16string({0xDE00, 0xD83D}), Changed(KEST::ucsrev, u"\U0001F600"))
      << "the halves of a pair change places too";
}

TEST(UcsChange, NullStaysNull) {
  EXPECT_EQ(nullptr, KEST::ucsupr(nullptr));
  EXPECT_EQ(nullptr, KEST::ucslwr(nullptr));
  EXPECT_EQ(nullptr, KEST::ucsrev(nullptr));
}

}  // namespace
