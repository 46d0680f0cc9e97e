// One epoll loop for everything: a timer, signals, and the messages of the library's queue, with
// the bridges of include/kest/bridge.

#include <signal.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "kest/bridge/char16.h"
#include "kest/bridge/eventfd.h"
#include "kest/bridge/lock.h"
#include "kest/bridge/range.h"
#include "kest/bridge/session.h"
#include "kest/bridge/time.h"

constexpr std::chrono::milliseconds kRetry(10);

// What the threads share.
struct SWork {
  KEST::TMutex lock;
  KEST::TPtrFromBstrMap lengths;  // from a word to its length; guarded by lock
  unsigned int wordId;
  unsigned int endedId;
};

// The worker posts each word's text when it has measured it. Who gets a message owns its BSTR.
static int Measure(void* arg) {
  KEST::TThreadSession session;
  SWork& work = *static_cast<SWork*>(arg);
  int failures = 0;
  for (const char16_t* word : {u"wide", u"caf\u00E9", u"\U0001F600"}) {
    KEST::TBstrOwner text(KestAllocString(word));
    {
      KEST::TLockGuard guard(work.lock);
      void* const length = reinterpret_cast<void*>(static_cast<uintptr_t>(text.GetLength()));
      if (!work.lengths.SetAt(text.Get(), length)) ++failures;
    }
    if (KestPostMessage(work.wordId, text.Get(), arg)) {
      text.Release();
    } else {
      ++failures;
    }
  }
  // The loop waits for this one: when there is no memory now, there may be soon.
  while (!KestPostMessage(work.endedId, arg, nullptr)) {
    KEST::TThread::Sleep(static_cast<unsigned int>(KEST::ToMilliseconds(kRetry)));
  }
  return failures;
}

static void OnWord(unsigned int, void* bstr, void* arg) {
  const KEST::TBstrOwner word(static_cast<unsigned short*>(bstr));
  SWork& work = *static_cast<SWork*>(arg);
  KEST::TLockGuard guard(work.lock);
  void* length = nullptr;
  work.lengths.Lookup(word.Get(), length);
  printf("message: %s, %u units\n", KEST::ToUtf8(word.Get()).c_str(),
         static_cast<unsigned int>(reinterpret_cast<uintptr_t>(length)));
}

static int s_timer = -1;

// Starts the timer, which in turn ends the program.
static void OnEnded(unsigned int, void*, void*) {
  puts("message: the worker has ended");
  itimerspec time = {};
  time.it_value.tv_nsec = time.it_interval.tv_nsec = 5'000'000;
  timerfd_settime(s_timer, 0, &time, nullptr);
}

static void Watch(int loop, int descriptor) {
  epoll_event event = {};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  epoll_ctl(loop, EPOLL_CTL_ADD, descriptor, &event);
}

static void Run(int loop, int signals, KEST::TMessageEvent& messages) {
  int ticks = 0;
  for (;;) {
    epoll_event event;
    if (epoll_wait(loop, &event, 1, -1) != 1) continue;  // a stop and its continuation
    if (event.data.fd == messages.GetDescriptor()) {
      // Closing is a state: the descriptor stays readable, so the loop cannot miss it.
      if (messages.Dispatch() == KEST::TMessageEvent::kClosed) return;
    } else if (event.data.fd == s_timer) {
      uint64_t expired;
      if (read(s_timer, &expired, sizeof(expired)) < 0 || ticks == 3) continue;
      printf("timer: tick %d\n", ++ticks);
      if (ticks == 3) kill(getpid(), SIGTERM);
    } else {
      signalfd_siginfo info;
      if (read(signals, &info, sizeof(info)) < 0) continue;
      printf("signal: %s\n", info.ssi_signo == SIGTERM ? "SIGTERM" : "SIGINT");
      messages.Close();
    }
  }
}

int main() {
  // Signals come through a descriptor; blocked before any thread starts, which inherit that.
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  sigprocmask(SIG_BLOCK, &set, nullptr);

  KEST::TSession session;
  if (!session) return 1;
  SWork work;
  work.wordId = KestRequestMessageId();
  work.endedId = KestRequestMessageId();
  KestRegisterMessageCallback(work.wordId, OnWord);
  KestRegisterMessageCallback(work.endedId, OnEnded);

  const int signals = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  s_timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  const int loop = epoll_create1(EPOLL_CLOEXEC);
  int failures = 1;
  {
    KEST::TMessageEvent messages;
    KEST::TThread worker;
    if (messages && worker.Create(Measure, &work, false)) {
      Watch(loop, messages.GetDescriptor());
      Watch(loop, s_timer);
      Watch(loop, signals);
      Run(loop, signals, messages);
      if (!worker.WaitForExit(&failures)) failures = 1;
    }
  }
  int units = 0;
  for (auto [word, length] : work.lengths) units += word.GetLength();
  printf("%d words, %d units\n", work.lengths.GetCount(), units);

  close(loop);
  close(s_timer);
  close(signals);
  KestUnregisterMessageCallback(work.endedId);
  KestUnregisterMessageCallback(work.wordId);
  return failures;
}
