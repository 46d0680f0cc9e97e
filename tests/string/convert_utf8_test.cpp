#include <gtest/gtest.h>
#include <iconv.h>
#include <limits.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "kest/string.h"
#include "support/text.h"

using kest_test::Units;

namespace {

// A plain encoder of one unit, in the patterns of RFC 3629, section 3.
std::string PlainEncode(unsigned int unit) {
  const auto byte = [](unsigned int value) { return std::string(1, static_cast<char>(value)); };
  if (unit < 0x80) return byte(unit);
  if (unit < 0x800) return byte(0xC0 + unit / 64) + byte(0x80 + unit % 64);
  return byte(0xE0 + unit / 4096) + byte(0x80 + unit / 64 % 64) + byte(0x80 + unit % 64);
}

// A plain decoder, in arithmetic: how many of the bytes the first sequence takes (0 when it is cut
// off) and its unit.
size_t PlainDecode(const unsigned char* bytes, size_t count, unsigned int& unit) {
  const unsigned int lead = bytes[0];
  if (lead < 0x80) {
    unit = lead;
    return 1;
  }
  if (lead / 32 % 2 == 0) {
    if (count < 2) return 0;
    unit = lead % 32 * 64 + bytes[1] % 64;
    return 2;
  }
  if (count < 3) return 0;
  unit = lead % 16 * 4096 + bytes[1] % 64 * 64 + bytes[2] % 64;
  return 3;
}

std::u16string PlainDecodeAll(const std::string& text) {
  std::u16string units;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (size_t at = 0; at < text.size();) {
    unsigned int unit = 0;
    const size_t step = PlainDecode(bytes + at, text.size() - at, unit);
    if (step == 0) break;
    units += static_cast<char16_t>(unit);
    at += step;
  }
  return units;
}

std::u16string Decode(const std::string& text) {
  std::vector<unsigned short> units(text.size() + 1, 0xAAAA);
  const int count = KestUtf8ToString(text.data(), static_cast<int>(text.size()), units.data(),
                                     static_cast<int>(text.size()) + 1);
  return std::u16string(units.data(), units.data() + count);
}

std::string Encode(const std::u16string& text) {
  std::string bytes(text.size() * 3 + 1, '\xAA');
  const int count = KestStringToUtf8(Units(text), static_cast<int>(text.size()), bytes.data(),
                                     static_cast<int>(bytes.size()));
  return bytes.substr(0, static_cast<size_t>(count));
}

}  // namespace

TEST(ConvertUtf8, EncodesEveryUnitOnItsOwn) {
  for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
    const std::u16string text(1, static_cast<char16_t>(unit));
    const std::string expected = PlainEncode(unit);
    ASSERT_EQ(expected, Encode(text)) << unit;
    ASSERT_EQ(unit == 0 ? 0 : expected.size(), KestStringUtf8ByteLen(Units(text))) << unit;
    ASSERT_EQ(text, Decode(expected)) << unit;
  }
}

TEST(ConvertUtf8, PairsOfSurrogatesAreTwoUnits) {
  EXPECT_EQ("\xED\xA0\xBD\xED\xB8\x80", Encode(u"\xD83D\xDE00"));
  EXPECT_EQ(6u, KestStringUtf8ByteLen(KEST_TEXT("\xD83D\xDE00")));
  EXPECT_EQ(u"\xD83D\xDE00", Decode("\xED\xA0\xBD\xED\xB8\x80"));
}

// iconv(3) on the whole Basic Multilingual Plane but its surrogates.
TEST(ConvertUtf8, AgreesWithIconv) {
  std::u16string text;
  for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
    if (unit < 0xD800 || unit > 0xDFFF) text += static_cast<char16_t>(unit);
  }
  iconv_t converter = iconv_open("UTF-8", "UCS-2LE");
  ASSERT_NE(reinterpret_cast<iconv_t>(-1), converter);
  std::string expected(text.size() * 3, '\0');
  char* in = reinterpret_cast<char*>(text.data());
  size_t inLeft = text.size() * 2;
  char* out = expected.data();
  size_t outLeft = expected.size();
  ASSERT_EQ(0u, iconv(converter, &in, &inLeft, &out, &outLeft));
  iconv_close(converter);
  expected.resize(expected.size() - outLeft);

  EXPECT_EQ(expected, Encode(text));
  EXPECT_EQ(expected.size(), KestStringUtf8ByteLen(Units(text)));
  EXPECT_EQ(text, Decode(expected));
}

