#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <string>
#include <type_traits>

#include "kest/string.h"
#include "kest/thread.h"
#include "support/random.h"

namespace {

using KEST::TTime;

constexpr char kUtc[] = "UTC0";
constexpr char kCentralEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";

// mktime has no result past 19 January 2038 or before 13 December 1901 in the 32-bit target.
constexpr bool kTimeIs32Bit = sizeof(time_t) == 4;

void SetZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

std::string ToText(const tm& fields) {
  char text[100];
  snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", fields.tm_year + 1900,
           fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
  return text;
}

std::string Local(const TTime& time) {
  tm fields = {};
  time.GetLocalTm(&fields);
  return ToText(fields);
}

std::string Gmt(const TTime& time) {
  tm fields = {};
  time.GetGmtTm(&fields);
  return ToText(fields);
}

TTime At(long long seconds) {
  TTime time(nullptr);
  time.time = static_cast<time_t>(seconds);
  return time;
}

TEST(Time, FieldsAreLocalTime) {
  const struct {
    const char* zone;
    time_t midnight;
  } rows[] = {{kUtc, 946684800}, {kCentralEurope, 946681200}, {kNewYork, 946702800}};
  for (const auto& row : rows) {
    SetZone(row.zone);
    const TTime time(2000, 1, 1, 0, 0, 0, -1);
    EXPECT_EQ(row.midnight, time.time) << row.zone;
    EXPECT_EQ("2000-01-01 00:00:00", Local(time)) << row.zone;
  }
}

// Fields out of range go on into the next unit, as mktime has it.
TEST(Time, FieldsAreNormalised) {
  SetZone(kUtc);
  EXPECT_EQ("2001-12-31 23:59:59", Local(TTime(2001, 12, 31, 23, 59, 59, 0)));
  EXPECT_EQ("2002-01-01 00:00:00", Local(TTime(2001, 12, 31, 23, 59, 60, 0)));
  EXPECT_EQ("2002-01-01 00:00:00", Local(TTime(2001, 13, 1, 0, 0, 0, 0)));
  EXPECT_EQ("2000-12-01 00:00:00", Local(TTime(2001, 0, 1, 0, 0, 0, 0)));
  EXPECT_EQ("2004-02-29 00:00:00", Local(TTime(2004, 3, 0, 0, 0, 0, 0)));
  EXPECT_EQ("2004-02-29 12:00:00", Local(TTime(2004, 2, 28, 36, 0, 0, 0)));
  EXPECT_EQ("2001-01-01 01:00:00", Local(TTime(2001, 1, 1, 0, 60, 0, 0)));
  EXPECT_EQ("2000-12-31 23:59:58", Local(TTime(2001, 1, 1, 0, 0, -2, 0)));
}

TEST(Time, DaylightSavingFlagIsPassedOn) {
  SetZone(kNewYork);
  const struct {
    int month, isDst;
    const char* gmt;
  } rows[] = {
      {7, -1, "2010-07-01 16:00:00"}, {7, 1, "2010-07-01 16:00:00"}, {7, 0, "2010-07-01 17:00:00"},
      {1, -1, "2010-01-01 17:00:00"}, {1, 0, "2010-01-01 17:00:00"}, {1, 1, "2010-01-01 16:00:00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.gmt, Gmt(TTime(2010, row.month, 1, 12, 0, 0, row.isDst)))
        << row.month << ' ' << row.isDst;
  }
}

TEST(Time, EndsWhereTimeTEnds) {
  SetZone(kUtc);
  EXPECT_EQ(2147483647, TTime(2038, 1, 19, 3, 14, 7, 0).time);
  EXPECT_EQ(kTimeIs32Bit ? -1 : 2147483648LL, TTime(2038, 1, 19, 3, 14, 8, 0).time);
  EXPECT_EQ(INT_MIN, TTime(1901, 12, 13, 20, 45, 52, 0).time);
  EXPECT_EQ(kTimeIs32Bit ? -1 : INT_MIN - 1LL, TTime(1901, 12, 13, 20, 45, 51, 0).time);
  EXPECT_EQ(-1, TTime(1969, 12, 31, 23, 59, 59, 0).time);
}

time_t TimeOf(int year, int month, int day, int hour, int minute, int second) {
  tm fields = {};
  fields.tm_year = year;
  fields.tm_mon = month;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  return mktime(&fields);
}

// A year or month that would not fit its field is the lowest that does.
TEST(Time, TakesAnyNumbers) {
  SetZone(kUtc);
  const int low = INT_MIN, high = INT_MAX;
  EXPECT_EQ(TimeOf(low, 0, 1, 0, 0, 0), TTime(low, 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(low, 0, 1, 0, 0, 0), TTime(low + 1899, 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(low, 0, 1, 0, 0, 0), TTime(low + 1900, 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(low + 1, 0, 1, 0, 0, 0), TTime(low + 1901, 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(high - 1900, 0, 1, 0, 0, 0), TTime(high, 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(100, low, 1, 0, 0, 0), TTime(2000, low, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(100, low, 1, 0, 0, 0), TTime(2000, low + 1, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(100, high - 1, 1, 0, 0, 0), TTime(2000, high, 1, 0, 0, 0, 0).time);
  EXPECT_EQ(TimeOf(100, 0, low, low, low, low), TTime(2000, 1, low, low, low, low, 0).time);
  EXPECT_EQ(TimeOf(100, 0, high, high, high, high), TTime(2000, 1, high, high, high, high, 0).time);
}

// Columns: text, the local time it stands for. A month number counts from 0.
const struct {
  const unsigned short* text;
  const char* local;
} kTexts[] = {
    {KEST_TEXT("000101000000Z"), "2000-02-01 00:00:00"},
    {KEST_TEXT("991231235959Z"), "2000-01-31 23:59:59"},
    {KEST_TEXT("20000101000000Z"), "2000-02-01 00:00:00"},
    {KEST_TEXT("19991231235959Z"), "2000-01-31 23:59:59"},
    {KEST_TEXT("010001000000Z"), "2001-01-01 00:00:00"},
    {KEST_TEXT("011101000000Z"), "2001-12-01 00:00:00"},
    {KEST_TEXT("011201000000Z"), "2002-01-01 00:00:00"},
    {KEST_TEXT("010131000000Z"), "2001-03-03 00:00:00"},
    {KEST_TEXT("030405060708Z"), "2003-05-05 06:07:08"},
    {KEST_TEXT("20120405060708Z"), "2012-05-05 06:07:08"},
    {KEST_TEXT("019999999999Z"), "2009-07-12 04:40:39"},
    // Two digits above 49 are in the 20th century, four are taken as they are.
    {KEST_TEXT("500101000000Z"), "1950-02-01 00:00:00"},
    {KEST_TEXT("700002000000Z"), "1970-01-02 00:00:00"},
    {KEST_TEXT("990001000000Z"), "1999-01-01 00:00:00"},
    {KEST_TEXT("370001000000Z"), "2037-01-01 00:00:00"},
    {KEST_TEXT("19500101000000Z"), "1950-02-01 00:00:00"},
    {KEST_TEXT("20370001000000Z"), "2037-01-01 00:00:00"},
    // The last unit is not looked at.
    {KEST_TEXT("000101000000z"), "2000-02-01 00:00:00"},
    {KEST_TEXT("0001010000000"), "2000-02-01 00:00:00"},
    {KEST_TEXT("0001010000009"), "2000-02-01 00:00:00"},
    {KEST_TEXT("20000101000000\uffff"), "2000-02-01 00:00:00"},
    // A unit that is no digit ends its own field, and only that.
    {KEST_TEXT("0x0101000000Z"), "2000-02-01 00:00:00"},
    {KEST_TEXT("7x0101000000Z"), "2007-02-01 00:00:00"},
    {KEST_TEXT("x70101000000Z"), "2000-02-01 00:00:00"},
    {KEST_TEXT("0003x5000000Z"), "2000-03-31 00:00:00"},
    {KEST_TEXT("0003051x2x3xZ"), "2000-04-05 01:02:03"},
    {KEST_TEXT("00--05101010Z"), "2000-01-05 10:10:10"},
    {KEST_TEXT("201x0101000000Z"), "0201-02-01 00:00:00"},
    {KEST_TEXT("\u0661\u0661\uff11\uff1101000000Z"), "2000-01-01 00:00:00"},
    // Spaces and a sign go before a number.
    {KEST_TEXT(" 7 3 5 1 2 3Z"), "2007-04-05 01:02:03"},
    {KEST_TEXT("+7+3+5+1+2+3Z"), "2007-04-05 01:02:03"},
    {KEST_TEXT("-50101000000Z"), "1995-02-01 00:00:00"},
    {KEST_TEXT("000305-1-1-1Z"), "2000-04-04 22:58:59"},
};

TEST(Time, ReadsTheDigitFormsAsLocalTime) {
  for (const char* zone : {kUtc, kNewYork, kCentralEurope}) {
    SetZone(zone);
    for (const auto& row : kTexts) {
      const TTime time(row.text);
      if (kTimeIs32Bit && row.local[0] == '0') {
        EXPECT_EQ(-1, time.time) << row.local;
      } else {
        EXPECT_EQ(row.local, Local(time)) << zone;
      }
    }
  }
}

TEST(Time, TextInSummerIsSummerTime) {
  SetZone(kNewYork);
  EXPECT_EQ("2010-07-01 16:00:00", Gmt(TTime(KEST_TEXT("100601120000Z"))));
  EXPECT_EQ("2010-01-01 17:00:00", Gmt(TTime(KEST_TEXT("20100001120000Z"))));
}

TEST(Time, YearsFrom2038OnNeedTheWiderTime) {
  SetZone(kUtc);
  for (const unsigned short* text :
       {KEST_TEXT("490101000000Z"), KEST_TEXT("20490101000000Z"), KEST_TEXT("380019031408Z")}) {
    const TTime time(text);
    if (kTimeIs32Bit) {
      EXPECT_EQ(-1, time.time);
    } else {
      EXPECT_EQ(text[0] == '3' ? "2038-01-19 03:14:08" : "2049-02-01 00:00:00", Local(time));
    }
  }
  EXPECT_EQ(2147483647, TTime(KEST_TEXT("380019031407Z")).time);
}

TEST(Time, OtherLengthsAreTimeZero) {
  SetZone(kNewYork);
  const std::u16string digits(300, u'1');
  for (size_t length : {0u, 1u, 12u, 14u, 16u, 17u, 26u, 269u, 271u, 300u}) {
    const std::u16string text = digits.substr(0, length);
    const TTime time(reinterpret_cast<const unsigned short*>(text.c_str()));
    EXPECT_EQ(0, time.time) << length;
  }
  EXPECT_EQ(0, TTime(KEST_TEXT("00010100000000Z") + 1).time - TTime(KEST_TEXT("")).time);
  EXPECT_EQ(0, TTime(nullptr).time);
  const unsigned short cut[] = {'0', '0', '0', '1', 0, '1', '0', '0', '0', '0', '0', '0', 'Z', 0};
  EXPECT_EQ(0, TTime(cut).time) << "the length ends at the first zero unit";
}

// Each row: seconds, zone, how the fields read. 1078059659 is Sunday, 29 February 2004, and
// 1278000000 Thursday, 1 July 2010.
TEST(Time, GivesAllFields) {
  const struct {
    time_t seconds;
    const char* zone;
    void (TTime::*get)(tm*) const;
    const char* text;
    int weekDay, yearDay, isDst;
    long offset;
    const char* zoneName;
  } rows[] = {
      {1078059659, kNewYork, &TTime::GetGmtTm, "2004-02-29 13:00:59", 0, 59, 0, 0, "GMT"},
      {1078059659, kNewYork, &TTime::GetLocalTm, "2004-02-29 08:00:59", 0, 59, 0, -18000, "EST"},
      {1278000000, kCentralEurope, &TTime::GetGmtTm, "2010-07-01 16:00:00", 4, 181, 0, 0, "GMT"},
      {1278000000, kCentralEurope, &TTime::GetLocalTm, "2010-07-01 18:00:00", 4, 181, 1, 7200,
       "CEST"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.text << ' ' << row.zoneName);
    SetZone(row.zone);
    tm fields;
    memset(&fields, 0x55, sizeof(fields));
    (At(row.seconds).*row.get)(&fields);
    EXPECT_EQ(row.text, ToText(fields));
    EXPECT_EQ(row.weekDay, fields.tm_wday);
    EXPECT_EQ(row.yearDay, fields.tm_yday);
    EXPECT_EQ(row.isDst, fields.tm_isdst);
    EXPECT_EQ(row.offset, fields.tm_gmtoff);
    EXPECT_STREQ(row.zoneName, fields.tm_zone);
  }
}

TEST(Time, LocalTimeFollowsAChangeOfZone) {
  SetZone(kUtc);
  const TTime time = At(1278000000);
  EXPECT_EQ("2010-07-01 16:00:00", Local(time));
  setenv("TZ", kNewYork, 1);
  EXPECT_EQ("2010-07-01 12:00:00", Local(time));
  EXPECT_EQ("2010-07-01 16:00:00", Gmt(time));
}

TEST(Time, NullResultIsIgnored) {
  const TTime time = At(1278000000);
  time.GetGmtTm(nullptr);
  time.GetLocalTm(nullptr);
  EXPECT_EQ(1278000000, time.time);
}

// Which another thread may be about to read.
TEST(Time, LeavesTheCLibrarysOwnResultAlone) {
  SetZone(kUtc);
  const time_t other = 86400;
  const tm* const shared = gmtime(&other);
  EXPECT_EQ("2010-07-01 16:00:00", Gmt(At(1278000000)));
  EXPECT_EQ("2010-07-01 16:00:00", Local(At(1278000000)));
  EXPECT_EQ("1970-01-02 00:00:00", ToText(*shared));
}

TEST(Time, ConvertsTheEndsOf32Bits) {
  SetZone(kUtc);
  EXPECT_EQ("1901-12-13 20:45:52", Gmt(At(INT_MIN)));
  EXPECT_EQ("2038-01-19 03:14:07", Gmt(At(INT_MAX)));
  EXPECT_EQ("1901-12-13 20:45:52", Local(At(INT_MIN)));
  EXPECT_EQ("2038-01-19 03:14:07", Local(At(INT_MAX)));
}

TEST(Time, LeavesTheResultAloneWhenTheYearDoesNotFit) {
  if (kTimeIs32Bit) GTEST_SKIP() << "every time has a year";
  SetZone(kNewYork);
  for (long long seconds : {LLONG_MAX, LLONG_MIN}) {
    tm fields, untouched;
    memset(&fields, 0x55, sizeof(fields));
    memset(&untouched, 0x55, sizeof(untouched));
    At(seconds).GetGmtTm(&fields);
    EXPECT_EQ(0, memcmp(&untouched, &fields, sizeof(fields)));
    At(seconds).GetLocalTm(&fields);
    EXPECT_EQ(0, memcmp(&untouched, &fields, sizeof(fields)));
  }
}

TEST(Time, CurrentTimeIsNow) {
  const time_t before = time(nullptr);
  const TTime now = TTime::GetCurrentTime();
  const time_t after = time(nullptr);
  EXPECT_LE(before, now.time);
  EXPECT_GE(after, now.time);
}

TEST(Time, IsAPlainValue) {
  static_assert(std::is_trivially_copyable_v<TTime> && std::is_standard_layout_v<TTime>);
  static_assert(!std::is_default_constructible_v<TTime>);
  const TTime time = At(7);
  TTime copy = At(8);
  copy = time;
  EXPECT_EQ(7, copy.time);
}

// Days since 1970, counted year by year and month by month.
long long DayNumber(int year, int month, int day) {
  const int lengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const auto isLeap = [](int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); };
  long long days = day - 1;
  for (int y = 1970; y < year; ++y) days += isLeap(y) ? 366 : 365;
  for (int y = year; y < 1970; ++y) days -= isLeap(y) ? 366 : 365;
  for (int m = 1; m < month; ++m) days += lengths[m - 1] + (m == 2 && isLeap(year) ? 1 : 0);
  return days;
}

TEST(Time, MatchesTheCalendarForRandomTimes) {
  SetZone(kUtc);
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < 5000; ++n) {
    const int year = random.Between(1902, 2037), month = random.Between(1, 12);
    const int day = random.Between(1, 28), hour = random.Between(0, 23);
    const int minute = random.Between(0, 59), second = random.Between(0, 59);
    const long long expected =
        ((DayNumber(year, month, day) * 24 + hour) * 60 + minute) * 60 + second;
    ASSERT_EQ(expected, TTime(year, month, day, hour, minute, second, 0).time) << n;

    char digits[40];
    snprintf(digits, sizeof(digits), "%04d%02d%02d%02d%02d%02dZ", year, month - 1, day, hour,
             minute, second);
    const std::u16string text(digits, digits + 15);
    const unsigned short* units = reinterpret_cast<const unsigned short*>(text.c_str());
    ASSERT_EQ(expected, TTime(units).time) << digits;
    const bool twoDigitsDo = year >= 1950;
    ASSERT_EQ(twoDigitsDo ? expected : 0, TTime(units + (twoDigitsDo ? 2 : 1)).time) << digits;
    ASSERT_EQ(std::string(digits, 4), Gmt(At(expected)).substr(0, 4));
  }
}

}  // namespace
