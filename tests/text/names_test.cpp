#include <dlfcn.h>
#include <gtest/gtest.h>

#include "kest/text.h"
#include "support/text.h"

namespace {

struct Row {
  const unsigned short* constant;
  const char* symbol;
  std::u16string value;
};

const Row kRows[] = {
    {KEST::kAsciiEncoding, "kAsciiEncoding", u"us-ascii"},
    {KEST::kLatin1Encoding, "kLatin1Encoding", u"iso-8859-1"},
    {KEST::kUtf8Encoding, "kUtf8Encoding", u"utf-8"},
    {KEST::kUnicodeEncoding, "kUnicodeEncoding", u"unicode-2-0"},
    {KEST::kEnglishLanguage, "kEnglishLanguage", u"en"},
    {KEST::kTextMimeType, "kTextMimeType", u"text"},
    {KEST::kTextPlainMimeType, "kTextPlainMimeType", u"text/plain"},
    {KEST::kTextZelRtfMimeType, "kTextZelRtfMimeType", u"text/x-zelrtf"},
};

}  // namespace

TEST(Names, Values) {
  for (const Row& row : kRows) {
    EXPECT_EQ(row.value, kest_test::TextOf(KEST::TBstr(row.constant))) << row.symbol;
  }
}

// A module that looks them up by name finds the text itself, not a pointer to it.
TEST(Names, AreArraysUnderTheirPlainNames) {
  for (const Row& row : kRows) {
    const auto* found = static_cast<const unsigned short*>(dlsym(RTLD_DEFAULT, row.symbol));
    ASSERT_NE(nullptr, found) << row.symbol;
    EXPECT_EQ(0, KEST::ucscmp(row.constant, found)) << row.symbol;
  }
}
