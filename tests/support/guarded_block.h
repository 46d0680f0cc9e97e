// An exact-size buffer for a call under test: the byte behind it cannot be touched, and what lies
// before it may not be written.

#ifndef KEST_TESTS_SUPPORT_GUARDED_BLOCK_H
#define KEST_TESTS_SUPPORT_GUARDED_BLOCK_H

#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace kest_test {

// count elements of zeros, none for a count below 1.
template <typename T>
class GuardedBlock {
 public:
  explicit GuardedBlock(long long n)
      : count(static_cast<size_t>(std::max(n, 0LL))),
        page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        // One page in front, so that there is something to watch, and one behind.
        size((count * sizeof(T) + page - 1) / page * page + 2 * page),
        pages(static_cast<char*>(
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
        begin(reinterpret_cast<T*>(pages + size - page) - count) {
    mprotect(pages + size - page, page, PROT_NONE);
  }
  // The elements of a vector, or of a string without its terminator.
  template <typename Container, typename = typename Container::value_type>
  explicit GuardedBlock(const Container& from) : GuardedBlock(static_cast<long long>(from.size())) {
    static_assert(sizeof(typename Container::value_type) == sizeof(T));
    if (count != 0) memcpy(begin, from.data(), count * sizeof(T));
  }
  ~GuardedBlock() {
    constexpr ptrdiff_t kWatched = 64;
    const char* first = reinterpret_cast<const char*>(begin);
    EXPECT_TRUE(std::all_of(first - kWatched, first, [](char byte) { return byte == 0; }))
        << "written in front of the block";
    munmap(pages, size);
  }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;

  T* Get() const { return begin; }
  std::vector<T> Content() const { return std::vector<T>(begin, begin + count); }

 private:
  const size_t count;
  const size_t page;
  const size_t size;
  char* const pages;
  T* const begin;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_GUARDED_BLOCK_H
