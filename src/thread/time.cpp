#include "kest/thread.h"

#include <limits.h>
#include <string.h>

#include "frame/layout.h"
#include "kest/string.h"

namespace {

// YYMMDDhhmmssZ and YYYYMMDDhhmmssZ.
constexpr unsigned int kShortForm = 13;
constexpr unsigned int kLongForm = 15;

// The number in the next count units (4 at most), which text is moved past. A field ends early at
// a unit that is no digit; spaces and a sign in front are what ucstol takes them for.
int TakeField(const unsigned short*& text, unsigned int count) {
  unsigned short field[5] = {};
  memcpy(field, text, count * sizeof(*text));
  text += count;
  return KEST::ucstol(field, nullptr, 10);
}

// Counted from 1900 as struct tm has it. Two digits stand for 1950 to 2049.
int TakeYear(const unsigned short*& text, unsigned int length) {
  const int year = TakeField(text, length - 11);
  if (length == kLongForm) return year - 1900;
  return year > 49 ? year : year + 100;
}

// value - offset, or the lowest number where that does not fit.
int Below(int value, int offset) { return value < INT_MIN + offset ? INT_MIN : value - offset; }

}  // namespace

namespace KEST {

KEST_SIZE_IS(TTime, 4, 8);
KEST_FIELD_AT(TTime, time, 0, 0);

TTime::TTime() : time(0) {}

TTime::TTime(int year, int month, int day, int hour, int minute, int second, int isDst) {
  tm fields = {};
  fields.tm_year = Below(year, 1900);
  fields.tm_mon = Below(month, 1);
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = isDst;
  time = mktime(&fields);
}

TTime::TTime(const unsigned short* text) : time(0) {
  const unsigned int length = text != nullptr ? ucslen(text) : 0;
  if (length != kShortForm && length != kLongForm) return;
  tm fields = {};
  fields.tm_year = TakeYear(text, length);
  fields.tm_mon = TakeField(text, 2);  // not less one, on purpose: "01" has always been February
  fields.tm_mday = TakeField(text, 2);
  fields.tm_hour = TakeField(text, 2);
  fields.tm_min = TakeField(text, 2);
  fields.tm_sec = TakeField(text, 2);
  fields.tm_isdst = -1;
  time = mktime(&fields);  // local time, on purpose, although the form ends in Z
}

TTime TTime::GetCurrentTime() {
  TTime now;
  now.time = ::time(nullptr);
  return now;
}

}  // namespace KEST
