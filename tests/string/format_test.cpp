// vsnuprintf and its relatives: each rule by hand, then the C library and a second formatter as
// judges.

#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>

#include <string>

#include "kest/frame.h"
#include "kest/string.h"
#include "string/format_model.h"
#include "support/wide_text.h"

// The address sanitizer watches the stack of calls that have ended too: the text of one conversion
// is written again by another.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "detect_stack_use_after_return=1"; }

namespace {

using kest_test::GuardedUnits;
using kest_test::RandomFormat;
using kest_test::Text;
using kest_test::Units;

// What a format gives with room enough.
std::u16string Printed(const char16_t* format, ...) {
  static unsigned short buffer[8192];
  va_list args;
  va_start(args, format);
  const int length = KEST::vsnuprintf(buffer, 8192, Units(format), args);
  va_end(args);
  EXPECT_EQ(0, buffer[length]);
  return Text(buffer, static_cast<size_t>(length));
}

std::u16string Wide(const std::string& s) { return std::u16string(s.begin(), s.end()); }

TEST(Format, WritesOrdinaryUnitsAsTheyAre) {
  EXPECT_EQ(u"", Printed(u""));
  EXPECT_EQ(u"plain", Printed(u"plain"));
  EXPECT_EQ(u"\u00E9\u4E2D\uFFFF\U0001F600", Printed(u"\u00E9\u4E2D\uFFFF\U0001F600"));
  EXPECT_EQ(u"d.*0+-h5", Printed(u"d.*0+-h5"));
  EXPECT_EQ(u"", Printed(nullptr));
}

TEST(Format, Integers) {
  EXPECT_EQ(u"42", Printed(u"%d", 42));
  EXPECT_EQ(u"-42", Printed(u"%i", -42));
  EXPECT_EQ(u"0", Printed(u"%d", 0));
  EXPECT_EQ(u"2147483647", Printed(u"%d", INT_MAX));
  EXPECT_EQ(u"-2147483648", Printed(u"%d", INT_MIN));
  EXPECT_EQ(u"4294967295", Printed(u"%u", -1));
  EXPECT_EQ(u"0", Printed(u"%u", 0));
  EXPECT_EQ(u"10", Printed(u"%o", 8));
  EXPECT_EQ(u"37777777777", Printed(u"%o", -1));
  EXPECT_EQ(u"ff", Printed(u"%x", 255));
  EXPECT_EQ(u"FF", Printed(u"%X", 255));
  EXPECT_EQ(u"89abcdef", Printed(u"%x", 0x89ABCDEFu));
  EXPECT_EQ(u"89ABCDEF", Printed(u"%X", 0x89ABCDEFu));
}

TEST(Format, ShortIntegersTakeTheLowHalf) {
  EXPECT_EQ(u"-1", Printed(u"%hd", 65535));
  EXPECT_EQ(u"-32768", Printed(u"%hi", 0x18000));
  EXPECT_EQ(u"32767", Printed(u"%hd", 0x17FFF));
  EXPECT_EQ(u"1", Printed(u"%hu", 65537));
  EXPECT_EQ(u"65535", Printed(u"%hu", -1));
  EXPECT_EQ(u"177777", Printed(u"%ho", -1));
  EXPECT_EQ(u"5678", Printed(u"%hx", 0x12345678));
  EXPECT_EQ(u"ABCD", Printed(u"%hX", 0x1ABCD));
  EXPECT_EQ(u"00005678", Printed(u"%hp", 0x12345678));
}

TEST(Format, WidthAndFlags) {
  EXPECT_EQ(u"   42", Printed(u"%5d", 42));
  EXPECT_EQ(u"42   |", Printed(u"%-5d|", 42));
  EXPECT_EQ(u"00042", Printed(u"%05d", 42));
  EXPECT_EQ(u"-0042", Printed(u"%05d", -42));
  EXPECT_EQ(u"  -42", Printed(u"%5d", -42));
  EXPECT_EQ(u"+5", Printed(u"%+d", 5));
  EXPECT_EQ(u"-5", Printed(u"%+d", -5));
  EXPECT_EQ(u"+0", Printed(u"%+d", 0));
  EXPECT_EQ(u" 5", Printed(u"% d", 5));
  EXPECT_EQ(u"-5", Printed(u"% d", -5));
  EXPECT_EQ(u"+5", Printed(u"% +d", 5)) << "'+' wins over space";
  EXPECT_EQ(u"+5", Printed(u"%+ d", 5));
  EXPECT_EQ(u"+0005", Printed(u"%+05d", 5));
  EXPECT_EQ(u" 0005", Printed(u"%0 5d", 5));
  EXPECT_EQ(u"5    |", Printed(u"%-05d|", 5)) << "'-' wins over '0'";
  EXPECT_EQ(u"5    |", Printed(u"%0-5d|", 5));
  EXPECT_EQ(u"12345", Printed(u"%3d", 12345)) << "a width never cuts";
  EXPECT_EQ(u"5", Printed(u"%+u", 5)) << "unsigned numbers have no sign";
  EXPECT_EQ(u"5", Printed(u"% x", 5));
  EXPECT_EQ(u"         5", Printed(u"%10d", 5));
  EXPECT_EQ(u"0000000005", Printed(u"%010u", 5));
  EXPECT_EQ(u"00ff", Printed(u"%04x", 255));
}

TEST(Format, TheHashFlagHasNoEffect) {
  EXPECT_EQ(u"ff", Printed(u"%#x", 255));
  EXPECT_EQ(u"10", Printed(u"%#o", 8));
  EXPECT_EQ(u"00ff", Printed(u"%#04x", 255));
}

TEST(Format, Units) {
  EXPECT_EQ(u"A", Printed(u"%c", 'A'));
  EXPECT_EQ(u"\u4E2D", Printed(u"%c", 0x4E2D));
  EXPECT_EQ(u"\u4E2D", Printed(u"%c", 0x12344E2D)) << "the low 16 bits";
  EXPECT_EQ(u"\uFFFF", Printed(u"%hc", -1));
  EXPECT_EQ(std::u16string(1, u'\0'), Printed(u"%c", 0)) << "a zero unit is a unit";
  EXPECT_EQ(u"  A|", Printed(u"%3c|", 'A'));
  EXPECT_EQ(u"A  |", Printed(u"%-3c|", 'A'));
  EXPECT_EQ(u"00A", Printed(u"%03c", 'A'));
  EXPECT_EQ(u"A", Printed(u"%+c", 'A')) << "no sign";
  EXPECT_EQ(u"A", Printed(u"%.*c", 0, 'A')) << "a precision means nothing here";
}

TEST(Format, Strings) {
  EXPECT_EQ(u"hello", Printed(u"%s", u"hello"));
  EXPECT_EQ(u"[]", Printed(u"[%s]", u""));
  EXPECT_EQ(u"\u00E9\u4E2D\uFFFF", Printed(u"%s", u"\u00E9\u4E2D\uFFFF"));
  EXPECT_EQ(u"  hello", Printed(u"%7s", u"hello"));
  EXPECT_EQ(u"hello  |", Printed(u"%-7s|", u"hello"));
  EXPECT_EQ(u"00hello", Printed(u"%07s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%3s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%+ s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%hs", u"hello")) << "always 16-bit";
  EXPECT_EQ(u"hello", Printed(u"%ls", u"hello"));
}

TEST(Format, ANullStringHasAName) {
  const unsigned short* null = nullptr;
  EXPECT_EQ(u"(null)", Printed(u"%s", null));
  EXPECT_EQ(u"  (null)", Printed(u"%8s", null));
  EXPECT_EQ(u"(nu", Printed(u"%.*s", 3, null));
}

TEST(Format, OnlyAStarGivesAPrecision) {
  EXPECT_EQ(u"he", Printed(u"%.*s", 2, u"hello"));
  EXPECT_EQ(u"", Printed(u"%.*s", 0, u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.*s", 9, u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.*s", -2, u"hello")) << "negative: none";
  EXPECT_EQ(u"hello", Printed(u"%.*s", INT_MIN, u"hello"));
  EXPECT_EQ(u"   he", Printed(u"%5.*s", 2, u"hello"));
  EXPECT_EQ(u"00042", Printed(u"%.*d", 5, 42));
  EXPECT_EQ(u"-00042", Printed(u"%.*d", 5, -42));
  EXPECT_EQ(u"+00042", Printed(u"%+.*d", 5, 42));
  EXPECT_EQ(u"42", Printed(u"%.*d", 1, 42));
  EXPECT_EQ(u"42", Printed(u"%.*d", -5, 42));
  EXPECT_EQ(u"   00042", Printed(u"%08.*d", 5, 42)) << "a precision drops the '0' flag";
  EXPECT_EQ(u"00000042", Printed(u"%08.*d", -1, 42)) << "none does not";
  EXPECT_EQ(u"00FF", Printed(u"%.*X", 4, 255));
  EXPECT_EQ(u"0017", Printed(u"%.*o", 4, 15));
  EXPECT_EQ(u"0017", Printed(u"%.*u", 4, 17));
}

TEST(Format, ZeroWithPrecisionZeroHasNoDigits) {
  EXPECT_EQ(u"[]", Printed(u"[%.*d]", 0, 0));
  EXPECT_EQ(u"[+]", Printed(u"[%+.*d]", 0, 0));
  EXPECT_EQ(u"[   ]", Printed(u"[%3.*d]", 0, 0));
  EXPECT_EQ(u"[]", Printed(u"[%.*x]", 0, 0));
  EXPECT_EQ(u"[7]", Printed(u"[%.*u]", 0, 7));
}

// The digits start from -1: ".3" makes -7 and ".0" makes -10, so both count as none.
TEST(Format, APrecisionInDigitsHasNoEffect) {
  EXPECT_EQ(u"hello", Printed(u"%.2s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.0s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.9s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.99s", u"hello"));
  EXPECT_EQ(u"42", Printed(u"%.5d", 42));
  EXPECT_EQ(u"0", Printed(u"%.0d", 0));
  EXPECT_EQ(u"00042", Printed(u"%05.3d", 42)) << "the '0' flag stays";
  EXPECT_EQ(u"hello", Printed(u"%.10s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.99999999999999999999s", u"hello")) << "however many they are";
  EXPECT_EQ(u"5", Printed(u"%.000000000000d", 5)) << "-1 times 10^12, which wraps to 727379968";
  EXPECT_EQ(u"hello", Printed(u"%.2147483648s", u"hello"));
  EXPECT_EQ(u"hello", Printed(u"%.11111111112s", u"hello"));
}

TEST(Format, ADotAloneIsNoPrecision) {
  EXPECT_EQ(u"hello", Printed(u"%.s", u"hello"));
  EXPECT_EQ(u"0", Printed(u"%.d", 0));
  EXPECT_EQ(u"00042", Printed(u"%05.d", 42));
}

TEST(Format, DigitsAfterAStarGoOn) {
  EXPECT_EQ(u"          42", Printed(u"%*2d", 1, 42)) << "a width of 12";
  EXPECT_EQ(u"        42", Printed(u"%*0d", 1, 42)) << "a width of 10";
  EXPECT_EQ(u"000000000042", Printed(u"%.*2d", 1, 42)) << "a precision of 12";
  EXPECT_EQ(u"42", Printed(u"%.*2d", -5, 42)) << "-1 goes on to -8";
}

TEST(Format, StarWidth) {
  EXPECT_EQ(u"   42", Printed(u"%*d", 5, 42));
  EXPECT_EQ(u"42   |", Printed(u"%*d|", -5, 42)) << "negative: left-justified";
  EXPECT_EQ(u"42   |", Printed(u"%0*d|", -5, 42));
  EXPECT_EQ(u"00042", Printed(u"%0*d", 5, 42));
  EXPECT_EQ(u"42", Printed(u"%*d", 0, 42));
  EXPECT_EQ(u"   he|", Printed(u"%*.*s|", 5, 2, u"hello"));
  EXPECT_EQ(u"42   |", Printed(u"%-*d|", 5, 42));
}

TEST(Format, Pointers) {
  EXPECT_EQ(u"000000FF", Printed(u"%p", reinterpret_cast<void*>(255)));
  EXPECT_EQ(u"DEADBEEF", Printed(u"%p", reinterpret_cast<void*>(0xDEADBEEF)));
  EXPECT_EQ(u"00000000", Printed(u"%p", static_cast<void*>(nullptr)));
  EXPECT_EQ(u"    000000FF", Printed(u"%012p", reinterpret_cast<void*>(255)))
      << "it has a precision, so the '0' flag is dropped";
  EXPECT_EQ(u"000000FF", Printed(u"%.*p", 2, reinterpret_cast<void*>(255)));
  EXPECT_EQ(u"000000FF", Printed(u"%#+p", reinterpret_cast<void*>(255)));
}

TEST(Format, APointerPrintsItsLow32Bits) {
  const char* address = reinterpret_cast<const char*>(&address);
  char expected[16];
  snprintf(expected, sizeof expected, "%08X",
           static_cast<unsigned int>(reinterpret_cast<uintptr_t>(address)));
  EXPECT_EQ(Wide(expected) + u" 7", Printed(u"%p %d", address, 7));
}

TEST(Format, StoresTheCountSoFar) {
  int count = -1, second = -1;
  EXPECT_EQ(u"abc42de", Printed(u"abc%d%nde%n", 42, &count, &second));
  EXPECT_EQ(5, count);
  EXPECT_EQ(7, second);
  EXPECT_EQ(u"ab", Printed(u"%nab", &count));
  EXPECT_EQ(0, count);
  EXPECT_EQ(u"ab", Printed(u"a%5nb", &count)) << "no padding either";
  EXPECT_EQ(1, count);
  EXPECT_EQ(u"ab", Printed(u"a%nb", static_cast<int*>(nullptr)));
}

TEST(Format, StoresAShortCount) {
  short counts[2] = {-1, -1};
  EXPECT_EQ(u"abc", Printed(u"abc%hn", counts));
  EXPECT_EQ(3, counts[0]);
  EXPECT_EQ(-1, counts[1]) << "16 bits, no more";
}

TEST(Format, TheCountIncludesWhatHadNoRoom) {
  unsigned short buffer[3];
  int count = -1;
  EXPECT_EQ(9, KEST::snuprintf(buffer, 3, KEST_TEXT("hello%n%d"), &count, 1234));
  EXPECT_EQ(5, count);
}

TEST(Format, OtherSizeLettersAreIgnored) {
  for (const char16_t* format :
       {u"%Fd", u"%Id", u"%Ld", u"%Nd", u"%ld", u"%wd", u"%lld", u"%lLd"}) {
    EXPECT_EQ(u"65537", Printed(format, 65537));
  }
  EXPECT_EQ(u"1", Printed(u"%lhd", 65537)) << "'h' counts wherever it stands";
  EXPECT_EQ(u"1", Printed(u"%hld", 65537));
  EXPECT_EQ(u"    1", Printed(u"%5hd", 65537));
  EXPECT_EQ(u"00001", Printed(u"%.*hd", 5, 65537));
  EXPECT_EQ(u"65537", Printed(u"%.ld", 65537));
}

// Columns: format, what it gives without any argument.
TEST(Format, WhatBreaksAConversionIsWrittenFromThereOn) {
  const struct {
    const char16_t* format;
    const char16_t* expected;
  } kRows[] = {
      {u"%%", u"%"},
      {u"100%%!", u"100%!"},
      {u"%%%%", u"%%"},
      {u"%%d", u"%d"},
      {u"%", u""},
      {u"abc%", u"abc"},
      {u"%5", u""},
      {u"%-08.3l", u""},
      {u"%k", u"k"},
      {u"%5kd", u"kd"},
      {u"% v", u"v"},
      {u"%5%", u"%"},
      {u"%-%d", u"%d"},
      {u"%.%", u"%"},
      {u"%l%", u"%"},
      {u"%h5d", u"5d"},  // no width after a size
      {u"%l.d", u".d"},
      {u"%l*d", u"*d"},
      {u"%l-d", u"-d"},
      {u"%l0d", u"0d"},
      {u"%5-d", u"-d"},  // no flag after a width
      {u"%5 d", u" d"},
      {u"%5*d", u"*d"},
      {u"%..d", u".d"},
      {u"%.5.d", u".d"},
      {u"%.5-d", u"-d"},
      {u"%.5*d", u"*d"},
      {u"%.-5d", u"-5d"},
      {u"%\u0164", u"\u0164"},  // the low byte is 'd'
      {u"%\u1F64x", u"\u1F64x"},
      {u"%y%j%A%D%z", u"yjADz"},
      {u"%\x01", u"\x01"},
      {u"%~", u"~"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.expected, Printed(row.format))
        << testing::PrintToString(std::u16string(row.format));
  }
}

TEST(Format, AStarThatIsReadIsTakenEvenIfTheConversionBreaks) {
  EXPECT_EQ(u"k7", Printed(u"%*k%d", 5, 7));
  EXPECT_EQ(u"*d7", Printed(u"%**d%d", 5, 7));
  EXPECT_EQ(u"-d7", Printed(u"%*-d%d", 5, 7));
}

TEST(Format, AConversionStartsWithNothingFromTheLastOne) {
  EXPECT_EQ(u"00042|7|-1|1", Printed(u"%05d|%d|%hd|%d", 42, 7, 65535, 1));
  EXPECT_EQ(u"+5|5", Printed(u"%+d|%d", 5, 5));
  EXPECT_EQ(u"5  |5", Printed(u"%-3d|%d", 5, 5));
  EXPECT_EQ(u"he|hello", Printed(u"%.*s|%s", 2, u"hello", u"hello"));
  EXPECT_EQ(u"-5|0", Printed(u"%d|%u", -5, 0));
  EXPECT_EQ(u"k5|", Printed(u"%-09hk%d|", 5)) << "nor from one that broke off";
}

// Letters that convert nothing, and take no argument.
constexpr char16_t kReserved[] = u"BCEGSZefg";

TEST(Format, AReservedLetterFirstWritesOnlyPadding) {
  for (int i = 0; kReserved[i] != 0; ++i) {
    const std::u16string letter(1, kReserved[i]);
    SCOPED_TRACE(testing::PrintToString(letter));
    EXPECT_EQ(u"[]7", Printed((u"[%" + letter + u"]%d").c_str(), 7));
    EXPECT_EQ(u"[   ]7", Printed((u"[%3" + letter + u"]%d").c_str(), 7));
    EXPECT_EQ(u"[   ]", Printed((u"[%-3" + letter + u"]").c_str()));
    EXPECT_EQ(u"[000]", Printed((u"[%+03" + letter + u"]").c_str())) << "no sign";
  }
}

TEST(Format, AReservedLetterWritesTheLastTextAgain) {
  for (int i = 0; kReserved[i] != 0; ++i) {
    const std::u16string letter(1, kReserved[i]);
    SCOPED_TRACE(testing::PrintToString(letter));
    EXPECT_EQ(u"42|42|7", Printed((u"%d|%" + letter + u"|%d").c_str(), 42, 7));
    EXPECT_EQ(u"-42|   42", Printed((u"%d|%5" + letter).c_str(), -42)) << "without the sign";
    EXPECT_EQ(u"00042|42|", Printed((u"%05d|%" + letter + u"|").c_str(), 42)) << "nor padding";
    EXPECT_EQ(u"00042|0000042", Printed((u"%.*d|%07" + letter).c_str(), 5, 42))
        << "but with the digits of a precision";
    EXPECT_EQ(u"ff|ff|ff", Printed((u"%x|%" + letter + u"|%" + letter).c_str(), 255));
  }
}

TEST(Format, AReservedLetterReads16BitTextAsBytes) {
  EXPECT_EQ(std::u16string(u"abcd|a\0b\0", 9), Printed(u"%s|%E", u"abcd"));
  EXPECT_EQ(u"\u80FF\u0101|\uFFFF\uFF80", Printed(u"%s|%E", u"\u80FF\u0101"))
      << "each byte with its sign";
  EXPECT_EQ(u"\u4E2D-", Printed(u"%c%E", 0x4E2D)) << "the low byte, 0x2D";
  EXPECT_EQ(u"\u00E9\uFFE9", Printed(u"%c%E", 0xE9));
  EXPECT_EQ(std::u16string(u"(null)|(\0n\0u\0", 13),
            Printed(u"%s|%E", static_cast<const unsigned short*>(nullptr)));
  EXPECT_EQ(std::u16string(u"he|h\0", 5), Printed(u"%.*s|%E", 2, u"hello"));
  EXPECT_EQ(std::u16string(u"ab|  a\0", 7), Printed(u"%s|%4E", u"ab"));
}

TEST(Format, TextSurvivesCountsAndLiterals) {
  int count = 0;
  EXPECT_EQ(u"42%kx42", Printed(u"%d%n%%%kx%E", 42, &count));
  EXPECT_EQ(2, count);
}

TEST(Format, TextIsNotKeptFromCallToCall) {
  EXPECT_EQ(u"42", Printed(u"%d", 42));
  EXPECT_EQ(u"", Printed(u"%E"));
}

TEST(Format, DigitsBeyondAnyBufferAreARunOfZeros) {
  for (int precision : {11, 12, 510, 511, 512, 513, 514, 600, 4000}) {
    SCOPED_TRACE(precision);
    const std::u16string zeros(static_cast<size_t>(precision) - 2, u'0');
    EXPECT_EQ(zeros + u"42", Printed(u"%.*d", precision, 42));
    EXPECT_EQ(u"-" + zeros + u"42|", Printed(u"%.*d|", precision, -42));
    EXPECT_EQ(zeros + u"42 |", Printed(u"%-*.*u|", precision + 1, precision, 42));
    EXPECT_EQ(u" " + zeros + u"ff", Printed(u"%*.*x", precision + 1, precision, 255));
    EXPECT_EQ(zeros + u"00", Printed(u"%.*o", precision, 0));
    EXPECT_EQ(zeros + u"42|" + zeros + u"42", Printed(u"%.*d|%E", precision, 42));
  }
}

TEST(Format, CutsToTheRoomAndReturnsTheWholeLength) {
  for (unsigned int size = 0; size < 16; ++size) {
    SCOPED_TRACE(size);
    const GuardedUnits dest(std::u16string(size, u'#'));
    EXPECT_EQ(10, KEST::snuprintf(dest.Get(), size, KEST_TEXT("%s %04d"), KEST_TEXT("hello"), 42));
    std::u16string expected = std::u16string(u"hello 0042").substr(0, size == 0 ? 0 : size - 1);
    if (size != 0) expected += u'\0';
    expected.resize(size, u'#');
    EXPECT_EQ(expected, Text(dest.Get(), size));
  }
}

// Numbers around each change of length, in every room: nothing is stored behind it.
TEST(Format, NumbersOfAllLengthsInEveryRoom) {
  std::vector<unsigned int> numbers = {0, 1234567890};
  for (unsigned int power = 1, i = 0; i < 10; ++i, power *= 10) {
    numbers.insert(numbers.end(), {power - 1, power, power + 1});
  }
  for (unsigned int shift = 0; shift < 32; ++shift) {
    numbers.insert(numbers.end(), {1u << shift, (1u << shift) - 1, 0 - (1u << shift)});
  }
  for (const char* conversion :
       {"%d", "%i", "%u", "%x", "%X", "%o", "%hd", "%3u", "%-4x|", "%+d"}) {
    for (unsigned int number : numbers) {
      char narrow[32];
      snprintf(narrow, sizeof narrow, conversion, number);
      const std::u16string expected = Wide(narrow);
      const std::u16string format = Wide(conversion);
      for (unsigned int size = 0; size <= 16; ++size) {
        SCOPED_TRACE(std::string(narrow) + " in " + std::to_string(size));
        const GuardedUnits dest(std::u16string(size, u'#'));
        ASSERT_EQ(static_cast<int>(expected.size()),
                  KEST::snuprintf(dest.Get(), size, Units(format), number));
        std::u16string stored = expected.substr(0, size == 0 ? 0 : size - 1);
        if (size != 0) stored += u'\0';
        stored.resize(size, u'#');
        ASSERT_EQ(stored, Text(dest.Get(), size));
      }
    }
  }
}

TEST(Format, SizeZeroMeasures) {
  EXPECT_EQ(5, KEST::snuprintf(nullptr, 0, KEST_TEXT("%05d"), 42));
  EXPECT_EQ(0, KEST::snuprintf(nullptr, 0, nullptr));
}

TEST(Format, ASizeAboveTheSignedRangeStoresTheTerminatorAlone) {
  const struct {
    unsigned int size;
    const char16_t* stored;
  } kRows[] = {{0x7FFFFFFF, u"abc"}, {0x80000000, u"abc"}, {0x80000001, u""}, {0xFFFFFFFF, u""}};
  for (const auto& row : kRows) {
    unsigned short buffer[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(3, KEST::snuprintf(buffer, row.size, KEST_TEXT("abc")));
    EXPECT_EQ(row.stored, Text(buffer)) << row.size;
    EXPECT_EQ(*row.stored == 0 ? '#' : 'b', buffer[1]);
  }
}

TEST(Format, ReadsNoUnitBeyondAStringsPrecision) {
  const GuardedUnits s(u"abc");
  EXPECT_EQ(u"abc", Printed(u"%.*s", 3, s.Get()));
  EXPECT_EQ(u"", Printed(u"%.*s", 0, s.Get() + 3));
}

// Lengths that no memory holds: only the count can be seen.
TEST(Format, WidthsAndPrecisionsStopAtTheLargestInt) {
  unsigned short buffer[8];
  const auto length = [&](const char16_t* format, auto... args) {
    return KEST::snuprintf(buffer, 8, Units(format), args...);
  };
  EXPECT_EQ(INT_MAX, length(u"%*d", INT_MAX, 5));
  EXPECT_EQ(u"       ", Text(buffer));
  EXPECT_EQ(INT_MAX, length(u"%2147483647d", 5));
  EXPECT_EQ(INT_MAX, length(u"%2147483648d", 5));
  EXPECT_EQ(INT_MAX, length(u"%99999999999999999999d", 5));
  EXPECT_EQ(INT_MAX - 1, length(u"%2147483646d", 5));
  EXPECT_EQ(INT_MAX, length(u"%*d", INT_MIN, 5));
  EXPECT_EQ(u"5      ", Text(buffer));
  EXPECT_EQ(INT_MAX, length(u"%*d", INT_MIN + 1, 5));
  EXPECT_EQ(INT_MAX, length(u"%*9d", INT_MAX, 5));
  EXPECT_EQ(INT_MAX, length(u"%.*d", INT_MAX, 5));
  EXPECT_EQ(u"0000000", Text(buffer));
  EXPECT_EQ(INT_MAX, length(u"%.*9d", INT_MAX, 5));
  EXPECT_EQ(INT_MAX, length(u"%.*d", INT_MAX, -5)) << "one more than that, sign included";
  EXPECT_EQ(u"-000000", Text(buffer));
  EXPECT_EQ(INT_MAX, length(u"%*.*d", INT_MAX, INT_MAX, -5));
  EXPECT_EQ(5, length(u"%.*s", INT_MAX, u"hello"));
}

TEST(Format, TheCountStopsAtTheLargestInt) {
  unsigned short buffer[4];
  int count = 0;
  EXPECT_EQ(INT_MAX, KEST::snuprintf(buffer, 4, KEST_TEXT("%*d%*d%*dxyz%n"), INT_MAX, 1, INT_MAX, 2,
                                     INT_MAX, 3, &count));
  EXPECT_EQ(INT_MAX, count);
  EXPECT_EQ(u"   ", Text(buffer));
}

TEST(Format, ManyArgumentsOfBothKindsStayInStep) {
  EXPECT_EQ(u"1 a 2 b 3 c 4 d 5 e 6 f 7 g 8 h",
            Printed(u"%d %s %d %s %d %s %d %s %d %s %d %s %d %s %d %s", 1, u"a", 2, u"b", 3, u"c",
                    4, u"d", 5, u"e", 6, u"f", 7, u"g", 8, u"h"));
}

int CallFormatter(KEST::xFILE* out, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int count = KEST::unichar_output(out, format, args);
  va_end(args);
  return count;
}

TEST(Format, TheFormatterWritesToASinkWithoutATerminator) {
  unsigned short buffer[6] = {'#', '#', '#', '#', '#', '#'};
  KEST::xFILE out = {buffer, 5};
  EXPECT_EQ(3, CallFormatter(&out, KEST_TEXT("%03d"), 7));
  EXPECT_EQ(buffer + 3, out.position);
  EXPECT_EQ(2, out.remaining);
  EXPECT_EQ(4, CallFormatter(&out, KEST_TEXT("%s"), KEST_TEXT("wxyz"))) << "counts from 0 again";
  EXPECT_EQ(u"007wx#", Text(buffer, 6));
  EXPECT_EQ(buffer + 5, out.position);
  EXPECT_EQ(0, out.remaining);
  EXPECT_EQ(0, CallFormatter(&out, nullptr));
}

int FirstInts(int* first, int* second, ...) {
  va_list args;
  va_start(args, second);
  *first = KEST::get_int_arg(&args);
  *second = KEST::get_int_arg(&args);
  const int third = va_arg(args, int);
  va_end(args);
  return third;
}

TEST(Format, TakesOneIntegerArgumentAfterTheOther) {
  int first = 0, second = 0;
  EXPECT_EQ(3, FirstInts(&first, &second, INT_MIN, -2, 3));
  EXPECT_EQ(INT_MIN, first);
  EXPECT_EQ(-2, second);
}

TEST(Format, TheSlotOfTheRuntimeTableIsTheSameFunction) {
  EXPECT_EQ(&KEST::snuprintf, kest_snuprintf);
}

// The examples of docs/formatted-output.md.
TEST(Format, TheExamplesOfThePage) {
  EXPECT_EQ(u"total   |   42|00ff", Printed(u"%-8s|%5d|%04x", u"total", 42, 255));
  unsigned short text[8];
  EXPECT_EQ(9, KEST::snuprintf(text, 8, KEST_TEXT("%s.%d"), KEST_TEXT("archive"), 7));
  EXPECT_EQ(u"archive", Text(text));
}

// Every combination of flags, width and '*' precision whose meaning the C library shares.
TEST(Format, AgreesWithTheCLibrary) {
  const int kNumbers[] = {0, 1, -1, 42, -42, 65535, 65537, INT_MAX, INT_MIN};
  for (const char* flags : {"", "-", "0", "+", " ", "-0", "+0", " 0", "+ ", "- ", "-+0"}) {
    for (const char* width : {"", "1", "7", "20"}) {
      for (const char* precision : {"", ".*"}) {
        for (const char* type : {"d", "i", "u", "o", "x", "X", "hd", "hu", "hx"}) {
          const std::string format = std::string("%") + flags + width + precision + type;
          for (int number : kNumbers) {
            for (int digits : {-1, 0, 1, 5, 12}) {
              const bool star = *precision != 0;
              char expected[64];
              if (star) {
                snprintf(expected, sizeof expected, format.c_str(), digits, number);
              } else {
                snprintf(expected, sizeof expected, format.c_str(), number);
              }
              ASSERT_EQ(Wide(expected), star ? Printed(Wide(format).c_str(), digits, number)
                                             : Printed(Wide(format).c_str(), number))
                  << format << " of " << number << ", precision " << digits;
            }
          }
        }
      }
    }
  }
}

TEST(Format, AgreesWithTheCLibraryOnTextAndUnits) {
  for (const char* flags : {"", "-"}) {
    for (const char* width : {"", "1", "7"}) {
      const std::string start = std::string("%") + flags + width;
      for (const char* s : {"", "a", "hello", "longer text"}) {
        const std::u16string wide = Wide(s);
        char expected[64];
        snprintf(expected, sizeof expected, (start + "s|").c_str(), s);
        EXPECT_EQ(Wide(expected), Printed(Wide(start + "s|").c_str(), wide.c_str()));
        for (int precision : {-1, 0, 1, 5, 20}) {
          snprintf(expected, sizeof expected, (start + ".*s|").c_str(), precision, s);
          EXPECT_EQ(Wide(expected), Printed(Wide(start + ".*s|").c_str(), precision, wide.c_str()));
        }
      }
      char expected[64];
      snprintf(expected, sizeof expected, (start + "c|").c_str(), 'x');
      EXPECT_EQ(Wide(expected), Printed(Wide(start + "c|").c_str(), 'x'));
    }
  }
}

TEST(Format, AgreesWithASecondFormatterOnRandomFormats) {
  std::mt19937 random(20240615);
  for (int i = 0; i < 30000; ++i) {
    RandomFormat sample(random);
    if (sample.IsTooLong()) continue;
    const std::u16string& expected = sample.Expected();
    const unsigned int room = static_cast<unsigned int>(
        random() % 2 == 0 ? expected.size() + 1 + random() % 3 : random() % (expected.size() + 2));
    std::vector<unsigned short> dest(room + 1, '#');
    const int length = sample.Call([&](auto... args) {
      return KEST::snuprintf(dest.data(), room, Units(sample.Format()), args...);
    });
    std::u16string stored = expected.substr(0, room == 0 ? 0 : room - 1);
    if (room != 0) stored += u'\0';
    stored.resize(room + 1, u'#');
    SCOPED_TRACE(testing::PrintToString(sample.Format()) + " with room " + std::to_string(room));
    ASSERT_EQ(static_cast<int>(expected.size()), length);
    ASSERT_EQ(stored, Text(dest.data(), room + 1));
    ASSERT_TRUE(sample.CountsAgree());
  }
}

}  // namespace
