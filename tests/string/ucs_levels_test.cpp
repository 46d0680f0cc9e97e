// The wide C strings read memory a vector at a time: every length at every place in a page, the
// last unit before memory that cannot be touched and the first one behind it.

#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "kest/string.h"

namespace {

// Longer than two turns of the widest kernel, at which everything repeats.
constexpr size_t kLongest = 300;
constexpr size_t kAlignments = 64;

// Two pages that can be touched between two that cannot, full of one unit.
class Pages {
 public:
  explicit Pages(unsigned short fill)
      : page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        all(static_cast<char*>(
            mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(all + page, 2 * page, PROT_READ | PROT_WRITE);
    std::fill(Begin(), End(), fill);
  }
  ~Pages() { munmap(all, 4 * page); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  unsigned short* Begin() const { return reinterpret_cast<unsigned short*>(all + page); }
  unsigned short* Middle() const { return reinterpret_cast<unsigned short*>(all + 2 * page); }
  unsigned short* End() const { return reinterpret_cast<unsigned short*>(all + 3 * page); }

 private:
  const size_t page;
  char* const all;
};

// Calls check(s, length) for texts of every length: before the end of memory, behind its beginning,
// and across the two pages. What comes before and behind each text is the unit that fills it.
template <typename Check>
void ForTextsEverywhere(const Pages& pages, Check check) {
  for (size_t length = 0; length <= kLongest; ++length) {
    unsigned short* const starts[] = {pages.End() - length - 1, pages.Begin(),
                                      pages.Middle() - length / 2, pages.Middle() - length - 1};
    for (unsigned short* s : starts) {
      const unsigned short before = s[length];
      s[length] = 0;
      check(s, length);
      s[length] = before;
    }
  }
  for (size_t offset = 0; offset < kAlignments; ++offset) {
    for (size_t length = 0; length <= kLongest; length += 1 + length / 32) {
      unsigned short* s = pages.Begin() + offset;
      s[length] = 0;
      check(s, length);
      s[length] = s[length + 1];
    }
  }
}

TEST(UcsLevels, LengthEverywhere) {
  const Pages pages(0xFF00);
  ForTextsEverywhere(pages, [](const unsigned short* s, size_t length) {
    ASSERT_EQ(length, KEST::ucslen(s)) << s;
  });
}

TEST(UcsLevels, AZeroByteIsNoZeroUnit) {
  for (const char16_t unit : std::u16string(u"\u00FF\uFF00\u0100\u0001\u8000\u7FFF")) {
    const Pages pages(unit);
    pages.End()[-1] = 0;
    for (size_t length = 0; length <= kLongest; ++length) {
      ASSERT_EQ(length, KEST::ucslen(pages.End() - 1 - length)) << unit;
    }
  }
}

// Sanitizers object to these in the plain versions.
#ifndef __SANITIZE_ADDRESS__

// Calls check(s, length) for texts whose units lie at odd addresses: before the end of memory,
// behind its beginning, and with a unit in two pages.
template <typename Check>
void ForOddTexts(const Pages& pages, Check check) {
  for (size_t length = 0; length <= kLongest; ++length) {
    char* const middle = reinterpret_cast<char*>(pages.Middle()) - 1;
    char* const ends[] = {reinterpret_cast<char*>(pages.End()) - 3,
                          reinterpret_cast<char*>(pages.Begin() + length) + 1,
                          middle,
                          middle - 2,
                          middle + 2,
                          middle + length / 2 * 2};
    for (char* end : ends) {
      unsigned short before;
      memcpy(&before, end, sizeof before);
      memset(end, 0, sizeof before);
      check(reinterpret_cast<unsigned short*>(end - length * sizeof before), length);
      memcpy(end, &before, sizeof before);
    }
  }
}

TEST(UcsLevels, LengthAtOddAddresses) {
  const Pages pages(0x0101);
  ForOddTexts(pages, [](const unsigned short* s, size_t length) {
    ASSERT_EQ(length, KEST::ucslen(s)) << s;
  });
}

#endif

}  // namespace
