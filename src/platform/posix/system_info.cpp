// POSIX side of the system information: uname.

#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>

#include <algorithm>

#include "kest/string.h"
#include "kest/thread.h"

namespace {

// long is wider than int in the 64-bit target: a number too large is INT_MAX in both.
int ToInt(const char* text) {
  const long number = strtol(text, nullptr, 10);
  return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

// The number behind the first dot of text, 0 when there is no dot; text is moved behind it.
int NumberAfterDot(const char*& text) {
  const char* dot = strchr(text, '.');
  if (dot == nullptr) return 0;
  text = dot + 1;
  return ToInt(text);
}

}  // namespace

namespace KEST {

void InternalGetSystemInfo(SSystemInfo& info) {
  utsname system = {};
  uname(&system);
  s2ulcpy(info.name, system.sysname, 32);
  const char* release = system.release;
  info.majorVersion = ToInt(release);
  info.minorVersion = NumberAfterDot(release);
  // Without any dot the build number keeps what it was, on purpose.
  if (release != system.release) info.buildNumber = NumberAfterDot(release);
  info.reserved = 0;
}

}  // namespace KEST
