#include <gtest/gtest.h>
#include <string.h>

#include "kest/string.h"
#include "kest/text.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Bstr;
using kest_test::TestAllocator;
using kest_test::TextOf;

TEST(Encoding, BytesOfATextInEachEncoding) {
  const TBstr text(KEST_TEXT("a\u00E9\u20AC\0b"), 5);
  const TBstr empty;
  struct {
    const unsigned short* name;
    int length;
  } const kRows[] = {
      {nullptr, 5},
      {KEST::kAsciiEncoding, 5},
      {KEST::kLatin1Encoding, 5},
      {KEST::kUtf8Encoding, 6},  // up to the first zero unit
      {KEST::kUnicodeEncoding, 10},
      {KEST_TEXT("US-ASCII"), 5},
      {KEST_TEXT("Iso-8859-1"), 5},
      {KEST_TEXT("UTF-8"), 6},
      {KEST_TEXT("Unicode-2-0"), 10},
      {KEST_TEXT(""), 0},
      {KEST_TEXT("utf8"), 0},
      {KEST_TEXT("utf-8 "), 0},
      {KEST_TEXT("iso-8859-15"), 0},
      {KEST_TEXT("en"), 0},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.length, text.GetEncodedByteLength(row.name)) << TextOf(TBstr(row.name)).size();
    EXPECT_EQ(0, empty.GetEncodedByteLength(row.name));
  }
}

// The length came out negative.
TEST(FormerBug, MoreBytesThanAnIntCountsAreZero) {
  struct {
    unsigned int prefix;  // the length in bytes, which no memory stands behind
    int length;
  } constexpr kRows[] = {{0x7FFFFFFE, 0x7FFFFFFE}, {0x80000000, 0}, {0xFFFFFFF8, 0}};
  for (const auto& row : kRows) {
    unsigned short units[4] = {};
    memcpy(units, &row.prefix, sizeof(row.prefix));
    TBstr text;
    text.Attach(units + 2);
    EXPECT_EQ(row.length, text.GetEncodedByteLength(KEST::kUnicodeEncoding));
    text.Detach();
  }
}

TEST(Encoding, TheNarrowestThatHoldsTheText) {
  struct {
    std::u16string text;
    const char16_t* encoding;
  } const kRows[] = {
      {u"", u"us-ascii"},
      {u"abc", u"us-ascii"},
      {u"\x7F", u"us-ascii"},
      {u"\x80", u"iso-8859-1"},
      {u"\u00E9", u"iso-8859-1"},
      {u"abc\xFF", u"iso-8859-1"},
      {u"\u0100", u"utf-8"},
      {u"abc\u20AC", u"utf-8"},
      {u"\u20AC"
       u"abc",
       u"utf-8"},
      {u"\xFF\u0100", u"utf-8"},
      {u"\xE9\u20AC\xE9", u"utf-8"},
      {u"\uFFFF", u"utf-8"},
      {std::u16string(u"a\0\xE9", 3), u"iso-8859-1"},  // by count
      {std::u16string(u"\0", 1), u"us-ascii"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.encoding, TextOf(Bstr(row.text).GetBestEncoding()))
        << testing::PrintToString(row.text);
  }
}

TEST(Encoding, NoMemoryForTheNameGivesAnEmptyOne) {
  const TBstr text(KEST_TEXT("abc"));
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_TRUE(text.GetBestEncoding().IsEmpty());
}
