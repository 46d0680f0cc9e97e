// The steps of start and stop, in order. This program defines the steps itself: the library's
// calls reach them because it binds its own exported functions like any other symbol.

#include <string>
#include <vector>

#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"

namespace {

std::vector<std::string> s_calls;
std::string s_failing;
KEST::SAllocator* s_allocator = nullptr;

bool Step(const char* name) {
  s_calls.push_back(name);
  return s_failing != name;
}

using Names = std::vector<std::string>;

const Names kStart = {"MemInit",  "SyncInit",  "TlsInit",     "TlsThreadInit", "SystemInit",
                      "BstrInit", "DebugInit", "MessageInit", "RandInit"};
const Names kStop = {"RandTerm",      "MessageTerm", "DebugTerm", "BstrTerm", "SystemTerm",
                     "TlsThreadTerm", "TlsTerm",     "SyncTerm",  "MemTerm",  "PSTerm"};

Names CallsOf(void (*action)()) {
  s_calls.clear();
  action();
  return s_calls;
}

}  // namespace

namespace KEST {

bool MemInit(SAllocator* allocator) {
  s_allocator = allocator;
  return Step("MemInit");
}
bool SyncInit() { return Step("SyncInit"); }
bool TlsInit() { return Step("TlsInit"); }
bool TlsThreadInit() { return Step("TlsThreadInit"); }
bool SystemInit() { return Step("SystemInit"); }
bool BstrInit() { return Step("BstrInit"); }
bool DebugInit() { return Step("DebugInit"); }
bool MessageInit() { return Step("MessageInit"); }
bool RandInit() { return Step("RandInit"); }
void RandTerm() { Step("RandTerm"); }
void MessageTerm() { Step("MessageTerm"); }
void DebugTerm() { Step("DebugTerm"); }
void BstrTerm() { Step("BstrTerm"); }
void SystemTerm() { Step("SystemTerm"); }
void TlsThreadTerm() { Step("TlsThreadTerm"); }
void TlsTerm() { Step("TlsTerm"); }
void SyncTerm() { Step("SyncTerm"); }
void MemTerm() { Step("MemTerm"); }
void PSTerm() { Step("PSTerm"); }

}  // namespace KEST

namespace {

TEST(StartOrder, FirstStartAndLastStopRunEveryStep) {
  EXPECT_EQ(kStart, CallsOf([] { EXPECT_EQ(1, KestInitialize(nullptr)); }));
  EXPECT_EQ(kStop, CallsOf(KestUninitialize));
  EXPECT_EQ(kStart, CallsOf([] { EXPECT_EQ(1, KestInitialize(nullptr)); })) << "started again";
}

TEST(StartOrder, TheAllocatorReachesItsStep) {
  KEST::SAllocator allocator = {};
  EXPECT_EQ(1, KestInitialize(&allocator));
  EXPECT_EQ(&allocator, s_allocator);
}

TEST(StartOrder, FurtherPairsRunTheThreadStepsAlone) {
  KestInitialize(nullptr);
  EXPECT_EQ(Names{"TlsThreadInit"}, CallsOf([] { EXPECT_EQ(1, KestInitialize(nullptr)); }));
  EXPECT_EQ(Names{"TlsThreadTerm"}, CallsOf(KestUninitialize));
  EXPECT_EQ(kStop, CallsOf(KestUninitialize));
  EXPECT_EQ(Names{}, CallsOf(KestUninitialize));
}

TEST(StartOrder, AFurtherStartIgnoresAFailedThreadStep) {
  KestInitialize(nullptr);
  s_failing = "TlsThreadInit";
  EXPECT_EQ(1, KestInitialize(nullptr));
  EXPECT_EQ(Names{"TlsThreadTerm"}, CallsOf(KestUninitialize)) << "it was counted";
}

TEST(StartOrder, TheFirstFailedStepEndsTheStartAndUndoesNothing) {
  for (size_t i = 0; i < kStart.size(); ++i) {
    SCOPED_TRACE(kStart[i]);
    s_failing = kStart[i];
    const Names upToTheFailure(kStart.begin(), kStart.begin() + static_cast<long>(i) + 1);
    EXPECT_EQ(upToTheFailure, CallsOf([] { EXPECT_EQ(0, KestInitialize(nullptr)); }));
    EXPECT_EQ(Names{}, CallsOf(KestUninitialize)) << "a failed start is not counted";
  }
  s_failing.clear();
  EXPECT_EQ(kStart, CallsOf([] { EXPECT_EQ(1, KestInitialize(nullptr)); }));
}

}  // namespace
