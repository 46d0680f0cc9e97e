#include <gtest/gtest.h>

#include "kest/text.h"
#include "support/test_allocator.h"
#include "support/text.h"
#include "text/html_checks.h"

using KEST::TBstr;
using kest_test::HtmlRow;
using kest_test::Repeat;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

constexpr kest_test::HtmlFunction kEscape = {"escape", KestEntityEscape, kest_test::PlainEscape};
constexpr kest_test::HtmlFunction kUnescape = {"unescape", KestEntityUnescape,
                                               kest_test::PlainUnescape};

// So many that work that grows with the square of the length would never end.
constexpr int kMany = 400000;

}  // namespace

TEST(EntityEscape, Rows) {
  const HtmlRow kRows[] = {
      {u"a<b & \"c\">", u"a&lt;b &amp; &quot;c&quot;&gt;"},
      {u"&amp;", u"&amp;amp;"},
      {u"&lt;", u"&amp;lt;"},
      {u"", u""},
      {u"&", u"&amp;"},
      {u"<", u"&lt;"},
      {u">", u"&gt;"},
      {u"\"", u"&quot;"},
      {u"&<>\"", u"&amp;&lt;&gt;&quot;"},
      {u"\"><&", u"&quot;&gt;&lt;&amp;"},
      {u"x&", u"x&amp;"},
      {u"&x", u"&amp;x"},
      {u"plain", u"plain"},
      {u"'", u"'"},                        // apostrophes are no markup
      {u"a\r\nb", u"a\r\nb"},              // nor are line ends
      {u"\u00E9\u0126", u"\u00E9\u0126"},  // U+0126 has '&' as its low byte
  };
  kest_test::ExpectRows(kEscape, kRows);
}

TEST(EntityEscape, NullIsEmptyText) {
  TBstr out(KEST_TEXT("old"));
  KestEntityEscape(nullptr, out);
  EXPECT_TRUE(out.IsEmpty());
}

TEST(EntityEscape, EveryUnit) {
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    kest_test::ExpectResult(kEscape, std::u16string(1, static_cast<char16_t>(unit)));
    if (HasFatalFailure()) return;
  }
}

TEST(EntityEscape, EveryShortText) { kest_test::ExpectResultOfEveryText(kEscape, u"&<>\";a", 5); }

TEST(EntityEscape, RandomTexts) { kest_test::ExpectResultOfRandomTexts(kEscape); }

TEST(EntityEscape, TheSourceMayBeTheResultsOwnText) { kest_test::ExpectResultOfOwnText(kEscape); }

TEST(EntityEscape, ReplacesTheWholeResult) { kest_test::ExpectAWholeNewText(kEscape); }

TEST(EntityEscape, LongRunsTakeLinearTime) {
  for (const kest_test::MarkupRow& row : kest_test::kMarkupRows) {
    TBstr out;
    KestEntityEscape(Units(Repeat(row.character, kMany)), out);
    EXPECT_TRUE(Repeat(row.entity, kMany) == TextOf(out));
  }
}

TEST(EntityEscape, BuildsTheResultInOneBlock) {
  TestAllocator allocator;
  TBstr out;
  KestEntityEscape(KEST_TEXT("<<<&&&\"\"\"x"), out);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(2u * (3 * 4 + 3 * 5 + 3 * 6 + 1) + 6, allocator.LastSize());
}

// As without the escaping: nothing to lose when there is no memory.
TEST(EntityEscape, TextThatStaysTheSameTakesNoNewBlock) {
  TestAllocator allocator;
  TBstr out(KEST_TEXT("plain text"));
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  KestEntityEscape(out.GetString(), out);
  EXPECT_EQ(u"plain text", TextOf(out));
}

TEST(EntityEscape, WithoutMemoryTheResultIsEmpty) {
  kest_test::ExpectTheFailureRule(kEscape, u"a&b", 0);
  kest_test::ExpectTheFailureRule(kEscape, u"nothing to escape", 0);
  kest_test::ExpectTheFailureRule(kEscape, Repeat(u"<>", 100), 0);
}

TEST(EntityEscape, WithoutMemoryTheSourcesOwnStringIsEmpty) {
  TestAllocator allocator;
  TBstr out(KEST_TEXT("a&b"));
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  KestEntityEscape(out.GetString(), out);
  EXPECT_TRUE(out.IsEmpty());
}

