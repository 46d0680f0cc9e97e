// System information, clocks, times, start and stop while the system refuses.

#include <thread>

#include "kest/frame.h"
#include "kest/message.h"
#include "kest/string.h"
#include "kest/thread.h"
#include "platform/scenario.h"

namespace {

using namespace kest_test;
using KEST::TBstr;
using KEST::TTime;

// ---- System information, clocks and times

std::string AskSystem() {
  KEST::SSystemInfo info = {};
  Refusing([&] { KEST::InternalGetSystemInfo(info); });
  const bool known = info.name[0] != 0 && info.majorVersion != 0;
  EXPECT_EQ(known, info.name[0] != 0 || info.majorVersion != 0);
  KEST::InternalGetSystemInfo(info);
  EXPECT_NE(0, info.majorVersion);
  return Say(known);
}

template <typename Number, Number (*read)()>
std::string ReadClock() {
  const Number now = Refusing([] { return read(); });
  EXPECT_NE(0u, static_cast<unsigned int>(read()) | static_cast<unsigned int>(read()));
  return Say(now != 0);
}

std::string CurrentTime() {
  const time_t now = Refusing([] { return TTime::GetCurrentTime().time; });
  EXPECT_LT(0, TTime::GetCurrentTime().time);
  return Say(now > 0 ? "now" : now == -1 ? "-1" : "wrong");
}

std::string TimeFromFields() {
  const time_t time = Refusing([] { return TTime(2001, 2, 3, 4, 5, 6, 0).time; });
  EXPECT_LT(0, TTime(2001, 2, 3, 4, 5, 6, 0).time);
  return Say(time > 0 ? "right" : time == -1 ? "-1" : "wrong");
}

std::string TimeFromText() {
  const TBstr text("20010203040506Z");
  const time_t time = Refusing([&] { return TTime(text.GetString()).time; });
  EXPECT_LT(0, TTime(text.GetString()).time);
  return Say(time > 0 ? "right" : time == -1 ? "-1" : "wrong");
}

template <void (TTime::*convert)(tm*) const>
std::string BreakDown() {
  const TTime time(2001, 2, 3, 4, 5, 6, 0);
  tm fields = {};
  fields.tm_year = 7;
  Refusing([&] { (time.*convert)(&fields); });
  const int year = fields.tm_year;
  (time.*convert)(&fields);
  EXPECT_EQ(101, fields.tm_year);
  return Say(year);
}

// ---- Start and stop

std::string Start() {
  const int started = Refusing([] { return KestInitialize(nullptr); });
  EXPECT_EQ(started == 1, KestPostMessage(1, nullptr, nullptr));
  EXPECT_TRUE(started == 1 || KestInitialize(nullptr) == 1);
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
  KestUninitialize();
  return Say(started);
}

std::string StartOnAnotherThread() {
  EXPECT_EQ(1, KestInitialize(nullptr));
  int started = 0;
  std::thread([&] {
    started = Refusing([] { return KestInitialize(nullptr); });
    EXPECT_NE(nullptr, KestTlsAddData(5, 16));
    Refusing([] { KestUninitialize(); });
  }).join();
  KestUninitialize();
  return Say(started);
}

std::string Stop() {
  EXPECT_EQ(1, KestInitialize(nullptr));
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
  Refusing([] { KestUninitialize(); });
  EXPECT_FALSE(KestPostMessage(1, nullptr, nullptr));
  EXPECT_EQ(1, KestInitialize(nullptr));
  KestUninitialize();
  return "";
}

}  // namespace

namespace kest_test {

std::vector<Scenario> SystemScenarios() {
  return {
      {"AskSystem", AskSystem, "true", {{"uname", "false"}}},
      {"GetMilliseconds",
       ReadClock<unsigned int, KestGetMilliseconds>,
       "true",
       {{"gettimeofday", "false"}}},
      {"GetMicroseconds",
       ReadClock<unsigned int, KestGetMicroseconds>,
       "true",
       {{"gettimeofday", "false"}}},
      {"GetMicroseconds64",
       ReadClock<long long, KestGetMicroseconds64>,
       "true",
       {{"gettimeofday", "false"}}},
      {"CurrentTime", CurrentTime, "now", {{"time", "-1"}}},
      {"TimeFromFields", TimeFromFields, "right", {{"mktime", "-1"}}},
      {"TimeFromText", TimeFromText, "right", {{"mktime", "-1"}}},
      {"BreakDownInUtc", BreakDown<&TTime::GetGmtTm>, "101", {{"gmtime_r", "7"}}},
      {"BreakDownInLocalTime", BreakDown<&TTime::GetLocalTm>, "101", {{"localtime_r", "7"}}},

      // The clock seeds rand, which gives its numbers all the same.
      {"Start",
       Start,
       "1",
       {{"pthread_key_create", "0"},
        {"pthread_mutex_init", "0"},
        {"pthread_cond_init", "0"},
        {"time", "1"}}},
      {"StartOnAnotherThread", StartOnAnotherThread, "1", {}},
      {"Stop", Stop, "", {{"pthread_mutex_destroy", ""}, {"pthread_cond_destroy", ""}}},
  };
}

}  // namespace kest_test
