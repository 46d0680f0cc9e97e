// The bridges in C++20: the same calls compile, the iterators are what its concepts ask for, and
// u8"..." is text. A program of its own, because the others are C++17.

#include <stdio.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <ranges>

#include "bridge/overload_table.h"
#include "kest/bridge/char16.h"
#include "kest/bridge/eventfd.h"
#include "kest/bridge/lock.h"
#include "kest/bridge/range.h"
#include "kest/bridge/session.h"
#include "kest/bridge/time.h"

namespace {

using namespace KEST;

static_assert(std::ranges::random_access_range<TPtrArray&>);
static_assert(std::contiguous_iterator<decltype(begin(std::declval<const TPtrArray&>()))>);
static_assert(std::ranges::bidirectional_range<TPtrList&>);
static_assert(std::ranges::bidirectional_range<const TPtrList&>);
static_assert(!std::ranges::random_access_range<TPtrList&>);
static_assert(std::ranges::output_range<TPtrList&, void*>);
static_assert(!std::ranges::output_range<const TPtrList&, void*>);
static_assert(std::ranges::forward_range<TPtrFromPtrMap&>);
static_assert(std::ranges::forward_range<const TPtrFromBstrMap&>);
static_assert(std::ranges::forward_range<TPtrFromGuidMap&>);
static_assert(!std::ranges::bidirectional_range<TPtrFromBstrMap&>);
static_assert(std::ranges::common_range<TPtrFromBstrMap&>);
static_assert(std::chrono::is_clock_v<TMillisecondClock> &&
              std::chrono::is_clock_v<TMicrosecondClock>);

int s_failures = 0;

void Expect(bool right, const char* what) {
  if (right) return;
  printf("not so: %s\n", what);
  ++s_failures;
}

void* P(uintptr_t value) { return reinterpret_cast<void*>(value); }

void TestRanges() {
  TPtrArray array;
  TPtrList list;
  for (uintptr_t n : {5u, 1u, 4u, 2u, 3u}) {
    array.Add(P(n));
    list.AddTail(P(n));
  }
  std::ranges::sort(array);
  Expect(std::ranges::is_sorted(array), "an array is sorted");
  Expect(*std::ranges::find(list, P(4)) == P(4), "an element of a list is found");
  Expect(*(list | std::views::reverse).begin() == P(3), "a list is viewed backwards");
  TPtrFromBstrMap map;
  for (unsigned int n = 0; n < 20; ++n) map[ToBstr(std::u16string(n, u'x')).GetString()] = P(n);
  const auto isLong = [](const auto& entry) { return entry.key.GetLength() >= 15; };
  Expect(std::ranges::distance(map | std::views::filter(isLong)) == 5, "a map is filtered");
  for (auto [key, value] : map | std::views::filter(isLong)) value = nullptr;
  Expect(std::ranges::count(map, nullptr, [](const auto& entry) { return entry.value; }) == 6,
         "its values are set");
}

}  // namespace

int main() {
  TestRanges();
  Expect(FromUtf8(u8"\u00E9\U0001F600") == u"\u00E9\U0001F600", "u8 text is UTF-8");
  Expect(FromUtf8(u8"a\0b") == u"a", "a pointer to it ends at the first zero");
  return s_failures;
}
