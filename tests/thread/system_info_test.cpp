#include <gtest/gtest.h>
#include <limits.h>
#include <pthread.h>
#include <string.h>
#include <sys/utsname.h>

#include <algorithm>
#include <atomic>
#include <string>

#include "kest/thread.h"

namespace {

std::string s_system, s_release;
bool s_unameFails = false;
std::atomic<int> s_unameCalls = 0;

}  // namespace

// In place of the C library's, for the library too. What it does not set is left full of rubbish.
extern "C" int uname(utsname* info) noexcept {
  ++s_unameCalls;
  if (s_unameFails) return -1;
  memset(info, '7', sizeof(*info));
  memcpy(info->sysname, s_system.c_str(), s_system.size() + 1);
  memcpy(info->release, s_release.c_str(), s_release.size() + 1);
  return 0;
}

namespace {

using KEST::SSystemInfo;

void SetSystem(const char* system, const char* release) {
  s_system = system;
  s_release = release;
}

// What InternalGetSystemInfo makes of a record that is full of rubbish.
SSystemInfo InfoOf(const char* system, const char* release) {
  SetSystem(system, release);
  SSystemInfo info;
  std::fill_n(info.name, 32, static_cast<unsigned short>(0xaaaa));
  info.majorVersion = info.minorVersion = info.buildNumber = info.reserved = 77;
  KEST::InternalGetSystemInfo(info);
  return info;
}

// The first test of all, before anything has filled the cache.
TEST(SystemInfo, CacheStartsWithZeros) {
  SetSystem("Linux", "6");
  const SSystemInfo* info = KestGetSystemInfo();
  EXPECT_EQ(6, info->majorVersion);
  EXPECT_EQ(0, info->minorVersion);
  EXPECT_EQ(0, info->buildNumber);
}

// Columns: release, major and minor version, build number; 77 is what stood there before.
TEST(SystemInfo, ReadsTheNumbersOfTheRelease) {
  const struct {
    const char* release;
    int majorVersion, minorVersion, buildNumber;
  } rows[] = {
      {"5.15.0", 5, 15, 0},
      {"2.4.20-8", 2, 4, 20},
      {"6.1.0-13-amd64", 6, 1, 0},
      {"6.12.38+deb13-amd64", 6, 12, 38},
      {"4.9", 4, 9, 0},
      {"4.", 4, 0, 0},
      {"4..7", 4, 0, 7},
      {"4.19-rc1.7", 4, 19, 7},
      {"1.2.3.4", 1, 2, 3},
      {".5.6", 0, 5, 6},
      {"v1.2.3", 0, 2, 3},
      {" 3.-4. 5", 3, -4, 5},
      {"010.0x10.9", 10, 0, 9},
      // Without a dot the build number is not touched.
      {"6", 6, 0, 77},
      {"6-rc7", 6, 0, 77},
      {"", 0, 0, 77},
      {"none", 0, 0, 77},
      // Numbers that do not fit.
      {"2147483647.2147483648.-2147483649", INT_MAX, INT_MAX, INT_MIN},
      {"99999999999999999999.1.4294967297", INT_MAX, 1, INT_MAX},
  };
  for (const auto& row : rows) {
    const SSystemInfo info = InfoOf("Linux", row.release);
    EXPECT_EQ(row.majorVersion, info.majorVersion) << row.release;
    EXPECT_EQ(row.minorVersion, info.minorVersion) << row.release;
    EXPECT_EQ(row.buildNumber, info.buildNumber) << row.release;
    EXPECT_EQ(0, info.reserved) << row.release;
  }
}

// Every byte becomes one unit, and 31 of them fit.
TEST(SystemInfo, WidensTheNameIntoItsField) {
  for (size_t length : {0u, 1u, 5u, 30u, 31u, 32u, 33u, 64u}) {
    SCOPED_TRACE(length);
    std::string system;
    for (size_t i = 0; i < length; ++i) system += static_cast<char>(0xf0 - i);
    const SSystemInfo info = InfoOf(system.c_str(), "1.2.3");
    const size_t kept = std::min<size_t>(length, 31);
    for (size_t i = 0; i < kept; ++i) EXPECT_EQ(0xf0 - i, info.name[i]);
    EXPECT_EQ(0, info.name[kept]);
    EXPECT_EQ(1, info.majorVersion);
  }
}

TEST(SystemInfo, IsEmptyWhenTheSystemDoesNotTell) {
  s_unameFails = true;
  const SSystemInfo info = InfoOf("Linux", "5.15.0");
  s_unameFails = false;
  EXPECT_EQ(0, info.name[0]);
  EXPECT_EQ(0, info.majorVersion);
  EXPECT_EQ(0, info.minorVersion);
  EXPECT_EQ(0, info.reserved);
}

// Each test starts as the process does, with a cache of zeros and nothing asked for.
class SystemInfoCache : public testing::Test {
 protected:
  SystemInfoCache() {
    *KestGetSystemInfo() = {};
    s_unameCalls = 0;
  }
};

TEST_F(SystemInfoCache, IsFilledOnce) {
  SetSystem("Linux", "5.15.7");
  const SSystemInfo* info = KestGetSystemInfo();
  ASSERT_NE(nullptr, info);
  EXPECT_EQ(1, s_unameCalls);
  EXPECT_EQ(0, memcmp(u"Linux", info->name, sizeof(u"Linux")));
  EXPECT_EQ(5, info->majorVersion);
  EXPECT_EQ(15, info->minorVersion);
  EXPECT_EQ(7, info->buildNumber);
  EXPECT_EQ(0, info->reserved);
  SetSystem("Other", "6.1.0");
  EXPECT_EQ(info, KestGetSystemInfo());
  EXPECT_EQ(1, s_unameCalls);
  EXPECT_EQ(5, info->majorVersion);
}

// A major version of 0 counts as not filled, on purpose.
TEST_F(SystemInfoCache, IsFilledAgainWhileTheMajorVersionIsZero) {
  SetSystem("Linux", "0.98.6");
  const SSystemInfo* info = KestGetSystemInfo();
  EXPECT_EQ(1, s_unameCalls);
  EXPECT_EQ(98, info->minorVersion);
  EXPECT_EQ(info, KestGetSystemInfo());
  EXPECT_EQ(2, s_unameCalls);

  SetSystem("Tux", "0");
  EXPECT_EQ(info, KestGetSystemInfo());
  EXPECT_EQ(3, s_unameCalls);
  EXPECT_EQ(0, memcmp(u"Tux", info->name, sizeof(u"Tux")));
  EXPECT_EQ(0, info->minorVersion);
  EXPECT_EQ(6, info->buildNumber) << "kept from the time before";

  SetSystem("Linux", "1.0.9");
  KestGetSystemInfo();
  EXPECT_EQ(4, s_unameCalls);
  EXPECT_EQ(0, memcmp(u"Linux", info->name, sizeof(u"Linux")));
  EXPECT_EQ(1, info->majorVersion);
  EXPECT_EQ(9, info->buildNumber);
  KestGetSystemInfo();
  EXPECT_EQ(4, s_unameCalls);
}

TEST_F(SystemInfoCache, StaysFilledAcrossStopAndStart) {
  SetSystem("Linux", "5.15.7");
  EXPECT_TRUE(KEST::SystemInit());
  const SSystemInfo* info = KestGetSystemInfo();
  KEST::SystemTerm();
  EXPECT_TRUE(KEST::SystemInit());
  EXPECT_TRUE(KEST::SystemInit());
  EXPECT_EQ(info, KestGetSystemInfo());
  EXPECT_EQ(1, s_unameCalls);
  KEST::SystemTerm();
}

void* AskAtTheBarrier(void* barrier) {
  pthread_barrier_wait(static_cast<pthread_barrier_t*>(barrier));
  const SSystemInfo* info = KestGetSystemInfo();
  const bool right = info->majorVersion == 5 && info->minorVersion == 15 &&
                     info->buildNumber == 7 && info->reserved == 0 && info->name[0] == 'L' &&
                     info->name[5] == 0;
  return right ? barrier : nullptr;
}

// Nobody sees a half filled record, and nothing is written that another thread may be reading.
TEST_F(SystemInfoCache, FirstCallsMayComeFromSeveralThreads) {
  SetSystem("Linux", "5.15.7");
  constexpr int kThreads = 8;
  pthread_barrier_t barrier;
  pthread_barrier_init(&barrier, nullptr, kThreads);
  pthread_t threads[kThreads];
  for (pthread_t& thread : threads) {
    ASSERT_EQ(0, pthread_create(&thread, nullptr, AskAtTheBarrier, &barrier));
  }
  for (pthread_t thread : threads) {
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(&barrier, result);
  }
  pthread_barrier_destroy(&barrier);
  EXPECT_LE(1, s_unameCalls);
}

}  // namespace
