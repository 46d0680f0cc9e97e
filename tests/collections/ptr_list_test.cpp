#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <random>
#include <type_traits>
#include <vector>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/test_allocator.h"

using KEST::__POSITION;
using KEST::TPtrList;
using kest_test::Element;
using kest_test::Elements;
using kest_test::Numbers;
using kest_test::TestAllocator;

namespace {

constexpr unsigned int kNodeSize = sizeof(TPtrList::SNode);

void* const a = Element(0xA0);
void* const b = Element(0xB0);
void* const c = Element(0xC0);
void* const x = Element(0x100);
void* const y = Element(0x200);

static_assert(!std::is_convertible_v<int, TPtrList>, "AddTail(5) would add a list");

// The elements from head to tail, after checking that the way back is the same.
Elements Of(const TPtrList& list) {
  Elements forward, backward;
  for (__POSITION* at = list.GetHeadPosition(); at != nullptr;) forward.push_back(list.GetNext(at));
  for (__POSITION* at = list.GetTailPosition(); at != nullptr;) {
    backward.push_back(list.GetPrev(at));
  }
  std::reverse(backward.begin(), backward.end());
  EXPECT_EQ(forward, backward);
  EXPECT_EQ(forward.size(), static_cast<size_t>(list.GetCount()));
  EXPECT_EQ(forward.empty(), list.IsEmpty());
  EXPECT_EQ(forward.empty() ? nullptr : forward.front(), list.GetHead());
  EXPECT_EQ(forward.empty() ? nullptr : forward.back(), list.GetTail());
  return forward;
}

void Fill(TPtrList& list, const Elements& elements) {
  for (void* element : elements) list.AddTail(element);
}

TEST(PtrList, StartsEmptyWithoutMemory) {
  TestAllocator allocator;
  {
    TPtrList list;
    EXPECT_EQ(Elements{}, Of(list));
    EXPECT_EQ(nullptr, list.GetHeadPosition());
    EXPECT_EQ(nullptr, list.GetTailPosition());
    list.RemoveAll();
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(PtrList, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TPtrList> && !std::is_copy_assignable_v<TPtrList>);
}

TEST(PtrList, AddsAtBothEnds) {
  TPtrList list;
  __POSITION* at = list.AddTail(a);
  EXPECT_EQ(at, list.GetHeadPosition());
  EXPECT_EQ(at, list.GetTailPosition());
  at = list.AddTail(b);
  EXPECT_EQ(at, list.GetTailPosition());
  at = list.AddHead(c);
  EXPECT_EQ(at, list.GetHeadPosition());
  EXPECT_EQ((Elements{c, a, b}), Of(list));
  EXPECT_EQ(c, list.RemoveHead());
  EXPECT_EQ((Elements{a, b}), Of(list));
  EXPECT_EQ(b, list.RemoveTail());
  EXPECT_EQ((Elements{a}), Of(list));
}

TEST(PtrList, RemovingFromAnEmptyListGivesNull) {
  TPtrList list;
  EXPECT_EQ(nullptr, list.RemoveHead());
  EXPECT_EQ(nullptr, list.RemoveTail());
  list.RemoveAt(nullptr);
  EXPECT_EQ(Elements{}, Of(list));
  list.AddHead(a);
  list.RemoveAt(nullptr);
  EXPECT_EQ((Elements{a}), Of(list));
}

TEST(PtrList, AnEmptiedListHoldsNoMemory) {
  using Operation = void (*)(TPtrList&);
  constexpr Operation kOperations[] = {
      [](TPtrList& list) { list.RemoveHead(); },
      [](TPtrList& list) { list.RemoveTail(); },
      [](TPtrList& list) { list.RemoveAt(list.GetHeadPosition()); },
      [](TPtrList& list) { list.RemoveAll(); },
  };
  TestAllocator allocator;
  for (Operation operation : kOperations) {
    TPtrList list;
    list.AddTail(a);
    EXPECT_EQ(1, allocator.Live());
    operation(list);
    EXPECT_EQ(0, allocator.Live());
    EXPECT_EQ(nullptr, list.GetHeadPosition());
    EXPECT_EQ(nullptr, list.GetTailPosition());
    EXPECT_EQ(Elements{}, Of(list));
    list.AddTail(b);
    EXPECT_EQ((Elements{b}), Of(list));
  }
  {
    TPtrList list(2);
    Fill(list, Numbers(9));
    EXPECT_EQ(5, allocator.Live());
    list.RemoveAll();
    EXPECT_EQ(0, allocator.Live());
    Fill(list, Numbers(9));
    while (!list.IsEmpty()) list.RemoveTail();
    EXPECT_EQ(0, allocator.Live());
    Fill(list, Numbers(9));
  }
  EXPECT_EQ(0, allocator.Live()) << "the destructor";
}

// The hook leaves nothing in a block that it is given back.
TEST(PtrList, TheLastElementIsReadBeforeItsBlockIsFreed) {
  KEST::SAllocator hooks = {[](unsigned int size) { return malloc(size); },
                            [](void* block, unsigned int size) { return realloc(block, size); },
                            [](void* block) {
                              if (block == nullptr) return;
                              memset(block, 0xDD, malloc_usable_size(block));
                              free(block);
                            }};
  KEST::MemInit(&hooks);
  TPtrList list;
  list.AddTail(a);
  EXPECT_EQ(a, list.RemoveHead());
  list.AddTail(b);
  EXPECT_EQ(b, list.RemoveTail());
  list.AddTail(c);
  list.RemoveAt(list.GetHeadPosition());
  EXPECT_EQ(Elements{}, Of(list));
  KEST::MemTerm();
}

TEST(PtrList, TakesNodesABlockAtATime) {
  // Columns: block size given, nodes a block.
  constexpr int kRows[][2] = {{10, 10}, {1, 1}, {2, 2},  {3, 3},
                              {64, 64}, {0, 1}, {-1, 1}, {INT_MIN, 1}};
  TestAllocator allocator;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row[0]);
    const int nodes = row[1];
    allocator.Reset();
    TPtrList list(row[0]);
    for (int i = 0; i < 5 * nodes; ++i) {
      list.AddTail(a);
      ASSERT_EQ(i / nodes + 1, allocator.Requests());
    }
    EXPECT_EQ(sizeof(KEST::SPlex) + static_cast<unsigned int>(nodes) * kNodeSize,
              allocator.LastSize());
  }
}

