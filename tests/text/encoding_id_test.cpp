#include <gtest/gtest.h>
#include <limits.h>

#include "kest/text.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::ForEachRefusedRequest;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

constexpr int kUntouched = 0x5A5A5A5A;

struct {
  int number;
  std::u16string name;
} const kEncodings[] = {
    {0, u"us-ascii"},
    {2, u"unicode-2-0"},
    {3, u"iso-8859-1"},
    {13, u"utf-8"},
};

std::u16string NameOf(int number) {
  for (const auto& encoding : kEncodings) {
    if (encoding.number == number) return encoding.name;
  }
  return u"?";
}

void ExpectName(int number) {
  SCOPED_TRACE(number);
  const std::u16string expected = NameOf(number);
  TBstr name(KEST_TEXT("old"));
  EXPECT_EQ(expected != u"?" ? 1 : 0, KestZelToIsoEncoding(number, name));
  EXPECT_EQ(expected, TextOf(name));
}

void ExpectNumber(int expected, const std::u16string& name) {
  SCOPED_TRACE(testing::PrintToString(name));
  int number = kUntouched;
  EXPECT_EQ(expected >= 0 ? 1 : 0, KestIsoToZelEncoding(Units(name), &number));
  EXPECT_EQ(expected, number);
}

}  // namespace

TEST(EncodingId, NameOfEveryNumber) {
  for (int number = -300; number <= 300; ++number) ExpectName(number);
  for (int number : {INT_MIN, INT_MIN + 13, -0x10000, 0x10000, 0x1000D, INT_MAX - 1, INT_MAX}) {
    ExpectName(number);
  }
}

TEST(EncodingId, NumberOfEveryName) {
  for (const auto& encoding : kEncodings) ExpectNumber(encoding.number, encoding.name);
}

TEST(EncodingId, TheNameConstantsAreNames) {
  struct {
    const unsigned short* name;
    int number;
  } const kRows[] = {
      {KEST::kAsciiEncoding, 0},
      {KEST::kUnicodeEncoding, 2},
      {KEST::kLatin1Encoding, 3},
      {KEST::kUtf8Encoding, 13},
  };
  for (const auto& row : kRows) {
    int number = kUntouched;
    EXPECT_EQ(1, KestIsoToZelEncoding(row.name, &number));
    EXPECT_EQ(row.number, number);
    TBstr name;
    EXPECT_EQ(1, KestZelToIsoEncoding(row.number, name));
    EXPECT_EQ(0, name.Compare(row.name));
  }
}

TEST(EncodingId, WithoutANameItIsAscii) {
  int number = kUntouched;
  EXPECT_EQ(1, KestIsoToZelEncoding(nullptr, &number));
  EXPECT_EQ(0, number);
  ExpectNumber(0, u"");
}

TEST(EncodingId, CaseOfAsciiLettersDoesNotMatter) {
  ExpectNumber(0, u"US-ASCII");
  ExpectNumber(2, u"Unicode-2-0");
  ExpectNumber(3, u"ISO-8859-1");
  ExpectNumber(3, u"iSo-8859-1");
  ExpectNumber(13, u"UTF-8");
  // Each letter of each name in upper case.
  for (const auto& encoding : kEncodings) {
    for (size_t i = 0; i < encoding.name.size(); ++i) {
      std::u16string name = encoding.name;
      if (name[i] >= 'a' && name[i] <= 'z') name[i] = static_cast<char16_t>(name[i] - 32);
      ExpectNumber(encoding.number, name);
    }
  }
}

TEST(EncodingId, NamesAreComparedWhole) {
  for (const auto& encoding : kEncodings) {
    for (size_t i = 1; i < encoding.name.size(); ++i) {
      ExpectNumber(-1, encoding.name.substr(0, i));
      ExpectNumber(-1, encoding.name.substr(i));
    }
    for (const char16_t* other : {u" ", u"x", u"-", u"0", u"\t"}) {
      ExpectNumber(-1, encoding.name + other);
      ExpectNumber(-1, other + encoding.name);
    }
  }
}

// Any unit in the place of any other: only the letter itself, in either case, will do.
TEST(EncodingId, EveryUnitOfANameCounts) {
  for (const auto& encoding : kEncodings) {
    for (size_t i = 0; i < encoding.name.size(); ++i) {
      const int right = encoding.name[i];
      std::u16string name = encoding.name;
      for (int unit = 1; unit <= 0xFFFF; ++unit) {
        name[i] = static_cast<char16_t>(unit);
        const bool same =
            unit == right || (right >= 'a' && right <= 'z' && unit == right - 'a' + 'A');
        int number = kUntouched;
        ASSERT_EQ(same ? 1 : 0, KestIsoToZelEncoding(Units(name), &number)) << i << ' ' << unit;
        ASSERT_EQ(same ? encoding.number : -1, number);
      }
    }
  }
}

TEST(EncodingId, OtherNamesAreUnknown) {
  for (const char16_t* name :
       {u"utf8", u"utf-16", u"ascii", u"latin1", u"iso-8859-15", u"iso-8859-2", u"unicode", u"?"}) {
    ExpectNumber(-1, name);
  }
}

TEST(EncodingId, TheNameMayBeTheResultsOwnText) {
  TBstr text(KEST_TEXT("UTF-8"));
  int number = kUntouched;
  EXPECT_EQ(1, KestIsoToZelEncoding(text.GetString(), &number));
  EXPECT_EQ(1, KestZelToIsoEncoding(number, text));
  EXPECT_EQ(u"utf-8", TextOf(text));
}

// The 8-bit copy that the string had is not the new name's.
TEST(EncodingId, TheNameReplacesTheWholeString) {
  TBstr name(KEST_TEXT("old name"));
  name.GetMultibyteString();
  KestZelToIsoEncoding(3, name);
  EXPECT_STREQ("iso-8859-1", name.GetMultibyteString());
  KestZelToIsoEncoding(1, name);
  EXPECT_STREQ("?", name.GetMultibyteString());
}

// The result is read off the text: empty text is not "?", and so counts as known.
TEST(EncodingId, WithoutMemoryTheNameIsEmptyAndTheResult1) {
  for (int number : {0, 1, 2, 3, 13}) {
    ForEachRefusedRequest([number](TestAllocator& allocator) {
      TBstr name;
      const int result = KestZelToIsoEncoding(number, name);
      if (allocator.Refused() == 0) {
        EXPECT_EQ(NameOf(number), TextOf(name));
        EXPECT_EQ(number != 1 ? 1 : 0, result);
        EXPECT_EQ(1, allocator.Requests());
      } else {
        EXPECT_TRUE(name.IsEmpty());
        EXPECT_EQ(1, result);
      }
    });
  }
}

TEST(EncodingId, ReadingANameTakesNoMemory) {
  TestAllocator allocator;
  for (const char16_t* name : {u"", u"UTF-8", u"unknown"}) {
    int number = kUntouched;
    KestIsoToZelEncoding(Units(name), &number);
  }
  EXPECT_EQ(0, allocator.Requests());
}
