#include <gtest/gtest.h>

#include "kest/text.h"
#include "support/test_allocator.h"
#include "support/text.h"
#include "text/html_checks.h"

using KEST::TBstr;
using kest_test::Repeat;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

constexpr kest_test::HtmlFunction kPlainToHtml = {"plain to HTML", KestPlainToHtml,
                                                  kest_test::PlainDocument};

const std::u16string kHead = u"<HTML><BODY>";
const std::u16string kTail = u"</BODY></HTML>";

}  // namespace

TEST(PlainToHtml, Rows) {
  struct {
    std::u16string plain, body;
  } const kRows[] = {
      {u"a\r\nb\nc", u"a<BR>b\nc"},
      {u"", u""},
      {u"plain", u"plain"},
      {u"\r\n", u"<BR>"},
      {u"\r\n\r\n", u"<BR><BR>"},
      {u"\r\nx\r\n", u"<BR>x<BR>"},
      // CR and LF alone, and in the other order, stay.
      {u"a\rb", u"a\rb"},
      {u"a\nb", u"a\nb"},
      {u"a\n\rb", u"a\n\rb"},
      {u"a\r\r\nb", u"a\r<BR>b"},
      {u"a\r\n\nb", u"a<BR>\nb"},
      {u"a\r", u"a\r"},
      {u"\n", u"\n"},
      {u"a\r \nb", u"a\r \nb"},
      // The line breaks are put in after the escaping.
      {u"<BR>", u"&lt;BR&gt;"},
      {u"<\r\n>", u"&lt;<BR>&gt;"},
      {u"&\r\n&amp;", u"&amp;<BR>&amp;amp;"},
      {u"\"\r\n\"", u"&quot;<BR>&quot;"},
      // No conversion takes place in the text.
      {u"%s %d %% %n", u"%s %d %% %n"},
      {u"\u0085\u00A0\u2028\u010D\u010A", u"\u0085\u00A0\u2028\u010D\u010A"},
  };
  for (const auto& row : kRows) {
    TBstr html(KEST_TEXT("old"));
    KestPlainToHtml(Units(row.plain), html);
    EXPECT_EQ(kHead + row.body + kTail, TextOf(html));
  }
}

TEST(PlainToHtml, NullIsEmptyText) {
  TBstr html(KEST_TEXT("old"));
  KestPlainToHtml(nullptr, html);
  EXPECT_EQ(u"<HTML><BODY></BODY></HTML>", TextOf(html));
}

TEST(PlainToHtml, EveryUnit) {
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    kest_test::ExpectResult(kPlainToHtml, std::u16string(1, static_cast<char16_t>(unit)));
    if (HasFatalFailure()) return;
  }
}

TEST(PlainToHtml, EveryShortText) {
  kest_test::ExpectResultOfEveryText(kPlainToHtml, u"\r\n&<a", 6);
}

TEST(PlainToHtml, RandomTexts) { kest_test::ExpectResultOfRandomTexts(kPlainToHtml); }

TEST(PlainToHtml, TheSourceMayBeTheResultsOwnText) {
  kest_test::ExpectResultOfOwnText(kPlainToHtml);
}

TEST(PlainToHtml, ReplacesTheWholeResult) { kest_test::ExpectAWholeNewText(kPlainToHtml); }

// So many that work that grows with the square of the length would never end.
TEST(PlainToHtml, LongRunsTakeLinearTime) {
  constexpr int kMany = 400000;
  const kest_test::HtmlRow kRows[] = {
      {Repeat(u"\r\n", kMany), kHead + Repeat(u"<BR>", kMany) + kTail},
      {Repeat(u"\n\r", kMany), kHead + u"\n" + Repeat(u"<BR>", kMany - 1) + u"\r" + kTail},
      {Repeat(u"\r", kMany), kHead + Repeat(u"\r", kMany) + kTail},
      {Repeat(u"\n", kMany), kHead + Repeat(u"\n", kMany) + kTail},
      {Repeat(u"\"", kMany), kHead + Repeat(u"&quot;", kMany) + kTail},
      {Repeat(u"a", kMany), kHead + Repeat(u"a", kMany) + kTail},
  };
  kest_test::ExpectRows(kPlainToHtml, kRows);
}

TEST(PlainToHtml, BuildsTheResultInOneBlock) {
  TestAllocator allocator;
  TBstr html;
  KestPlainToHtml(KEST_TEXT("<\r\n&\r\n\""), html);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(2u * (12 + 4 + 4 + 5 + 4 + 6 + 14) + 6, allocator.LastSize());
}

TEST(PlainToHtml, WithoutMemoryTheResultIsEmpty) {
  kest_test::ExpectTheFailureRule(kPlainToHtml, u"", 0);
  kest_test::ExpectTheFailureRule(kPlainToHtml, u"plain", 0);
  kest_test::ExpectTheFailureRule(kPlainToHtml, u"a\r\n&b", 0);
  kest_test::ExpectTheFailureRule(kPlainToHtml, std::u16string(500, u'<'), 0);
}
