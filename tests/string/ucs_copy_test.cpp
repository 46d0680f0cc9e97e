#include <gtest/gtest.h>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::GuardedUnits;
using kest_test::Text;
using kest_test::Units;

TEST(UcsCopy, LengthEndsAtTheFirstZero) {
  EXPECT_EQ(0u, KEST::ucslen(KEST_TEXT("")));
  EXPECT_EQ(5u, KEST::ucslen(KEST_TEXT("hello")));
  EXPECT_EQ(2u, KEST::ucslen(KEST_TEXT("ab\0cd")));
  EXPECT_EQ(2u, KEST::ucslen(KEST_TEXT("\u0100\uFF00"))) << "a zero byte is no zero unit";
  EXPECT_EQ(2u, KEST::ucslen(KEST_TEXT("\U0001F600"))) << "surrogates count one by one";
  EXPECT_EQ(0u, KEST::ucslen(nullptr));
}

TEST(UcsCopy, LengthOfEveryLengthAtEveryAlignment) {
  for (size_t length = 0; length < 100; ++length) {
    std::u16string s(length, u'\uFFFF');
    s += u'\0';
    GuardedUnits units(s);
    ASSERT_EQ(length, KEST::ucslen(units.Get()));
  }
}

TEST(UcsCopy, CopiesWithTheTerminator) {
  unsigned short dest[6] = {9, 9, 9, 9, 9, 9};
  EXPECT_EQ(dest, KEST::ucscpy(dest, KEST_TEXT("abc")));
  EXPECT_EQ(std::u16string(u"abc\0\x9\x9", 6), Text(dest, 6));
  EXPECT_EQ(dest, KEST::ucscpy(dest, KEST_TEXT("")));
  EXPECT_EQ(std::u16string(u"\0bc", 3), Text(dest, 3));
}

TEST(UcsCopy, CopiesNullAsEmptyText) {
  unsigned short dest[2] = {9, 9};
  EXPECT_EQ(dest, KEST::ucscpy(dest, nullptr));
  EXPECT_EQ(0, dest[0]);
  EXPECT_EQ(9, dest[1]);
}

// Columns: n, what the five units at dest are afterwards. The source is "abc".
TEST(UcsCopy, BoundedCopyFillsWithZeros) {
  const struct {
    unsigned int n;
    std::u16string expected;
  } kRows[] = {
      {0, u"....."},       {1, u"a...."},        {2, u"ab..."}, {3, u"abc.."},  // no terminator
      {4, {u"abc\0.", 5}}, {5, {u"abc\0\0", 5}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.n);
    unsigned short dest[5] = {'.', '.', '.', '.', '.'};
    EXPECT_EQ(dest, KEST::ucsncpy(dest, KEST_TEXT("abc"), row.n));
    EXPECT_EQ(row.expected, Text(dest, 5));
  }
}

TEST(UcsCopy, BoundedCopyReadsNoFurtherThanN) {
  const GuardedUnits source(u"abc");
  const GuardedUnits dest(3);
  KEST::ucsncpy(dest.Get(), source.Get(), 3);
  EXPECT_EQ(u"abc", Text(dest.Get(), 3));
}

TEST(UcsCopy, BoundedCopyOfNullIsZeros) {
  unsigned short dest[3] = {9, 9, 9};
  EXPECT_EQ(dest, KEST::ucsncpy(dest, nullptr, 2));
  EXPECT_EQ(std::u16string(u"\0\0\x9", 3), Text(dest, 3));
}

TEST(UcsCopy, AppendGivesThePlaceOfTheOldTerminator) {
  unsigned short dest[8] = {'a', 'b', 0, 9, 9, 9, 9, 9};
  EXPECT_EQ(dest + 2, KEST::ucscat(dest, KEST_TEXT("cd")));
  EXPECT_EQ(std::u16string(u"abcd\0\x9", 6), Text(dest, 6));
  EXPECT_EQ(dest + 4, KEST::ucscat(dest, KEST_TEXT("")));
  EXPECT_EQ(dest + 4, KEST::ucscat(dest, nullptr));
  EXPECT_EQ(u"abcd", Text(dest));
  unsigned short empty[3] = {0, 9, 9};
  EXPECT_EQ(empty, KEST::ucscat(empty, KEST_TEXT("xy")));
  EXPECT_EQ(u"xy", Text(empty));
}

TEST(UcsCopy, OverlappingPlacesAreCopiedAsIfApart) {
  unsigned short s[12] = {'a', 'b', 'c', 'd', 0};
  KEST::ucscpy(s + 1, s);
  EXPECT_EQ(u"aabcd", Text(s));
  KEST::ucscpy(s, s + 2);
  EXPECT_EQ(u"bcd", Text(s));
  EXPECT_EQ(s + 3, KEST::ucscat(s, s));
  EXPECT_EQ(u"bcdbcd", Text(s));
  KEST::ucsncpy(s + 2, s, 4);
  EXPECT_EQ(u"bcbcdb", Text(s));
}

}  // namespace
