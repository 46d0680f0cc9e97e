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

constexpr kest_test::HtmlFunction kHtmlToPlain = {"HTML to plain", KestHtmlToPlain,
                                                  kest_test::PlainStrip};

}  // namespace

TEST(HtmlToPlain, Rows) {
  const HtmlRow kRows[] = {
      {u"<p>x<br>y&amp;z</p>", u"x\r\ny&z"},
      {u"a>b", u"a>b"},
      {u"a<b", u"a"},
      {u"", u""},
      {u"plain", u"plain"},
      {u"<HTML><BODY>a<BR>b\nc</BODY></HTML>", u"a\r\nb\nc"},
      // The one tag that means something, in any case.
      {u"a<BR>b", u"a\r\nb"},
      {u"a<br>b", u"a\r\nb"},
      {u"a<Br>b", u"a\r\nb"},
      {u"a<bR>b", u"a\r\nb"},
      {u"<BR><BR>", u"\r\n\r\n"},
      // All others are dropped.
      {u"a<br/>b", u"ab"},
      {u"a<BR />b", u"ab"},
      {u"a<BR >b", u"ab"},
      {u"a< BR>b", u"ab"},
      {u"a</BR>b", u"ab"},
      {u"a<BRR>b", u"ab"},
      {u"a<BBR>b", u"ab"},
      {u"a<B>b", u"ab"},
      {u"a<R>b", u"ab"},
      {u"a<>b", u"ab"},
      {u"a<P>b", u"ab"},
      {u"a<HR>b", u"ab"},
      {u"a<\u0142R>b", u"ab"},  // U+0142 has 'B' as its low byte
      {u"a<!-- x -->b", u"ab"},
      {u"a<p title=\"\r\n;&\">b", u"ab"},
      {u"a<x title=\">\">b", u"a\">b"},  // quotes mean nothing: the tag ends at the first '>'
      // A '<' in a tag starts another one.
      {u"a<b<BR>c", u"a\r\nc"},
      {u"a<BR<BR>c", u"a\r\nc"},
      {u"a<<BR>c", u"a\r\nc"},
      {u"a<<>c", u"ac"},
      {u"a<BR<>c", u"ac"},
      // One that never ends takes the rest.
      {u"a<", u"a"},
      {u"a<BR", u"a"},
      {u"a<b c &amp; d", u"a"},
      {u"a<b>c<d", u"ac"},
      {u"<", u""},
      // A '>' outside a tag is text.
      {u">", u">"},
      {u"a>>b<c>d>", u"a>>bd>"},
      // Entities: after the tags, so that they can make none, and once.
      {u"&lt;BR&gt;", u"<BR>"},
      {u"&lt;x&gt;", u"<x>"},
      {u"&amp;lt;", u"&lt;"},
      {u"a&nbsp;b&#65;c", u"abc"},
      {u"a&quot;b", u"a\"b"},
      {u"AT&T", u"AT"},
      // A tag goes before the entities are looked at.
      {u"&am<i>p;", u"&"},
      {u"&l<p>t</p>;x", u"<x"},
      {u"a&<BR>lt;b", u"ab"},
      {u"a&l<BR>b;c", u"ac"},
      {u"a&b<c>d;e", u"ae"},
      {u"<a&lt;b>c", u"c"},
      // Line ends are text.
      {u"a\r\nb\rc\nd", u"a\r\nb\rc\nd"},
      {u"\u0085\u00A0\u013C\u013E", u"\u0085\u00A0\u013C\u013E"},
  };
  kest_test::ExpectRows(kHtmlToPlain, kRows);
}

TEST(HtmlToPlain, NullIsEmptyText) {
  TBstr plain(KEST_TEXT("old"));
  KestHtmlToPlain(nullptr, plain);
  EXPECT_TRUE(plain.IsEmpty());
}

TEST(HtmlToPlain, EveryUnitAloneAndInATag) {
  for (int i = 1; i <= 0xFFFF; ++i) {
    const std::u16string unit(1, static_cast<char16_t>(i));
    for (const std::u16string& html :
         {unit, u"<" + unit + u"R>", u"<b" + unit + u">", u"<BR" + unit, u"x" + unit + u"BR>"}) {
      kest_test::ExpectResult(kHtmlToPlain, html);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(HtmlToPlain, EveryShortText) {
  kest_test::ExpectResultOfEveryText(kHtmlToPlain, u"<>BRr", 7);
  kest_test::ExpectResultOfEveryText(kHtmlToPlain, u"<>&;lt", 6);
}

TEST(HtmlToPlain, RandomTexts) { kest_test::ExpectResultOfRandomTexts(kHtmlToPlain); }

TEST(HtmlToPlain, UndoesPlainToHtml) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = kest_test::Random::Cases(1000); i > 0; --i) {
    std::u16string text;
    for (int length = random.Between(0, 200); length > 0; --length) {
      text += random.Between(0, 1) != 0 ? u"&<>\"\r\n;BR"[random.Next() % 9]
                                        : static_cast<char16_t>(random.Between(1, 0xFFFF));
    }
    TBstr s;
    KestPlainToHtml(Units(text), s);
    KestHtmlToPlain(s.GetString(), s);
    ASSERT_EQ(text, TextOf(s));
  }
}

TEST(HtmlToPlain, TheSourceMayBeTheResultsOwnText) {
  kest_test::ExpectResultOfOwnText(kHtmlToPlain);
}

TEST(HtmlToPlain, ReplacesTheWholeResult) { kest_test::ExpectAWholeNewText(kHtmlToPlain); }

// So many that work that grows with the square of the length would never end.
TEST(HtmlToPlain, LongRunsTakeLinearTime) {
  constexpr int kMany = 400000;
  const HtmlRow kRows[] = {
      {Repeat(u"<", kMany), u""},
      {Repeat(u">", kMany), Repeat(u">", kMany)},
      {Repeat(u"<>", kMany), u""},
      {Repeat(u"<BR>", kMany), Repeat(u"\r\n", kMany)},
      {Repeat(u"<BR", kMany), u""},
      {Repeat(u"<BR", kMany) + u">", u"\r\n"},
      {u"<" + Repeat(u"a", kMany) + u">b", u"b"},
      {Repeat(u"&lt", kMany) + u";", u"<"},
      {Repeat(u"a", kMany), Repeat(u"a", kMany)},
  };
  kest_test::ExpectRows(kHtmlToPlain, kRows);
}

TEST(HtmlToPlain, TakesABlockFrom128UnitsOn) {
  kest_test::ExpectABlockFrom128UnitsOn(kHtmlToPlain, u'<');
}

TEST(HtmlToPlain, WithoutMemoryTheResultIsEmptyOrStays) {
  kest_test::ExpectTheFailureRule(kHtmlToPlain, u"a<BR>b", 0);
  kest_test::ExpectTheFailureRule(kHtmlToPlain, std::u16string(127, u'a'), 0);
  // Long with its tags only, and long without them.
  kest_test::ExpectTheFailureRule(kHtmlToPlain, u"a" + Repeat(u"<i>", 100), 1);
  kest_test::ExpectTheFailureRule(kHtmlToPlain, u"a<br>" + Repeat(u"a", 128), 2);
}
