// Texts at the limits of 32-bit lengths, in little memory.

#ifndef KEST_TESTS_SUPPORT_HUGE_TEXT_H
#define KEST_TESTS_SUPPORT_HUGE_TEXT_H

#include <stddef.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace kest_test {

// count times unit, and a terminator, in address space where the same memory stands again and
// again. The last part is memory of its own.
class HugeText {
 public:
  HugeText(unsigned short unit, size_t count)
      : size((2 * count / kMebibyte + 1) * kMebibyte),
        place(static_cast<char*>(
            mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    const int memory = memfd_create("kest_text", 0);
    if (IsThere() && ftruncate(memory, kMebibyte) == 0) {
      const size_t last = size - kMebibyte;
      for (size_t at = 0; at < last; at += kMebibyte) Map(at, MAP_SHARED, memory);
      std::fill_n(Get(), kMebibyte / 2, unit);
      Map(last, MAP_PRIVATE, memory);
      Get()[count] = 0;
    }
    close(memory);
  }
  ~HugeText() {
    if (IsThere()) munmap(place, size);
  }
  HugeText(const HugeText&) = delete;
  HugeText& operator=(const HugeText&) = delete;

  bool IsThere() const { return place != MAP_FAILED; }
  unsigned short* Get() { return reinterpret_cast<unsigned short*>(place); }

 private:
  static constexpr size_t kMebibyte = 1 << 20;

  void Map(size_t at, int kind, int memory) {
    mmap(place + at, kMebibyte, PROT_READ | PROT_WRITE, kind | MAP_FIXED, memory, 0);
  }

  size_t size;
  char* place;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_HUGE_TEXT_H
