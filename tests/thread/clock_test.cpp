#include <gtest/gtest.h>
#include <sys/time.h>
#include <time.h>

#include "kest/thread.h"

namespace {

bool s_fake = false;
timeval s_now = {};

}  // namespace

// In place of the C library's, for the library too: a time of our choice, or the real one.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
  if (s_fake) {
    *now = s_now;
    return 0;
  }
  timespec real;
  clock_gettime(CLOCK_REALTIME, &real);
  *now = {real.tv_sec, real.tv_nsec / 1000};
  return 0;
}

namespace {

class Clock : public testing::Test {
 protected:
  void SetTime(long long seconds, int microseconds) {
    s_fake = true;
    s_now.tv_sec = static_cast<time_t>(seconds);  // where time_t is narrower, already modulo 2^32
    s_now.tv_usec = microseconds;
  }
  ~Clock() override { s_fake = false; }
};

// Worked out apart: seconds * 1000 + microseconds / 1000 modulo 2^32, and seconds * 1000000 +
// microseconds modulo 2^32, read as a signed number.
struct Row {
  long long seconds;
  int microseconds;
  unsigned int inMilliseconds;
  long long inMicroseconds;
};
constexpr Row kRows[] = {
    {0, 0, 0, 0},
    {0, 999, 0, 999},
    {0, 1000, 1, 1000},
    {1, 999999, 1999, 1999999},
    {2147, 483647, 2147483, 2147483647},
    {2147, 483648, 2147483, -2147483648LL},  // half way round
    {4294, 967295, 4294967, -1},
    {4294, 967296, 4294967, 0},  // all the way round: 71.6 minutes
    {4294967, 295999, 4294967295u, -1},
    {4294967, 296000, 0, 0},  // 49.7 days
    {2147483647, 999999, 0xffffffff, -1},
    {-1, 999999, 0xffffffff, -1},
};

TEST_F(Clock, CountsModulo32Bits) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.seconds << " s " << row.microseconds << " us");
    SetTime(row.seconds, row.microseconds);
    EXPECT_EQ(row.inMilliseconds, KestGetMilliseconds());
    EXPECT_EQ(row.inMicroseconds, KestGetMicroseconds64());
    EXPECT_EQ(static_cast<unsigned int>(row.inMicroseconds), KestGetMicroseconds());
  }
}

TEST_F(Clock, SecondsPast32BitsCountModulo32Bits) {
  SetTime(0x100000005, 250000);
  EXPECT_EQ(5250u, KestGetMilliseconds());
  EXPECT_EQ(5250000, KestGetMicroseconds64());
}

TEST_F(Clock, DifferencesAreRightAcrossTheWrap) {
  SetTime(4294967, 295000);
  const unsigned int milliseconds = KestGetMilliseconds();
  SetTime(4294970, 295000);
  EXPECT_EQ(3000u, KestGetMilliseconds() - milliseconds);
  SetTime(4294, 967290);
  const unsigned int microseconds = KestGetMicroseconds();
  SetTime(4294, 967300);
  EXPECT_EQ(10u, KestGetMicroseconds() - microseconds);
}

// Real time, bracketed by the system's clock.
unsigned long long SystemMicroseconds() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000000 +
         static_cast<unsigned long long>(now.tv_nsec) / 1000;
}

TEST_F(Clock, ReadsTheWallClock) {
  const unsigned long long before = SystemMicroseconds();
  const unsigned int milliseconds = KestGetMilliseconds();
  const unsigned int microseconds = KestGetMicroseconds();
  const unsigned int low = static_cast<unsigned int>(KestGetMicroseconds64());
  const unsigned long long after = SystemMicroseconds();
  const unsigned int span = static_cast<unsigned int>(after - before);
  EXPECT_LE(milliseconds - static_cast<unsigned int>(before / 1000), span / 1000 + 1);
  EXPECT_LE(microseconds - static_cast<unsigned int>(before), span);
  EXPECT_LE(low - microseconds, span);
}

}  // namespace
