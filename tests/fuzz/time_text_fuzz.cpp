// Times in text against the calendar by arithmetic, in UTC.

#include <limits.h>
#include <time.h>

#include "fuzz/fuzz.h"
#include "kest/thread.h"

namespace {

// Decimal digits up to the first unit that is none, behind spaces and a sign.
int Field(const unsigned short* s, size_t count) {
  size_t at = 0;
  while (at < count && s[at] == ' ') ++at;
  const bool isNegative = at < count && s[at] == '-';
  if (at < count && (s[at] == '-' || s[at] == '+')) ++at;
  int value = 0;
  for (; at < count && s[at] >= '0' && s[at] <= '9'; ++at) value = value * 10 + (s[at] - '0');
  return isNegative ? -value : value;
}

long long FloorDiv(long long a, long long b) { return a / b - (a % b < 0 ? 1 : 0); }

// Days from 1 January 1970 to the first of a month, of years that begin in March.
long long Days(long long year, long long month) {
  year += FloorDiv(month, 12);
  month -= 12 * FloorDiv(month, 12);
  const long long shifted = month < 2 ? year - 1 : year;
  const long long fromMarch = (month + 10) % 12;
  return 365 * shifted + FloorDiv(shifted, 4) - FloorDiv(shifted, 100) + FloorDiv(shifted, 400) +
         (153 * fromMarch + 2) / 5 - 719468;
}

long long Model(const unsigned short* s, size_t length) {
  if (length != 13 && length != 15) return 0;
  const size_t yearDigits = length - 11;
  long long year = Field(s, yearDigits);
  if (length == 13) year += year > 49 ? 1900 : 2000;
  s += yearDigits;
  const long long days = Days(year, Field(s, 2)) + Field(s + 2, 2) - 1;
  const long long time =
      ((days * 24 + Field(s + 4, 2)) * 60 + Field(s + 6, 2)) * 60 + Field(s + 8, 2);
  return sizeof(time_t) == 4 && (time < INT_MIN || time > INT_MAX) ? -1 : time;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool inUtc = setenv("TZ", "UTC0", 1) == 0;
  FUZZ_CHECK(inUtc);
  kest_fuzz::Input in(data, size);
  static kest_fuzz::GuardedText<16> text;
  const unsigned short* s = text.Take(in);
  const KEST::TTime time(s);
  FUZZ_CHECK(time.time == Model(s, text.Length()));
  if (time.time == 0) return 0;

  // Broken down and put together, it is the same.
  tm fields;
  time.GetGmtTm(&fields);
  const KEST::TTime again(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                          fields.tm_min, fields.tm_sec, 0);
  FUZZ_CHECK(again.time == time.time);
  return 0;
}
