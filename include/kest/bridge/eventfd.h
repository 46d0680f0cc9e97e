// The message queue as a file descriptor, for epoll, poll, or any event loop that watches
// descriptors. Linux.
//
//   KEST::TMessageEvent messages;                       // after KestInitialize
//   if (!messages) return 1;
//   ... watch messages.GetDescriptor() for reading; whenever it is readable:
//   if (messages.Dispatch() == KEST::TMessageEvent::kClosed) break;
//
//   Edges      The queue's message-available callback writes to the descriptor once each time the
//              queue turns from empty to not empty. Posting to a queue that is not empty makes no
//              system call, nor does anything while nothing is posted.
//   State      The descriptor is readable when there may be messages, and from Close on for ever:
//              closing is a state that everyone sees who looks, however late, not an event that
//              somebody else could have taken. So is what a Dispatch leaves in the queue: it makes
//              the descriptor readable again before it returns.
//   Threads    Posting, Close, Wait and IsClosed are safe from any thread. One thread dispatches,
//              the queue's consumer, which makes and destroys the object too. Whoever else waits
//              has to be done with the object before that.
//   Lifetime   From behind KestInitialize to before the last KestUninitialize. One at a time in a
//              process: a second one is none. Meanwhile the message-available callback is its own,
//              and KestMessageLoop must not be used. A module that has made one stays loaded until
//              it is destroyed. A poster that is cancelled in the callback leaves the queue locked,
//              and the destructor waiting.
//   Failure    Results only; nothing throws.
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_EVENTFD_H
#define KEST_BRIDGE_EVENTFD_H

#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <sched.h>
#include <stdint.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

#include "kest/message.h"

namespace KEST {

namespace bridge_detail {

// What the callback looks at. It outlives every object, because a poster may have read the callback
// just before it was taken back.
struct SMessageSignal {
  std::atomic<bool> taken{false};
  std::atomic<int> descriptor{-1};
  std::atomic<int> posters{0};  // in the callback just now
};
inline SMessageSignal messageSignal;

// Adds one to the descriptor's count, which makes it readable. It cannot fail: the count would have
// to be 2^64 - 2, and the descriptor readable.
inline void Ring(int descriptor) {
  const int before = errno;
  const uint64_t one = 1;
  while (write(descriptor, &one, sizeof(one)) < 0 && errno == EINTR) continue;
  errno = before;
}

// Runs on the posting thread with the queue locked.
inline void OnMessageAvailable(void*) {
  SMessageSignal& signal = messageSignal;
  // Counted before the descriptor is read: so whoever takes that away either is seen here, or sees
  // the count and waits.
  signal.posters.fetch_add(1);
  const int descriptor = signal.descriptor.load();
  if (descriptor >= 0) Ring(descriptor);
  signal.posters.fetch_sub(1);
}

}  // namespace bridge_detail

// The descriptor of the process's message queue, with what a loop does when it is readable.
class TMessageEvent {
 public:
  // What a Dispatch has left.
  enum EResult {
    kDrained,  // no message is left
    kMore,     // there may be more; the descriptor is readable
    kQuit,     // a quit message has been taken; what follows it makes the descriptor readable
    kClosed    // Close has been called; messages may be left
  };

  // Opens the descriptor and sets the callback. The descriptor is readable at first, so messages
  // that already wait are not overlooked. None when there is one in the process already, or no
  // descriptor left.
  TMessageEvent() : descriptor(-1), closed(false) {
    bridge_detail::SMessageSignal& signal = bridge_detail::messageSignal;
    if (signal.taken.exchange(true)) return;
    descriptor = eventfd(1, EFD_NONBLOCK | EFD_CLOEXEC);
    if (descriptor < 0) {
      signal.taken.store(false);
      return;
    }
    signal.descriptor.store(descriptor);
    KestSetMessageAvailableCallback(bridge_detail::OnMessageAvailable, nullptr);
  }

