#include <gtest/gtest.h>
#include <limits.h>

#include <string>

#include "kest/string.h"
#include "string/format_model.h"
#include "support/test_allocator.h"
#include "support/wide_text.h"

namespace {

using KEST::TBstr;
using kest_test::GuardedUnits;
using kest_test::RandomFormat;
using kest_test::TestAllocator;
using kest_test::Text;
using kest_test::Units;

std::u16string TextOf(const TBstr& s) {
  return Text(s.GetString(), static_cast<size_t>(s.GetLength()));
}

TEST(BstrFormat, TheTextIsExactlyWhatWasFormatted) {
  TBstr s;
  s.Format(KEST_TEXT("%d"), 7);
  EXPECT_EQ(1, s.GetLength());
  EXPECT_EQ(u"7", TextOf(s));
  s.Format(KEST_TEXT("%s=%05d (%x)"), KEST_TEXT("value"), 42, 255);
  EXPECT_EQ(u"value=00042 (ff)", TextOf(s));
  s.Format(KEST_TEXT("100%%"));
  EXPECT_EQ(u"100%", TextOf(s));
  EXPECT_EQ(0, s.GetString()[4]);
}

TEST(BstrFormat, NoFormatIsCutShort) {
  const std::u16string spaces(99, u' ');
  TBstr s;
  s.Format(KEST_TEXT("%100c|"), 'x');
  EXPECT_EQ(spaces + u"x|", TextOf(s));
  s.Format(KEST_TEXT("%*c"), -100, 'x');
  EXPECT_EQ(u"x" + spaces, TextOf(s));
  s.Format(KEST_TEXT("%d%100E"), 7);
  EXPECT_EQ(u"7" + spaces + u"7", TextOf(s));
  s.Format(KEST_TEXT("%100k%100Z|"));
  EXPECT_EQ(u"k " + spaces + u"|", TextOf(s));
  s.Format(KEST_TEXT("%.*d"), 700, 5);
  EXPECT_EQ(std::u16string(699, u'0') + u"5", TextOf(s));
}

// A letter that some formatters read a wider argument for takes none here; what comes after it
// would be an integer read as an address.
TEST(BstrFormat, SizeLettersDoNotShiftTheArguments) {
  for (const char16_t* format : {u"%lld %s", u"%Ld %s", u"%Fd %s", u"%wd %s", u"%hd %s"}) {
    TBstr s;
    s.Format(Units(format), 7, KEST_TEXT("text"));
    EXPECT_EQ(u"7 text", TextOf(s));
  }
  TBstr s;
  s.Format(KEST_TEXT("%I64d %s"), KEST_TEXT("text"));
  EXPECT_EQ(u"64d text", TextOf(s)) << "digits break the conversion off";
  s.Format(KEST_TEXT("%5y %A%.3f%s"), KEST_TEXT("text"));
  EXPECT_EQ(u"y Atext", TextOf(s)) << "and letters without a meaning read nothing";
}

TEST(BstrFormat, AConversionMayBeCutShortByTheEnd) {
  for (const std::u16string end : {u"%", u"%-", u"%0", u"%5", u"%.", u"%.3", u"%l", u"%-05.3h"}) {
    SCOPED_TRACE(testing::PrintToString(end));
    const GuardedUnits format(u"100" + end + std::u16string(1, u'\0'));
    TBstr s;
    s.Format(format.Get());
    EXPECT_EQ(u"100", TextOf(s));
  }
}

TEST(BstrFormat, EmptyResultsAreTheEmptyString) {
  const unsigned short* const kEmpty[] = {KEST_TEXT(""), KEST_TEXT("%s"), KEST_TEXT("%E"), nullptr};
  for (const unsigned short* format : kEmpty) {
    TestAllocator allocator;
    TBstr s(KEST_TEXT("old"));
    allocator.Reset();
    s.Format(format, KEST_TEXT(""));
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
    EXPECT_EQ(0, allocator.Requests());
    EXPECT_EQ(-1, allocator.Live()) << "the old text is freed";
  }
}

TEST(BstrFormat, InnerZeroUnitsStay) {
  TBstr s;
  s.Format(KEST_TEXT("a%cb"), 0);
  EXPECT_EQ(std::u16string(u"a\0b", 3), TextOf(s));
}

TEST(BstrFormat, TakesOneBlockOfExactlyTheSizeNeeded) {
  TestAllocator allocator;
  TBstr s;
  s.Format(KEST_TEXT("%s%d"), KEST_TEXT("abc"), 12);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(2 * 5 + 6u, allocator.LastSize());
  s.Format(KEST_TEXT("%d"), 12345);
  EXPECT_EQ(2, allocator.Requests());
  EXPECT_EQ(1, allocator.Live());
  s.Empty();
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrFormat, ArgumentsMayBeTheTextItself) {
  TBstr s(KEST_TEXT("hello"));
  s.Format(KEST_TEXT("<%s|%s>"), s.GetString(), s.GetString() + 3);
  EXPECT_EQ(u"<hello|lo>", TextOf(s));
  s.Format(KEST_TEXT("%.*s"), 3, s.GetString());
  EXPECT_EQ(u"<he", TextOf(s));
  s.Format(KEST_TEXT("%s"), s.GetString());
  EXPECT_EQ(u"<he", TextOf(s)) << "of the same length as before";
  s.Format(KEST_TEXT("x%.*s"), 2, s.GetString());
  EXPECT_EQ(u"x<h", TextOf(s)) << "of the same length, and moved";
  s.Format(KEST_TEXT("xyz%.*s"), 0, s.GetString());
  EXPECT_EQ(u"xyz", TextOf(s));
}

TEST(BstrFormat, TheFormatMayBeTheTextItself) {
  TBstr s(KEST_TEXT("%s: %%d is %d, %s"));
  s.Format(s.GetString(), KEST_TEXT("note"), 5, s.GetString());
  EXPECT_EQ(u"note: %d is 5, %s: %%d is %d, %s", TextOf(s));
}

TEST(BstrFormat, DiscardsTheMultibyteCopy) {
  TBstr s(KEST_TEXT("abc"));
  EXPECT_STREQ("abc", s.GetMultibyteString());
  s.Format(KEST_TEXT("%d"), 123);
  EXPECT_STREQ("123", s.GetMultibyteString());
  s.Format(KEST_TEXT(""));
  EXPECT_STREQ("", s.GetMultibyteString());
}

TEST(BstrFormat, WithoutMemoryTheTextIsEmpty) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    unsigned short* old = KestAllocString(KEST_TEXT("old"));
    TBstr s;
    s.Attach(old);
    s.Format(KEST_TEXT("%s-%s"), KEST_TEXT("new"), s.GetString());
    if (allocator.Refused() == 0) {
      EXPECT_EQ(u"new-old", TextOf(s));
    } else if (old != nullptr) {
      EXPECT_TRUE(s.IsEmpty());
    }
  });
}

