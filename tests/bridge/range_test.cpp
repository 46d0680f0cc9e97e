// range.h: range-for and the standard algorithms over every container.

#include "kest/bridge/range.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

namespace {

using namespace KEST;
using kest_test::Random;
using kest_test::TestAllocator;

void* P(uintptr_t value) { return reinterpret_cast<void*>(value); }
uintptr_t N(const void* p) { return reinterpret_cast<uintptr_t>(p); }

template <typename TContainer>
using Iterator = decltype(begin(std::declval<TContainer&>()));
template <typename TIterator>
using Category = typename std::iterator_traits<TIterator>::iterator_category;
template <typename TContainer>
using Reference = decltype(*begin(std::declval<TContainer&>()));

static_assert(std::is_same_v<Category<Iterator<TPtrArray>>, std::random_access_iterator_tag>);
static_assert(std::is_same_v<Category<Iterator<TPtrList>>, std::bidirectional_iterator_tag>);
static_assert(std::is_same_v<Category<Iterator<TPtrFromPtrMap>>, std::input_iterator_tag>);
static_assert(std::is_same_v<Category<Iterator<const TPtrFromBstrMap>>, std::input_iterator_tag>);

static_assert(std::is_same_v<Reference<TPtrArray>, void*&>);
static_assert(std::is_same_v<Reference<const TPtrArray>, void* const&>);
static_assert(std::is_same_v<Reference<TPtrList>, void*&>);
static_assert(std::is_same_v<Reference<const TPtrList>, void* const&>);
static_assert(std::is_same_v<Reference<TPtrFromPtrMap>, SMapEntry<void*, void*>>);
static_assert(std::is_same_v<Reference<const TPtrFromPtrMap>, SMapEntry<void*, void* const>>);
static_assert(std::is_same_v<Reference<const TPtrFromBstrMap>, SMapEntry<TBstr, void* const>>);
static_assert(std::is_same_v<Reference<TPtrFromGuidMap>, SMapEntry<_GUID, void*>>);

// To const, never from it.
template <typename TFrom, typename TTo>
constexpr bool kConverts = std::is_convertible_v<Iterator<TFrom>, Iterator<TTo>>;
static_assert(kConverts<TPtrList, const TPtrList> && !kConverts<const TPtrList, TPtrList>);
static_assert(kConverts<TPtrFromGuidMap, const TPtrFromGuidMap> &&
              !kConverts<const TPtrFromGuidMap, TPtrFromGuidMap>);

template <typename TContainer>
std::vector<uintptr_t> Forward(TContainer& container) {
  std::vector<uintptr_t> numbers;
  for (void* element : container) numbers.push_back(N(element));
  return numbers;
}

template <typename TContainer>
std::vector<uintptr_t> Backward(TContainer& container) {
  std::vector<uintptr_t> numbers;
  for (auto i = rbegin(container); i != rend(container); ++i) numbers.push_back(N(*i));
  return numbers;
}

using Numbers = std::vector<uintptr_t>;

TEST(RangeArray, IsEmptyWithoutStorage) {
  TPtrArray array;
  EXPECT_EQ(begin(array), end(array));
  EXPECT_EQ(Numbers{}, Forward(array));
  EXPECT_EQ(Numbers{}, Backward(array));
}

TEST(RangeArray, ServesTheAlgorithms) {
  TPtrArray array;
  for (uintptr_t n : {5u, 1u, 4u, 2u, 3u}) array.Add(P(n));
  const TPtrArray& fixed = array;
  EXPECT_EQ((Numbers{5, 1, 4, 2, 3}), Forward(fixed));
  std::sort(begin(array), end(array));
  EXPECT_EQ((Numbers{1, 2, 3, 4, 5}), Forward(array));
  EXPECT_EQ((Numbers{5, 4, 3, 2, 1}), Backward(fixed));
  EXPECT_TRUE(std::binary_search(begin(fixed), end(fixed), P(4)));
  array.RemoveAt(static_cast<int>(std::remove(begin(array), end(array), P(3)) - begin(array)));
  EXPECT_EQ((Numbers{1, 2, 4, 5}), Forward(array));
  for (void*& element : array) element = P(N(element) * 2);
  EXPECT_EQ((Numbers{2, 4, 8, 10}), Forward(array));
}

TEST(RangeList, IsEmptyWithoutElements) {
  TPtrList list;
  EXPECT_EQ(begin(list), end(list));
  EXPECT_EQ(Numbers{}, Backward(list));
}

TEST(RangeList, GoesBothWays) {
  TPtrList list;
  for (uintptr_t n : {5u, 1u, 4u, 2u, 3u}) list.AddTail(P(n));
  const TPtrList& fixed = list;
  EXPECT_EQ((Numbers{5, 1, 4, 2, 3}), Forward(fixed));
  EXPECT_EQ((Numbers{3, 2, 4, 1, 5}), Backward(fixed));
  EXPECT_EQ((Numbers{3, 2, 4, 1, 5}), Backward(list));
  std::reverse(begin(list), end(list));
  EXPECT_EQ((Numbers{3, 2, 4, 1, 5}), Forward(list));
  for (void*& element : list) element = P(N(element) * 2);
  EXPECT_EQ((Numbers{6, 4, 8, 2, 10}), Forward(fixed));
  auto i = std::find(begin(list), end(list), P(8));
  EXPECT_EQ(2, std::distance(begin(list), i));
  EXPECT_EQ(list.Find(P(8)), i.GetPosition());
  TListIterator<true> same = i++;
  EXPECT_EQ(P(8), *same);
  EXPECT_EQ(P(2), *i--);
  EXPECT_EQ(same, TListIterator<true>(i));
  EXPECT_EQ(P(10), *std::prev(end(list)));
}

TEST(RangeList, AnElementBehindTheIteratorMayGo) {
  TPtrList list;
  for (uintptr_t n = 1; n <= 10; ++n) list.AddTail(P(n));
  for (auto i = begin(list); i != end(list);) {
    const auto here = i++;
    if (N(*here) % 2 != 0) list.RemoveAt(here.GetPosition());
  }
  EXPECT_EQ((Numbers{2, 4, 6, 8, 10}), Forward(list));
}

// What the map's own members give, in their order.
template <typename TMap, typename TKey>
auto ByMembers(const TMap& map, TKey key) {
  std::vector<std::pair<TKey, uintptr_t>> entries;
  void* value;
  for (__POSITION* position = map.GetStartPosition(); position != nullptr;) {
    map.GetNextAssoc(position, key, value);
    entries.emplace_back(key, N(value));
  }
  return entries;
}

template <typename TMap, typename TKey>
auto ByRange(const TMap& map, const TKey&) {
  std::vector<std::pair<TKey, uintptr_t>> entries;
  for (auto [key, value] : map) entries.emplace_back(key, N(value));
  return entries;
}

bool Same(void* a, void* b) { return a == b; }
bool Same(const TBstr& a, const TBstr& b) { return a == b; }
bool Same(const _GUID& a, const _GUID& b) { return memcmp(&a, &b, sizeof(a)) == 0; }

template <typename TMap, typename TKey>
void ExpectSameEntries(const TMap& map, const TKey& sample) {
  const auto members = ByMembers(map, sample);
  const auto range = ByRange(map, sample);
  ASSERT_EQ(members.size(), range.size());
  EXPECT_EQ(static_cast<size_t>(map.GetCount()), range.size());
  for (size_t i = 0; i < range.size(); ++i) {
    EXPECT_TRUE(Same(members[i].first, range[i].first)) << i;
    EXPECT_EQ(members[i].second, range[i].second) << i;
  }
}

_GUID Guid(unsigned int n) { return {n * 7, 1, 2, {3}}; }
TBstr Key(unsigned int n) {
  TBstr key;
  key.Format(KEST_TEXT("key %u"), n);
  return key;
}

// Numbers of entries and of buckets, so that buckets are empty, alone and crowded, at both ends.
TEST(RangeMap, GivesTheEntriesInTheirOrder) {
  for (unsigned int buckets : {1u, 2u, 17u, 1009u}) {
    for (unsigned int count : {0u, 1u, 2u, 5u, 100u, 500u}) {
      SCOPED_TRACE(std::to_string(count) + " entries in " + std::to_string(buckets) + " buckets");
      TPtrFromPtrMap pointers;
      TPtrFromBstrMap texts;
      TPtrFromGuidMap guids;
      pointers.InitHashTable(buckets);
      texts.InitHashTable(buckets);
      guids.InitHashTable(buckets);
      for (unsigned int n = 0; n < count; ++n) {
        pointers[P(n * 8)] = P(n);
        texts[Key(n).GetString()] = P(n);
        guids[Guid(n)] = P(n);
      }
      ExpectSameEntries(pointers, P(0));
      ExpectSameEntries(texts, TBstr());
      ExpectSameEntries(guids, Guid(0));
    }
  }
}

TEST(RangeMap, IsEmptyWithoutBuckets) {
  TPtrFromBstrMap map;
  EXPECT_EQ(begin(map), end(map));
  map.InitHashTable(100, false);
  EXPECT_EQ(begin(map), end(map));
  map.InitHashTable(100, true);
  EXPECT_EQ(begin(map), end(map));
  map[KEST_TEXT("a")] = P(1);
  EXPECT_NE(begin(map), end(map));
  map.RemoveAll();
  EXPECT_EQ(begin(map), end(map));
}

TEST(RangeMap, ValuesCanBeSetAndKeysAreSeen) {
  TPtrFromBstrMap map;
  for (unsigned int n = 0; n < 50; ++n) map[Key(n).GetString()] = P(n);
  for (auto [key, value] : map) value = P(N(value) + static_cast<uintptr_t>(key.GetLength()));
  for (unsigned int n = 0; n < 50; ++n) {
    EXPECT_EQ(P(n + (n < 10 ? 5 : 6)), map[Key(n).GetString()]);
  }
  const TPtrFromBstrMap& fixed = map;
  EXPECT_EQ(10, std::count_if(begin(fixed), end(fixed),
                              [](const auto& entry) { return entry.key.GetLength() == 5; }));
  const auto found =
      std::find_if(begin(fixed), end(fixed), [](const auto& entry) { return entry.key == Key(7); });
  ASSERT_NE(end(fixed), found);
  EXPECT_EQ(P(12), found->value);
  EXPECT_EQ(std::accumulate(begin(fixed), end(fixed), uintptr_t{0},
                            [](uintptr_t sum, const auto& entry) { return sum + N(entry.value); }),
            49u * 50 / 2 + 10 * 5 + 40 * 6);
}

TEST(RangeMap, TakesNoMemory) {
  TestAllocator allocator;
  {
    TPtrFromBstrMap map;
    for (unsigned int n = 0; n < 50; ++n) map[Key(n).GetString()] = P(n);
    allocator.Reset();
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    int count = 0;
    for (auto [key, value] : map) count += key.IsEmpty() || value == nullptr ? 0 : 1;
    EXPECT_EQ(49, count);
    EXPECT_EQ(0, allocator.Requests());
    allocator.RefuseNone();
  }
}

TEST(RangeMap, AnEntryBehindTheIteratorMayGo) {
  TPtrFromPtrMap map;
  for (uintptr_t n = 0; n < 100; ++n) map[P(n)] = P(n);
  for (auto i = begin(map); i != end(map);) {
    const auto here = i++;
    if (N(here->key) % 3 != 0) map.RemoveKey(here->key);
  }
  std::set<uintptr_t> left;
  for (auto [key, value] : map) left.insert(N(value));
  EXPECT_EQ(34u, left.size());
  EXPECT_TRUE(std::all_of(left.begin(), left.end(), [](uintptr_t n) { return n % 3 == 0; }));
}

}  // namespace
