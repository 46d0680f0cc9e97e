// Texts at the limits of 32-bit lengths.

#include <gtest/gtest.h>
#include <limits.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "kest/text.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

constexpr size_t kMebibyte = 1 << 20;

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
  void Map(size_t at, int kind, int memory) {
    mmap(place + at, kMebibyte, PROT_READ | PROT_WRITE, kind | MAP_FIXED, memory, 0);
  }

  size_t size;
  char* place;
};

using HtmlFunction = void (*)(const unsigned short*, TBstr&);

}  // namespace

// So many quotation marks that the length of the escaped text passes 32 bits.
TEST(HugeText, EscapedTextTooLongForAStringIsAFailure) {
  constexpr unsigned int kQuotes = 715827883;
  static_assert(6ull * kQuotes > UINT_MAX);
  HugeText text('"', kQuotes);
  if (!text.IsThere()) GTEST_SKIP() << "no address space";
  TestAllocator allocator;
  TBstr out(KEST_TEXT("old"));
  allocator.Reset();
  KestEntityEscape(text.Get(), out);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(0, allocator.Requests());
}

// A temporary block of 2^32 bytes is more than any request may be, and is not asked for; one unit
// less is, and then refused. The result stays as it was.
TEST(HugeText, ATemporaryBlockFits32Bits) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "such a text is no part of a 32-bit address space";
  TestAllocator allocator;
  for (unsigned int length : {0x7FFFFFFEu, 0x7FFFFFFFu}) {
    HugeText text('a', length);
    if (!text.IsThere()) GTEST_SKIP() << "no address space";
    for (HtmlFunction function : {KestEntityUnescape, KestHtmlToPlain}) {
      allocator.RefuseNone();
      TBstr out(KEST_TEXT("old"));
      allocator.Reset();
      allocator.Refuse(1, TestAllocator::kFromThereOn);
      function(text.Get(), out);
      EXPECT_EQ(u"old", TextOf(out)) << length;
      const bool fits = length < INT_MAX;
      EXPECT_EQ(fits ? 1 : 0, allocator.Requests()) << length;
      EXPECT_EQ(fits ? 0xFFFFFFFE : 0, allocator.LastSize()) << length;
    }
  }
}
