#include "numbers.h"

#include <time.h>

#include "kest/thread.h"

using KEST::TBstr;
using KEST::TTime;

namespace census {

TBstr Decimal(long long number) {
  constexpr int kDigits = 20;
  unsigned short digits[kDigits];
  int first = kDigits;
  unsigned long long rest = static_cast<unsigned long long>(number < 0 ? -number : number);
  do {
    digits[--first] = static_cast<unsigned short>(u'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (number < 0) digits[--first] = u'-';
  return TBstr(digits + first, kDigits - first);
}

TBstr Grouped(long long number) {
  TBstr text = Decimal(number);
  for (int i = text.GetLength() - 3; i > 0; i -= 3) text.Insert(i, u',');
  return text;
}

TBstr Amount(long long bytes) {
  static const char* const kUnits[] = {" kB", " MB", " GB", " TB"};
  if (bytes < 1000) return Decimal(bytes) + TBstr(" bytes");
  int unit = 0;
  long long tenths = bytes / 100;
  for (; tenths >= 10000 && unit < 3; ++unit) tenths /= 1000;
  TBstr text = Grouped(tenths / 10) + static_cast<unsigned short>(u'.');
  return text + Decimal(tenths % 10) + TBstr(kUnits[unit]);
}

TBstr Duration(long long seconds) {
  const int minutes = static_cast<int>(seconds / 60 % 60), rest = static_cast<int>(seconds % 60);
  TBstr text;
  if (seconds < 3600) {
    text.Format(KEST_TEXT("%d:%02d"), minutes, rest);
  } else {
    text.Format(KEST_TEXT("%d:%02d:%02d"), static_cast<int>(seconds / 3600), minutes, rest);
  }
  return text;
}

TBstr UtcTime(long seconds) {
  TTime time = TTime::GetCurrentTime();  // there is no constructor from seconds alone
  time.time = seconds;
  tm utc = {};
  time.GetGmtTm(&utc);
  TBstr text;
  text.Format(KEST_TEXT("%d-%02d-%02dT%02d:%02d:%02dZ"), utc.tm_year + 1900, utc.tm_mon + 1,
              utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text;
}

TBstr Hex(const unsigned char* bytes, int count) {
  static const char kDigits[] = "0123456789abcdef";
  char text[40];
  for (int i = 0; i < count; ++i) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 15];
  }
  return TBstr(text, 2 * count);
}

TBstr PadLeft(const TBstr& text, int width) {
  return TBstr(static_cast<unsigned short>(u' '), width - text.GetLength()) + text;
}

}  // namespace census
