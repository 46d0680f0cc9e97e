// The wide C strings read memory a vector at a time: every length at every place in a page, the
// last unit before memory that cannot be touched and the first one behind it.

#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kest/string.h"
#include "support/random.h"
#include "support/wide_text.h"

namespace {

using kest_test::Units;

// Longer than two turns of the widest kernel, at which everything repeats.
constexpr size_t kLongest = 300;
constexpr size_t kAlignments = 64;

// Two pages that can be touched between two that cannot, full of one unit.
class Pages {
 public:
  explicit Pages(unsigned short fill)
      : page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        all(static_cast<char*>(
            mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(all + page, 2 * page, PROT_READ | PROT_WRITE);
    std::fill(Begin(), End(), fill);
  }
  ~Pages() { munmap(all, 4 * page); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  unsigned short* Begin() const { return reinterpret_cast<unsigned short*>(all + page); }
  unsigned short* Middle() const { return reinterpret_cast<unsigned short*>(all + 2 * page); }
  unsigned short* End() const { return reinterpret_cast<unsigned short*>(all + 3 * page); }

 private:
  const size_t page;
  char* const all;
};

// Calls check(s, length) for texts of every length: before the end of memory, behind its beginning,
// and across the two pages. What comes before and behind each text is the unit that fills it.
template <typename Check>
void ForTextsEverywhere(const Pages& pages, Check check) {
  for (size_t length = 0; length <= kLongest; ++length) {
    unsigned short* const starts[] = {pages.End() - length - 1, pages.Begin(),
                                      pages.Middle() - length / 2, pages.Middle() - length - 1};
    for (unsigned short* s : starts) {
      const unsigned short before = s[length];
      s[length] = 0;
      check(s, length);
      s[length] = before;
    }
  }
  for (size_t offset = 0; offset < kAlignments; ++offset) {
    for (size_t length = 0; length <= kLongest; length += 1 + length / 32) {
      unsigned short* s = pages.Begin() + offset;
      s[length] = 0;
      check(s, length);
      s[length] = s[length + 1];
    }
  }
}

TEST(UcsLevels, LengthEverywhere) {
  const Pages pages(0xFF00);
  ForTextsEverywhere(pages, [](const unsigned short* s, size_t length) {
    ASSERT_EQ(length, KEST::ucslen(s)) << s;
  });
}

TEST(UcsLevels, AZeroByteIsNoZeroUnit) {
  for (const char16_t unit : std::u16string(u"\u00FF\uFF00\u0100\u0001\u8000\u7FFF")) {
    const Pages pages(unit);
    pages.End()[-1] = 0;
    for (size_t length = 0; length <= kLongest; ++length) {
      ASSERT_EQ(length, KEST::ucslen(pages.End() - 1 - length)) << unit;
    }
  }
}

// Where a text with room for kLongest units starts: at every place in a vector, near the ends of
// pages, at the ends of memory.
std::vector<unsigned short*> Places(const Pages& pages, size_t room) {
  std::vector<unsigned short*> places = {pages.End() - room};
  for (size_t offset = 0; offset <= 66; offset += 3) places.push_back(pages.Begin() + offset);
  for (size_t before = 1; before <= 70; before += 4) places.push_back(pages.Middle() - before);
  places.push_back(pages.Middle() - room);
  return places;
}

TEST(UcsLevels, FirstUnitEverywhere) {
  const Pages pages(0x6161);
  ForTextsEverywhere(pages, [](unsigned short* s, size_t length) {
    ASSERT_EQ(nullptr, KEST::ucschr(s, 0x6100));
    ASSERT_EQ(nullptr, KEST::ucsrchr(s, 0x6100));
    ASSERT_EQ(nullptr, KEST::ucspbrk(s, KEST_TEXT("\u6100\u0061abcdef")));
    ASSERT_EQ(s + length, KEST::ucschr(s, 0));
    ASSERT_EQ(s + length, KEST::ucsrchr(s, 0));
    for (size_t at = length % 7; at < length; at += 1 + length / 9) {
      const unsigned short before = s[at];
      s[at] = 0x6100;
      ASSERT_EQ(s + at, KEST::ucschr(s, 0x6100)) << length;
      ASSERT_EQ(s + at, KEST::ucsrchr(s, 0x6100)) << length;
      ASSERT_EQ(s + at, KEST::ucspbrk(s, KEST_TEXT("1234567\u6100"))) << length;
      s[at] = before;
    }
  });
}

TEST(UcsLevels, TheFirstAndTheLastOfSeveral) {
  const Pages pages(u'.');
  ForTextsEverywhere(pages, [](unsigned short* s, size_t length) {
    if (length < 3) return;
    const size_t first = length / 3, last = length - 1 - length / 4;
    s[first] = s[last] = u'x';
    ASSERT_EQ(s + first, KEST::ucschr(s, u'x')) << length;
    ASSERT_EQ(s + last, KEST::ucsrchr(s, u'x')) << length;
    ASSERT_EQ(s + first, KEST::ucspbrk(s, KEST_TEXT("yx"))) << length;
    s[first] = s[last] = u'.';
  });
}

// Every unit of a short set counts, and every number of them.
TEST(UcsLevels, SetsOfEverySize) {
  const Pages pages(u'.');
  unsigned short* s = pages.End() - 101;
  s[100] = 0;
  for (size_t count = 0; count <= 12; ++count) {
    std::u16string set;
    for (size_t at = 0; at < count; ++at) set += static_cast<char16_t>(u'A' + at);
    ASSERT_EQ(nullptr, KEST::ucspbrk(s, Units(set)));
    for (const char16_t unit : set) {
      s[77] = unit;
      ASSERT_EQ(s + 77, KEST::ucspbrk(s, Units(set))) << count;
      s[77] = u'.';
    }
  }
}

// Texts of room units and no terminator, the last one before memory that cannot be touched.
TEST(UcsLevels, ComparisonEverywhere) {
  const Pages left(u'k'), right(u'k'), upper(u'K');
  for (size_t room : {1u, 2u, 7u, 16u, 17u, 31u, 33u, 64u, 65u, 129u, 300u}) {
    for (unsigned short* a : Places(left, room)) {
      for (size_t to = 0; to < 45; to += 1 + room % 3) {
        unsigned short* b = to == 0 ? right.End() - room : Places(right, room)[to % 42];
        unsigned short* c = upper.Begin() + (b - right.Begin());
        const unsigned int n = static_cast<unsigned int>(room);
        ASSERT_EQ(0, KEST::ucsncmp(a, b, n));
        ASSERT_EQ(0, KEST::ucsnicmp(a, c, n));
        const size_t at = (to * 7 + room / 2) % room;
        b[at] = u'm';
        c[at] = u'M';
        ASSERT_EQ(u'k' - u'm', KEST::ucscmp(a, b)) << room << ' ' << at;
        ASSERT_EQ(u'k' - u'm', KEST::ucsicmp(a, c)) << room << ' ' << at;
        ASSERT_EQ(u'm' - u'k', KEST::ucscmp(b, a)) << room << ' ' << at;
        ASSERT_EQ(0, KEST::ucsncmp(a, b, static_cast<unsigned int>(at)));
        ASSERT_EQ(0, KEST::ucsnicmp(c, a, static_cast<unsigned int>(at)));
        ASSERT_EQ(u'k' - u'm', KEST::ucsncmp(a, b, static_cast<unsigned int>(at) + 1));
        b[at] = c[at] = 0;
        ASSERT_EQ(u'k', KEST::ucscmp(a, b)) << room << ' ' << at;
        ASSERT_EQ(-u'K', KEST::ucsicmp(c, a)) << room << ' ' << at;
        const unsigned short before = a[at];
        a[at] = 0;
        ASSERT_EQ(0, KEST::ucscmp(a, b)) << room << ' ' << at;
        ASSERT_EQ(0, KEST::ucsicmp(a, c)) << room << ' ' << at;
        a[at] = before;
        b[at] = u'k';
        c[at] = u'K';
      }
    }
  }
}

// Every unit beside every letter of the other case, in each lane.
TEST(UcsLevels, UpperCaseIsThatOfAsciiInEveryLane) {
  constexpr size_t kUnits = 0xFFFF;
  std::vector<unsigned short> all(kUnits + 1), upper(kUnits + 1);
  for (size_t shift = 0; shift < 33; shift += 11) {
    for (size_t at = 0; at < kUnits; ++at) {
      all[at] = static_cast<unsigned short>((at + shift) % kUnits + 1);
      upper[at] = KEST::touupper(all[at]);
    }
    ASSERT_EQ(0, KEST::ucsicmp(all.data(), upper.data()));
    ASSERT_EQ(0, KEST::ucsicmp(upper.data(), all.data()));
  }
  for (int unit : {0x40, 0x5B, 0x60, 0x7B, 0x7F, 0xE1, 0x161, 0x8041, 0x8061, 0xFF21, 0xFF41}) {
    std::u16string a(64, u'x'), b(64, u'X');
    a[40] = static_cast<char16_t>(unit);
    b[40] = static_cast<char16_t>(unit ^ 0x20);
    ASSERT_EQ(unit - (unit ^ 0x20), KEST::ucsicmp(Units(a), Units(b)));
  }
}

// Every unit in some lane, texts of every length, and nothing written behind them.
TEST(UcsLevels, CaseEverywhere) {
  const Pages pages(u'k');
  unsigned short next = 0;
  for (size_t length = 0; length <= kLongest; ++length) {
    for (unsigned short* s : {pages.End() - length - 1, pages.Begin() + length % 64}) {
      for (size_t repeat = 0; repeat < 2; ++repeat) {
        std::u16string units(length, u'x');
        for (char16_t& unit : units) unit = static_cast<char16_t>(next++ % 0x300 + 1);
        if (length > 0) units[length / 2] = static_cast<char16_t>(next * 97 | 1);
        std::copy(units.begin(), units.end(), s);
        s[length] = 0;
        const bool up = repeat == 0;
        ASSERT_EQ(s, up ? KEST::ucsupr(s) : KEST::ucslwr(s));
        for (size_t at = 0; at < length; ++at) {
          ASSERT_EQ(up ? KEST::touupper(units[at]) : KEST::toulower(units[at]), s[at]) << length;
        }
        ASSERT_EQ(0, s[length]);
        if (s > pages.Begin()) {
          ASSERT_EQ(u'k', s[-1]);
        }
        if (s + length + 1 < pages.End()) {
          ASSERT_EQ(u'k', s[length + 1]);
        }
        std::fill_n(s, length + 1, u'k');
      }
    }
  }
}

TEST(UcsLevels, TextEverywhere) {
  const Pages pages(u'.');
  for (const char16_t* needle :
       {u"ab", u"abc", u"abcdefgh", u"a.", u".b", u"a.............................b"}) {
    const std::u16string text = needle;
    ForTextsEverywhere(pages, [&](unsigned short* s, size_t length) {
      ASSERT_EQ(nullptr, KEST::ucsstr(s, Units(text))) << length;
      if (length < text.size()) return;
      for (size_t at = length % 5; at <= length - text.size(); at += 1 + length / 5) {
        std::copy(text.begin(), text.end(), s + at);
        ASSERT_EQ(s + at, KEST::ucsstr(s, Units(text))) << length << ' ' << at;
        // Without its last unit.
        s[at + text.size() - 1] = u'!';
        ASSERT_EQ(nullptr, KEST::ucsstr(s, Units(text))) << length << ' ' << at;
        std::fill_n(s + at, text.size(), u'.');
      }
    });
  }
}

// Texts that repeat themselves, which the search by the first and the last unit gives up on.
TEST(UcsLevels, HostileTextAgreesWithASlowModel) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  const int cases = kest_test::Random::Cases(3000);
  for (int i = 0; i < cases; ++i) {
    std::u16string part, text, needle;
    const int letters = random.Between(1, 3);
    for (int units = random.Between(1, 40); units > 0; --units) {
      part += static_cast<char16_t>(u'a' + random.Between(0, letters - 1));
    }
    for (int parts = random.Between(1, 100); parts > 0; --parts) {
      text += part;
      if (random.Between(0, 19) == 0)
        text[static_cast<size_t>(random.Between(0, static_cast<int>(text.size()) - 1))] = u'b';
    }
    const size_t from = static_cast<size_t>(random.Between(0, static_cast<int>(text.size()) - 1));
    needle = text.substr(from, static_cast<size_t>(random.Between(0, 300)));
    if (random.Between(0, 2) != 0 && !needle.empty()) {
      needle[static_cast<size_t>(random.Between(0, static_cast<int>(needle.size()) - 1))] = u'c';
    }
    const size_t expected = text.find(needle);
    const unsigned short* found = KEST::ucsstr(Units(text), Units(needle));
    ASSERT_EQ(expected != text.npos ? Units(text) + expected : nullptr, found)
        << testing::PrintToString(text) << ' ' << testing::PrintToString(needle);
  }
}

// A run of one unit before all else makes the search give up at once on needles that start and end
// with it; what is between is any text of two letters, in either order, and pieces of it follow.
TEST(UcsLevels, WhatFollowsAHostileStart) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  const int cases = kest_test::Random::Cases(6000);
  for (int i = 0; i < cases; ++i) {
    const char16_t common = i % 2 == 0 ? u'a' : u'b';
    const char16_t rare = i % 2 == 0 ? u'b' : u'a';
    const auto letters = [&](int least, int most) {
      std::u16string text(static_cast<size_t>(random.Between(least, most)), common);
      for (char16_t& unit : text) unit = random.Between(0, 2) == 0 ? rare : common;
      return text;
    };
    const std::u16string run(static_cast<size_t>(random.Between(3, 9)), common);
    std::u16string needle = run + letters(0, 6);
    for (int repeats = random.Between(0, 2); repeats > 0; --repeats) needle += needle;
    needle += common;
    std::u16string text(400, common);
    for (int pieces = random.Between(0, 12); pieces > 0; --pieces) {
      const int from = random.Between(0, static_cast<int>(needle.size()) - 1);
      text += needle.substr(static_cast<size_t>(from)) + letters(0, 2);
      text += needle.substr(0, needle.size() - static_cast<size_t>(random.Between(1, 3)));
    }
    const size_t expected = text.find(needle);
    ASSERT_EQ(expected != text.npos ? Units(text) + expected : nullptr,
              KEST::ucsstr(Units(text), Units(needle)))
        << testing::PrintToString(text) << ' ' << testing::PrintToString(needle);
  }
}

// The needle's first and last unit are everywhere, and so is more of it.
TEST(UcsLevels, HostileTextEverywhere) {
  const Pages pages(u'a');
  for (size_t half : {1u, 3u, 15u, 16u, 17u, 40u}) {
    const std::u16string side(half, u'a');
    const std::u16string needle = side + u'b' + side;
    for (size_t length = 0; length < 1500; length += 1 + length / 9) {
      unsigned short* s = pages.End() - length - 1;
      s[length] = 0;
      ASSERT_EQ(nullptr, KEST::ucsstr(s, Units(needle))) << length;
      if (length >= needle.size()) {
        unsigned short* b = s + length - 1 - half;
        *b = u'b';
        ASSERT_EQ(b - half, KEST::ucsstr(s, Units(needle))) << length;
        *b = u'a';
      }
      s[length] = u'a';
    }
  }
}

// A text's end is found while the search goes by periods, and behind the units of a step.
TEST(UcsLevels, TheEndOfHostileText) {
  const Pages pages(u'a');
  unsigned short* const end = pages.End() - 1;
  *end = 0;
  for (size_t period = 2; period < 70; ++period) {
    for (unsigned short* b = end - period; b > end - 2000; b -= period) *b = u'b';
    const std::u16string same(period + 3, u'a');
    ASSERT_EQ(nullptr, KEST::ucsstr(end - 2000 + period, Units(same))) << period;
    const std::u16string most = std::u16string(period - 1, u'a') + u'b';
    const std::u16string broken = most + most + u'c' + most + most;
    ASSERT_EQ(nullptr, KEST::ucsstr(end - 2000 + period, Units(broken))) << period;
    ASSERT_EQ(nullptr, KEST::ucsstr(end - 2000 + period, Units(u'c' + most + most))) << period;
    std::fill(end - 2000, end, u'a');
  }
}

// Sanitizers object to these in the plain versions.
#ifndef __SANITIZE_ADDRESS__

// Calls check(s, length) for texts whose units lie at odd addresses: before the end of memory,
// behind its beginning, and with a unit in two pages.
template <typename Check>
void ForOddTexts(const Pages& pages, Check check) {
  for (size_t length = 0; length <= kLongest; ++length) {
    char* const middle = reinterpret_cast<char*>(pages.Middle()) - 1;
    char* const ends[] = {reinterpret_cast<char*>(pages.End()) - 3,
                          reinterpret_cast<char*>(pages.Begin() + length) + 1,
                          middle,
                          middle - 2,
                          middle + 2,
                          middle + length / 2 * 2};
    for (char* end : ends) {
      unsigned short before;
      memcpy(&before, end, sizeof before);
      memset(end, 0, sizeof before);
      check(reinterpret_cast<unsigned short*>(end - length * sizeof before), length);
      memcpy(end, &before, sizeof before);
    }
  }
}

TEST(UcsLevels, OddAddresses) {
  const Pages pages(0x0101);
  ForOddTexts(pages, [](const unsigned short* s, size_t length) {
    ASSERT_EQ(length, KEST::ucslen(s)) << s;
    ASSERT_EQ(nullptr, KEST::ucschr(s, 0x0102));
    ASSERT_EQ(s + length, KEST::ucschr(s, 0));
    ASSERT_EQ(s + length, KEST::ucsrchr(s, 0));
    ASSERT_EQ(length > 0 ? s + length - 1 : nullptr, KEST::ucsrchr(s, 0x0101));
    ASSERT_EQ(length > 0 ? s : nullptr, KEST::ucspbrk(s, KEST_TEXT("\u0101")));
    ASSERT_EQ(nullptr, KEST::ucspbrk(s, KEST_TEXT("\u0100\u0001")));
    const std::u16string same(length, u'\u0101');
    ASSERT_EQ(0, KEST::ucscmp(s, Units(same)));
    ASSERT_EQ(0, KEST::ucsicmp(Units(same), s));
    ASSERT_EQ(0x0101, KEST::ucscmp(Units(same + u'\u0101'), s));
    ASSERT_EQ(length > 0 ? s : nullptr, KEST::ucsstr(s, Units(same)));
    ASSERT_EQ(nullptr, KEST::ucsstr(s, Units(same + u'\u0101')));
    ASSERT_EQ(nullptr, KEST::ucsstr(s, KEST_TEXT("\u0101\u0102\u0101")));
  });
}

#endif

}  // namespace
