#include <gtest/gtest.h>
#include <limits.h>

#include <random>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::GuardedUnits;
using kest_test::Units;

struct SRow {
  const char16_t* a;
  const char16_t* b;
  unsigned int n;  // for the bounded form
  int whole;
  int bounded;
};

// By hand: the difference of the first units that differ.
constexpr SRow kExact[] = {
    {u"", u"", 1, 0, 0},
    {u"abc", u"abc", 3, 0, 0},
    {u"abc", u"abd", 3, -1, -1},
    {u"abc", u"abd", 2, -1, 0},
    {u"z", u"a", 9, 25, 25},
    {u"z", u"a", 0, 25, 0},
    {u"ab", u"a", 9, 'b', 'b'},
    {u"a", u"ab", 9, -'b', -'b'},
    {u"a", u"ab", 1, -'b', 0},
    {u"\uFFFF", u"\x01", 1, 0xFFFE, 0xFFFE},  // units have no sign
    {u"\x01", u"\uFFFF", 1, -0xFFFE, -0xFFFE},
    {u"", u"\uFFFF", UINT_MAX, -0xFFFF, -0xFFFF},
    {u"A", u"a", 1, -32, -32},
    {u"a\0x", u"a\0y", 3, 0, 0},  // the terminator ends both
};

// The same with letters in upper case.
constexpr SRow kFolded[] = {
    {u"", u"", 1, 0, 0},
    {u"Hello", u"hELLO", 5, 0, 0},
    {u"Hello", u"hELLA", 4, 14, 0},
    {u"x", u"Y", 0, -1, 0},
    {u"ab", u"A", 9, 'B', 'B'},
    {u"A", u"aB", 1, -'B', 0},
    {u"_", u"a", 1, '_' - 'A', '_' - 'A'},  // lower case would put '_' before 'a'
    {u"[", u"Z", 1, 1, 1},
    {u"\u00E9", u"\u00C9", 1, 0x20, 0x20},  // no ASCII letters, so different
    {u"\uFF41", u"\uFF21", 1, 0x20, 0x20},
    {u"@`", u"`@", 2, '@' - '`', '@' - '`'},
    {u"{", u"[", 1, 0x20, 0x20},
    {u"A\0x", u"a\0y", 3, 0, 0},
};

TEST(UcsCompare, GivesTheDifferenceOfTheFirstUnitsThatDiffer) {
  for (const SRow& row : kExact) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.a)) + " and " +
                 testing::PrintToString(std::u16string(row.b)));
    EXPECT_EQ(row.whole, KEST::ucscmp(Units(row.a), Units(row.b)));
    EXPECT_EQ(row.bounded, KEST::ucsncmp(Units(row.a), Units(row.b), row.n));
  }
}

TEST(UcsCompare, WithoutCaseComparesUpperCaseLetters) {
  for (const SRow& row : kFolded) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.a)) + " and " +
                 testing::PrintToString(std::u16string(row.b)));
    EXPECT_EQ(row.whole, KEST::ucsicmp(Units(row.a), Units(row.b)));
    EXPECT_EQ(row.bounded, KEST::ucsnicmp(Units(row.a), Units(row.b), row.n));
  }
}

TEST(UcsCompare, NullTextIsEmptyText) {
  EXPECT_EQ(0, KEST::ucscmp(nullptr, nullptr));
  EXPECT_EQ(0, KEST::ucscmp(nullptr, KEST_TEXT("")));
  EXPECT_EQ('a', KEST::ucscmp(KEST_TEXT("a"), nullptr));
  EXPECT_EQ(-'a', KEST::ucsncmp(nullptr, KEST_TEXT("a"), 1));
  EXPECT_EQ(-'A', KEST::ucsicmp(nullptr, KEST_TEXT("a")));
  EXPECT_EQ('A', KEST::ucsnicmp(KEST_TEXT("a"), nullptr, 1));
}

TEST(UcsCompare, BoundedFormsReadNoFurtherThanN) {
  const GuardedUnits a(u"same");
  const GuardedUnits b(u"same");
  EXPECT_EQ(0, KEST::ucsncmp(a.Get(), b.Get(), 4));
  EXPECT_EQ(0, KEST::ucsnicmp(a.Get(), b.Get(), 4));
  EXPECT_EQ(0, KEST::ucsncmp(a.Get() + 4, b.Get() + 4, 0));
  EXPECT_EQ(0, KEST::ucsnicmp(a.Get() + 4, b.Get() + 4, 0));
}

TEST(UcsCompare, EveryUnitAgainstItsOtherCase) {
  for (unsigned int ch = 1; ch < 0x10000; ++ch) {
    const unsigned short unit[2] = {static_cast<unsigned short>(ch), 0};
    const unsigned short upper[2] = {KEST::touupper(unit[0]), 0};
    ASSERT_EQ(0, KEST::ucsicmp(unit, upper)) << ch;
    ASSERT_EQ(static_cast<int>(ch) - upper[0], KEST::ucscmp(unit, upper)) << ch;
  }
}

// The first n units of each, terminators included, unit after unit.
int SlowCompare(const std::u16string& a, const std::u16string& b, size_t n, bool fold) {
  for (size_t i = 0; i < n && i <= a.size() && i <= b.size(); ++i) {
    int unitA = a.c_str()[i], unitB = b.c_str()[i];
    if (fold && unitA >= 'a' && unitA <= 'z') unitA += 'A' - 'a';
    if (fold && unitB >= 'a' && unitB <= 'z') unitB += 'A' - 'a';
    if (unitA != unitB) return unitA - unitB;
  }
  return 0;
}

TEST(UcsCompare, AgreesWithASlowModelOnRandomText) {
  std::mt19937 random(20240611);
  const char16_t kAlphabet[] = u"aAbB\u00E9";
  const auto randomText = [&] {
    std::u16string s(random() % 6, u' ');
    for (char16_t& ch : s) ch = kAlphabet[random() % 5];
    return s;
  };
  for (int i = 0; i < 20000; ++i) {
    const std::u16string a = randomText(), b = randomText();
    const unsigned int n = static_cast<unsigned int>(random() % 8);
    SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
    ASSERT_EQ(SlowCompare(a, b, 99, false), KEST::ucscmp(Units(a), Units(b)));
    ASSERT_EQ(SlowCompare(a, b, n, false), KEST::ucsncmp(Units(a), Units(b), n)) << n;
    ASSERT_EQ(SlowCompare(a, b, 99, true), KEST::ucsicmp(Units(a), Units(b)));
    ASSERT_EQ(SlowCompare(a, b, n, true), KEST::ucsnicmp(Units(a), Units(b), n)) << n;
  }
}

}  // namespace
