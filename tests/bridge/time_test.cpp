// time.h: moments, fields and clocks, up to the ends of their ranges.

#include "kest/bridge/time.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "support/random.h"

namespace {

using namespace KEST;
using namespace std::chrono;
using namespace std::chrono_literals;
using kest_test::Random;

constexpr bool kWide = sizeof(time_t) == 8;
constexpr time_t kFirst = std::numeric_limits<time_t>::min();
constexpr time_t kLast = std::numeric_limits<time_t>::max();

TTime Time(time_t seconds) {
  TTime time(nullptr);
  time.time = seconds;
  return time;
}

TEST(Time, MomentsComeBack) {
  for (time_t seconds : {kFirst, time_t{-86401}, time_t{-1}, time_t{0}, time_t{1}, kLast}) {
    SCOPED_TRACE(seconds);
    EXPECT_EQ(seconds, ToSysSeconds(Time(seconds)).time_since_epoch().count());
    EXPECT_EQ(seconds, ToTime(ToSysSeconds(Time(seconds))).time);
  }
  const auto now = system_clock::now();
  EXPECT_EQ(system_clock::to_time_t(floor<seconds>(now)), ToTime(now).time);
}

TEST(Time, AFractionLiesInItsSecond) {
  const system_clock::time_point epoch;
  EXPECT_EQ(0, ToTime(epoch + 999999999ns).time);
  EXPECT_EQ(-1, ToTime(epoch - 1ns).time);
  EXPECT_EQ(-2, ToTime(epoch - 1s - 1ns).time);
  EXPECT_EQ(1, ToTime(time_point<system_clock, duration<double>>(duration<double>(1.75))).time);
  EXPECT_EQ(-2, ToTime(time_point<system_clock, duration<double>>(duration<double>(-1.25))).time);
}

TEST(Time, WhatDoesNotFitIsMinusOne) {
  using Years = duration<long long, std::ratio<31556952>>;
  using Numbers = duration<double>;
  const auto at = [](auto length) {
    return ToTime(time_point<system_clock, decltype(length)>(length)).time;
  };
  EXPECT_EQ(-1, at(Years(std::numeric_limits<long long>::max())));
  EXPECT_EQ(-1, at(Years(std::numeric_limits<long long>::min())));
  EXPECT_EQ(-1, at(Numbers(1e300)));
  EXPECT_EQ(-1, at(Numbers(-1e300)));
  EXPECT_EQ(-1, at(Numbers(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(time_t{68} * 31556952, at(Years(68)));
  if (kWide) {
    EXPECT_EQ(1000LL * 31556952, at(Years(1000)));
  } else {
    EXPECT_EQ(2147483647, at(seconds(2147483647)));
    EXPECT_EQ(-1, at(seconds(2147483648)));
    EXPECT_EQ(2147483647, at(milliseconds(2147483647999)));
    EXPECT_EQ(-1, at(milliseconds(2147483648000)));
    EXPECT_EQ(-2147483648LL, at(seconds(-2147483648)));
    EXPECT_EQ(-1, at(milliseconds(-2147483648001)));
  }
}

TEST(Time, BeyondTheSystemClockIsItsEnd) {
  EXPECT_EQ(system_clock::time_point() + 5s, ToTimePoint(Time(5)));
  EXPECT_EQ(system_clock::time_point() - 5s, ToTimePoint(Time(-5)));
  if (kWide) {
    EXPECT_EQ(system_clock::time_point::max(), ToTimePoint(Time(kLast)));
    EXPECT_EQ(system_clock::time_point::min(), ToTimePoint(Time(kFirst)));
  } else {
    EXPECT_EQ(system_clock::time_point() + seconds(kLast), ToTimePoint(Time(kLast)));
    EXPECT_EQ(system_clock::time_point() + seconds(kFirst), ToTimePoint(Time(kFirst)));
  }
}

// The C library's own arithmetic, on fields in and out of range.
TEST(Time, UtcFieldsAreThoseOfTheCLibrary) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = Random::Cases(); i > 0; --i) {
    const bool wild = i % 4 == 0;
    tm fields = {};
    const int year = wild ? random.Between(-5000, 9000) : random.Between(1902, 2037);
    const int month = wild ? random.Between(-30, 30) : random.Between(1, 12);
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = wild ? random.Between(-1000, 1000) : random.Between(1, 31);
    fields.tm_hour = random.Between(-30, 30);
    fields.tm_min = random.Between(-100, 100);
    fields.tm_sec = random.Between(-100, 100);
    const TTime time =
        UtcTime(year, month, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    const time_t expected = timegm(&fields);
    ASSERT_EQ(expected, time.time) << year << '-' << month;
    if (expected == -1) continue;
    const std::optional<tm> back = UtcFields(time);
    ASSERT_TRUE(back.has_value());
    ASSERT_EQ(fields.tm_year, back->tm_year);
    ASSERT_EQ(fields.tm_yday, back->tm_yday);
    ASSERT_EQ(fields.tm_sec, back->tm_sec);
  }
  EXPECT_EQ(0, UtcTime(1970, 1, 1).time);
  EXPECT_EQ(951782400, UtcTime(2000, 2, 29).time);
  tm last = {};
  last.tm_year = INT_MAX - 1900;
  last.tm_mon = 11;
  last.tm_mday = 31;
  const time_t expected = timegm(&last);  // -1 where time_t has 32 bits
  EXPECT_EQ(expected, UtcTime(INT_MAX, 12, 31).time);
  EXPECT_EQ(kWide, expected > kFirst / 2 && expected != -1);
}

TEST(Time, AYearOutOfRangeIsNoValue) {
  if (!kWide) {
    EXPECT_EQ(1901 - 1900, UtcFields(Time(kFirst))->tm_year);
    EXPECT_EQ(2038 - 1900, UtcFields(Time(kLast))->tm_year);
    return;
  }
  EXPECT_FALSE(UtcFields(Time(kLast)).has_value());
  EXPECT_FALSE(UtcFields(Time(kFirst)).has_value());
  EXPECT_FALSE(LocalFields(Time(kLast)).has_value());
}

TEST(Time, LocalFieldsFollowTheZone) {
  setenv("TZ", "XST-5:30", 1);
  const std::optional<tm> local = LocalFields(UtcTime(2026, 11, 21, 20, 0, 0));
  ASSERT_TRUE(local.has_value());
  EXPECT_EQ(22, local->tm_mday);
  EXPECT_EQ(1, local->tm_hour);
  EXPECT_EQ(30, local->tm_min);
  EXPECT_EQ(UtcTime(2026, 11, 21, 20, 0, 0).time, TTime(2026, 11, 22, 1, 30, 0, -1).time);
  unsetenv("TZ");
}

template <typename TClock>
void ExpectAWrappingClock(unsigned int (*read)()) {
  using Duration = typename TClock::duration;
  using Point = typename TClock::time_point;
  static_assert(std::is_unsigned_v<typename TClock::rep> && !TClock::is_steady);
  // From just before the wrap to just behind it.
  EXPECT_EQ(Duration(12), Point(Duration(2)) - Point(Duration(0xFFFFFFF6)));
  const unsigned int before = read();
  const Point now = TClock::now();
  const unsigned int behind = read();
  EXPECT_LE(now.time_since_epoch().count() - before, behind - before);
}

TEST(Time, TheClocksWrap) {
  ExpectAWrappingClock<TMillisecondClock>(KestGetMilliseconds);
  ExpectAWrappingClock<TMicrosecondClock>(KestGetMicroseconds);
}

TEST(Time, LengthsAreRoundedUp) {
  EXPECT_EQ(0, ToMilliseconds(0s));
  EXPECT_EQ(0, ToMilliseconds(-1h));
  EXPECT_EQ(1, ToMilliseconds(1ns));
  EXPECT_EQ(1, ToMilliseconds(1ms));
  EXPECT_EQ(2, ToMilliseconds(1ms + 1ns));
  EXPECT_EQ(1500, ToMilliseconds(duration<double>(1.5)));
  EXPECT_EQ(INT_MAX, ToMilliseconds(milliseconds(INT_MAX)));
  EXPECT_EQ(INT_MAX, ToMilliseconds(milliseconds(INT_MAX) - 1us));
  EXPECT_EQ(INT_MAX, ToMilliseconds(hours(1000000)));
  EXPECT_EQ(INT_MAX, ToMilliseconds(duration<double>(1e300)));
  EXPECT_EQ(0, ToMilliseconds(duration<double>(std::numeric_limits<double>::quiet_NaN())));
}

}  // namespace
