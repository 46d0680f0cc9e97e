// What fuzz targets are written with: the check, the bytes of an input taken apart, and memory that
// ends where it must not be left.

#ifndef KEST_TESTS_FUZZ_FUZZ_H
#define KEST_TESTS_FUZZ_FUZZ_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEST_FUZZ_ASAN 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define KEST_FUZZ_ASAN 1
#endif
#ifdef KEST_FUZZ_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(block, size) ((void)0)
#define ASAN_UNPOISON_MEMORY_REGION(block, size) ((void)0)
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Ends the process when condition does not hold; the fuzzer then keeps the input.
#define FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : kest_fuzz::Fail(__FILE__, __LINE__, #condition))

namespace kest_fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* condition) {
  fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  abort();
}

// An input, taken apart from its front. Where it ends, everything is 0.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

  uint8_t Byte() {
    if (m_size == 0) return 0;
    --m_size;
    return *m_data++;
  }
  unsigned short Unit() {
    const unsigned int low = Byte();
    return static_cast<unsigned short>(low | static_cast<unsigned int>(Byte()) << 8);
  }
  unsigned int Word() {
    const unsigned int low = Unit();
    return low | static_cast<unsigned int>(Unit()) << 16;
  }
  int Int() { return static_cast<int>(Word()); }
  bool Bool() { return (Byte() & 1) != 0; }
  // 0 to limit - 1; limit is 1 to 256.
  int Below(int limit) { return Byte() % limit; }

  // What is left.
  const uint8_t* Rest() const { return m_data; }
  size_t Left() const { return m_size; }
  int IntLeft() const { return static_cast<int>(m_size); }

 private:
  const uint8_t* m_data;
  size_t m_size;
};

// Room for one block of up to kMax values at a time, each ending at an inaccessible page; taking
// one costs no allocation. With the address sanitizer the bytes before the block are closed too.
template <typename T, size_t kMax>
class Guarded {
 public:
  Guarded() {
    void* pages =
        mmap(nullptr, kBytes + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) Fail(__FILE__, __LINE__, "mmap");
    m_end = static_cast<char*>(pages) + kBytes;
    mprotect(m_end, kPage, PROT_NONE);
  }
  ~Guarded() {
    ASAN_UNPOISON_MEMORY_REGION(m_end - kBytes, kBytes);
    munmap(m_end - kBytes, kBytes + kPage);
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  // Exactly count values, with what the block before left in them.
  T* Take(size_t count) {
    if (count > kMax) Fail(__FILE__, __LINE__, "count <= kMax");
    char* block = m_end - count * sizeof(T);
    ASAN_UNPOISON_MEMORY_REGION(block, count * sizeof(T));
    ASAN_POISON_MEMORY_REGION(block - kMargin, kMargin);
    return reinterpret_cast<T*>(block);
  }
  // A copy of count values.
  T* Copy(const void* values, size_t count) {
    T* block = Take(count);
    if (count != 0) memcpy(block, values, count * sizeof(T));
    return block;
  }

 private:
  static constexpr size_t kPage = 4096;
  static constexpr size_t kMargin = 64;
  static constexpr size_t kBytes = (kMax * sizeof(T) + kMargin + kPage - 1) / kPage * kPage;

  char* m_end;
};

// Text made of an input: up to kMax units and a terminator that ends at an inaccessible page.
template <size_t kMax>
class GuardedText {
 public:
  // All that is left, or count units at most. The first byte says whether a unit is a byte or two;
  // a zero unit ends the text.
  const unsigned short* Take(Input& in, size_t count = kMax) {
    const bool isWide = in.Bool();
    if (count > kMax) count = kMax;
    m_length = 0;
    while (m_length < count && in.Left() != 0) {
      const unsigned short unit = isWide ? in.Unit() : in.Byte();
      if (unit == 0) break;
      m_units[m_length++] = unit;
    }
    m_units[m_length] = 0;
    return m_room.Copy(m_units, m_length + 1);
  }
  size_t Length() const { return m_length; }

 private:
  Guarded<unsigned short, kMax + 1> m_room;
  unsigned short m_units[kMax + 1];
  size_t m_length = 0;
};

}  // namespace kest_fuzz

#endif  // KEST_TESTS_FUZZ_FUZZ_H