TEST(PtrList, TenNodesABlockByDefault) {
  TestAllocator allocator;
  TPtrList list;
  Fill(list, Numbers(10));
  EXPECT_EQ(1, allocator.Requests());
  list.AddTail(a);
  EXPECT_EQ(2, allocator.Requests());
  list.RemoveAt(list.FindIndex(5));
  list.AddHead(b);
  EXPECT_EQ(2, allocator.Requests()) << "a removed node is used again";
  EXPECT_EQ(2, allocator.Live());
}

TEST(PtrList, HandsOutNodesInAddressOrderAndRemovedOnesFirst) {
  TPtrList list(4);
  std::vector<char*> nodes;
  for (int i = 0; i < 4; ++i) nodes.push_back(reinterpret_cast<char*>(list.AddTail(a)));
  for (size_t i = 1; i < 4; ++i) EXPECT_EQ(nodes[0] + i * kNodeSize, nodes[i]);

  __POSITION* first = list.AddTail(b);
  EXPECT_EQ(first, list.GetTailPosition());
  __POSITION* second = list.FindIndex(1);
  __POSITION* third = list.FindIndex(2);
  list.RemoveAt(second);
  list.RemoveAt(third);
  EXPECT_EQ(third, list.AddTail(a));
  EXPECT_EQ(second, list.AddHead(a));
  EXPECT_EQ(reinterpret_cast<char*>(first) + kNodeSize, reinterpret_cast<char*>(list.AddTail(a)));
}

TEST(PtrList, NodesAreNextPrevData) {
  TPtrList list;
  const auto* first = reinterpret_cast<TPtrList::SNode*>(list.AddTail(a));
  const auto* second = reinterpret_cast<TPtrList::SNode*>(list.AddTail(b));
  EXPECT_EQ(nullptr, first->prev);
  EXPECT_EQ(second, first->next);
  EXPECT_EQ(a, first->data);
  EXPECT_EQ(first, second->prev);
  EXPECT_EQ(nullptr, second->next);
  EXPECT_EQ(b, second->data);
}

