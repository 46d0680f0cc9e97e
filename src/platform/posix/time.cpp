// POSIX side of TTime: the conversions to broken-down time.

#include "kest/thread.h"

namespace KEST {

void TTime::GetGmtTm(tm* result) const {
  tm fields;
  if (result != nullptr && gmtime_r(&time, &fields) != nullptr) *result = fields;
}

// localtime_r need not notice a change of TZ; tzset does, as it would inside localtime.
void TTime::GetLocalTm(tm* result) const {
  tzset();
  tm fields;
  if (result != nullptr && localtime_r(&time, &fields) != nullptr) *result = fields;
}

}  // namespace KEST
