#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "kest/frame.h"
#include "kest/string.h"

namespace {

// One row a slot, in the exported order: its name, its address, what it holds after loading. The
// C library functions are compared by address where the header has them as functions.
struct Slot {
  const char* name;
  void** slot;
  void* target;
};

#define ROW(slot, target) \
  { #slot, reinterpret_cast < void**>(&slot), reinterpret_cast < void*>(target) }

// <string.h> overloads these on const in C++.
void* const kMemchr = reinterpret_cast<void*>(static_cast<void* (*)(void*, int, size_t)>(memchr));
void* const kStrchr = reinterpret_cast<void*>(static_cast<char* (*)(char*, int)>(strchr));
void* const kStrrchr = reinterpret_cast<void*>(static_cast<char* (*)(char*, int)>(strrchr));
void* const kStrstr = reinterpret_cast<void*>(static_cast<char* (*)(char*, const char*)>(strstr));

const Slot kSlots[] = {
    ROW(kest_memset, memset),
    ROW(kest_memcpy, memcpy),
    ROW(kest_memmove, memmove),
    ROW(kest_memcmp, memcmp),
    ROW(kest_memchr, kMemchr),
    ROW(kest_snprintf, snprintf),
    ROW(kest_sprintf, sprintf),
    ROW(kest_strlen, strlen),
    ROW(kest_strcpy, strcpy),
    ROW(kest_strncpy, strncpy),
    ROW(kest_strcat, strcat),
    ROW(kest_strcmp, strcmp),
    ROW(kest_strncmp, strncmp),
    ROW(kest_strchr, kStrchr),
    ROW(kest_strrchr, kStrrchr),
    ROW(kest_strstr, kStrstr),
    ROW(kest_strtol, strtol),
    ROW(kest_strtoul, strtoul),
    ROW(kest_tolower, static_cast<int (*)(int)>(tolower)),
    ROW(kest_toupper, static_cast<int (*)(int)>(toupper)),
    ROW(kest_strlcpy, KEST::strlcpy),
    ROW(kest_strlcat, KEST::strlcat),
    ROW(kest_ucslen, KEST::ucslen),
    ROW(kest_ucscpy, KEST::ucscpy),
    ROW(kest_ucsncpy, KEST::ucsncpy),
    ROW(kest_ucscat, KEST::ucscat),
    ROW(kest_ucscmp, KEST::ucscmp),
    ROW(kest_ucsncmp, KEST::ucsncmp),
    ROW(kest_ucschr, KEST::ucschr),
    ROW(kest_ucsrchr, KEST::ucsrchr),
    ROW(kest_ucsstr, KEST::ucsstr),
    ROW(kest_ucstol, KEST::ucstol),
    ROW(kest_ucstoul, KEST::ucstoul),
    ROW(kest_ucslcpy, KEST::ucslcpy),
    ROW(kest_ucslcat, KEST::ucslcat),
    ROW(kest_snuprintf, KEST::snuprintf),
    ROW(kest_toulower, KEST::toulower),
    ROW(kest_touupper, KEST::touupper),
    ROW(kest_abs, static_cast<int (*)(int)>(abs)),
    ROW(kest_rand, rand),
    ROW(kest_time, time),
};

TEST(RuntimeTable, HoldsEachFunctionBeforeAnyStart) {
  EXPECT_EQ(41u, sizeof kSlots / sizeof kSlots[0]);
  for (const Slot& row : kSlots) EXPECT_EQ(row.target, *row.slot) << row.name;
}

TEST(RuntimeTable, NumberConversionIsTheCLibrarys) {
  const char* const texts[] = {"",      "0",   "42",          "-42",         " \t+7x",     "0x1F",
                               "0x",    "077", "zz",          "4294967295",  "4294967296", "-1",
                               "1'000", "9z",  "-2147483648", "-2147483649", "2147483648", "--1"};
  for (const char* text : texts) {
    for (int base = 0; base <= 36; ++base) {
      if (base == 1) continue;
      SCOPED_TRACE(testing::Message() << '"' << text << "\" in base " << base);
      char *expectedEnd = nullptr, *end = nullptr;
      errno = 0;
      const long expected = strtol(text, &expectedEnd, base);
      const int expectedError = errno;
      errno = 0;
      EXPECT_EQ(expected, kest_strtol(text, &end, base));
      EXPECT_EQ(expectedEnd, end);
      EXPECT_EQ(expectedError, errno);
      EXPECT_EQ(strtoul(text, &expectedEnd, base), kest_strtoul(text, &end, base));
      EXPECT_EQ(expectedEnd, end);
    }
  }
}

TEST(RuntimeTable, AClientCallsThroughASlotWithTheTargetsSignature) {
  char bytes[16];
  EXPECT_EQ(3, kest_snprintf(bytes, sizeof bytes, "%03d", 7));
  EXPECT_STREQ("007", bytes);
  unsigned short units[16];
  EXPECT_EQ(3, kest_snuprintf(units, 16, KEST_TEXT("%03d"), 7));
  EXPECT_EQ(0, kest_ucscmp(units, KEST_TEXT("007")));
  EXPECT_EQ('a', kest_toulower('A'));
  EXPECT_EQ('A', kest_touupper('a'));
}

unsigned int FortyTwo(const unsigned short*) { return 42; }

TEST(RuntimeTable, AStoreChangesWhatEveryCallerOfTheSlotGets) {
  kest_ucslen = FortyTwo;
  EXPECT_EQ(42u, kest_ucslen(KEST_TEXT("abc")));
  EXPECT_EQ(3u, KEST::ucslen(KEST_TEXT("abc"))) << "the function itself is as it was";
  kest_ucslen = KEST::ucslen;
}

void Trap() { ADD_FAILURE() << "the library called through a slot"; }

TEST(RuntimeTable, TheLibraryDoesNotCallThroughItsSlots) {
  for (const Slot& row : kSlots) *row.slot = reinterpret_cast<void*>(Trap);
  EXPECT_EQ(1, KestInitialize(nullptr));
  {
    KEST::TBstr text("bytes and");
    text.Append(KEST_TEXT(" units")).MakeUpper();
    text.Replace(KEST_TEXT(" "), KEST_TEXT("-"));
    text.Format(KEST_TEXT("%s: %d"), text.GetString(), text.Find(KEST_TEXT("UNITS")));
    EXPECT_STREQ("BYTES-AND-UNITS: 10", text.GetMultibyteString());
    EXPECT_EQ(10, text.Right(2).ToLong());
    unsigned short units[8] = {};
    EXPECT_EQ(3u, KEST::ucslcat(units, KEST_TEXT("abc"), 8));
    EXPECT_EQ(6u, KEST::ucslcat(units, units, 8));
    EXPECT_EQ(units + 5, KEST::ucsrchr(units, 'c'));
  }
  KestUninitialize();
  for (const Slot& row : kSlots) *row.slot = row.target;
}

}  // namespace
