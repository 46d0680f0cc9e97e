#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <string.h>

#include <algorithm>
#include <type_traits>

#include "kest/string.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TConvertBuffer;
using kest_test::TestAllocator;

TEST(ConvertMultibyte, EveryUnitBecomesItsByteOrAQuestionMark) {
  for (int unit = 0; unit <= 0xFFFF; ++unit) {
    const auto source = static_cast<unsigned short>(unit);
    unsigned char byte = 0x55;
    ASSERT_EQ(1, KestUnicodeToMultibyte(&source, 1, reinterpret_cast<char*>(&byte), 1));
    ASSERT_EQ(unit < 256 ? unit : '?', byte);
  }
}

TEST(ConvertMultibyte, EveryByteBecomesTheUnitOfItsValue) {
  for (int byte = 0; byte < 256; ++byte) {
    const char source = static_cast<char>(byte);
    unsigned short unit = 0x5555;
    ASSERT_EQ(1, KestMultibyteToUnicode(&source, 1, &unit, 1));
    ASSERT_EQ(byte, unit);
  }
}

TEST(ConvertMultibyte, StopsAtEitherBound) {
  // Columns: source length, size, count. The text is "ab", a zero, "cd", a terminator.
  constexpr int kRows[][3] = {
      {5, 9, 5},  {5, 5, 5},       {5, 3, 3},       {5, 1, 1},        {3, 9, 3},
      {6, 9, 6},  {-1, 9, 3},      {-1, 3, 3},      {-1, 2, 2},       {0, 9, 0},
      {-2, 9, 0}, {INT_MIN, 9, 0}, {5, 0, 0},       {5, -1, 0},       {5, INT_MIN, 0},
      {-1, 0, 0}, {-1, -1, 0},     {5, INT_MAX, 5}, {-1, INT_MAX, 3},
  };
  for (const auto& [length, size, count] : kRows) {
    SCOPED_TRACE(testing::Message() << length << " into " << size);
    const auto done = static_cast<size_t>(count);
    char bytes[10] = "UUUUUUUUU";
    EXPECT_EQ(count, KestUnicodeToMultibyte(KEST_TEXT("ab\0cd"), length, bytes, size));
    EXPECT_EQ(std::string("ab\0cd\0", 6).substr(0, done) + std::string(9 - done, 'U'),
              std::string(bytes, 9));

    unsigned short units[9];
    std::fill_n(units, 9, static_cast<unsigned short>('U'));
    EXPECT_EQ(count, KestMultibyteToUnicode("ab\0cd", length, units, size));
    EXPECT_EQ(std::u16string(u"ab\0cd\0", 6).substr(0, done) + std::u16string(9 - done, u'U'),
              std::u16string(units, units + 9));
  }
}

TEST(ConvertMultibyte, MinusOneOfEmptyTextConvertsTheTerminator) {
  char byte = 'U';
  unsigned short unit = 'U';
  EXPECT_EQ(1, KestUnicodeToMultibyte(KEST_TEXT(""), -1, &byte, 1));
  EXPECT_EQ(1, KestMultibyteToUnicode("", -1, &unit, 1));
  EXPECT_EQ(0, byte);
  EXPECT_EQ(0, unit);
}

TEST(ConvertMultibyte, NullConvertsNothing) {
  char byte = 'U';
  unsigned short unit = 'U';
  for (int length : {-1, 0, 1}) {
    EXPECT_EQ(0, KestUnicodeToMultibyte(nullptr, length, &byte, 1));
    EXPECT_EQ(0, KestMultibyteToUnicode(nullptr, length, &unit, 1));
    EXPECT_EQ(0, KestUnicodeToMultibyte(KEST_TEXT("a"), length, nullptr, 1));
    EXPECT_EQ(0, KestMultibyteToUnicode("a", length, nullptr, 1));
  }
  EXPECT_EQ('U', byte);
  EXPECT_EQ('U', unit);
}

TEST(ConvertBuffer, HoldsTheWidenedBytesAndATerminator) {
  struct {
    const char* bytes;
    int length;
    std::u16string text;
  } const kRows[] = {
      {"hello", -1, u"hello"},
      {"hello", 2, u"he"},
      {"ab\0cd", 5, std::u16string(u"ab\0cd", 5)},
      {"ab\0cd", -1, u"ab"},
      {"\x80\xFF", -1, u"\x80\xFF"},
  };
  mallopt(M_PERTURB, 0x55);  // fresh blocks are not zero
  for (const auto& row : kRows) {
    TestAllocator allocator;
    {
      const TConvertBuffer buffer(row.bytes, row.length);
      ASSERT_NE(nullptr, buffer.GetBuffer());
      ASSERT_EQ(static_cast<int>(row.text.size()), buffer.GetLength());
      EXPECT_EQ(row.text,
                std::u16string(buffer.GetBuffer(), buffer.GetBuffer() + buffer.GetLength()));
      EXPECT_EQ(0, buffer.GetBuffer()[buffer.GetLength()]);
      EXPECT_EQ(1, allocator.Requests());
      EXPECT_EQ(2 * row.text.size() + 2, allocator.LastSize());
    }
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(ConvertBuffer, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TConvertBuffer> &&
                !std::is_copy_assignable_v<TConvertBuffer>);
}

TEST(ConvertBuffer, NothingToConvertTakesNoMemory) {
  struct {
    const char* bytes;
    int length;
  } constexpr kRows[] = {{nullptr, -1}, {nullptr, 3},     {"", -1},        {"abc", 0},
                         {"abc", -2},   {"abc", INT_MIN}, {"abc", INT_MAX}};  // too many to double
  TestAllocator allocator;
  for (const auto& row : kRows) {
    const TConvertBuffer buffer(row.bytes, row.length);
    EXPECT_EQ(nullptr, buffer.GetBuffer()) << row.length;
    EXPECT_EQ(0, buffer.GetLength()) << row.length;
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(ConvertBuffer, TheLongestLengthStillAsks) {
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  const TConvertBuffer buffer("abc", INT_MAX - 1);
  EXPECT_EQ(0xFFFFFFFEu, allocator.LastSize());
  EXPECT_EQ(nullptr, buffer.GetBuffer());
  EXPECT_EQ(0, buffer.GetLength());
}
