#include <ctype.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <locale.h>
#include <stdlib.h>

#include <string>

#include "kest/string.h"

namespace {

constexpr unsigned int kUnitCount = 0x10000;

// From the C library in the "C" locale, except that U+0020 is the only space.
unsigned short ExpectedClasses(unsigned int ch) {
  if (ch > 127) return 0;
  const int c = static_cast<int>(ch);
  int classes = 0;
  if (isupper(c)) classes |= 0x01;
  if (islower(c)) classes |= 0x02;
  if (isdigit(c)) classes |= 0x04;
  if (ch == ' ') classes |= 0x08;
  if (ispunct(c)) classes |= 0x10;
  if (iscntrl(c)) classes |= 0x20;
  if (isxdigit(c)) classes |= 0x80;
  return static_cast<unsigned short>(classes);
}

TEST(CharClass, EveryUnitHasItsClasses) {
  for (unsigned int ch = 0; ch < kUnitCount; ++ch) {
    const unsigned short unit = static_cast<unsigned short>(ch);
    ASSERT_EQ(ExpectedClasses(ch), KEST::isuctype(unit, 0xFFFF)) << ch;
  }
}

TEST(CharClass, TheMaskSelectsClasses) {
  for (unsigned int ch = 0; ch < kUnitCount; ++ch) {
    const unsigned short unit = static_cast<unsigned short>(ch);
    for (unsigned int mask = 1; mask < kUnitCount; mask <<= 1) {
      ASSERT_EQ(ExpectedClasses(ch) & mask,
                static_cast<unsigned int>(KEST::isuctype(unit, static_cast<unsigned short>(mask))))
          << ch << " with mask " << mask;
    }
    ASSERT_EQ(0, KEST::isuctype(unit, 0));
    ASSERT_EQ(0, KEST::isuctype(unit, 0x140)) << "bits that no entry has";
  }
}

TEST(CharClass, LineEndsAndTabsAreControlsNotSpaces) {
  for (const unsigned short ch : {u'\t', u'\n', u'\v', u'\f', u'\r'}) {
    EXPECT_EQ(0x20, KEST::isuctype(ch, 0xFFFF)) << ch;
  }
  EXPECT_EQ(0x08, KEST::isuctype(' ', 0xFFFF));
  EXPECT_EQ(0x20, KEST::isuctype(0, 0xFFFF));
  EXPECT_EQ(0x20, KEST::isuctype(127, 0xFFFF));
}

TEST(CharClass, KnownEntries) {
  EXPECT_NE(0, KEST::isuctype(0x41, 0x103));
  EXPECT_EQ(0x81, KEST::isuctype('F', 0x1FF));
  EXPECT_EQ(0x01, KEST::isuctype('G', 0x1FF));
  EXPECT_EQ(0x82, KEST::isuctype('f', 0x1FF));
  EXPECT_EQ(0x02, KEST::isuctype('g', 0x1FF));
  EXPECT_EQ(0x84, KEST::isuctype('9', 0x1FF));
  EXPECT_EQ(0, KEST::isuctype(0x80, 0xFFFF));
  EXPECT_EQ(0, KEST::isuctype(0x100, 0xFFFF));
  EXPECT_EQ(0, KEST::isuctype(0x141, 0xFFFF)) << "the low byte alone would be 'A'";
}

TEST(CharClass, UnitTestsKnowAsciiAlone) {
  for (unsigned int ch = 0; ch < kUnitCount; ++ch) {
    const unsigned short unit = static_cast<unsigned short>(ch);
    const int c = static_cast<int>(ch);
    ASSERT_EQ(ch < 128 && isalnum(c) != 0, kest_isualnum(unit) != 0) << ch;
    ASSERT_EQ(ch < 128 && isdigit(c) != 0, kest_isudigit(unit) != 0) << ch;
  }
}

TEST(CharClass, UnitTestsGiveTheClassBits) {
  EXPECT_EQ(0x01, kest_isualnum('Q'));
  EXPECT_EQ(0x02, kest_isualnum('q'));
  EXPECT_EQ(0x04, kest_isualnum('7'));
  EXPECT_EQ(0x04, kest_isudigit('7'));
}

TEST(CharClass, CaseMappingIsAsciiAlone) {
  for (unsigned int ch = 0; ch < kUnitCount; ++ch) {
    const unsigned short unit = static_cast<unsigned short>(ch);
    const int c = static_cast<int>(ch);
    ASSERT_EQ(ch < 128 ? toupper(c) : c, KEST::touupper(unit)) << ch;
    ASSERT_EQ(ch < 128 ? tolower(c) : c, KEST::toulower(unit)) << ch;
  }
  EXPECT_EQ(0xE9, KEST::touupper(0xE9));
  EXPECT_EQ(0xC9, KEST::toulower(0xC9));
}

// The C library answers for -128 to 255.
void ExpectTheLocaleTables() {
  for (int ch = -128; ch <= 255; ++ch) {
    EXPECT_EQ(isalnum(ch) != 0, kest_isalnum(ch) != 0) << ch;
    EXPECT_EQ(isdigit(ch) != 0, kest_isdigit(ch) != 0) << ch;
    EXPECT_EQ(isspace(ch) != 0, kest_isspace(ch) != 0) << ch;
  }
}

TEST(CharClass, ByteTestsAskTheCLibrary) {
  ExpectTheLocaleTables();
  EXPECT_NE(0, kest_isspace('\t')) << "here TAB is a space";
  EXPECT_EQ(0, kest_isalnum(0xE9));
}

TEST(CharClass, ByteTestsFollowTheCurrentLocale) {
  char folder[] = "/tmp/kest_locale_XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = folder;
  const bool made =
      system(("localedef -i de_DE -f ISO-8859-1 " + path + "/kest >/dev/null 2>&1").c_str()) == 0;
  setenv("LOCPATH", folder, 1);
  const bool set = made && setlocale(LC_CTYPE, "kest") != nullptr;
  if (set) {
    ExpectTheLocaleTables();
    EXPECT_NE(0, kest_isalnum(0xE9)) << "e with acute";
    EXPECT_NE(0, kest_isalnum(static_cast<char>(0xE9)));
    EXPECT_EQ(0, kest_isualnum(0xE9));
    EXPECT_EQ(0xE9, KEST::touupper(0xE9));
  }
  EXPECT_EQ(0, system(("rm -r " + path).c_str()));
  if (!set) GTEST_SKIP() << "no 8-bit locale can be made here";
}

TEST(CharClass, CodesOutsideTheTablesAreInNoClass) {
  const auto inNone = [](int ch) {
    ASSERT_EQ(0, kest_isalnum(ch)) << ch;
    ASSERT_EQ(0, kest_isdigit(ch)) << ch;
    ASSERT_EQ(0, kest_isspace(ch)) << ch;
  };
  for (int ch : {INT_MIN, INT_MIN + 'A', -0x10000, 0x10000 + 'A', INT_MAX}) inNone(ch);
  // What lies around the tables has the bits of every class somewhere.
  for (int ch = -0x4000; ch < -128; ++ch) inNone(ch);
  for (int ch = 256; ch < 0x4000; ++ch) inNone(ch);
}

}  // namespace