TEST(ConvertUtf8, ByteLengthEndsAtTheFirstZeroUnit) {
  EXPECT_EQ(0u, KestStringUtf8ByteLen(nullptr));
  EXPECT_EQ(0u, KestStringUtf8ByteLen(KEST_TEXT("")));
  EXPECT_EQ(6u, KestStringUtf8ByteLen(KEST_TEXT("a\u00E9\u20AC\0b")));
}

TEST(ConvertUtf8, EncodesZeroUnitsAndWritesNoTerminator) {
  char bytes[8];
  memset(bytes, 0x55, sizeof(bytes));
  EXPECT_EQ(3, KestStringToUtf8(KEST_TEXT("a\0b"), 3, bytes, 8));
  EXPECT_EQ(0, memcmp("a\0bUUUUU", bytes, 8));
}

TEST(ConvertUtf8, TheLastSequenceMayRunTwoBytesPastTheSize) {
  char bytes[8];
  memset(bytes, 0x55, sizeof(bytes));
  EXPECT_EQ(3, KestStringToUtf8(KEST_TEXT("\u20AC"), 1, bytes, 1));
  EXPECT_EQ(0, memcmp("\xE2\x82\xACUUUUU", bytes, 8));

  // Every size: units go on until the bytes reach it, and no byte past the sequence is touched.
  const std::u16string text = u"a\u20AC\u00E9\u20ACb\u20AC\u00E9";
  const std::string whole = Encode(text);
  for (int size = 1; size <= static_cast<int>(whole.size()) + 3; ++size) {
    size_t expected = 0;
    for (char16_t unit : text) {
      if (expected < static_cast<size_t>(size)) expected += PlainEncode(unit).size();
    }
    std::string dest(whole.size() + 3, 'U');
    ASSERT_EQ(static_cast<int>(expected),
              KestStringToUtf8(Units(text), static_cast<int>(text.size()), dest.data(), size));
    ASSERT_LE(static_cast<int>(expected), size + 2);
    EXPECT_EQ(whole.substr(0, expected) + std::string(dest.size() - expected, 'U'), dest);
  }
}

// Source and destination in blocks of exactly the sizes given, so that a tool sees a byte too many.
TEST(ConvertUtf8, FillsABlockOfTheCountedSize) {
  const std::u16string text = u"a\u20AC\u00E9\u20ACb\u20AC\uFFFF";
  for (size_t length = 1; length <= text.size(); ++length) {
    const std::vector<unsigned short> source(text.begin(),
                                             text.begin() + static_cast<ptrdiff_t>(length));
    std::vector<char> dest(KestStringUtf8ByteLen(Units(text.substr(0, length))));
    const int size = static_cast<int>(dest.size());
    EXPECT_EQ(size, KestStringToUtf8(source.data(), static_cast<int>(length), dest.data(), size));
    EXPECT_EQ(Encode(text.substr(0, length)), std::string(dest.begin(), dest.end()));
  }
}

TEST(ConvertUtf8, NothingFromOrIntoNothing) {
  char bytes[4] = "UUU";
  unsigned short units[4] = {7, 7, 7, 7};
  for (int none : {0, -1, -2, INT_MIN}) {  // -1 has no other meaning here
    EXPECT_EQ(0, KestStringToUtf8(KEST_TEXT("abc"), none, bytes, 4));
    EXPECT_EQ(0, KestStringToUtf8(KEST_TEXT("abc"), 3, bytes, none));
    EXPECT_EQ(0, KestUtf8ToString("abc", none, units, 4));
    EXPECT_EQ(0, KestUtf8ToString("abc", 3, units, none));
  }
  EXPECT_EQ(0, KestStringToUtf8(nullptr, 3, bytes, 4));
  EXPECT_EQ(0, KestStringToUtf8(KEST_TEXT("abc"), 3, nullptr, 4));
  EXPECT_EQ(0, KestUtf8ToString(nullptr, 3, units, 4));
  EXPECT_EQ(0, KestUtf8ToString("abc", 3, nullptr, 4));
  EXPECT_STREQ("UUU", bytes);
  EXPECT_EQ(7, units[0]);
}

TEST(ConvertUtf8, ASizeOfIntMaxIsNoLimit) {
  char bytes[4] = {};
  unsigned short units[4] = {};
  EXPECT_EQ(2, KestStringToUtf8(KEST_TEXT("\u00E9"), 1, bytes, INT_MAX));
  EXPECT_EQ(1, KestUtf8ToString(bytes, 2, units, INT_MAX));
  EXPECT_EQ(0xE9, units[0]);
}

