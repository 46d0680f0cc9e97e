// Texts at the limits of 32-bit lengths.

#include <gtest/gtest.h>
#include <limits.h>

#include "kest/text.h"
#include "support/huge_text.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::HugeText;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

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
