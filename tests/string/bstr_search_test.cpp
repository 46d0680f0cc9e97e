#include <gtest/gtest.h>
#include <limits.h>

#include <random>

#include "kest/string.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Bstr;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

TEST(BstrSearch, FindsAUnit) {
  const TBstr hello(KEST_TEXT("hello"));
  struct {
    unsigned short ch;
    int start, index;
  } constexpr kRows[] = {
      {'l', 0, 2},        {'l', 2, 2},  {'l', 3, 3},          {'l', 4, -1}, {'h', 0, 0},
      {'h', 1, -1},       {'h', 5, -1}, {'x', 0, -1},         {'o', 4, 4},  {0, 0, 5},
      {0, 4, 5},          {0, 5, -1},   {'h', -1, -1},        {'l', 6, -1}, {'l', INT_MAX, -1},
      {'l', INT_MIN, -1}, {0, -1, -1},  {'h' + 0x100, 0, -1},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.index, hello.Find(row.ch, row.start)) << row.ch << " from " << row.start;
  }
  EXPECT_EQ(2, hello.Find(u'l'));
  EXPECT_EQ(-1, TBstr().Find(u'l', 0));
  EXPECT_EQ(-1, TBstr().Find(u'\0', 0));
}

TEST(BstrSearch, FindsText) {
  const TBstr text(KEST_TEXT("abcabd"));
  struct {
    const unsigned short* s;
    int start, index;
  } const kRows[] = {
      {KEST_TEXT("ab"), 0, 0},        {KEST_TEXT("ab"), 1, 3},        {KEST_TEXT("ab"), 4, -1},
      {KEST_TEXT("abd"), 0, 3},       {KEST_TEXT("d"), 5, 5},         {KEST_TEXT("abcabd"), 0, 0},
      {KEST_TEXT("abcabdx"), 0, -1},  {KEST_TEXT("AB"), 0, -1},       {KEST_TEXT(""), 0, 0},
      {KEST_TEXT(""), 5, 5},          {KEST_TEXT(""), 6, -1},         {KEST_TEXT("ab"), -1, -1},
      {KEST_TEXT("ab"), INT_MIN, -1}, {KEST_TEXT("ab"), INT_MAX, -1}, {nullptr, 0, -1},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.index, text.Find(row.s, row.start)) << row.start;
  EXPECT_EQ(0, text.Find(KEST_TEXT("ab")));
  EXPECT_EQ(-1, TBstr().Find(KEST_TEXT("a"), 0));
  EXPECT_EQ(-1, TBstr().Find(KEST_TEXT(""), 0));
}

TEST(BstrSearch, ReverseFind) {
  const TBstr hello(KEST_TEXT("hello"));
  EXPECT_EQ(3, hello.ReverseFind(u'l'));
  EXPECT_EQ(0, hello.ReverseFind(u'h'));
  EXPECT_EQ(4, hello.ReverseFind(u'o'));
  EXPECT_EQ(-1, hello.ReverseFind(u'x'));
  EXPECT_EQ(5, hello.ReverseFind(0));
  EXPECT_EQ(-1, TBstr().ReverseFind(u'l'));
  EXPECT_EQ(-1, TBstr().ReverseFind(0));
}

TEST(BstrSearch, FindOneOf) {
  const TBstr hello(KEST_TEXT("hello"));
  EXPECT_EQ(1, hello.FindOneOf(KEST_TEXT("ole")));
  EXPECT_EQ(4, hello.FindOneOf(KEST_TEXT("xo")));
  EXPECT_EQ(-1, hello.FindOneOf(KEST_TEXT("xyz")));
  EXPECT_EQ(-1, hello.FindOneOf(KEST_TEXT("")));
  EXPECT_EQ(-1, hello.FindOneOf(nullptr));
  EXPECT_EQ(-1, TBstr().FindOneOf(KEST_TEXT("a")));
}

TEST(BstrSearch, EndsAtTheFirstZeroUnit) {
  const TBstr s(KEST_TEXT("ab\0cab"), 6);
  EXPECT_EQ(-1, s.Find(u'c'));
  EXPECT_EQ(3, s.Find(u'c', 3));
  EXPECT_EQ(2, s.Find(u'\0', 0));
  EXPECT_EQ(2, s.Find(u'\0', 2));
  EXPECT_EQ(6, s.Find(u'\0', 3));
  EXPECT_EQ(-1, s.Find(KEST_TEXT("ca")));
  EXPECT_EQ(3, s.Find(KEST_TEXT("ca"), 3));
  EXPECT_EQ(2, s.Find(KEST_TEXT(""), 2));
  EXPECT_EQ(1, s.ReverseFind(u'b'));
  EXPECT_EQ(2, s.ReverseFind(0));
  EXPECT_EQ(-1, s.FindOneOf(KEST_TEXT("c")));
}

