#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <random>
#include <string>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::Units;

constexpr unsigned int kNegative = 2;
constexpr unsigned int kOverflow = 4;
constexpr unsigned int kDigitRead = 8;

// Columns: text, base, as a signed number, as an unsigned one, units read.
constexpr struct {
  const char16_t* s;
  int base;
  int number;
  unsigned int unsignedNumber;
  int read;
} kRows[] = {
    {u"0", 10, 0, 0, 1},
    {u"42abc", 10, 42, 42, 2},
    {u"  42", 10, 42, 42, 4},
    {u"+7", 10, 7, 7, 2},
    {u"-7", 10, -7, 4294967289u, 2},
    {u" -7 ", 10, -7, 4294967289u, 3},
    {u"-1", 10, -1, 4294967295u, 2},
    {u"-0", 10, 0, 0, 2},
    {u"000123", 10, 123, 123, 6},
    {u"zZ", 36, 1295, 1295, 2},
    {u"12", 2, 1, 1, 1},
    {u"778", 8, 63, 63, 2},
    // Nothing to read: 0, and the end is the start.
    {u"", 10, 0, 0, 0},
    {u"abc", 10, 0, 0, 0},
    {u"  ", 10, 0, 0, 0},
    {u"  x", 10, 0, 0, 0},
    {u"-", 10, 0, 0, 0},
    {u"  -x", 10, 0, 0, 0},
    {u"\t42", 10, 0, 0, 0},  // TAB is no space
    {u"\n42", 10, 0, 0, 0},
    {u"\u00A042", 10, 0, 0, 0},
    {u"--1", 10, 0, 0, 0},  // one sign at most
    {u"+-1", 10, 0, 0, 0},
    {u"-+1", 10, 0, 0, 0},
    {u"- 1", 10, 0, 0, 0},
    {u"\u0661", 10, 0, 0, 0},  // an Arabic digit
    {u"\uFF11", 10, 0, 0, 0},
    {u"2", 2, 0, 0, 0},
    // Bases and prefixes.
    {u"10", 0, 10, 10, 2},
    {u"010", 0, 8, 8, 3},
    {u"0x10", 0, 16, 16, 4},
    {u"0X1f", 0, 31, 31, 4},
    {u"-0x10", 0, -16, 4294967280u, 5},
    {u" +010", 0, 8, 8, 5},
    {u"0", 0, 0, 0, 1},
    {u"08", 0, 0, 0, 1},
    {u"0x1F", 16, 31, 31, 4},
    {u"1F", 16, 31, 31, 2},
    {u"0x", 0, 0, 0, 0},  // the prefix is skipped, and then there is no digit
    {u"0xg", 0, 0, 0, 0},
    {u"0x", 16, 0, 0, 0},
    {u"0xg", 16, 0, 0, 0},
    {u"0x0x1", 16, 0, 0, 3},
    {u"0x10", 10, 0, 0, 1},
    {u"0x10", 36, 42804, 42804, 4},  // 'x' is a digit there
    {u"0x10", 8, 0, 0, 1},
    // Impossible bases.
    {u"12", -1, 0, 0, 0},
    {u"12", 1, 0, 0, 0},
    {u"12", 37, 0, 0, 0},
    {u"12", INT_MIN, 0, 0, 0},
    {u"12", INT_MAX, 0, 0, 0},
    {u" -12", 1, 0, 0, 0},
    // Limits.
    {u"2147483646", 10, 2147483646, 2147483646u, 10},
    {u"2147483647", 10, INT_MAX, 2147483647u, 10},
    {u"2147483648", 10, INT_MAX, 2147483648u, 10},
    {u"4294967294", 10, INT_MAX, 4294967294u, 10},
    {u"4294967295", 10, INT_MAX, UINT_MAX, 10},
    {u"4294967296", 10, INT_MAX, UINT_MAX, 10},
    {u"42949672950", 10, INT_MAX, UINT_MAX, 11},
    {u"12345678901234567890", 10, INT_MAX, UINT_MAX, 20},
    {u"99999999999z", 10, INT_MAX, UINT_MAX, 11},
    {u"FFFFFFFF", 16, INT_MAX, UINT_MAX, 8},
    {u"100000000", 16, INT_MAX, UINT_MAX, 9},
    {u"42949672960000000001", 10, INT_MAX, UINT_MAX, 20},
    // The sign comes last, so the smallest int is out of reach.
    {u"-2147483647", 10, -2147483647, 2147483649u, 11},
    {u"-2147483648", 10, -2147483647, 2147483648u, 11},
    {u"-2147483649", 10, -2147483647, 2147483647u, 11},
    {u"-4294967295", 10, -2147483647, 1, 11},
    {u"-4294967296", 10, -2147483647, 1, 11},
    {u"-99999999999", 10, -2147483647, 1, 12},
};

