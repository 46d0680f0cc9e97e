// Strings at the limits of 32-bit lengths, which take a 64-bit address space.

#include <gtest/gtest.h>
#include <limits.h>

#include "kest/string.h"
#include "kest/text.h"
#include "support/huge_text.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::HugeText;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

// Of three bytes in UTF-8.
constexpr unsigned short kLongUnit = 0x20AC;

}  // namespace

// The count wrapped to 2, and a caller who took that for the size of its buffer got 3 bytes.
TEST(FormerBug, Utf8OfMoreBytesThan32BitsCountIsRefused) {
  HugeText text(kLongUnit, UINT_MAX / 3 + 1);
  ASSERT_TRUE(text.IsThere());
  EXPECT_EQ(0u, KestStringUtf8ByteLen(text.Get()));
}

// The last sequence made the result negative, and the encoded length was negative as well.
TEST(FormerBug, Utf8EndsBeforeItPassesAnInt) {
  constexpr int kPastInt = INT_MAX / 3 + 1;
  HugeText source(kLongUnit, kPastInt), dest(0, INT_MAX / 2 + 2);
  ASSERT_TRUE(source.IsThere() && dest.IsThere());
  TBstr text;
  text.Attach(source.Get());
  EXPECT_EQ(INT_MAX + 2u, KestStringUtf8ByteLen(text.GetString()));
  EXPECT_EQ(0, text.GetEncodedByteLength(KEST::kUtf8Encoding));
  EXPECT_EQ(INT_MAX - 1, KestStringToUtf8(text.GetString(), kPastInt,
                                          reinterpret_cast<char*>(dest.Get()), INT_MAX));
  text.Detach();
}

TEST(HugeString, ATextThatNoIntCountsFailsAsWithoutMemory) {
  HugeText text('a', size_t{INT_MAX} + 1);
  ASSERT_TRUE(text.IsThere());
  using Change = void (*)(TBstr&, const unsigned short*);
  constexpr Change kChanges[] = {
      [](TBstr& s, const unsigned short* huge) { s.Assign(huge); },
      [](TBstr& s, const unsigned short* huge) { s.Append(huge); },
  };
  for (Change change : kChanges) {
    TBstr s(KEST_TEXT("old"));
    TestAllocator allocator;
    change(s, text.Get());
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(0, allocator.Requests());
  }
}

// Twice as many bytes as units.
TEST(HugeString, BytesThatNoIntCountsConvertToNothing) {
  HugeText text('a' | 'a' << 8, size_t{INT_MAX} + 3);
  ASSERT_TRUE(text.IsThere());
  TestAllocator allocator;
  const KEST::TConvertBuffer buffer(reinterpret_cast<const char*>(text.Get()));
  EXPECT_EQ(0, buffer.GetLength()) << "not 4, which it wraps to";
  EXPECT_EQ(0, allocator.Requests());
}
