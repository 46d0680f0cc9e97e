// POSIX side of the clocks. All arithmetic is modulo 2^32, in both targets.

#include "kest/thread.h"

#include <sys/time.h>

namespace {

struct SNow {
  unsigned int seconds;
  unsigned int microseconds;  // below 1000000
};

SNow ReadClock() {
  timeval now = {};
  gettimeofday(&now, nullptr);
  return {static_cast<unsigned int>(now.tv_sec), static_cast<unsigned int>(now.tv_usec)};
}

}  // namespace

extern "C" {

unsigned int KestGetMilliseconds(void) {
  const SNow now = ReadClock();
  return now.seconds * 1000 + now.microseconds / 1000;
}

unsigned int KestGetMicroseconds(void) {
  return static_cast<unsigned int>(KestGetMicroseconds64());
}

// 32 bits, sign-extended: it wraps every 71.6 minutes and may be negative, on purpose.
long long KestGetMicroseconds64(void) {
  const SNow now = ReadClock();
  return static_cast<int>(now.seconds * 1000000 + now.microseconds);
}

}  // extern "C"