TEST(UcsNumber, ReadsEachRow) {
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.s)) + " in base " +
                 std::to_string(row.base));
    const unsigned short* s = Units(row.s);
    unsigned short* end = nullptr;
    EXPECT_EQ(row.number, KEST::ucstol(s, &end, row.base));
    EXPECT_EQ(row.read, end - s);
    EXPECT_EQ(row.number, KEST::ucstol(s, nullptr, row.base));
    end = nullptr;
    EXPECT_EQ(row.unsignedNumber, KEST::ucstoul(s, &end, row.base));
    EXPECT_EQ(row.read, end - s);
    EXPECT_EQ(row.unsignedNumber, KEST::ucstoul(s, nullptr, row.base));
    EXPECT_EQ(static_cast<unsigned int>(row.number), KEST::ucstoxl(s, nullptr, row.base, 0));
    EXPECT_EQ(row.unsignedNumber, KEST::ucstoxl(s, nullptr, row.base, 1));
  }
}

TEST(UcsNumber, ErrnoStays) {
  errno = 0;
  KEST::ucstol(KEST_TEXT("99999999999"), nullptr, 10);
  KEST::ucstoul(KEST_TEXT("99999999999"), nullptr, 99);
  EXPECT_EQ(0, errno);
}

TEST(UcsNumber, NullTextIsEmptyText) {
  unsigned short unit = 0;
  unsigned short* end = &unit;
  EXPECT_EQ(0, KEST::ucstol(nullptr, &end, 10));
  EXPECT_EQ(nullptr, end);
  EXPECT_EQ(0u, KEST::ucstoul(nullptr, nullptr, 0));
}

TEST(UcsNumber, TheWorkingStateSharesTheFlags) {
  const unsigned short* s = KEST_TEXT("5x");
  EXPECT_EQ(static_cast<unsigned int>(-5), KEST::ucstoxl(s, nullptr, 10, kNegative));
  EXPECT_EQ(2147483647u, KEST::ucstoxl(s, nullptr, 10, kOverflow));
  EXPECT_EQ(UINT_MAX, KEST::ucstoxl(s, nullptr, 10, kOverflow | 1));
  unsigned short* end = nullptr;
  EXPECT_EQ(0u, KEST::ucstoxl(s + 1, &end, 10, kDigitRead));
  EXPECT_EQ(s + 1, end);
}

TEST(UcsNumber, EveryUnitIsTheDigitThatItShouldBe) {
  for (unsigned int ch = 1; ch < 0x10000; ++ch) {
    const unsigned short s[] = {'1', static_cast<unsigned short>(ch), 0};
    const char* digits = "0123456789abcdefghijklmnopqrstuvwxyz";
    const char lower = static_cast<char>(ch < 128 ? tolower(static_cast<int>(ch)) : 1);
    const char* place = strchr(digits, lower);
    unsigned short* end = nullptr;
    const unsigned int value = KEST::ucstoul(s, &end, 36);
    ASSERT_EQ(place != nullptr ? 36u + static_cast<unsigned int>(place - digits) : 1u, value) << ch;
    ASSERT_EQ(place != nullptr ? 2 : 1, end - s) << ch;
  }
}

// Random digits in every base, against the C library with its result limited to 32 bits.
// With what no decimal number goes on with behind the digits, and memory that ends with the text.
TEST(UcsNumber, DecimalNumbersOfEveryLength) {
  for (size_t count = 1; count <= 12; ++count) {
    for (const char digit : {'0', '1', '9'}) {
      const std::string digits(count, digit);
      const unsigned long long expected = strtoull(digits.c_str(), nullptr, 10);
      for (const char16_t behind : std::u16string(u"\0:/a-.\uFF11\u0130\u0661", 9)) {
        std::u16string text(digits.begin(), digits.end());
        text += behind;
        if (behind != 0) text += u'\0';
        const kest_test::GuardedUnits units(text);
        unsigned short* end = nullptr;
        ASSERT_EQ(std::min(expected, 2147483647ull),
                  static_cast<unsigned int>(KEST::ucstol(units.Get(), &end, 10)));
        ASSERT_EQ(units.Get() + count, end);
        ASSERT_EQ(std::min(expected, 4294967295ull), KEST::ucstoul(units.Get(), &end, 10));
        ASSERT_EQ(units.Get() + count, end);
      }
    }
  }
}

