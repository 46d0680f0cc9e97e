// char16.h: what its calls give, beside the table of those that compile.

#include "kest/bridge/char16.h"

#include <iomanip>
#include <map>
#include <sstream>
#include <unordered_set>

#include "bridge/overload_table.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"
#include "support/thread_sanitizer.h"

namespace {

using namespace KEST;
using kest_test::ForEachRefusedRequest;
using kest_test::Random;
using kest_test::TestAllocator;
using kest_test::TextOf;
using namespace std::string_literals;
using namespace std::string_view_literals;

const char16_t* const kNull16 = nullptr;
const unsigned short* const kNullUnits = nullptr;

TEST(Char16, TextGoesIntoABstrAndBack) {
  const std::u16string texts[] = {
      u"", u"a", u"a\0b"s, u"\0"s, u"\xD83D\xDE00", u"\xD800", std::u16string(5000, u'x')};
  for (const std::u16string& text : texts) {
    SCOPED_TRACE(text.size());
    EXPECT_EQ(text, TextOf(ToBstr(text)));
    EXPECT_EQ(text, TextOf(ToBstr(std::u16string_view(text))));
    EXPECT_EQ(text, ToU16String(ToBstr(text)));
    EXPECT_EQ(text, View(ToBstr(text)));
    TBstr assigned("before");
    EXPECT_TRUE(Assign(assigned, text));
    EXPECT_EQ(text, TextOf(assigned));
    TBstr appended("before");
    EXPECT_TRUE(Append(appended, text));
    EXPECT_EQ(u"before" + text, TextOf(appended));
    EXPECT_EQ(u"before" + text, TextOf(TBstr("before") + text));
    EXPECT_EQ(text + u"behind", TextOf(text + TBstr("behind")));
  }
  EXPECT_EQ(u"ab", TextOf(ToBstr(u"ab\0c")));  // a pointer is to terminated text
  EXPECT_EQ(u"ab\0c"sv, TextOf(u"ab\0c"_bstr));
  EXPECT_EQ(u"", TextOf(ToBstr(kNull16)));
  EXPECT_EQ(u"", TextOf(ToBstr(nullptr)));
  EXPECT_EQ(u"", View(kNullUnits));
  EXPECT_EQ(u"abc", View(KEST_TEXT("abc")));
  EXPECT_EQ(u"abc"sv, std::u16string_view(Chars(TBstr("abc"))));
  EXPECT_EQ(u""sv, std::u16string_view(Chars(TBstr())));
}

TEST(Char16, ATextMayLieInTheStringThatItChanges) {
  TBstr s = ToBstr(u"one two");
  EXPECT_TRUE(Append(s, View(s).substr(3)));
  EXPECT_EQ(u"one two two", TextOf(s));
  EXPECT_TRUE(Assign(s, View(s).substr(4, 3)));
  EXPECT_EQ(u"two", TextOf(s));
}

TEST(Char16, WithoutMemoryTheStringIsEmpty) {
  const std::u16string text(300, u'x');
  ForEachRefusedRequest([&](TestAllocator& allocator) {
    TBstr s("before");
    const bool added = !s.IsEmpty() && Append(s, text);
    if (allocator.Refused() > 0) {
      EXPECT_FALSE(added);
      EXPECT_TRUE(s.IsEmpty());
    } else {
      EXPECT_EQ(306, s.GetLength());
    }
  });
  ForEachRefusedRequest([&](TestAllocator& allocator) {
    const int length = ToBstr(text).GetLength();
    EXPECT_EQ(allocator.Refused() > 0 ? 0 : 300, length);
  });
  ForEachRefusedRequest([&](TestAllocator& allocator) {
    const int length = FromUtf8(std::string(300, 'x')).GetLength();
    EXPECT_EQ(allocator.Refused() > 0 ? 0 : 300, length);
  });
  ForEachRefusedRequest([&](TestAllocator& allocator) {
    const unsigned int length = ucslen(Units(std::u16string_view(text)));
    EXPECT_EQ(allocator.Refused() > 0 ? 0u : 300u, length);
  });
}

// Every pair of rows, compared in each way that there is. A text ends at its first zero unit, so
// rows of one number are equal.
TEST(Char16, ComparesAsTheLibraryDoes) {
  struct Row {
    int rank;
    std::u16string text;
  };
  const Row rows[] = {{0, u""},       {0, u"\0z"s},  {1, u"A"}, {2, u"a"},
                      {2, u"a\0b"s},  {3, u"aa"},    {4, u"b"}, {5, u"\xD83D\xDE00"},
                      {6, u"\xE000"}, {7, u"\xFFFF"}};
  for (const Row& one : rows) {
    for (const Row& two : rows) {
      SCOPED_TRACE(testing::PrintToString(one.text) + " and " + testing::PrintToString(two.text));
      const TBstr a = ToBstr(one.text), b = ToBstr(two.text);
      const int sign = (one.rank > two.rank) - (one.rank < two.rank);
      const int found = Compare(a, two.text);
      EXPECT_EQ(sign, (found > 0) - (found < 0));
      const auto check = [&](const auto& x, const auto& y) {
        EXPECT_EQ(sign == 0, x == y);
        EXPECT_EQ(sign != 0, x != y);
        EXPECT_EQ(sign < 0, x < y);
        EXPECT_EQ(sign <= 0, x <= y);
        EXPECT_EQ(sign > 0, x > y);
        EXPECT_EQ(sign >= 0, x >= y);
      };
      check(a, b);
      check(a, two.text);
      check(one.text, b);
      check(a, two.text.c_str());
      check(a, b.GetString());
      check(a.GetString(), b);
      EXPECT_TRUE(sign != 0 || std::hash<TBstr>()(a) == std::hash<TBstr>()(b));
    }
  }
}

TEST(Char16, IsAKeyInStandardContainers) {
  std::unordered_set<TBstr> set;
  std::map<TBstr, int> map;
  for (int i = 0; i < 1000; ++i) {
    const TBstr key = ToBstr(u"key " + std::u16string(static_cast<size_t>(i % 100), u'x'));
    set.insert(key);
    ++map[key];
  }
  EXPECT_EQ(100u, set.size());
  EXPECT_EQ(100u, map.size());
  EXPECT_EQ(10, map[ToBstr(u"key ")]);
  std::unordered_set<size_t> hashes;
  for (const TBstr& key : set) hashes.insert(std::hash<TBstr>()(key));
  EXPECT_GT(hashes.size(), 95u) << "hashes differ";
}

// Columns: units, UTF-8 with pairs joined, UTF-8 of the library's conversion unit by unit.
struct Conversion {
  std::u16string units;
  std::string joined;
  std::string byUnit;
};
const Conversion kConversions[] = {
    {u"", "", ""},
    {u"az\x7F", "az\x7F", "az\x7F"},
    {u"a\0b"s, "a\0b"s, "a\0b"s},
    {u"\x80\x7FF", "\xC2\x80\xDF\xBF", "\xC2\x80\xDF\xBF"},
    {u"\x800\xFFFF", "\xE0\xA0\x80\xEF\xBF\xBF", "\xE0\xA0\x80\xEF\xBF\xBF"},
    {u"\xD83D\xDE00", "\xF0\x9F\x98\x80", "\xED\xA0\xBD\xED\xB8\x80"},
    {u"\xD800\xDC00", "\xF0\x90\x80\x80", "\xED\xA0\x80\xED\xB0\x80"},
    {u"\xDBFF\xDFFF", "\xF4\x8F\xBF\xBF", "\xED\xAF\xBF\xED\xBF\xBF"},
    {u"\xD83D", "\xEF\xBF\xBD", "\xED\xA0\xBD"},
    {u"\xDE00", "\xEF\xBF\xBD", "\xED\xB8\x80"},
    {u"\xD83Dx", "\xEF\xBF\xBDx", "\xED\xA0\xBDx"},
    {u"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD", "\xED\xB8\x80\xED\xA0\xBD"},
    {u"\xD83D\xD83D\xDE00", "\xEF\xBF\xBD\xF0\x9F\x98\x80", "\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80"},
};

TEST(Char16Utf8, JoinsPairsAndReplacesHalves) {
  for (const Conversion& row : kConversions) {
    SCOPED_TRACE(testing::PrintToString(row.units));
    const TBstr s = ToBstr(row.units);
    EXPECT_EQ(row.joined, ToUtf8(s));
    EXPECT_EQ(row.joined, ToUtf8(row.units));
    EXPECT_EQ(row.byUnit, ToUtf8ByUnit(s));
    EXPECT_EQ(row.units, TextOf(FromUtf8ByUnit(row.byUnit)));
    std::ostringstream stream;
    stream << s << '|';
    EXPECT_EQ(row.joined + '|', stream.str());
  }
  EXPECT_EQ("", ToUtf8(nullptr));
  EXPECT_EQ("", ToUtf8(kNullUnits));
  EXPECT_EQ("", ToUtf8(kNull16));
  EXPECT_EQ("abc", ToUtf8(KEST_TEXT("abc")));
  EXPECT_EQ("abc", ToUtf8(u"abc"));
}

// Table 3-8 of the Unicode Standard and its neighbours. Columns: bytes, text.
struct Broken {
  std::string bytes;
  std::u16string units;
};
const Broken kBroken[] = {
    {"\x80", u"\xFFFD"},
    {"\xBFx", u"\xFFFDx"},
    {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",  // overlong forms
     u"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
    {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",  // surrogates
     u"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
    {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",  // beyond U+10FFFF
     u"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41\xFFFD\xFFFD\x42"},
    {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\xFFFD\xFFFD\xFFFD\xFFFD\x41"},  // cut off
    {"x\xC3", u"x\xFFFD"},
    {"x\xE2\x82", u"x\xFFFD"},
    {"x\xF0\x9F\x98", u"x\xFFFD"},
    {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
    {"\xC3\xC3\xA9", u"\xFFFD\xE9"},
    {"\xF5\x80\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},
};

TEST(Char16Utf8, ReplacesWhatIsNoUtf8) {
  for (const Broken& row : kBroken) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    EXPECT_EQ(row.units, TextOf(FromUtf8(row.bytes)));
  }
  EXPECT_EQ(u"", TextOf(FromUtf8(nullptr)));
  EXPECT_EQ(u"", TextOf(FromUtf8(static_cast<const char*>(nullptr))));
  EXPECT_EQ(u"a\0b"s, TextOf(FromUtf8("a\0b"s)));
  EXPECT_EQ(u"a", TextOf(FromUtf8("a\0b")));
}

TEST(Char16Utf8, EveryCharacterComesBack) {
#if defined(KEST_TESTS_UNDER_TSAN) || defined(__SANITIZE_ADDRESS__)
  constexpr char32_t kStep = 13;  // instrumented code takes its time
#else
  constexpr char32_t kStep = 1;
#endif
  for (char32_t c = 0; c < 0x110000; c += kStep) {
    const bool half = c >= 0xD800 && c < 0xE000;
    std::u16string units;
    if (c < 0x10000) {
      units += static_cast<char16_t>(c);
    } else {
      units += static_cast<char16_t>(0xD7C0 + (c >> 10));
      units += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
    const std::string bytes = ToUtf8(units);
    if (half) {
      ASSERT_EQ("\xEF\xBF\xBD", bytes) << c;
    } else {
      ASSERT_EQ(c < 0x80 ? 1u : c < 0x800 ? 2u : c < 0x10000 ? 3u : 4u, bytes.size()) << c;
      ASSERT_EQ(units, View(FromUtf8(bytes))) << c;
      ASSERT_EQ(c < 0x10000, bytes == ToUtf8ByUnit(ToBstr(units))) << c;
    }
  }
}

// Whether there is a character whose UTF-8 starts with these bytes: the lowest and the highest
// number that they may stand for, looked up in the ranges of RFC 3629.
bool Begins(std::string_view bytes, size_t* length) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  *length = byte(0) < 0x80             ? 1
            : (byte(0) & 0xE0) == 0xC0 ? 2
            : (byte(0) & 0xF0) == 0xE0 ? 3
            : (byte(0) & 0xF8) == 0xF0 ? 4
                                       : 0;
  if (*length == 0 || bytes.size() > *length) return false;
  char32_t low = *length == 1 ? byte(0) : byte(0) & (0x7Fu >> *length), high = low;
  for (size_t i = 1; i < *length; ++i) {
    if (i < bytes.size() && (byte(i) & 0xC0) != 0x80) return false;
    low = low * 64 + (i < bytes.size() ? byte(i) & 0x3Fu : 0);
    high = high * 64 + (i < bytes.size() ? byte(i) & 0x3Fu : 0x3F);
  }
  const char32_t first[] = {0, 0x80, 0x800, 0x10000}, last[] = {0x7F, 0x7FF, 0xFFFF, 0x10FFFF};
  low = std::max(low, first[*length - 1]);
  high = std::min(high, last[*length - 1]);
  return low <= high && !(low >= 0xD800 && high <= 0xDFFF);
}

std::u16string PlainFromUtf8(std::string_view bytes) {
  std::u16string out;
  while (!bytes.empty()) {
    size_t taken = 0, length = 0, needed = 0;
    while (taken < bytes.size() && Begins(bytes.substr(0, taken + 1), &length)) {
      ++taken;
      needed = length;
    }
    if (taken > 0 && taken == needed) {
      char16_t units[2];
      const int bits = static_cast<int>(taken);
      char32_t c = static_cast<unsigned char>(bytes[0]) & (bits == 1 ? 0x7Fu : 0x7Fu >> bits);
      for (size_t i = 1; i < taken; ++i) c = c << 6 | (static_cast<unsigned char>(bytes[i]) & 0x3F);
      units[0] = static_cast<char16_t>(c < 0x10000 ? c : 0xD7C0 + (c >> 10));
      units[1] = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
      out.append(units, c < 0x10000 ? 1 : 2);
    } else {
      out += u'\xFFFD';
    }
    bytes.remove_prefix(std::max<size_t>(taken, 1));
  }
  return out;
}

TEST(Char16Utf8, AgreesWithAPlainDecoderOnAnyBytes) {
  Random random;
  SCOPED_TRACE(random.Seed());
  // Bytes at the edges of the ranges, more often than others.
  const unsigned char edges[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  for (int i = Random::Cases(); i > 0; --i) {
    std::string bytes;
    for (int n = random.Between(0, 12); n > 0; --n) {
      bytes += static_cast<char>(
          random.Between(0, 3) == 0 ? random.Next() : edges[random.Next() % std::size(edges)]);
    }
    ASSERT_EQ(PlainFromUtf8(bytes), TextOf(FromUtf8(bytes))) << testing::PrintToString(bytes);
  }
}

TEST(Char16Utf8, AStreamPadsToItsWidthInBytes) {
  std::ostringstream stream;
  stream << std::setw(6) << ToBstr(u"\xE9") << std::setw(1) << ToBstr(u"\xE9");
  EXPECT_EQ("    \xC3\xA9\xC3\xA9", stream.str());
}

TEST(Char16Flat, TakesAnyText) {
  const std::u16string string = u"abc";
  const std::u16string_view view = u"abcdef"sv.substr(0, 3);
  unsigned short* const copies[] = {KestAllocString(u"abc"), KestAllocString(string),
                                    KestAllocString(view), KestAllocString(KEST_TEXT("abc")),
                                    KestAllocStringLen(u"abcdef", 3)};
  for (unsigned short* copy : copies) {
    EXPECT_EQ(3u, KestStringLen(copy));
    EXPECT_EQ(u"abc"sv, std::u16string_view(Chars(copy)));
    KestFreeString(copy);
  }
  EXPECT_EQ(nullptr, KestAllocString(u""));
  EXPECT_EQ(nullptr, KestAllocString(kNull16));
  EXPECT_EQ(nullptr, KestAllocString(u""sv));
  unsigned short* const zeros = KestAllocString(u"a\0b"sv);
  EXPECT_EQ(3u, KestStringLen(zeros));
  KestFreeString(zeros);

  EXPECT_EQ(3u, ucslen(u"abc"));
  EXPECT_EQ(3u, ucslen(view));
  EXPECT_EQ(0u, ucslen(kNull16));
  EXPECT_EQ(1u, ucslen(u"a\0b"sv));
  EXPECT_EQ(0, ucscmp(string, view));
  EXPECT_EQ(0, ucscmp(u"abc", KEST_TEXT("abc")));
  EXPECT_GT(0, ucscmp(kNull16, u"abc"));
  EXPECT_EQ(0, ucsncmp(u"abcd", view, 3));
  EXPECT_EQ(0, ucsicmp(u"ABC", view));
  EXPECT_EQ(0, ucsnicmp(u"ABCx", view, 3));

  const char16_t* const text = u"one two one";
  EXPECT_EQ(text + 1, Chars(ucschr(text, u'n')));
  EXPECT_EQ(text + 9, Chars(ucsrchr(text, u'n')));
  EXPECT_EQ(text + 4, Chars(ucspbrk(text, u"tw"sv)));
  EXPECT_EQ(text + 4, Chars(ucsstr(text, u"two")));
  unsigned short* end = nullptr;
  const char16_t* const number = u"12x";
  EXPECT_EQ(12, ucstol(number, &end, 10));
  EXPECT_EQ(number + 2, Chars(end));
  EXPECT_EQ(12, ucstol(u"123"sv.substr(0, 2), nullptr, 10));
  EXPECT_EQ(255u, ucstoul(u"FF"s, nullptr, 16));
}

TEST(Char16Flat, WritesIntoChar16) {
  char16_t room[16];
  EXPECT_EQ(room, ucscpy(room, u"abc"));
  EXPECT_EQ(u"abc"sv, std::u16string_view(room));
  EXPECT_EQ(room + 3, ucscat(room, u"def"sv));
  EXPECT_EQ(u"abcdef"sv, std::u16string_view(room));
  EXPECT_EQ(6u, ucslcpy(room, std::u16string(u"uvwxyz"), 4));
  EXPECT_EQ(u"uvw"sv, std::u16string_view(room));
  EXPECT_EQ(5u, ucslcat(room, KEST_TEXT("xy"), 16));
  EXPECT_EQ(u"uvwxy"sv, std::u16string_view(room));
  EXPECT_EQ(room, ucsupr(room));
  EXPECT_EQ(room, ucsrev(room));
  EXPECT_EQ(u"YXWVU"sv, std::u16string_view(room));
  EXPECT_EQ(room, ucslwr(room));
  EXPECT_EQ(u'y', room[0]);
  EXPECT_EQ(room, ucsncpy(room, u"a", 5));
  EXPECT_EQ(u"a\0\0\0\0"sv, std::u16string_view(room, 5));
  EXPECT_EQ(2, KestUtf8ToString("\xC3\xA9x", 3, room, 16));
  EXPECT_EQ(u"\xE9x"sv, std::u16string_view(room, 2));
  EXPECT_EQ(2, KestMultibyteToUnicode("xy", 2, room, 16));
  EXPECT_EQ(u"xy"sv, std::u16string_view(room, 2));
  char bytes[16] = {};
  EXPECT_EQ(3, KestStringToUtf8(u"\xE9x", 2, bytes, 16));
  EXPECT_STREQ("\xC3\xA9x", bytes);
  EXPECT_EQ(2, KestUnicodeToMultibyte(u"ab", 2, bytes, 16));
  EXPECT_EQ(3u, KestStringUtf8ByteLen(u"\xE9x"sv));
  unsigned short units[8];
  EXPECT_EQ(units, ucscpy(units, u"abc"));
  EXPECT_EQ(u"abc", View(units));
}

TEST(Char16Flat, TurnsTextIntoHtmlNumbersAndNames) {
  TBstr out;
  KestEntityEscape(u"<&>", out);
  EXPECT_EQ(u"&lt;&amp;&gt;", TextOf(out));
  KestEntityUnescape(u"&lt;xyz"sv.substr(0, 4), out);
  EXPECT_EQ(u"<", TextOf(out));
  KestPlainToHtml(u"a\r\nb"s, out);
  EXPECT_EQ(u"<HTML><BODY>a<BR>b</BODY></HTML>", TextOf(out));
  KestHtmlToPlain(u"<P>a<BR>b", out);
  EXPECT_EQ(u"a\r\nb", TextOf(out));
  unsigned int address = 0, port = 0;
  EXPECT_TRUE(KestInetAtoN(u"1.2.3.4:80", &address, &port));
  EXPECT_EQ(0x01020304u, address);
  EXPECT_EQ(80u, port);
  int number = -1;
  EXPECT_EQ(1, KestIsoToZelEncoding(u"UTF-8", &number));
  EXPECT_EQ(13, number);
  EXPECT_EQ(1, KestIsoToZelLang(u"de"sv, &number));
  EXPECT_EQ(2, number);
  TBstr formatted;
  formatted.Format(Units(u"%s, %d"), Units(u"abc"), 5);
  EXPECT_EQ(u"abc, 5", TextOf(formatted));
}

// One function that writes through one type and reads through the other, so that a compiler which
// moves accesses across shows.
unsigned int WriteAndRead(unsigned short* units) {
  units[0] = u'a';
  const char16_t* const chars = Chars(units);
  const unsigned int before = chars[0];
  Units(Chars(units))[0] = u'b';
  return before << 16 | static_cast<unsigned int>(Chars(units)[0]);
}

TEST(Char16, AccessesThroughBothTypesKeepTheirOrder) {
  unsigned short units[1] = {u'x'};
  EXPECT_EQ(static_cast<unsigned int>(u'a') << 16 | u'b', WriteAndRead(units));
  char16_t chars[2] = {u'x', 0};
  Units(chars)[0] = u'y';
  EXPECT_EQ(u'y', Chars(Units(chars))[0]);
}

}  // namespace
