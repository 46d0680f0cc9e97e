// 16-bit text for tests: as std::u16string, which compares and prints, and at the end of a page,
// where one unit too many is a crash.

#ifndef KEST_TESTS_SUPPORT_WIDE_TEXT_H
#define KEST_TESTS_SUPPORT_WIDE_TEXT_H

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace kest_test {

inline const unsigned short* Units(const char16_t* s) {
  return reinterpret_cast<const unsigned short*>(s);
}

inline const unsigned short* Units(const std::u16string& s) { return Units(s.c_str()); }

inline std::u16string Text(const unsigned short* s) {
  std::u16string text;
  for (; *s != 0; ++s) text += static_cast<char16_t>(*s);
  return text;
}

inline std::u16string Text(const unsigned short* s, size_t length) {
  std::u16string text;
  for (size_t i = 0; i < length; ++i) text += static_cast<char16_t>(s[i]);
  return text;
}

// Exactly count units, up to half a page, between memory that can be touched and memory that
// cannot.
class GuardedUnits {
 public:
  explicit GuardedUnits(size_t count)
      : pageSize(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        pages(mmap(nullptr, 2 * pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                   0)) {
    mprotect(static_cast<char*>(pages) + pageSize, pageSize, PROT_NONE);
    units = reinterpret_cast<unsigned short*>(static_cast<char*>(pages) + pageSize) - count;
  }
  // The units of s, without a terminator.
  explicit GuardedUnits(const std::u16string& s) : GuardedUnits(s.size()) {
    if (!s.empty()) memcpy(units, s.data(), 2 * s.size());
  }
  ~GuardedUnits() { munmap(pages, 2 * pageSize); }
  GuardedUnits(const GuardedUnits&) = delete;
  GuardedUnits& operator=(const GuardedUnits&) = delete;

  unsigned short* Get() const { return units; }

 private:
  size_t pageSize;
  void* pages;
  unsigned short* units;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_WIDE_TEXT_H