TEST(ConvertUtf8, DecodesWithoutChecking) {
  struct {
    std::string bytes;
    std::u16string units;
  } const kRows[] = {
      {"\xC3\xA9", u"\u00E9"},
      {"\xC3", u""},  // cut off
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xE2\x82", u""},
      {"\xE2", u""},
      {"a\xE2\x82", u"a"},
      {"\xF0\x9F\x98\x80", u"\u07D8"},  // the lead's low four bits; then a lead with nothing after
      {"\xF0\x9F\x98\x80z", u"\u07D8:"},       // that lead takes the z: 0 << 6 | 0x3A
      {"\x80\x80", std::u16string(1, u'\0')},  // stray continuations as leads
      {"\x9F\xBF", u"\u07FF"},
      {"\xA0\x80\x80", std::u16string(1, u'\0')},
      {"\xBF\xBF\xBF", u"\uFFFF"},
      {"\xC0\x80", std::u16string(1, u'\0')},  // overlong forms
      {"\xC1\x81", u"A"},
      {"\xE0\x81\x81", u"A"},
      {"\xC3zz", u"\u00FAz"},  // not a continuation, and taken as one
      {"\xE2zz", u"\u2EBA"},
      {"\xFF\xFF\xFF", u"\uFFFF"},
      {"\xED\xA0\x80", u"\xD800"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.units, Decode(row.bytes)) << testing::PrintToString(row.bytes);
  }
}

TEST(ConvertUtf8, DecodesEveryInputOfOneAndTwoBytes) {
  for (unsigned int first = 0; first < 256; ++first) {
    std::string bytes(1, static_cast<char>(first));
    ASSERT_EQ(PlainDecodeAll(bytes), Decode(bytes)) << first;
    bytes += '\0';
    for (unsigned int second = 0; second < 256; ++second) {
      bytes[1] = static_cast<char>(second);
      ASSERT_EQ(PlainDecodeAll(bytes), Decode(bytes)) << first << ", " << second;
    }
  }
}

TEST(ConvertUtf8, DecodesEveryInputOfThreeBytes) {
  for (unsigned int value = 0; value < 1u << 24; ++value) {
    const unsigned char bytes[] = {static_cast<unsigned char>(value >> 16),
                                   static_cast<unsigned char>(value >> 8),
                                   static_cast<unsigned char>(value)};
    unsigned short units[3];
    const int count = KestUtf8ToString(reinterpret_cast<const char*>(bytes), 3, units, 3);
    int expected = 0;
    for (size_t at = 0; at < 3; ++expected) {
      unsigned int unit = 0;
      const size_t step = PlainDecode(bytes + at, 3 - at, unit);
      if (step == 0) break;
      if (expected >= count || units[expected] != unit) FAIL() << value;
      at += step;
    }
    if (expected != count) FAIL() << value;
  }
}

TEST(ConvertUtf8, DecodingStopsAtTheSize) {
  const std::string bytes =
      "a\xC3\xA9\xE2\x82\xAC"
      "b";
  const std::u16string whole = u"a\u00E9\u20ACb";
  for (int size = 1; size <= 6; ++size) {
    unsigned short units[6] = {7, 7, 7, 7, 7, 7};
    const int count = KestUtf8ToString(bytes.data(), 7, units, size);
    ASSERT_EQ(std::min(size, 4), count);
    EXPECT_EQ(whole.substr(0, static_cast<size_t>(count)), std::u16string(units, units + count));
    for (int i = count; i < 6; ++i) EXPECT_EQ(7, units[i]);
  }
}

TEST(ConvertUtf8, DecodingStopsAtTheLength) {
  const std::string bytes =
      "a\xC3\xA9\xE2\x82\xAC"
      "b";
  for (size_t length = 1; length <= bytes.size(); ++length) {
    // In a block of exactly that size, so that a tool sees a byte read past it.
    const std::vector<char> exact(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length));
    unsigned short units[7];
    const int count = KestUtf8ToString(exact.data(), static_cast<int>(length), units, 7);
    EXPECT_EQ(PlainDecodeAll(bytes.substr(0, length)), std::u16string(units, units + count));
  }
}

TEST(ConvertUtf8, DecodesLongRandomInputAsThePlainModel) {
  std::mt19937 random(4);
  for (int i = 0; i < 2000; ++i) {
    std::string bytes(random() % 64, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    ASSERT_EQ(PlainDecodeAll(bytes), Decode(bytes)) << testing::PrintToString(bytes);
  }
}