TEST(EntityUnescape, Rows) {
  const HtmlRow kRows[] = {
      {u"&lt;x&gt; &nbsp;y &AMP;", u"<x> y "},
      {u"AT&T", u"AT"},
      {u"", u""},
      {u"&amp;", u"&"},
      {u"&lt;", u"<"},
      {u"&gt;", u">"},
      {u"&quot;", u"\""},
      {u"&amp;&lt;&gt;&quot;", u"&<>\""},
      {u"&amp;lt;", u"&lt;"},  // once only
      {u"&amp;amp;", u"&amp;"},
      {u"plain;", u"plain;"},  // a ';' outside an entity is text
      {u"<p>", u"<p>"},        // tags are none of its business
      // Unknown ones are deleted.
      {u"a&nbsp;b", u"ab"},
      {u"a&#65;b", u"ab"},
      {u"a&#38;b", u"ab"},
      {u"a&;b", u"ab"},
      {u"a& ;b", u"ab"},
      {u"a&apos;b", u"ab"},
      {u"a&ltx;b", u"ab"},
      {u"a&l;b", u"ab"},
      {u"a&am;b", u"ab"},
      {u"a&ampx;b", u"ab"},
      {u"a& amp;b", u"ab"},
      {u"a&amp ;b", u"ab"},
      {u"a&Lt;b", u"ab"},
      {u"a&LT;b", u"ab"},
      {u"a&qUot;b", u"ab"},
      {u"a&any thing\r\nat all;b", u"ab"},
      {u"a&\u0061\u016Dp;b", u"ab"},  // U+016D has 'm' as its low byte
      // Cut short by the end: everything from there.
      {u"a&", u"a"},
      {u"a&amp", u"a"},
      {u"a&lt b c d", u"a"},
      {u"&", u""},
      // Cut short by another '&': what stands between goes.
      {u"a&b&lt;c", u"a<c"},
      {u"a&&lt;c", u"a<c"},
      {u"a&amp&amp;c", u"a&c"},
      {u"a&lt&", u"a"},
      {u"&&&&", u""},
      {u"&&;;", u";"},
  };
  kest_test::ExpectRows(kUnescape, kRows);
}

TEST(EntityUnescape, NullIsEmptyText) {
  TBstr out(KEST_TEXT("old"));
  KestEntityUnescape(nullptr, out);
  EXPECT_TRUE(out.IsEmpty());
}

TEST(EntityUnescape, EveryUnitAloneAndInAnEntity) {
  for (int i = 1; i <= 0xFFFF; ++i) {
    const std::u16string unit(1, static_cast<char16_t>(i));
    for (const std::u16string& text :
         {unit, u"&" + unit + u"t;", u"&lt" + unit, u"&l" + unit + u";"}) {
      kest_test::ExpectResult(kUnescape, text);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(EntityUnescape, EveryShortText) { kest_test::ExpectResultOfEveryText(kUnescape, u"&;lgt", 7); }

TEST(EntityUnescape, EveryProperPartOfAnEntityIsUnknown) {
  for (const kest_test::MarkupRow& row : kest_test::kMarkupRows) {
    const std::u16string name = row.entity.substr(1, row.entity.size() - 2);
    for (size_t first = 0; first < name.size(); ++first) {
      for (size_t count = 0; count <= name.size() - first; ++count) {
        if (count == name.size()) continue;
        TBstr out;
        KestEntityUnescape(Units(u"a&" + name.substr(first, count) + u";b"), out);
        EXPECT_EQ(u"ab", TextOf(out)) << testing::PrintToString(name.substr(first, count));
      }
    }
  }
}

TEST(EntityUnescape, RandomTexts) { kest_test::ExpectResultOfRandomTexts(kUnescape); }

TEST(EntityUnescape, UndoesEscape) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = kest_test::Random::Cases(1000); i > 0; --i) {
    std::u16string text;
    for (int length = random.Between(0, 200); length > 0; --length) {
      text += random.Between(0, 1) != 0 ? u"&<>\";amplt"[random.Next() % 10]
                                        : static_cast<char16_t>(random.Between(1, 0xFFFF));
    }
    TBstr s;
    KestEntityEscape(Units(text), s);
    KestEntityUnescape(s.GetString(), s);
    ASSERT_EQ(text, TextOf(s));
  }
}

TEST(EntityUnescape, TheSourceMayBeTheResultsOwnText) {
  kest_test::ExpectResultOfOwnText(kUnescape);
}

TEST(EntityUnescape, ReplacesTheWholeResult) { kest_test::ExpectAWholeNewText(kUnescape); }

TEST(EntityUnescape, LongRunsTakeLinearTime) {
  const HtmlRow kRows[] = {
      {Repeat(u"&", kMany), u""},
      {Repeat(u";", kMany), Repeat(u";", kMany)},
      {Repeat(u"&;", kMany), u""},
      {Repeat(u"&amp;", kMany), Repeat(u"&", kMany)},
      {Repeat(u"&quot", kMany), u""},
      {u"&" + Repeat(u"a", kMany) + u";b", u"b"},
      {u"&lt;" + Repeat(u"&lt", kMany) + u";", u"<<"},
      {Repeat(u"a", kMany) + u"&gt;", Repeat(u"a", kMany) + u">"},
  };
  kest_test::ExpectRows(kUnescape, kRows);
}

TEST(EntityUnescape, TakesABlockFrom128UnitsOn) {
  kest_test::ExpectABlockFrom128UnitsOn(kUnescape, u'&');
}

TEST(EntityUnescape, WithoutMemoryTheResultIsEmptyOrStays) {
  kest_test::ExpectTheFailureRule(kUnescape, u"a&lt;bc", 0);
  kest_test::ExpectTheFailureRule(kUnescape, std::u16string(127, u'a'), 0);
  kest_test::ExpectTheFailureRule(kUnescape, std::u16string(128, u'a'), 1);
  kest_test::ExpectTheFailureRule(kUnescape, u"&lt;" + std::u16string(500, u'a'), 1);
}