TEST(PtrList, InsertsNextToAPosition) {
  for (int index = 0; index < 4; ++index) {
    SCOPED_TRACE(index);
    TPtrList before, after;
    Fill(before, Numbers(4));
    Fill(after, Numbers(4));
    __POSITION* inserted = before.InsertBefore(before.FindIndex(index), x);
    Elements model = Numbers(4);
    model.insert(model.begin() + index, x);
    EXPECT_EQ(model, Of(before));
    EXPECT_EQ(inserted, before.FindIndex(index));

    inserted = after.InsertAfter(after.FindIndex(index), x);
    model = Numbers(4);
    model.insert(model.begin() + index + 1, x);
    EXPECT_EQ(model, Of(after));
    EXPECT_EQ(inserted, after.FindIndex(index + 1));
  }
}

TEST(PtrList, InsertsAtAnEndForANullPosition) {
  TPtrList list;
  __POSITION* at = list.InsertBefore(nullptr, b);
  EXPECT_EQ(at, list.GetHeadPosition());
  at = list.InsertBefore(nullptr, a);
  EXPECT_EQ(at, list.GetHeadPosition());
  at = list.InsertAfter(nullptr, c);
  EXPECT_EQ(at, list.GetTailPosition());
  EXPECT_EQ((Elements{a, b, c}), Of(list));
  TPtrList other;
  at = other.InsertAfter(nullptr, c);
  EXPECT_EQ(at, other.GetHeadPosition());
  EXPECT_EQ((Elements{c}), Of(other));
}

TEST(PtrList, RemovesAtAPosition) {
  for (int index = 0; index < 4; ++index) {
    SCOPED_TRACE(index);
    TPtrList list;
    Fill(list, Numbers(4));
    list.RemoveAt(list.FindIndex(index));
    Elements model = Numbers(4);
    model.erase(model.begin() + index);
    EXPECT_EQ(model, Of(list));
  }
}

TEST(PtrList, OtherPositionsOutliveARemoval) {
  TPtrList list(1);
  Fill(list, {a, b, c});
  __POSITION* first = list.FindIndex(0);
  __POSITION* last = list.FindIndex(2);
  list.RemoveAt(list.FindIndex(1));
  EXPECT_EQ(a, list.GetAt(first));
  EXPECT_EQ(c, list.GetAt(last));
  EXPECT_EQ(first, list.GetHeadPosition());
  EXPECT_EQ(last, list.GetTailPosition());
}

TEST(PtrList, FindIndexCountsFromTheHead) {
  TPtrList list(3);
  EXPECT_EQ(nullptr, list.FindIndex(0));
  Fill(list, Numbers(8));
  for (int i = 0; i < 8; ++i)
    EXPECT_EQ(Numbers(8)[static_cast<size_t>(i)], list.GetAt(list.FindIndex(i)));
  EXPECT_EQ(nullptr, list.FindIndex(8));
  EXPECT_EQ(nullptr, list.FindIndex(INT_MAX));
  for (int index : kest_test::kNegatives) EXPECT_EQ(nullptr, list.FindIndex(index));
}

TEST(PtrList, FindStartsAtTheHeadOrAfterAPosition) {
  TPtrList list;
  EXPECT_EQ(nullptr, list.Find(x));
  Fill(list, {x, a, x, x, nullptr});
  __POSITION* at = list.Find(x);
  EXPECT_EQ(list.FindIndex(0), at);
  at = list.Find(x, at);
  EXPECT_EQ(list.FindIndex(2), at) << "not the one at the position itself";
  at = list.Find(x, at);
  EXPECT_EQ(list.FindIndex(3), at);
  EXPECT_EQ(nullptr, list.Find(x, at));
  EXPECT_EQ(nullptr, list.Find(a, at));
  EXPECT_EQ(nullptr, list.Find(y));
  EXPECT_EQ(list.FindIndex(4), list.Find(nullptr));
  EXPECT_EQ(nullptr, list.Find(nullptr, list.GetTailPosition()));
}

