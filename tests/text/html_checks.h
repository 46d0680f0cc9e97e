// The HTML functions held against their model, and texts to try.

#ifndef KEST_TESTS_TEXT_HTML_CHECKS_H
#define KEST_TESTS_TEXT_HTML_CHECKS_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kest/text.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"
#include "text/html_model.h"

namespace kest_test {

// One of the four functions and its model.
struct HtmlFunction {
  const char* name;
  void (*function)(const unsigned short* source, KEST::TBstr& result);
  std::u16string (*model)(const std::u16string& source);
};

inline void ExpectResult(const HtmlFunction& tested, const std::u16string& source) {
  KEST::TBstr result(KEST_TEXT("old"));
  tested.function(Units(source), result);
  ASSERT_EQ(tested.model(source), TextOf(result))
      << tested.name << " of " << testing::PrintToString(source);
  ASSERT_EQ(0, result.GetString()[result.GetLength()]);
}

struct HtmlRow {
  std::u16string source, result;
};

template <size_t count>
void ExpectRows(const HtmlFunction& tested, const HtmlRow (&rows)[count]) {
  for (const HtmlRow& row : rows) {
    KEST::TBstr result(KEST_TEXT("old"));
    tested.function(Units(row.source), result);
    // Long texts differ in what no one wants to read.
    EXPECT_TRUE(row.result == TextOf(result))
        << testing::PrintToString(row.source.substr(0, 80)) << " gives "
        << testing::PrintToString(TextOf(result).substr(0, 80));
  }
}

inline std::u16string Repeat(const std::u16string& text, int count) {
  std::u16string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

// Every text of up to longest units over the alphabet.
inline void ExpectResultOfEveryText(const HtmlFunction& tested, const std::u16string& alphabet,
                                    size_t longest) {
  std::vector<size_t> digits;
  while (digits.size() <= longest) {
    std::u16string text;
    for (size_t digit : digits) text += alphabet[digit];
    ExpectResult(tested, text);
    if (testing::Test::HasFatalFailure()) return;
    size_t place = 0;
    while (place < digits.size() && ++digits[place] == alphabet.size()) digits[place++] = 0;
    if (place == digits.size()) digits.push_back(0);
  }
}

// Random texts of pieces of markup, whole and broken, among units that are none.
inline void ExpectResultOfRandomTexts(const HtmlFunction& tested) {
  static const std::u16string kPieces[] = {
      u"&",      u"&",      u"<",      u"<",      u">",      u">",      u"\"",     u";",
      u";",      u"#",      u" ",      u"\n",     u"\r",     u"\r\n",   u"0",      u"65",
      u"x",      u"amp",    u"lt",     u"quot",   u"B",      u"R",      u"/",      u"\u0085",
      u"\u00A0", u"\u0126", u"\u013C", u"\u223C", u"\xD83D", u"\xDE00", u"\uFFFF", u"&amp;",
      u"&lt;",   u"&gt;",   u"&quot;", u"&nbsp;", u"&AMP;",  u"&#38;",  u"<BR>",   u"<br>",
      u"<Br/>",  u"<p>",    u"</p>",   u"<!--",   u"&amp",   u"<BR",
  };
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = Random::Cases(); i > 0; --i) {
    std::u16string text;
    // Now and then around the length from which the text is too long for the stack.
    if (random.Between(0, 9) == 0) text.assign(static_cast<size_t>(random.Between(110, 130)), u'a');
    for (int pieces = random.Between(0, 12); pieces > 0; --pieces) {
      text.insert(random.Next() % (text.size() + 1), kPieces[random.Next() % std::size(kPieces)]);
    }
    ExpectResult(tested, text);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// The source anywhere in the result's own text, in blocks of their own and in long ones.
inline void ExpectResultOfOwnText(const HtmlFunction& tested) {
  const std::u16string text = u"a&lt;<BR>\"b\r\n&<i>x</i>>c&amp;&nbsp;";
  for (const std::u16string& whole : {text, text + std::u16string(150, u'x') + text}) {
    for (size_t start = 0; start <= whole.size(); ++start) {
      KEST::TBstr s = Bstr(whole);
      tested.function(s.GetString() + start, s);
      ASSERT_EQ(tested.model(whole.substr(start)), TextOf(s)) << tested.name << ' ' << start;
    }
  }
}

// What is left of a string that held other text, zero units and an 8-bit copy; and what a source
// holds behind its terminator.
inline void ExpectAWholeNewText(const HtmlFunction& tested) {
  const std::u16string source(u"a<b>\"c\" &gt;\0behind", 19);
  KEST::TBstr result = Bstr(std::u16string(u"old\0text, which is longer than the new one", 42));
  result.GetMultibyteString();
  tested.function(Units(source), result);
  const std::u16string expected = tested.model(source.c_str());
  EXPECT_EQ(expected, TextOf(result)) << tested.name;
  EXPECT_EQ(std::string(expected.begin(), expected.end()), result.GetMultibyteString());
}

// Source texts around the length from which a temporary block is taken: of letters, which all come
// out, and of opening, of which nothing is left, so that every request is for that block.
inline void ExpectABlockFrom128UnitsOn(const HtmlFunction& tested, char16_t opening) {
  TestAllocator allocator;
  for (size_t length = 120; length <= 140; ++length) {
    KEST::TBstr result;
    ExpectResult(tested, std::u16string(length, u'a'));
    allocator.Reset();
    tested.function(Units(std::u16string(length, opening)), result);
    EXPECT_EQ(length <= 127 ? 0 : 1, allocator.Requests()) << length;
    EXPECT_EQ(length <= 127 ? 0 : 2 * (length + 1), allocator.LastSize()) << length;
    EXPECT_EQ(0, allocator.Live()) << length;
  }
}

// With every request refused in turn: the right text; or no text; or, for as long as the first
// temporaries requests go, the old one.
inline void ExpectTheFailureRule(const HtmlFunction& tested, const std::u16string& source,
                                 int temporaries) {
  SCOPED_TRACE(tested.name + testing::PrintToString(source));
  ForEachRefusedRequest([&](TestAllocator& allocator) {
    KEST::TBstr result(KEST_TEXT("old"));
    if (result.IsEmpty()) return;
    const int before = allocator.Requests(), refused = allocator.Refused();
    tested.function(Units(source), result);
    const int requests = allocator.Requests() - before;
    if (allocator.Refused() == refused) {
      EXPECT_EQ(tested.model(source), TextOf(result));
      EXPECT_EQ(temporaries + 1, requests);
    } else {
      EXPECT_EQ(requests <= temporaries ? u"old" : u"", TextOf(result)) << requests;
    }
  });
}

}  // namespace kest_test

#endif  // KEST_TESTS_TEXT_HTML_CHECKS_H
