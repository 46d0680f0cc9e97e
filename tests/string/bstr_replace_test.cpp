#include <gtest/gtest.h>

#include <random>

#include "kest/string.h"
#include "support/guarded_hooks.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Bstr;
using kest_test::ForEachRefusedRequest;
using kest_test::GuardedBlock;
using kest_test::GuardedHooks;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

// One match after the other, left to right, each on its own.
int PlainReplace(std::u16string& text, const std::u16string& from, const std::u16string& to) {
  int count = 0;
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
    ++count;
  }
  return count;
}

// All texts, the result included, each end where nothing can be read or written.
void ExpectGuarded(const std::u16string& text, const std::u16string& from,
                   const std::u16string& to) {
  std::u16string model = text;
  const int count = PlainReplace(model, from, to);
  const GuardedBlock<unsigned short> what(from + u'\0'), with(to + u'\0');
  const GuardedHooks hooks;
  TBstr s = Bstr(text);
  ASSERT_EQ(count, s.Replace(what.Get(), with.Get())) << testing::PrintToString(text);
  ASSERT_TRUE(model == TextOf(s)) << testing::PrintToString(text) << testing::PrintToString(from);
  ASSERT_EQ(0, s.GetString()[model.size()]);
}

}  // namespace

TEST(BstrReplace, Rows) {
  struct {
    std::u16string text, from, to;
    int count;
    std::u16string result;
  } const kRows[] = {
      {u"aaaa", u"aa", u"a", 2, u"aa"},
      {u"aa", u"a", u"aa", 2, u"aaaa"},  // what is put in is not searched
      {u"aaa", u"aa", u"b", 1, u"ba"},   // matches do not overlap
      {u"aab", u"ab", u"b", 1, u"ab"},
      {u"abab", u"ab", u"ba", 2, u"baba"},
      {u"one two one", u"one", u"three", 2, u"three two three"},
      {u"one two one", u"one", u"1", 2, u"1 two 1"},
      {u"one two one", u" ", u"", 2, u"onetwoone"},
      {u"abc", u"abc", u"x", 1, u"x"},
      {u"abc", u"abc", u"", 1, u""},
      {u"aaa", u"a", u"", 3, u""},
      {u"abc", u"b", u"b", 1, u"abc"},
      {u"abc", u"abcd", u"x", 0, u"abc"},  // longer than the text
      {u"abc", u"x", u"y", 0, u"abc"},
      {u"abc", u"A", u"y", 0, u"abc"},
      {u"abc", u"", u"y", 0, u"abc"},
      {u"", u"a", u"y", 0, u""},
      {u"", u"", u"y", 0, u""},
      // The search ends at the first zero unit; what follows is kept.
      {std::u16string(u"a\0a", 3), u"a", u"xy", 1, std::u16string(u"xy\0a", 4)},
      {std::u16string(u"aa\0aa", 5), u"a", u"", 2, std::u16string(u"\0aa", 3)},
      {std::u16string(u"a\0a", 3), u"a", u"b", 1, std::u16string(u"b\0a", 3)},
      {std::u16string(u"b\0a", 3), u"a", u"xy", 0, std::u16string(u"b\0a", 3)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.text) + testing::PrintToString(row.from));
    TBstr s = Bstr(row.text);
    EXPECT_EQ(row.count, s.Replace(Units(row.from), Units(row.to)));
    EXPECT_EQ(row.result, TextOf(s));
    EXPECT_EQ(0, s.GetString()[s.GetLength()]);
  }
}

TEST(BstrReplace, NullTextIsEmptyText) {
  const unsigned short* null = nullptr;
  TBstr s(KEST_TEXT("abca"));
  EXPECT_EQ(0, s.Replace(null, KEST_TEXT("x")));
  EXPECT_EQ(0, s.Replace(null, null));
  EXPECT_EQ(u"abca", TextOf(s));
  EXPECT_EQ(2, s.Replace(KEST_TEXT("a"), null));
  EXPECT_EQ(u"bc", TextOf(s));
}

