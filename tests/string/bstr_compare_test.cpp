#include <gtest/gtest.h>
#include <limits.h>

#include <random>

#include "kest/string.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Bstr;
using kest_test::TextOf;
using kest_test::Units;

TEST(BstrCompare, GetAtIsZeroOutsideTheText) {
  const TBstr s(KEST_TEXT("ab\0c"), 4);
  const int expected[] = {'a', 'b', 0, 'c'};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(expected[i], s.GetAt(i));
  for (int i : {-1, 4, 5, INT_MAX, INT_MIN}) EXPECT_EQ(0, s.GetAt(i)) << i;
  EXPECT_EQ(0, TBstr().GetAt(0));
}

TEST(BstrCompare, SetAtIgnoresZeroAndPlacesOutsideTheText) {
  TBstr s(KEST_TEXT("ab\0c"), 4);
  s.SetAt(2, u'x');
  s.SetAt(3, 0xFFFF);
  EXPECT_EQ(u"abx\uFFFF", TextOf(s));
  for (int i : {-1, 4, 5, INT_MAX, INT_MIN}) s.SetAt(i, u'y');
  s.SetAt(0, 0);
  EXPECT_EQ(u"abx\uFFFF", TextOf(s));
  EXPECT_EQ(0, s.GetString()[4]);
  TBstr empty;
  empty.SetAt(0, u'x');
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(BstrCompare, SetAtDiscardsThe8BitCopyInAnyCase) {
  for (int index : {0, -1, 3}) {
    TBstr s(KEST_TEXT("abc"));
    s.GetMultibyteString();
    // Not noticed as long as the copy stands.
    (*s.GetRawBstrPtr())[2] = 'x';
    EXPECT_STREQ("abc", s.GetMultibyteString());
    s.SetAt(index, 0);
    EXPECT_STREQ("abx", s.GetMultibyteString());
  }
}

namespace {

struct Row {
  std::u16string a, b;
  int plain, noCase, normal;
};

// Worked by hand: the difference of the first units that differ, as they are, in upper case, and
// in the normal form, which is lower case.
const Row kComparisons[] = {
    {u"abc", u"abc", 0, 0, 0},
    {u"abc", u"abd", -1, -1, -1},
    {u"abd", u"abc", 1, 1, 1},
    {u"abc", u"ab", 'c', 'C', 'c'},
    {u"ab", u"abc", -'c', -'C', -'c'},
    {u"ABC", u"abc", -32, 0, 0},
    {u"abc", u"ABC", 32, 0, 0},
    {u"a", u"_", 2, 'A' - '_', 2},  // between the cases: upper and lower differ in sign
    {u"\uFFFF", u"a", 0xFFFF - 'a', 0xFFFF - 'A', 0xFFFF - 'a'},  // unsigned units
    {u"\xD800", u"\xE000", 0xD800 - 0xE000, 0xD800 - 0xE000, 0xD800 - 0xE000},
    {u"\xE9", u"\xC9", 0x20, 0x20, 0x20},  // letters beyond ASCII have no case
    {u"Foo Bar", u"foobar", 'F' - 'f', ' ' - 'B', 0},
    {u"a b", u"AB", 'a' - 'A', ' ' - 'B', 0},
    {u"ab  ", u"ab", ' ', ' ', 0},
    {u"ab", u"ab  ", -' ', -' ', 0},
    {u"  ab", u"a  b ", ' ' - 'a', ' ' - 'A', 0},
    {u"a\tb", u"ab", '\t' - 'b', '\t' - 'B', '\t' - 'b'},  // a tab is no space
    {u"   ", u" ", ' ', ' ', 0},
    {u"   ", u"a", ' ' - 'a', ' ' - 'A', -'a'},
    {u"abc", u"", 'a', 'A', 'a'},  // an empty text that is not null
    {u"  ", u"", ' ', ' ', 0},
    {std::u16string(u"ab\0x", 4), u"ab", 0, 0, 0},  // up to the first zero
    {std::u16string(u"ab\0x", 4), u"abc", -'c', -'C', -'c'},
};

}  // namespace

TEST(BstrCompare, ComparesTheUnitsThatDiffer) {
  for (const Row& row : kComparisons) {
    const TBstr a = Bstr(row.a);
    EXPECT_EQ(row.plain, a.Compare(Units(row.b))) << testing::PrintToString(row.a);
    EXPECT_EQ(row.noCase, a.CompareNoCase(Units(row.b))) << testing::PrintToString(row.a);
    EXPECT_EQ(row.normal, a.CompareNormal(Units(row.b))) << testing::PrintToString(row.a);
  }
}

TEST(BstrCompare, WithOneSideMissingLengthsDecide) {
  const TBstr empty;
  const TBstr abc(KEST_TEXT("abc"));
  const TBstr zero(KEST_TEXT("a\0b"), 3);
  for (auto compare : {&TBstr::Compare, &TBstr::CompareNoCase, &TBstr::CompareNormal}) {
    EXPECT_EQ(0, (empty.*compare)(nullptr));
    EXPECT_EQ(0, (empty.*compare)(KEST_TEXT("")));
    EXPECT_EQ(-3, (empty.*compare)(KEST_TEXT("abc")));
    EXPECT_EQ(3, (abc.*compare)(nullptr));
    EXPECT_EQ(3, (zero.*compare)(nullptr));  // the counted length here
  }
}

TEST(BstrCompare, NormalWithOneSideMissingIgnoresOnlyTrailingSpaces) {
  struct {
    const unsigned short* text;
    int length;
  } const kRows[] = {{KEST_TEXT("  "), 0},    {KEST_TEXT(" a"), 2},     {KEST_TEXT(" a  "), 2},
                     {KEST_TEXT("a b c"), 5}, {KEST_TEXT("a b c "), 5}, {KEST_TEXT(" \t "), 2}};
  for (const auto& row : kRows) {
    EXPECT_EQ(-row.length, TBstr().CompareNormal(row.text));
    EXPECT_EQ(row.length, TBstr(row.text).CompareNormal(nullptr));
  }
}

TEST(BstrCompare, NormalAgreesWithNormalize) {
  std::mt19937 random(1);
  const std::u16string alphabet = u"  aAbB@[`{\xE9";
  const auto draw = [&] {
    std::u16string text(random() % 6, u' ');
    for (char16_t& unit : text) unit = alphabet[random() % alphabet.size()];
    return text;
  };
  for (int i = 0; i < 200000; ++i) {
    const std::u16string a = draw();
    const std::u16string b = draw();
    if (a.empty()) continue;
    TBstr normalA = Bstr(a);
    TBstr normalB = Bstr(b);
    normalA.Normalize();
    normalB.Normalize();
    ASSERT_EQ(KEST::ucscmp(normalA.GetString(), normalB.GetString()),
              Bstr(a).CompareNormal(Units(b)))
        << testing::PrintToString(a) << testing::PrintToString(b);
  }
}

TEST(BstrCompare, OperatorsFollowCompare) {
  const TBstr a(KEST_TEXT("a"));
  const TBstr b(KEST_TEXT("b"));
  const TBstr empty;
  const unsigned short* null = nullptr;
  EXPECT_TRUE(a == TBstr(a));
  EXPECT_TRUE(a == KEST_TEXT("a"));
  EXPECT_TRUE(KEST_TEXT("a") == a);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(a != KEST_TEXT("b"));
  EXPECT_TRUE(KEST_TEXT("b") != a);
  EXPECT_FALSE(a != TBstr(a));
  EXPECT_TRUE(a < b);
  EXPECT_FALSE(b < a);
  EXPECT_FALSE(a < TBstr(a));
  EXPECT_TRUE(a < KEST_TEXT("b"));
  EXPECT_TRUE(KEST_TEXT("a") < b);
  EXPECT_FALSE(KEST_TEXT("b") < a);
  EXPECT_TRUE(empty == null);
  EXPECT_TRUE(null == empty);
  EXPECT_TRUE(empty == TBstr());
  EXPECT_TRUE(empty < a);
  EXPECT_FALSE(empty < null);
  EXPECT_TRUE(a != null);
  EXPECT_TRUE(TBstr(KEST_TEXT("a\0x"), 3) == a);
}

TEST(BstrCompare, ToLong) {
  struct {
    const unsigned short* text;
    int value;
  } const kRows[] = {
      {nullptr, 0},
      {KEST_TEXT("0"), 0},
      {KEST_TEXT("  42abc"), 42},
      {KEST_TEXT("\t42"), 0},  // a tab is no space
      {KEST_TEXT("-7"), -7},
      {KEST_TEXT("+7"), 7},
      {KEST_TEXT("+-7"), 0},
      {KEST_TEXT("0x10"), 0},
      {KEST_TEXT("010"), 10},
      {KEST_TEXT("2147483647"), INT_MAX},
      {KEST_TEXT("2147483648"), INT_MAX},
      {KEST_TEXT("-2147483648"), -INT_MAX},  // saturates before the sign is applied, on purpose
  };
  for (const auto& row : kRows) EXPECT_EQ(row.value, TBstr(row.text).ToLong());
  EXPECT_EQ(12, TBstr(KEST_TEXT("12\0"
                                "34"),
                      5)
                    .ToLong());
}
