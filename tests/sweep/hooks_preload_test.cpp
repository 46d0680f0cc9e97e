// That the watching hooks see what they watch for. ctest runs this program under each of them.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "kest/frame.h"

namespace {

char* Block(unsigned int size) { return static_cast<char*>(KestMemAlloc(size)); }

// The compiler is not to know.
volatile size_t s_size = 104;

class HooksPreload : public testing::Test {
 protected:
  void SetUp() override {
    const char* hooks = getenv("KEST_TEST_HOOKS");
    ASSERT_NE(nullptr, hooks);
    mode = hooks;
  }
  bool EndsAtAPage() const { return mode == "page" || mode == "exact"; }
  std::string mode;
};

TEST_F(HooksPreload, AWriteBehindABlockIsSeen) {
  if (EndsAtAPage()) {
    EXPECT_EXIT(Block(104)[s_size] = 1, testing::KilledBySignal(SIGSEGV), "");
  } else {
    EXPECT_DEATH(
        {
          char* block = Block(104);
          block[s_size] = 1;
          KestMemFree(block);
        },
        "written outside");
  }
}

TEST_F(HooksPreload, AReadBehindABlockThatEndsAtAPageIsSeen) {
  if (!EndsAtAPage()) return;
  EXPECT_EXIT(exit(Block(104)[s_size]), testing::KilledBySignal(SIGSEGV), "");
}

TEST_F(HooksPreload, AnOddSizeIsWatchedToo) {
  const auto write = [] {
    char* block = Block(99);
    block[s_size - 5] = 1;
    KestMemFree(block);
  };
  if (mode == "exact") {
    EXPECT_EXIT(write(), testing::KilledBySignal(SIGSEGV), "");
  } else {
    EXPECT_DEATH(write(), "written outside");
  }
}

TEST_F(HooksPreload, AWriteInFrontOfABlockIsSeen) {
  EXPECT_DEATH(
      {
        char* block = Block(104);
        block[-static_cast<ptrdiff_t>(s_size) + 99] = 1;
        KestMemFree(block);
      },
      "written outside");
}

TEST_F(HooksPreload, ASecondReleaseIsSeen) {
  EXPECT_DEATH(
      {
        char* block = Block(104);
        KestMemFree(block);
        KestMemFree(block);
      },
      EndsAtAPage() ? "no block" : "freed twice");
}

TEST_F(HooksPreload, AWriteAfterTheReleaseIsSeen) {
  if (EndsAtAPage()) return;  // the place may be in use again: the other hooks hold it back
  EXPECT_DEATH(
      {
        char* block = Block(104);
        KestMemFree(block);
        block[s_size - 1] = 1;
        exit(0);
      },
      "written after it was freed");
}

TEST_F(HooksPreload, AReleasePastTheHooksIsSeen) {
  EXPECT_DEATH(free(KestMemAlloc(104)), "freed past its hooks");
  EXPECT_DEATH(KestMemFree(malloc(100)), "made by other hooks");
}

TEST_F(HooksPreload, ABlockMovesWithItsBytes) {
  char* block = Block(3);
  memcpy(block, "ab", 3);
  block = static_cast<char*>(KestMemRealloc(block, 5000));
  EXPECT_STREQ("ab", block);
  block = static_cast<char*>(KestMemRealloc(block, 2));
  EXPECT_EQ('b', block[1]);
  KestMemFree(block);
}

}  // namespace
