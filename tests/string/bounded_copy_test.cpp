#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kest/string.h"
#include "support/wide_text.h"

namespace {

using kest_test::GuardedUnits;
using kest_test::Text;
using kest_test::Units;

constexpr char16_t kUntouched = u'#';

// What a destination of room units holds after a bounded copy.
std::u16string ExpectedCopy(const std::u16string& src, size_t size, size_t room) {
  std::u16string dest(room, kUntouched);
  if (size == 0) return dest;
  const std::u16string stored = src.substr(0, size - 1);
  dest.replace(0, stored.size() + 1, stored + u'\0');
  return dest;
}

// Each function over 16-bit text, so that one set of rows serves all of them.
struct SCopier {
  const char* name;
  unsigned int (*copy)(unsigned short* dest, const char* src, unsigned int size);
};

unsigned int CopyWide(unsigned short* dest, const char* src, unsigned int size) {
  const std::u16string wide(src, src + strlen(src));
  return KEST::ucslcpy(dest, Units(wide), size);
}

unsigned int CopyNarrow(unsigned short* dest, const char* src, unsigned int size) {
  std::vector<char> narrow(dest, dest + size);
  const unsigned int result = KEST::strlcpy(narrow.data(), src, size);
  std::copy(narrow.begin(), narrow.end(), dest);
  return result;
}

constexpr SCopier kCopiers[] = {
    {"ucslcpy", CopyWide}, {"s2ulcpy", KEST::s2ulcpy}, {"strlcpy", CopyNarrow}};

TEST(BoundedCopy, CutsAndTerminatesAtEverySize) {
  for (const SCopier& copier : kCopiers) {
    for (const char* src : {"", "a", "ab", "hello world"}) {
      const std::u16string wide(src, src + strlen(src));
      for (unsigned int size = 0; size < 16; ++size) {
        SCOPED_TRACE(std::string(copier.name) + " of '" + src + "' to " + std::to_string(size));
        const GuardedUnits dest(std::u16string(size, kUntouched));
        EXPECT_EQ(wide.size(), copier.copy(dest.Get(), src, size));
        EXPECT_EQ(ExpectedCopy(wide, size, size), Text(dest.Get(), size));
      }
    }
  }
}

TEST(BoundedCopy, SizeZeroWritesNothingAndMeasures) {
  EXPECT_EQ(5u, KEST::ucslcpy(nullptr, KEST_TEXT("hello"), 0));
  EXPECT_EQ(5u, KEST::s2ulcpy(nullptr, "hello", 0));
  EXPECT_EQ(5u, KEST::strlcpy(nullptr, "hello", 0));
}

TEST(BoundedCopy, SizeMayBeMoreThanThereIs) {
  unsigned short wide[4] = {};
  EXPECT_EQ(3u, KEST::ucslcpy(wide, KEST_TEXT("abc"), UINT_MAX));
  EXPECT_EQ(u"abc", Text(wide));
  EXPECT_EQ(3u, KEST::s2ulcpy(wide, "xyz", UINT_MAX));
  EXPECT_EQ(u"xyz", Text(wide));
  char narrow[4] = {};
  EXPECT_EQ(3u, KEST::strlcpy(narrow, "abc", UINT_MAX));
  EXPECT_STREQ("abc", narrow);
}

TEST(BoundedCopy, NullTextIsEmptyText) {
  unsigned short wide[2] = {9, 9};
  EXPECT_EQ(0u, KEST::ucslcpy(wide, nullptr, 2));
  EXPECT_EQ(0, wide[0]);
  wide[0] = 9;
  EXPECT_EQ(0u, KEST::s2ulcpy(wide, nullptr, 2));
  EXPECT_EQ(0, wide[0]);
  EXPECT_EQ(9, wide[1]);
  char narrow[2] = {'a', 'b'};
  EXPECT_EQ(0u, KEST::strlcpy(narrow, nullptr, 2));
  EXPECT_EQ(0, narrow[0]);
  EXPECT_EQ('b', narrow[1]);
}

TEST(BoundedCopy, EveryByteBecomesTheUnitOfItsValue) {
  char bytes[256];
  for (int i = 0; i < 255; ++i) bytes[i] = static_cast<char>(i + 1);
  bytes[255] = 0;
  unsigned short units[256];
  EXPECT_EQ(255u, KEST::s2ulcpy(units, bytes, 256));
  for (int i = 0; i < 255; ++i) EXPECT_EQ(i + 1, units[i]);
  EXPECT_EQ(0, units[255]);
}

// Columns: size, result, dest afterwards. "ab" is there, "cde" comes.
constexpr struct {
  unsigned int size;
  unsigned int result;
  const char* expected;
} kAppendRows[] = {
    {2, 5, "ab"},  // the size is the length: nothing is written
    {3, 5, "ab"},
    {4, 5, "abc"},
    {5, 5, "abcd"},
    {6, 5, "abcde"},
    {7, 5, "abcde"},
    {UINT_MAX, 5, "abcde"},
    {1, 5, "abcde"},  // below the length the room wraps
                      // around: no bound at all
    {0, 5, "abcde"},
};

TEST(BoundedCopy, AppendsWithinTheRoomLeft) {
  for (const auto& row : kAppendRows) {
    SCOPED_TRACE(row.size);
    char narrow[8] = {'a', 'b', 0, '#', '#', '#', '#', '#'};
    EXPECT_EQ(row.result, KEST::strlcat(narrow, "cde", row.size));
    EXPECT_STREQ(row.expected, narrow);
    EXPECT_EQ('#', narrow[strlen(row.expected) + 1]);

    unsigned short wide[8] = {'a', 'b', 0, '#', '#', '#', '#', '#'};
    EXPECT_EQ(row.result, KEST::ucslcat(wide, KEST_TEXT("cde"), row.size));
    const std::u16string expected(row.expected, row.expected + strlen(row.expected));
    EXPECT_EQ(expected, Text(wide));
    EXPECT_EQ('#', wide[expected.size() + 1]);
  }
}

TEST(BoundedCopy, AppendsToEmptyTextAndNothing) {
  unsigned short wide[4] = {0, 9, 9, 9};
  EXPECT_EQ(2u, KEST::ucslcat(wide, KEST_TEXT("xy"), 4));
  EXPECT_EQ(2u, KEST::ucslcat(wide, KEST_TEXT(""), 4));
  EXPECT_EQ(2u, KEST::ucslcat(wide, nullptr, 4));
  EXPECT_EQ(u"xy", Text(wide));
  EXPECT_EQ(9, wide[3]);
  char narrow[4] = {0, 'a', 'b', 'c'};
  EXPECT_EQ(2u, KEST::strlcat(narrow, "xy", 4));
  EXPECT_EQ(2u, KEST::strlcat(narrow, nullptr, 4));
  EXPECT_STREQ("xy", narrow);
}

TEST(BoundedCopy, OverlappingPlacesAreCopiedAsIfApart) {
  unsigned short wide[8] = {'a', 'b', 'c', 0};
  EXPECT_EQ(3u, KEST::ucslcpy(wide + 1, wide, 7));
  EXPECT_EQ(u"aabc", Text(wide));
  EXPECT_EQ(8u, KEST::ucslcat(wide, wide, 8));
  EXPECT_EQ(u"aabcaab", Text(wide));
  char narrow[8] = "abc";
  EXPECT_EQ(6u, KEST::strlcat(narrow, narrow, 8));
  EXPECT_STREQ("abcabc", narrow);
}

}  // namespace
