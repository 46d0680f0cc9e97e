#include <limits.h>

#include "kest/frame.h"
#include "kest/string.h"

namespace {

int s_calls = 0;
void OnAssert(const char*, const char*, int) { ++s_calls; }
void OnDebugString(const char*) { ++s_calls; }

TEST(Debug, EntryPointsCallNothingAndPrintNothing) {
  KestSetAssertProc(OnAssert);
  KestSetDebugStringProc(OnDebugString);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  KestAssert("1 == 2", "file.cpp", 3);
  KestAssert(nullptr, nullptr, -1);
  KestTrace("%d %s\n", 1, "text");
  KestTrace(nullptr);
  KestTraceEx(0xFFFFFFFFu, "%d\n", 1);
  KestDumpMem("abc", 4);
  KestDumpMem(nullptr, 0xFFFFFFFFu);
  KestDebugBreak();
  KestSetAssertProc(nullptr);
  KestSetDebugStringProc(nullptr);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(0, s_calls);
}

TEST(Debug, EveryAddressIsValid) {
  EXPECT_EQ(1, KestIsValidAddress(nullptr));
  EXPECT_EQ(1, KestIsValidAddress(&s_calls));
  EXPECT_EQ(1, KestIsValidAddress(reinterpret_cast<void*>(-1)));
}

TEST(Debug, EverySettingReadsAsItsDefault) {
  const void* const keys[] = {nullptr, "name", KEST_TEXT("name"), reinterpret_cast<void*>(17)};
  for (const void* key : keys) {
    for (int value : {0, 1, -1, INT_MAX, INT_MIN}) {
      EXPECT_EQ(value, KestGetDebugSetting(key, value));
    }
  }
}

}  // namespace