TEST(BstrSearch, Parts) {
  const TBstr hello(KEST_TEXT("hello"));
  struct {
    int first, count;
    const char16_t* text;
  } constexpr kMid[] = {
      {0, 5, u"hello"},
      {2, 100, u"llo"},
      {2, INT_MAX, u"llo"},
      {1, 3, u"ell"},
      {5, 1, u""},
      {6, 1, u""},
      {INT_MAX, 1, u""},
      {-3, 2, u"he"},
      {INT_MIN, 2, u"he"},
      {INT_MIN, INT_MAX, u"hello"},
      {2, 0, u""},
      {2, -1, u""},
      {2, INT_MIN, u""},
      {INT_MAX, INT_MAX, u""},
      {INT_MIN, INT_MIN, u""},
  };
  for (const auto& row : kMid) {
    EXPECT_EQ(row.text, TextOf(hello.Mid(row.first, row.count))) << row.first << ", " << row.count;
  }
  struct {
    int n;
    const char16_t *mid, *left, *right;
  } constexpr kOthers[] = {
      {0, u"hello", u"", u""},       {2, u"llo", u"he", u"lo"},
      {4, u"o", u"hell", u"ello"},   {5, u"", u"hello", u"hello"},
      {9, u"", u"hello", u"hello"},  {INT_MAX, u"", u"hello", u"hello"},
      {-1, u"hello", u"", u""},      {-3, u"hello", u"", u""},
      {INT_MIN, u"hello", u"", u""},
  };
  for (const auto& row : kOthers) {
    EXPECT_EQ(row.mid, TextOf(hello.Mid(row.n))) << row.n;
    EXPECT_EQ(row.left, TextOf(hello.Left(row.n))) << row.n;
    EXPECT_EQ(row.right, TextOf(hello.Right(row.n))) << row.n;
  }
  EXPECT_EQ(u"hello", TextOf(hello));
}

TEST(BstrSearch, PartsOfNothing) {
  const TBstr empty;
  for (int n : {0, 1, -1, INT_MAX, INT_MIN}) {
    EXPECT_TRUE(empty.Mid(n).IsEmpty());
    EXPECT_TRUE(empty.Mid(0, n).IsEmpty());
    EXPECT_TRUE(empty.Left(n).IsEmpty());
    EXPECT_TRUE(empty.Right(n).IsEmpty());
  }
}

TEST(BstrSearch, PartsKeepZeroUnits) {
  const TBstr s(KEST_TEXT("ab\0cd"), 5);
  EXPECT_EQ(std::u16string(u"b\0c", 3), TextOf(s.Mid(1, 3)));
  EXPECT_EQ(std::u16string(u"ab\0", 3), TextOf(s.Left(3)));
  EXPECT_EQ(std::u16string(u"\0cd", 3), TextOf(s.Right(3)));
}

TEST(BstrSearch, APartIsOneBlockOfItsSize) {
  const TBstr hello(KEST_TEXT("hello"));
  TestAllocator allocator;
  { const TBstr part = hello.Right(3); }
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(12u, allocator.LastSize());
  { const TBstr part = hello.Left(0); }
  EXPECT_EQ(1, allocator.Requests());
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_TRUE(hello.Left(3).IsEmpty());
}

// The same searches of std::u16string, which has -1 as npos and also knows the place past the end.
TEST(BstrSearch, AgreesWithAPlainModel) {
  std::mt19937 random(2);
  const auto draw = [&](size_t longest) {
    std::u16string text(1 + random() % longest, u'a');
    for (char16_t& unit : text) unit = static_cast<char16_t>(u'a' + random() % 3);
    return text;
  };
  for (int i = 0; i < 100000; ++i) {
    const std::u16string text = draw(8);
    const std::u16string s = draw(3);
    const TBstr bstr = Bstr(text);
    const int start = static_cast<int>(random() % text.size());
    const auto at = static_cast<size_t>(start);
    ASSERT_EQ(static_cast<int>(text.find(s, at)), bstr.Find(Units(s), start));
    ASSERT_EQ(static_cast<int>(text.find(s[0], at)), bstr.Find(s[0], start));
    ASSERT_EQ(static_cast<int>(text.rfind(s[0])), bstr.ReverseFind(s[0]));
    ASSERT_EQ(static_cast<int>(text.find_first_of(s)), bstr.FindOneOf(Units(s)));
  }
}