TEST(BstrReplace, BuildsTheResultInOneBlock) {
  TestAllocator allocator;
  struct {
    const unsigned short *from, *to;
    int requests;
    unsigned int size;
  } const kRows[] = {
      {KEST_TEXT("a"), KEST_TEXT("xyz"), 1, 2 * 12 + 6},
      {KEST_TEXT("ab"), KEST_TEXT("x"), 1, 2 * 3 + 6},
      {KEST_TEXT("ab"), KEST_TEXT("xy"), 0, 0},
      {KEST_TEXT("ababab"), KEST_TEXT(""), 0, 0},
      {KEST_TEXT("x"), KEST_TEXT("yz"), 0, 0},
  };
  for (const auto& row : kRows) {
    TBstr s(KEST_TEXT("ababab"));
    allocator.Reset();
    s.Replace(row.from, row.to);
    EXPECT_EQ(row.requests, allocator.Requests());
    EXPECT_EQ(row.size, allocator.LastSize());
    EXPECT_EQ(row.size == 0 ? s.GetLength() : (static_cast<int>(row.size) - 6) / 2, s.GetLength());
  }
}

TEST(BstrReplace, AFailureLeavesTheStringEmptyAndReplacesNothing) {
  for (const char16_t* to : {u"xy", u"xyz", u"x", u""}) {
    ForEachRefusedRequest([to](TestAllocator& allocator) {
      TBstr s(KEST_TEXT("ab-ab"));
      if (s.IsEmpty()) return;
      const int count = s.Replace(KEST_TEXT("ab"), Units(to));
      EXPECT_EQ(allocator.Refused() > 0 ? 0 : 2, count);
      EXPECT_EQ(allocator.Refused() > 0, s.IsEmpty());
    });
  }
}

// 2^16 times 2^16 + 1 units: the low 32 bits of the length would do for a block.
TEST(BstrReplace, AResultTooLongForAStringIsAFailure) {
  TBstr s(u'a', 0x10000);
  const std::u16string to(0x10001, u'b');
  TestAllocator allocator;
  EXPECT_EQ(0, s.Replace(KEST_TEXT("a"), Units(to)));
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
  EXPECT_EQ(0, allocator.Requests());
}

// Both arguments anywhere in the text itself, all texts of up to 5 units over two letters.
TEST(BstrReplace, ArgumentsMayLieInTheText) {
  for (unsigned int length = 1; length <= 5; ++length) {
    for (unsigned int bits = 0; bits < 1u << length; ++bits) {
      std::u16string text(length, u'a');
      for (unsigned int i = 0; i < length; ++i) {
        if (bits >> i & 1) text[i] = u'b';
      }
      for (unsigned int from = 0; from <= length; ++from) {
        for (unsigned int to = 0; to <= length; ++to) {
          SCOPED_TRACE(testing::PrintToString(text) + std::to_string(from) + std::to_string(to));
          std::u16string model = text;
          const int expected =
              from == length ? 0 : PlainReplace(model, text.substr(from), text.substr(to));
          TBstr s = Bstr(text);
          ASSERT_EQ(expected, s.Replace(s.GetString() + from, s.GetString() + to));
          ASSERT_EQ(model, TextOf(s));

          // An argument of the same length from outside, for the change in place.
          const std::u16string other(length - from, u'c');
          model = text;
          if (from < length) PlainReplace(model, text.substr(from), other);
          s = Bstr(text);
          s.Replace(s.GetString() + from, Units(other));
          ASSERT_EQ(model, TextOf(s));

          model = text;
          const std::u16string same(length - to, u'b');
          if (to < length) PlainReplace(model, same, text.substr(to));
          s = Bstr(text);
          s.Replace(Units(same), s.GetString() + to);
          ASSERT_EQ(model, TextOf(s));
        }
      }
    }
  }
}

