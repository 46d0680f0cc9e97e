// The HTML functions on texts of all lengths around those of vectors: the text and its result each
// end where nothing can be read or written.

#include <gtest/gtest.h>

#include "kest/text.h"
#include "support/guarded_hooks.h"
#include "text/html_checks.h"

namespace {

using KEST::TBstr;
using kest_test::GuardedBlock;
using kest_test::GuardedHooks;
using kest_test::HtmlFunction;

constexpr HtmlFunction kFunctions[] = {
    {"escape", KestEntityEscape, kest_test::PlainEscape},
    {"unescape", KestEntityUnescape, kest_test::PlainUnescape},
    {"plain to HTML", KestPlainToHtml, kest_test::PlainDocument},
    {"HTML to plain", KestHtmlToPlain, kest_test::PlainStrip},
};

void ExpectGuarded(const HtmlFunction& tested, const std::u16string& text) {
  const GuardedBlock<unsigned short> source(text + u'\0');
  GuardedHooks hooks;
  TBstr result;
  tested.function(source.Get(), result);
  ASSERT_TRUE(tested.model(text) == kest_test::TextOf(result))
      << tested.name << " of " << testing::PrintToString(text);
}

void ExpectEachGuarded(const std::u16string& text) {
  for (const HtmlFunction& tested : kFunctions) {
    ExpectGuarded(tested, text);
    if (testing::Test::HasFatalFailure()) return;
  }
}

constexpr size_t kLongest = 70;

}  // namespace

TEST(HtmlLevels, OneOddUnitAtEachPlace) {
  for (const char16_t unit : {u'&', u'<', u'>', u'"', u';', u'\u2626', u'\u3C3C'}) {
    for (size_t length = 0; length <= kLongest; ++length) {
      for (size_t place = 0; place < length; ++place) {
        std::u16string text(length, u'a');
        text[place] = unit;
        ExpectGuarded(kFunctions[0], text);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(HtmlLevels, AnEntityATagAndALineEndAtEachPlace) {
  for (const std::u16string piece : {u"&amp;", u"&nbsp;", u"<br>", u"<p>", u"\r\n", u"&", u"<"}) {
    for (size_t length = 0; length <= kLongest; ++length) {
      ExpectEachGuarded(std::u16string(length, u'a') + piece +
                        std::u16string(kLongest - length, u'b'));
      ExpectEachGuarded(std::u16string(length, u'a') + piece);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(HtmlLevels, MarkupAlone) {
  for (const char16_t unit : {u'&', u'<', u'>', u'"', u';', u'\r', u'\n'}) {
    for (size_t length = 0; length <= kLongest; ++length) {
      ExpectEachGuarded(std::u16string(length, unit));
      if (HasFatalFailure()) return;
    }
  }
}

TEST(HtmlLevels, RandomTextsOfAllLengths) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  constexpr char16_t kUnits[] = u"&<>\"&<>\";\r\nab\u0126\u263C\u3E3E\uFF22";
  for (int length = 0; length <= 300; ++length) {
    // From none to nothing but markup.
    for (int share = 0; share <= 8; share += 2) {
      std::u16string text(static_cast<size_t>(length), u'a');
      for (char16_t& unit : text) {
        if (random.Between(1, 8) <= share) unit = kUnits[random.Next() % (std::size(kUnits) - 1)];
      }
      ExpectEachGuarded(text);
      if (HasFatalFailure()) return;
    }
  }
}