TEST(PtrList, AddsAListInItsOrder) {
  TPtrList list, other, none;
  list.AddTail(a);
  Fill(other, {x, y});
  list.AddHead(other);
  EXPECT_EQ((Elements{x, y, a}), Of(list));
  list.AddTail(other);
  EXPECT_EQ((Elements{x, y, a, x, y}), Of(list));
  list.AddHead(none);
  list.AddTail(none);
  EXPECT_EQ((Elements{x, y, a, x, y}), Of(list));
  EXPECT_EQ((Elements{x, y}), Of(other));
  none.AddHead(other);
  EXPECT_EQ((Elements{x, y}), Of(none));
}

TEST(PtrList, MayBeAddedToItself) {
  for (int size = 0; size <= 12; ++size) {
    SCOPED_TRACE(size);
    Elements twice = Numbers(size);
    const Elements once = twice;
    twice.insert(twice.end(), once.begin(), once.end());
    TPtrList head, tail;
    Fill(head, once);
    Fill(tail, once);
    head.AddHead(head);
    tail.AddTail(tail);
    EXPECT_EQ(twice, Of(head));
    EXPECT_EQ(twice, Of(tail));
  }
}

TEST(PtrList, ElementAccess) {
  TPtrList list;
  Fill(list, {a, b});
  const TPtrList& constant = list;
  __POSITION* at = list.GetHeadPosition();
  list.GetAt(at) = x;
  EXPECT_EQ(x, constant.GetAt(at));
  list.SetAt(at, a);
  list.GetNext(at) = c;
  EXPECT_EQ(b, constant.GetAt(at));
  list.GetPrev(at) = y;
  EXPECT_EQ((Elements{c, y}), Of(list));
  EXPECT_EQ(c, constant.GetNext(at));
  EXPECT_EQ(y, constant.GetNext(at));
  EXPECT_EQ(nullptr, at);
}

TEST(PtrList, AFailedAllocationLeavesItAsItWas) {
  TPtrList other;
  Fill(other, Numbers(5));
  using Operation = void (*)(TPtrList&, const TPtrList&);
  constexpr Operation kOperations[] = {
      [](TPtrList& list, const TPtrList&) { EXPECT_EQ(nullptr, list.AddHead(x)); },
      [](TPtrList& list, const TPtrList&) { EXPECT_EQ(nullptr, list.AddTail(x)); },
      [](TPtrList& list, const TPtrList& added) { list.AddHead(added); },
      [](TPtrList& list, const TPtrList& added) { list.AddTail(added); },
      [](TPtrList& list, const TPtrList&) { list.AddHead(list); },
      [](TPtrList& list, const TPtrList&) { list.AddTail(list); },
      [](TPtrList& list, const TPtrList&) { EXPECT_EQ(nullptr, list.InsertBefore(nullptr, x)); },
      [](TPtrList& list, const TPtrList&) { EXPECT_EQ(nullptr, list.InsertAfter(nullptr, x)); },
      [](TPtrList& list, const TPtrList&) {
        for (int i = 0; i < list.GetCount(); ++i) {
          EXPECT_EQ(nullptr, list.InsertBefore(list.FindIndex(i), x));
          EXPECT_EQ(nullptr, list.InsertAfter(list.FindIndex(i), x));
        }
      },
  };
  for (size_t i = 0; i < std::size(kOperations); ++i) {
    for (int size : {0, 2, 4}) {
      SCOPED_TRACE(testing::Message() << "operation " << i << ", size " << size);
      TestAllocator allocator;
      {
        TPtrList list(2);
        Fill(list, Numbers(size));
        allocator.Refuse(1, TestAllocator::kFromThereOn);
        kOperations[i](list, other);
        EXPECT_EQ(Numbers(size), Of(list));
        allocator.RefuseNone();
        EXPECT_NE(nullptr, list.AddTail(x));
      }
      EXPECT_EQ(0, allocator.Live());
    }
  }
}

TEST(PtrList, AListIsAddedAsAWholeOrNotAtAll) {
  TPtrList other(10);
  Fill(other, Numbers(7));
  for (int size : {0, 1, 3}) {
    SCOPED_TRACE(size);
    kest_test::ForEachRefusedRequest([&](TestAllocator& allocator) {
      TPtrList list(2);
      Fill(list, Numbers(size));
      const Elements before = Of(list);
      for (bool atHead : {false, true}) {
        const int refused = allocator.Refused();
        const Elements old = Of(list);
        Elements whole = old;
        const Elements added = Numbers(7);
        whole.insert(atHead ? whole.begin() : whole.end(), added.begin(), added.end());
        atHead ? list.AddHead(other) : list.AddTail(other);
        EXPECT_EQ(allocator.Refused() == refused ? whole : old, Of(list));
      }
    });
  }
}