TEST(BstrFormat, AFailureDiscardsTheMultibyteCopyToo) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("abc"));
  EXPECT_STREQ("abc", s.GetMultibyteString());
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  s.Format(KEST_TEXT("%d"), 123);
  EXPECT_STREQ("", s.GetMultibyteString());
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrFormat, ACountBeyondAnyBlockGivesTheEmptyString) {
  TestAllocator allocator;
  for (const char16_t* format : {u"%*d", u"%*d%2147483647d", u"%*dxyz", u"%-2147483645d%.*d"}) {
    TBstr s(KEST_TEXT("old"));
    allocator.Reset();
    s.Format(Units(format), INT_MAX, 5, 5);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(0, allocator.Requests()) << "nothing is asked for";
    EXPECT_EQ(-1, allocator.Live());
  }
}

TEST(BstrFormat, TheCountConversionWorks) {
  int count = 0;
  TBstr s;
  s.Format(KEST_TEXT("abc%n%d"), &count, 7);
  EXPECT_EQ(u"abc7", TextOf(s));
  EXPECT_EQ(3, count);
}

void FormatThrough(TBstr* s, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  s->FormatV(format, args);
  va_end(args);
}

TEST(BstrFormat, TakesAnArgumentList) {
  TBstr s(KEST_TEXT("abc"));
  EXPECT_STREQ("abc", s.GetMultibyteString());
  FormatThrough(&s, KEST_TEXT("%d %s %d %s %d %s %d %s"), 1, KEST_TEXT("a"), 2, KEST_TEXT("b"), 3,
                KEST_TEXT("c"), 4, KEST_TEXT("d"));
  EXPECT_EQ(u"1 a 2 b 3 c 4 d", TextOf(s));
  EXPECT_STREQ("1 a 2 b 3 c 4 d", s.GetMultibyteString());
}

TEST(BstrFormat, AgreesWithASecondFormatterOnRandomFormats) {
  std::mt19937 random(20240616);
  TBstr s;
  for (int i = 0; i < 10000; ++i) {
    RandomFormat sample(random);
    if (sample.IsTooLong()) continue;
    sample.Call([&](auto... args) { s.Format(Units(sample.Format()), args...); });
    ASSERT_EQ(sample.Expected(), TextOf(s)) << testing::PrintToString(sample.Format());
    ASSERT_TRUE(sample.CountsAgree());
  }
}

}  // namespace
