#include <gtest/gtest.h>
#include <limits.h>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using KEST::xFILE;
using kest_test::GuardedUnits;
using kest_test::Text;

TEST(FormatSink, StoresAUnitWhileThereIsRoom) {
  unsigned short buffer[3] = {'#', '#', '#'};
  xFILE out = {buffer, 2};
  int count = 5;
  KEST::write_char('a', &out, &count);
  EXPECT_EQ(buffer + 1, out.position);
  EXPECT_EQ(1, out.remaining);
  KEST::write_char(0xFFFF, &out, &count);
  KEST::write_char('c', &out, &count);
  EXPECT_EQ(u"a\uFFFF#", Text(buffer, 3));
  EXPECT_EQ(buffer + 2, out.position);
  EXPECT_EQ(0, out.remaining);
  EXPECT_EQ(8, count) << "units without room count too";
}

TEST(FormatSink, ANegativeRoomStoresNothingAndStays) {
  unsigned short unit = '#';
  for (int remaining : {0, -1, INT_MIN}) {
    xFILE out = {&unit, remaining};
    int count = 0;
    KEST::write_char('a', &out, &count);
    KEST::write_multi_char('a', 3, &out, &count);
    KEST::write_string(KEST_TEXT("bcd"), 3, &out, &count);
    EXPECT_EQ(7, count);
    EXPECT_EQ('#', unit);
    EXPECT_EQ(&unit, out.position);
    EXPECT_EQ(remaining, out.remaining);
  }
}

TEST(FormatSink, ASinkWithoutAPlaceCounts) {
  xFILE out = {nullptr, 0};
  int count = 0;
  KEST::write_char('a', &out, &count);
  KEST::write_multi_char('a', 3, &out, &count);
  KEST::write_string(KEST_TEXT("bcd"), 3, &out, &count);
  EXPECT_EQ(7, count);
  EXPECT_EQ(nullptr, out.position);
}

// Room for 4, every n: the same as that many single units.
TEST(FormatSink, SeveralUnitsAreWrittenLikeSingleOnes) {
  const unsigned short* kText = KEST_TEXT("abcdefgh");
  for (int n = -2; n <= 8; ++n) {
    SCOPED_TRACE(n);
    const GuardedUnits one(u"####"), repeated(u"####"), text(u"####");
    xFILE oneOut = {one.Get(), 4}, repeatedOut = {repeated.Get(), 4}, textOut = {text.Get(), 4};
    int oneCount = 3, repeatedCount = 3, textCount = 3;
    for (int i = 0; i < n; ++i) KEST::write_char('x', &oneOut, &oneCount);
    KEST::write_multi_char('x', n, &repeatedOut, &repeatedCount);
    KEST::write_string(kText, n, &textOut, &textCount);
    EXPECT_EQ(oneCount, repeatedCount);
    EXPECT_EQ(oneCount, textCount);
    EXPECT_EQ(oneOut.remaining, repeatedOut.remaining);
    EXPECT_EQ(oneOut.remaining, textOut.remaining);
    EXPECT_EQ(oneOut.position - one.Get(), repeatedOut.position - repeated.Get());
    EXPECT_EQ(oneOut.position - one.Get(), textOut.position - text.Get());
    EXPECT_EQ(Text(one.Get(), 4), Text(repeated.Get(), 4));
    const size_t stored = static_cast<size_t>(4 - textOut.remaining);
    EXPECT_EQ(Text(kText, stored) + std::u16string(4 - stored, u'#'), Text(text.Get(), 4));
  }
}

TEST(FormatSink, ZeroUnitsAreUnits) {
  unsigned short buffer[3] = {'#', '#', '#'};
  const unsigned short zeros[2] = {0, 0};
  xFILE out = {buffer, 3};
  int count = 0;
  KEST::write_string(zeros, 2, &out, &count);
  KEST::write_char(0, &out, &count);
  EXPECT_EQ(3, count);
  EXPECT_EQ(std::u16string(3, u'\0'), Text(buffer, 3));
}

TEST(FormatSink, NoTextIsReadForANonPositiveLength) {
  unsigned short unit = '#';
  xFILE out = {&unit, 1};
  int count = 0;
  for (int n : {0, -1, INT_MIN}) {
    KEST::write_string(nullptr, n, &out, &count);
    KEST::write_multi_char('x', n, &out, &count);
  }
  EXPECT_EQ(0, count);
  EXPECT_EQ('#', unit);
}

TEST(FormatSink, TheCountStopsAtTheLargestInt) {
  xFILE out = {nullptr, 0};
  int count = INT_MAX - 2;
  KEST::write_char('a', &out, &count);
  EXPECT_EQ(INT_MAX - 1, count);
  KEST::write_multi_char('a', 1, &out, &count);
  EXPECT_EQ(INT_MAX, count);
  KEST::write_char('a', &out, &count);
  KEST::write_multi_char('a', INT_MAX, &out, &count);
  KEST::write_string(KEST_TEXT("abc"), 3, &out, &count);
  EXPECT_EQ(INT_MAX, count);
  count = -5;
  KEST::write_multi_char('a', INT_MAX, &out, &count);
  EXPECT_EQ(INT_MAX - 5, count);
}

}  // namespace