TEST(PtrList, ABlockThatDoesNotFit32BitsFailsWithoutARequest) {
  TestAllocator allocator;
  constexpr int kTooMany = static_cast<int>((UINT_MAX - sizeof(KEST::SPlex)) / kNodeSize) + 1;
  for (int blockSize : {INT_MAX, INT_MAX - 1, kTooMany + 1, kTooMany}) {
    SCOPED_TRACE(blockSize);
    TPtrList list(blockSize);
    EXPECT_EQ(nullptr, list.AddTail(a));
    EXPECT_EQ(nullptr, list.AddHead(a));
    EXPECT_EQ(Elements{}, Of(list));
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(PtrList, AgreesWithAList) {
  std::mt19937 random(4201);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int blockSize : {1, 3, 10}) {
    TestAllocator allocator;
    TPtrList list(blockSize);
    std::list<void*> model;
    int peak = 0;  // most elements since the list was last empty: what its blocks have room for
    for (int step = 0; step < 5000; ++step) {
      void* element = Element(static_cast<uintptr_t>(below(20)));
      const int index = model.empty() ? 0 : below(static_cast<int>(model.size()));
      const auto at = std::next(model.begin(), index);
      switch (below(model.size() > 40 ? 12 : 10)) {
        case 0:
          list.AddHead(element);
          model.push_front(element);
          break;
        case 1:
          list.AddTail(element);
          model.push_back(element);
          break;
        case 2:
        case 3:
          list.InsertBefore(list.FindIndex(index), element);
          model.insert(at, element);
          break;
        case 4:
          list.InsertAfter(list.FindIndex(index), element);
          model.insert(model.empty() ? at : std::next(at), element);
          break;
        case 5:
          ASSERT_EQ(model.empty() ? nullptr : model.front(), list.RemoveHead());
          if (!model.empty()) model.pop_front();
          break;
        case 6:
          ASSERT_EQ(model.empty() ? nullptr : model.back(), list.RemoveTail());
          if (!model.empty()) model.pop_back();
          break;
        case 7:
          ASSERT_EQ(model.end() == std::find(model.begin(), model.end(), element),
                    list.Find(element) == nullptr);
          break;
        case 8:
          if (below(100) != 0) break;
          list.RemoveAll();
          model.clear();
          break;
        default:
          list.RemoveAt(list.FindIndex(index));
          if (!model.empty()) model.erase(at);
      }
      ASSERT_EQ(Elements(model.begin(), model.end()), Of(list)) << "step " << step;
      const int size = static_cast<int>(model.size());
      peak = size == 0 ? 0 : std::max(peak, size);
      ASSERT_EQ((peak + blockSize - 1) / blockSize, allocator.Live()) << "step " << step;
    }
  }
}

// Blocks grow with the list then.
TEST(PtrList, HoldsThousandsOverTheDefaultHooks) {
  std::mt19937 random(4202);
  for (int blockSize : {1, 10, 1000}) {
    SCOPED_TRACE(blockSize);
    TPtrList list(blockSize);
    std::list<void*> model;
    for (int round = 0; round < 3; ++round) {
      for (int i = 0; i < 3000; ++i) {
        void* element = Element(random());
        if (i % 3 == 0) {
          list.AddHead(element);
          model.push_front(element);
        } else {
          list.AddTail(element);
          model.push_back(element);
        }
      }
      ASSERT_EQ(Elements(model.begin(), model.end()), Of(list));
      auto of = model.begin();
      for (__POSITION* at = list.GetHeadPosition(); at != nullptr;) {
        __POSITION* here = at;
        ASSERT_EQ(*of, list.GetNext(at));
        if (random() % 2 != 0) {
          ++of;
          continue;
        }
        list.RemoveAt(here);
        of = model.erase(of);
      }
      ASSERT_EQ(Elements(model.begin(), model.end()), Of(list));
    }
    for (void* element : model) ASSERT_EQ(element, list.RemoveHead());
    EXPECT_TRUE(list.IsEmpty());
  }
}

}  // namespace