TEST(UcsNumber, AgreesWithTheCLibraryOnDigits) {
  std::mt19937 random(20240613);
  for (int base = 2; base <= 36; ++base) {
    for (int i = 0; i < 500; ++i) {
      std::string s = random() % 3 == 0 ? "-" : "";
      for (size_t n = 1 + random() % 12; n != 0; --n) {
        s += "0123456789abcdefghijklmnopqrstuvwxyz"[random() % static_cast<unsigned int>(base)];
      }
      const bool negative = s[0] == '-';
      const unsigned long long exact = strtoull(s.c_str() + negative, nullptr, base);
      const std::u16string wide(s.begin(), s.end());
      const long long magnitude =
          static_cast<long long>(std::min<unsigned long long>(exact, INT_MAX));
      ASSERT_EQ(negative ? -magnitude : magnitude, KEST::ucstol(Units(wide), nullptr, base)) << s;
      const unsigned int number =
          static_cast<unsigned int>(std::min<unsigned long long>(exact, UINT_MAX));
      ASSERT_EQ(negative ? 0 - number : number, KEST::ucstoul(Units(wide), nullptr, base)) << s;
    }
  }
}

struct SResult {
  long long number;
  size_t read;
};

// A slow reading of the rules, with the sign kept apart and numbers that do not overflow.
SResult SlowNumber(const std::u16string& s, int base, bool isUnsigned) {
  if (base < 0 || base == 1 || base > 36) return {0, 0};
  size_t i = s.find_first_not_of(u' ');
  if (i == std::u16string::npos) return {0, 0};
  const bool negative = s[i] == u'-';
  if (s[i] == u'-' || s[i] == u'+') ++i;
  const bool hexPrefix = s.compare(i, 2, u"0x") == 0 || s.compare(i, 2, u"0X") == 0;
  if (base == 0) base = hexPrefix ? 16 : s.compare(i, 1, u"0") == 0 ? 8 : 10;
  if (base == 16 && hexPrefix) i += 2;
  const std::u16string kDigits =
      std::u16string(u"0123456789abcdefghijklmnopqrstuvwxyz").substr(0, static_cast<size_t>(base));
  const std::u16string kLarge = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const size_t first = i;
  const long long limit = isUnsigned ? UINT_MAX : INT_MAX;
  long long number = 0;
  for (; i < s.size(); ++i) {
    size_t digit = std::min(kDigits.find(s[i]), kLarge.find(s[i]));
    if (digit >= kDigits.size()) break;
    number = std::min(number * base + static_cast<long long>(digit), limit + 1);
  }
  if (i == first) return {0, 0};
  number = std::min(number, limit);
  return {negative ? -number : number, i};
}

TEST(UcsNumber, AgreesWithASlowModelOnRandomText) {
  std::mt19937 random(20240614);
  const char16_t kAlphabet[] = u"  ++--00000xX123456789afFgzZ\t\u0661";
  for (int i = 0; i < 100000; ++i) {
    std::u16string s(random() % 14, u' ');
    for (char16_t& ch : s) ch = kAlphabet[random() % 30];
    const int base = random() % 2 == 0 ? 10 : static_cast<int>(random() % 40) - 2;
    SCOPED_TRACE(testing::PrintToString(s) + " in base " + std::to_string(base));
    const SResult expected = SlowNumber(s, base, false);
    const SResult expectedUnsigned = SlowNumber(s, base, true);
    unsigned short* end = nullptr;
    ASSERT_EQ(expected.number, KEST::ucstol(Units(s), &end, base));
    ASSERT_EQ(expected.read, static_cast<size_t>(end - Units(s)));
    ASSERT_EQ(static_cast<unsigned int>(expectedUnsigned.number),
              KEST::ucstoul(Units(s), &end, base));
    ASSERT_EQ(expectedUnsigned.read, static_cast<size_t>(end - Units(s)));
  }
}

}  // namespace