  // Takes the callback back, waits for posters that are in it, and closes the descriptor. Messages
  // stay in the queue.
  ~TMessageEvent() {
    if (descriptor < 0) return;
    bridge_detail::SMessageSignal& signal = bridge_detail::messageSignal;
    KestSetMessageAvailableCallback(nullptr, nullptr);
    signal.descriptor.store(-1);
    while (signal.posters.load() != 0) sched_yield();
    close(descriptor);
    signal.taken.store(false);
  }
  TMessageEvent(const TMessageEvent&) = delete;
  TMessageEvent& operator=(const TMessageEvent&) = delete;

  // Whether there is a descriptor. Without one every other call does nothing and says kClosed.
  explicit operator bool() const { return descriptor >= 0; }

  // To be watched for reading, level-triggered or edge-triggered; -1 without one. It belongs to
  // this object: neither read, written nor closed by others.
  int GetDescriptor() const { return descriptor; }

  // Waits until the descriptor is readable: for messages, or for Close. False when the time has
  // passed; a negative one waits for ever. Signals do not end it. Times are rounded up to
  // milliseconds, and cut to INT_MAX of them, 24.8 days.
  bool Wait(std::chrono::milliseconds time) const {
    using Clock = std::chrono::steady_clock;
    if (descriptor < 0) return true;
    const bool forEver = time.count() < 0;
    std::chrono::milliseconds left =
        time.count() < INT_MAX ? time : std::chrono::milliseconds(INT_MAX);
    const Clock::time_point end = Clock::now() + left;
    for (;;) {
      pollfd entry = {descriptor, POLLIN, 0};
      const int count = poll(&entry, 1, forEver ? -1 : static_cast<int>(left.count()));
      if (count >= 0 || errno != EINTR) return count > 0;
      left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
      if (left.count() < 0) left = std::chrono::milliseconds(0);
    }
  }
  bool Wait() const { return Wait(std::chrono::milliseconds(-1)); }

  // Gives waiting messages to their callbacks, at most so many, as KestDispatchMessages does: one
  // without a callback is dropped, and those that callbacks post are given too. Stops at a quit
  // message, whose first parameter is stored in quitParam unless that is null, and as soon as the
  // object is closed. Never blocks. Callbacks may post, close and dispatch.
  EResult Dispatch(int limit = INT_MAX, void** quitParam = nullptr) {
    if (IsClosed()) return kClosed;
    // The count is taken before the messages: what is posted behind them writes anew.
    uint64_t count;
    while (read(descriptor, &count, sizeof(count)) < 0 && errno == EINTR) continue;
    const EResult result = Give(limit, quitParam);
    // Close may have come before the count was taken, and its write with it.
    if (IsClosed()) return RingFor(kClosed);
    return result == kDrained ? kDrained : RingFor(result);
  }

  // From now on the descriptor is readable, every Wait is true, and every Dispatch says kClosed and
  // gives nothing. Any thread, a message's callback and a signal handler too, as often as one
  // likes. Posting goes on to work.
  void Close() {
    if (descriptor < 0 || closed.exchange(true)) return;
    bridge_detail::Ring(descriptor);
  }
  bool IsClosed() const { return descriptor < 0 || closed.load(); }

 private:
  EResult Give(int limit, void** quitParam) {
    unsigned int id;
    void* param1;
    void* param2;
    for (int given = 0; given < limit; ++given) {
      if (closed.load()) return kClosed;
      if (!KestGetMessage(&id, &param1, &param2)) return kDrained;
      if (id == kQuitMessageId) {
        if (quitParam != nullptr) *quitParam = param1;
        return kQuit;
      }
      KestGiveMessage(id, param1, param2);
    }
    return kMore;
  }

  EResult RingFor(EResult result) {
    bridge_detail::Ring(descriptor);
    return result;
  }

  int descriptor;
  std::atomic<bool> closed;
};

}  // namespace KEST

#endif  // KEST_BRIDGE_EVENTFD_H
