#include <gtest/gtest.h>

#include <random>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::Units;

constexpr int kNone = -1;

int IndexIn(const unsigned short* s, const unsigned short* found) {
  return found != nullptr ? static_cast<int>(found - s) : kNone;
}

int IndexOrNone(size_t index) {
  return index != std::u16string::npos ? static_cast<int>(index) : kNone;
}

TEST(UcsSearch, FindsTheFirstAndTheLastUnit) {
  const struct {
    const char16_t* s;
    unsigned short ch;
    int first;
    int last;
  } kRows[] = {
      {u"hello", 'l', 2, 3},
      {u"hello", 'h', 0, 0},
      {u"hello", 'o', 4, 4},
      {u"hello", 'x', kNone, kNone},
      {u"hello", 0, 5, 5},  // the terminator
      {u"", 0, 0, 0},
      {u"", 'x', kNone, kNone},
      {u"ab\0b", 'b', 1, 1},
      {u"\u0161a", 'a', 1, 1},  // the low byte of the first is 'a'
      {u"\uFFFFz\uFFFF", 0xFFFF, 0, 2},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.s)) + " " + std::to_string(row.ch));
    const unsigned short* s = Units(row.s);
    EXPECT_EQ(row.first, IndexIn(s, KEST::ucschr(s, row.ch)));
    EXPECT_EQ(row.last, IndexIn(s, KEST::ucsrchr(s, row.ch)));
  }
}

TEST(UcsSearch, FindsTheFirstUnitOfASet) {
  const struct {
    const char16_t* s;
    const char16_t* set;
    int index;
  } kRows[] = {
      {u"hello", u"ol", 2},
      {u"hello", u"xyz", kNone},
      {u"hello", u"", kNone},
      {u"", u"abc", kNone},
      {u"", u"", kNone},
      {u"hello", u"12345678o", 4},  // a long set
      {u"hello", u"12345678", kNone},
      {u"hello", u"1234567890", kNone},
      {u"\u0168h", u"123456789h", 1},  // the low byte of the first is 'h'
      {u"a\uFFFF", u"123456789\uFFFF", 1},
      {u"a\U0001F600", u"\U0001F601", 1},  // halves of a pair are units of their own
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.s)) + " " +
                 testing::PrintToString(std::u16string(row.set)));
    const unsigned short* s = Units(row.s);
    EXPECT_EQ(row.index, IndexIn(s, KEST::ucspbrk(s, Units(row.set))));
  }
}

TEST(UcsSearch, FindsText) {
  const struct {
    const char16_t* haystack;
    const char16_t* needle;
    int index;
  } kRows[] = {
      {u"hello", u"l", 2},          {u"hello", u"lo", 3},      {u"hello", u"hello", 0},
      {u"hello", u"hello!", kNone}, {u"hello", u"lx", kNone},  {u"aaab", u"aab", 1},
      {u"hello", u"", 0},           {u"", u"", kNone},  // nothing is found in empty text
      {u"", u"a", kNone},           {u"ab\0cd", u"cd", kNone}, {u"Hello", u"h", kNone},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.haystack)) + " " +
                 testing::PrintToString(std::u16string(row.needle)));
    const unsigned short* s = Units(row.haystack);
    EXPECT_EQ(row.index, IndexIn(s, KEST::ucsstr(s, Units(row.needle))));
  }
}

TEST(UcsSearch, NullTextIsEmptyText) {
  const unsigned short* s = KEST_TEXT("abc");
  EXPECT_EQ(nullptr, KEST::ucschr(nullptr, 'a'));
  EXPECT_EQ(nullptr, KEST::ucschr(nullptr, 0)) << "there is no place to give";
  EXPECT_EQ(nullptr, KEST::ucsrchr(nullptr, 'a'));
  EXPECT_EQ(nullptr, KEST::ucsrchr(nullptr, 0));
  EXPECT_EQ(nullptr, KEST::ucspbrk(nullptr, s));
  EXPECT_EQ(nullptr, KEST::ucspbrk(s, nullptr));
  EXPECT_EQ(nullptr, KEST::ucsstr(nullptr, s));
  EXPECT_EQ(nullptr, KEST::ucsstr(nullptr, nullptr));
  EXPECT_EQ(s, KEST::ucsstr(s, nullptr));
}

// The example of docs/wide-strings.md.
TEST(UcsSearch, TheExampleOfThePage) {
  unsigned short name[16];
  EXPECT_EQ(6u, KEST::ucslcpy(name, KEST_TEXT("report"), 16));
  EXPECT_EQ(14u, KEST::ucslcat(name, KEST_TEXT("-042.txt"), 16));
  const unsigned short* dot = KEST::ucsrchr(name, '.');
  unsigned short* end = nullptr;
  EXPECT_EQ(42, KEST::ucstol(KEST::ucschr(name, '-') + 1, &end, 10));
  EXPECT_EQ(dot, end);
}

TEST(UcsSearch, EveryUnitIsFoundThroughShortAndLongSets) {
  for (unsigned int ch = 1; ch < 0x10000; ++ch) {
    const unsigned short unit = static_cast<unsigned short>(ch);
    const unsigned short other = static_cast<unsigned short>(ch ^ 0x100);
    const unsigned short s[] = {other, unit, 0};
    const unsigned short shortSet[] = {unit, 0};
    const unsigned short longSet[] = {unit, unit, unit, unit, unit, unit, unit, unit, unit, 0};
    const int expected = other == 0 ? kNone : 1;
    ASSERT_EQ(expected, IndexIn(s, KEST::ucspbrk(s, shortSet))) << ch;
    ASSERT_EQ(expected, IndexIn(s, KEST::ucspbrk(s, longSet))) << ch;
  }
}

TEST(UcsSearch, AgreesWithASlowModelOnRandomText) {
  std::mt19937 random(20240612);
  const auto randomText = [&](size_t maxLength, size_t letters) {
    std::u16string s(random() % (maxLength + 1), u' ');
    for (char16_t& ch : s) ch = static_cast<char16_t>(u'a' + random() % letters);
    return s;
  };
  for (int i = 0; i < 20000; ++i) {
    const std::u16string s = randomText(12, 1 + random() % 26);
    const std::u16string other = randomText(i % 2 == 0 ? 3 : 14, 26);
    const std::u16string needle = randomText(4, 1 + random() % 3);
    const char16_t ch = static_cast<char16_t>(u'a' + random() % 26);
    SCOPED_TRACE(testing::PrintToString(s) + " " + testing::PrintToString(other));
    const unsigned short* units = Units(s);
    ASSERT_EQ(IndexOrNone(s.find(ch)), IndexIn(units, KEST::ucschr(units, ch)));
    ASSERT_EQ(IndexOrNone(s.rfind(ch)), IndexIn(units, KEST::ucsrchr(units, ch)));
    ASSERT_EQ(IndexOrNone(s.find_first_of(other)),
              IndexIn(units, KEST::ucspbrk(units, Units(other))));
    ASSERT_EQ(s.empty() ? kNone : IndexOrNone(s.find(needle)),
              IndexIn(units, KEST::ucsstr(units, Units(needle))))
        << testing::PrintToString(needle);
  }
}

}  // namespace
