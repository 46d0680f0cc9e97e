// An event that one thread sets and another takes, handed over through the library's condition.

#ifndef KEST_TESTS_STRESS_EVENT_H
#define KEST_TESTS_STRESS_EVENT_H

#include "kest/thread.h"

namespace kest_test {

class Event {
 public:
  Event() { signal_.Init(); }
  ~Event() { signal_.Term(); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set() {
    signal_.Lock();
    set_ = true;
    signal_.Signal();
    signal_.Unlock();
  }

  // Waits until the event is set, ms milliseconds at a time, and resets it.
  void Take(int ms = -1) {
    signal_.Lock();
    while (!set_) signal_.Wait(ms);
    set_ = false;
    signal_.Unlock();
  }

 private:
  KEST::TCondVar signal_;
  bool set_ = false;
};

}  // namespace kest_test

#endif  // KEST_TESTS_STRESS_EVENT_H
