// A gate between test threads: closed at first, opened once, waited for by any number of threads.

#ifndef KEST_TESTS_SUPPORT_GATE_H
#define KEST_TESTS_SUPPORT_GATE_H

#include <condition_variable>
#include <mutex>

namespace kest_test {

class Gate {
 public:
  void Open() {
    std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    condition_.notify_all();
  }
  void Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    condition_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable condition_;
  bool open_ = false;
};

// A count that a thread can wait for.
class Counter {
 public:
  void Add() {
    std::lock_guard<std::mutex> lock(mutex_);
    ++value_;
    condition_.notify_all();
  }
  void WaitFor(int value) {
    std::unique_lock<std::mutex> lock(mutex_);
    condition_.wait(lock, [&] { return value_ >= value; });
  }
  int Value() {
    std::lock_guard<std::mutex> lock(mutex_);
    return value_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable condition_;
  int value_ = 0;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_GATE_H
