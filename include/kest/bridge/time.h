// std::chrono in and out: TTime, its fields, the wrapping clocks, and lengths of time for waits.
//
//   Range      A TTime holds what time_t holds: in the 32-bit library 13 December 1901 to 19
//   January
//              2038. A time that does not fit becomes -1, as everywhere in the library, and fields
//              whose year does not fit are no value. Nothing throws.
//   Zones      A TTime and a time_point are both moments, counted from 1970 in UTC: no zone matters
//              until a moment is broken down. Local time is that of the variable TZ.
//   Threads    Any; but TZ may not be changed while another thread breaks down local time.
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_TIME_H
#define KEST_BRIDGE_TIME_H

#include <limits.h>
#include <time.h>

#include <chrono>
#include <limits>
#include <optional>
#include <ratio>

#include "kest/thread.h"

namespace KEST {

namespace bridge_detail {

inline TTime TimeOfSeconds(time_t seconds) {
  TTime time(nullptr);
  time.time = seconds;
  return time;
}

}  // namespace bridge_detail

// ---- Moments

// Whole seconds of the system's clock. It holds every TTime.
using TSysSeconds = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

// The moment, exactly.
inline TSysSeconds ToSysSeconds(const TTime& time) {
  return TSysSeconds(std::chrono::seconds(time.time));
}

// The moment, as system_clock counts it: nanoseconds, which reach from 1677 to 2262. What lies
// beyond is the first or the last of them.
inline std::chrono::system_clock::time_point ToTimePoint(const TTime& time) {
  using Point = std::chrono::system_clock::time_point;
  const TSysSeconds moment = ToSysSeconds(time);
  if (moment > std::chrono::floor<std::chrono::seconds>(Point::max())) return Point::max();
  if (moment < std::chrono::ceil<std::chrono::seconds>(Point::min())) return Point::min();
  return moment;
}

// The second that the moment lies in, also before 1970. -1 when it does not fit.
template <typename TDuration>
TTime ToTime(const std::chrono::time_point<std::chrono::system_clock, TDuration>& moment) {
  // Compared in floating point, where nothing overflows and no number is none of the three.
  using Seconds = std::chrono::duration<long double>;
  const long double seconds = Seconds(moment.time_since_epoch()).count();
  constexpr auto kFirst = static_cast<long double>(std::numeric_limits<time_t>::min());
  constexpr auto kLast = static_cast<long double>(std::numeric_limits<time_t>::max());
  if (!(seconds >= kFirst && seconds < kLast + 1)) return bridge_detail::TimeOfSeconds(-1);
  const auto whole = std::chrono::floor<std::chrono::seconds>(moment.time_since_epoch());
  return bridge_detail::TimeOfSeconds(static_cast<time_t>(whole.count()));
}

// The moment of these fields in UTC. month 1 is January, year the full year; numbers out of range
// run on into the next unit, as in TTime's own constructor, which takes local time. -1 when the
// time does not fit.
inline TTime UtcTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  // Days in the Gregorian calendar, by cycles of 400 years and with years that begin in March: so
  // the day that comes and goes is the last one. 719468 days lead from March of the year 0 to 1970.
  const auto floorDivide = [](long long a, long long b) { return (a >= 0 ? a : a - b + 1) / b; };
  const long long months = static_cast<long long>(year) * 12 + month - 3;
  const long long years = floorDivide(months, 12);
  const long long cycle = floorDivide(years, 400);
  const long long yearInCycle = years - cycle * 400;
  const long long monthInYear = months - years * 12;
  const long long days = cycle * 146097 + yearInCycle * 365 + yearInCycle / 4 - yearInCycle / 100 +
                         (monthInYear * 153 + 2) / 5 + day - 1 - 719468;
  const long long seconds = days * 86400 + hour * 3600LL + minute * 60LL + second;
  return ToTime(TSysSeconds(std::chrono::seconds(seconds)));
}

// The fields in UTC and in local time; no value when the year does not fit its field.
inline std::optional<tm> UtcFields(const TTime& time) {
  tm fields = {};
  fields.tm_mday = 0;  // no day of a month, so what a conversion has left alone shows
  time.GetGmtTm(&fields);
  return fields.tm_mday != 0 ? std::optional<tm>(fields) : std::nullopt;
}
inline std::optional<tm> LocalFields(const TTime& time) {
  tm fields = {};
  fields.tm_mday = 0;
  time.GetLocalTm(&fields);
  return fields.tm_mday != 0 ? std::optional<tm>(fields) : std::nullopt;
}

// ---- Clocks

// The library's clocks as clocks of std::chrono. They wrap, and their numbers have no sign: the
// difference of two readings is right as long as they are closer together than 49.7 days or 71.6
// minutes; what is later cannot be told by comparing. A clock that is set in between shows.
struct TMillisecondClock {
  using rep = unsigned int;
  using period = std::milli;
  using duration = std::chrono::duration<rep, period>;
  using time_point = std::chrono::time_point<TMillisecondClock>;
  static constexpr bool is_steady = false;
  static time_point now() noexcept { return time_point(duration(KestGetMilliseconds())); }
};
struct TMicrosecondClock {
  using rep = unsigned int;
  using period = std::micro;
  using duration = std::chrono::duration<rep, period>;
  using time_point = std::chrono::time_point<TMicrosecondClock>;
  static constexpr bool is_steady = false;
  static time_point now() noexcept { return time_point(duration(KestGetMicroseconds())); }
};

// ---- Lengths of time

// Milliseconds for TCondVar::Wait and TThread::Sleep: rounded up, so that a wait is never too
// short; 0 for a negative length or none, INT_MAX (24.8 days) for a longer one.
template <typename TRep, typename TPeriod>
int ToMilliseconds(std::chrono::duration<TRep, TPeriod> time) {
  using Milliseconds = std::chrono::duration<long double, std::milli>;
  const long double wish = Milliseconds(time).count();
  if (!(wish > 0)) return 0;
  if (wish >= static_cast<long double>(INT_MAX)) return INT_MAX;
  const int whole = static_cast<int>(wish);
  return static_cast<long double>(whole) < wish ? whole + 1 : whole;
}

}  // namespace KEST

#endif  // KEST_BRIDGE_TIME_H
