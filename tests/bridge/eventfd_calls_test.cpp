// eventfd.h, by its system calls: this program's own count them, let others come in between, and
// pass them on.

#include "kest/bridge/eventfd.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <functional>
#include <thread>

#include "kest/bridge/session.h"
#include "support/gate.h"

namespace {

// Of the descriptor that is watched.
int s_descriptor = -1;
int s_reads = 0, s_writes = 0;
int s_interrupt = 0;  // calls that a signal interrupts from now on
bool s_failing = false;
// What happens just before a call of that name, once.
std::function<void()> s_beforeRead, s_beforeWrite, s_beforeYield, s_beforeClose;

void Once(std::function<void()>& action) {
  const std::function<void()> now = std::move(action);
  action = nullptr;
  if (now) now();
}

bool Interrupted() {
  if (s_interrupt == 0) return false;
  --s_interrupt;
  errno = EINTR;
  return true;
}

}  // namespace

extern "C" {

ssize_t write(int descriptor, const void* data, size_t size) {
  if (descriptor == s_descriptor) {
    if (Interrupted()) return -1;
    ++s_writes;
    Once(s_beforeWrite);
  }
  return syscall(SYS_write, descriptor, data, size);
}

ssize_t read(int descriptor, void* data, size_t size) {
  if (descriptor == s_descriptor) {
    if (Interrupted()) return -1;
    ++s_reads;
    Once(s_beforeRead);
  }
  return syscall(SYS_read, descriptor, data, size);
}

int close(int descriptor) {
  if (descriptor == s_descriptor) Once(s_beforeClose);
  return static_cast<int>(syscall(SYS_close, descriptor));
}

int sched_yield() noexcept {
  Once(s_beforeYield);
  return static_cast<int>(syscall(SYS_sched_yield));
}

int eventfd(unsigned int count, int flags) noexcept {
  if (s_failing) {
    errno = EMFILE;
    return -1;
  }
  return static_cast<int>(syscall(SYS_eventfd2, count, flags));
}

}  // extern "C"

namespace {

using namespace KEST;

TEST(MessageEventCalls, OneWriteAnEdge) {
  TSession session;
  TMessageEvent event;
  ASSERT_TRUE(event);
  s_descriptor = event.GetDescriptor();
  EXPECT_EQ(TMessageEvent::kDrained, event.Dispatch());
  EXPECT_EQ(0, s_writes);
  EXPECT_EQ(1, s_reads);
  for (int edge = 1; edge <= 100; ++edge) {
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(KestPostMessage(1, nullptr, nullptr));
    ASSERT_EQ(edge, s_writes) << "posts to a queue that is not empty";
    ASSERT_EQ(TMessageEvent::kDrained, event.Dispatch());
    ASSERT_EQ(edge, s_writes);
    ASSERT_EQ(edge + 1, s_reads);
  }
  event.Close();
  event.Close();
  EXPECT_EQ(101, s_writes);
  EXPECT_EQ(TMessageEvent::kClosed, event.Dispatch());
  EXPECT_EQ(101, s_writes);
  EXPECT_EQ(101, s_reads) << "a closed one is left readable";
  s_descriptor = -1;
}

TEST(MessageEventCalls, ASignalInterruptsNothing) {
  TSession session;
  TMessageEvent event;
  event.Dispatch();
  s_descriptor = event.GetDescriptor();
  s_writes = s_reads = 0;
  s_interrupt = 3;
  errno = 77;
  EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
  EXPECT_EQ(77, errno) << "posting keeps errno";
  EXPECT_EQ(1, s_writes);
  s_interrupt = 3;
  EXPECT_EQ(TMessageEvent::kDrained, event.Dispatch());
  EXPECT_EQ(1, s_reads);
  s_descriptor = -1;
}

// The close comes when the dispatch has begun, and the count that it writes is taken with the rest.
TEST(MessageEventCalls, ACloseThatIsTakenIsPutBack) {
  TSession session;
  TMessageEvent event;
  s_descriptor = event.GetDescriptor();
  s_beforeRead = [&] { event.Close(); };
  EXPECT_EQ(TMessageEvent::kClosed, event.Dispatch());
  EXPECT_TRUE(event.Wait(std::chrono::milliseconds(0)));
  s_descriptor = -1;
}

TEST(MessageEventCalls, ItIsClosedBehindTheLastPoster) {
  TSession session;
  kest_test::Gate inside, ending;
  std::atomic<bool> writing{false}, tooEarly{false};
  std::thread poster;
  {
    TMessageEvent event;
    event.Dispatch();
    s_descriptor = event.GetDescriptor();
    s_beforeWrite = [&] {
      writing.store(true);
      inside.Open();
      ending.Wait();
    };
    s_beforeClose = [&] {
      tooEarly.store(writing.load());
      ending.Open();
    };
    poster = std::thread([&] {
      TThreadSession thread;
      EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
    });
    inside.Wait();
    s_beforeYield = [&] {
      writing.store(false);
      ending.Open();
    };
  }
  poster.join();
  EXPECT_FALSE(tooEarly.load());
  s_descriptor = -1;
}

TEST(MessageEventCalls, WithoutADescriptorItIsNone) {
  TSession session;
  s_failing = true;
  {
    TMessageEvent event;
    EXPECT_FALSE(event);
    EXPECT_EQ(TMessageEvent::kClosed, event.Dispatch());
  }
  s_failing = false;
  TMessageEvent event;
  EXPECT_TRUE(event) << "the one that failed does not count";
}

}  // namespace