TEST(BstrReplace, AgreesWithAPlainModel) {
  std::mt19937 random(3);
  const auto draw = [&](unsigned int shortest, unsigned int longest) {
    std::u16string text(shortest + random() % (longest - shortest + 1), u'a');
    for (char16_t& unit : text) unit = static_cast<char16_t>(u'a' + random() % 2);
    return text;
  };
  for (int i = 0; i < 100000; ++i) {
    const std::u16string text = draw(0, 20);
    const std::u16string from = draw(1, 3);
    const std::u16string to = draw(0, 4);
    std::u16string model = text;
    const int count = PlainReplace(model, from, to);
    TBstr s = Bstr(text);
    ASSERT_EQ(count, s.Replace(Units(from), Units(to)));
    ASSERT_EQ(model, TextOf(s));
  }
}

TEST(BstrReplace, ALongTextTakesNoQuadraticTime) {
  TBstr s(u'a', 1 << 20);
  EXPECT_EQ(1 << 20, s.Replace(KEST_TEXT("a"), KEST_TEXT("xyz")));
  EXPECT_EQ(3 << 20, s.GetLength());
  EXPECT_EQ(1 << 20, s.Replace(KEST_TEXT("xyz"), KEST_TEXT("b")));
  EXPECT_EQ(TBstr(u'b', 1 << 20), s);
}

TEST(BstrReplace, OneMatchAtEachPlace) {
  for (const size_t matchLength : {1u, 2u, 3u, 16u, 17u, 33u}) {
    const std::u16string match = u"m" + std::u16string(matchLength - 1, u'n');
    for (const size_t newLength : {0u, 1u, 16u, 34u}) {
      const std::u16string with(newLength, u'w');
      for (size_t length = matchLength; length <= 72; length += 1 + length / 20) {
        for (size_t place = 0; place <= length - matchLength; place += 1 + place / 10) {
          std::u16string text(length, u'm');
          text.replace(place, matchLength, match);
          ExpectGuarded(text, match, with);
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST(BstrReplace, GuardedTextsOfAllLengths) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  const auto draw = [&](int shortest, int longest) {
    std::u16string text(static_cast<size_t>(random.Between(shortest, longest)), u'a');
    for (char16_t& unit : text) {
      if (random.Between(0, 2) == 0) unit = static_cast<char16_t>(random.Between('a', 'b'));
    }
    return text;
  };
  for (int length = 0; length <= 300; ++length) {
    for (int i = 0; i < 8; ++i) {
      ExpectGuarded(draw(length, length), draw(1, 5), draw(0, 20));
      if (HasFatalFailure()) return;
    }
  }
}

TEST(BstrReplace, ManyMatches) {
  for (const size_t count : {1023u, 1024u, 1025u, 2047u, 2048u, 2049u, 5000u}) {
    for (const std::u16string to : {u"", u"x", u"xy", u"xyz"}) {
      std::u16string text, model;
      for (size_t i = 0; i < count; ++i) {
        const std::u16string between(i % 5, u'-');
        text += between + u"ab";
        model += between + to;
      }
      text += u"end";
      model += u"end";
      TBstr s = Bstr(text);
      EXPECT_EQ(static_cast<int>(count), s.Replace(KEST_TEXT("ab"), Units(to)));
      EXPECT_TRUE(model == TextOf(s)) << count;
    }
  }
}

// What is not there, but for one unit in the middle everywhere.
TEST(BstrReplace, NearMatchesTakeNoQuadraticTime) {
  const std::u16string half(1 << 15, u'a');
  std::u16string text(1 << 20, u'a');
  TBstr s = Bstr(text);
  EXPECT_EQ(0, s.Replace(Units(half + u'b' + half), KEST_TEXT("x")));
  text += half + u'b' + half;
  s = Bstr(text);
  EXPECT_EQ(1, s.Replace(Units(half + u'b' + half), KEST_TEXT("x")));
  EXPECT_TRUE(std::u16string(1 << 20, u'a') + u'x' == TextOf(s));
}
