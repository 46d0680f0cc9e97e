// The block behind a TPtrArray while no client has set hooks: it has more room than the capacity
// says. The other tests of the array set hooks, after which it has not.

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <random>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/test_allocator.h"

using KEST::TPtrArray;
using kest_test::Element;
using kest_test::TestAllocator;

namespace {

// The array with other capacities than the block it lies in, at sizes where that block moves: every
// slot up to the capacity is the array's, and the elements outlive each move.
class TFilledArray {
 public:
  void SetSize(int size, int growBy) {
    const int old = array.GetSize();
    array.SetSize(size, growBy);
    ASSERT_EQ(size, array.GetSize());
    for (int i = old; i < size; ++i) array.SetAt(i, Mark(i));
    Check();
  }
  void FreeExtra() {
    array.FreeExtra();
    ASSERT_EQ(array.GetSize(), array.GetMaxSize());
    Check();
  }
  TPtrArray array;

 private:
  static void* Mark(int i) { return Element(static_cast<uintptr_t>(i) * 2654435761u + 1); }
  void Check() {
    ASSERT_LE(array.GetSize(), array.GetMaxSize());
    for (int i = 0; i < array.GetSize(); ++i) ASSERT_EQ(Mark(i), array.GetAt(i));
    std::fill(array.GetData() + array.GetSize(), array.GetData() + array.GetMaxSize(), nullptr);
  }
};

TEST(PtrArrayRoom, ElementsOutliveEveryMoveOfTheBlock) {
  std::mt19937 random(4102);
  for (int top : {20, 300, 3000, 40000}) {
    SCOPED_TRACE(top);
    TFilledArray filled;
    for (int step = 0; step < 200; ++step) {
      const int size = static_cast<int>(random() % static_cast<unsigned>(top)) + 1;
      const int growBy = random() % 2 != 0 ? 0 : static_cast<int>(random() % 64) - 2;
      ASSERT_NO_FATAL_FAILURE(filled.SetSize(size, growBy == -1 ? 1 : growBy));
      if (random() % 4 != 0) continue;
      ASSERT_NO_FATAL_FAILURE(filled.FreeExtra());
    }
  }
}

TEST(PtrArrayRoom, ElementsOutliveMovesOfLargeBlocks) {
  TFilledArray filled;
  for (int size : {1 << 20, (1 << 20) + 1, 5 << 19, (5 << 19) + 1, 3, (5 << 19) + 1025}) {
    ASSERT_NO_FATAL_FAILURE(filled.SetSize(size, 0));
    ASSERT_NO_FATAL_FAILURE(filled.FreeExtra());
  }
}

TEST(PtrArrayRoom, AMillionElementsAreAppendedInDescribedSteps) {
  TPtrArray array;
  int capacity = 0;
  for (int i = 0; i < 1000000; ++i) {
    if (i == capacity) capacity += i == 0 ? 1 : std::clamp(i / 8, 4, 1024);
    ASSERT_EQ(i, array.Add(Element(static_cast<uintptr_t>(i))));
    ASSERT_EQ(capacity, array.GetMaxSize());
  }
  for (int i = 0; i < 1000000; ++i) {
    ASSERT_EQ(Element(static_cast<uintptr_t>(i)), array.GetAt(i));
  }
}

TEST(PtrArrayRoom, FreeExtraGivesMemoryBack) {
  TPtrArray array;
  array.SetSize(100000);
  array.SetSize(1000);
  array.FreeExtra();
  EXPECT_GT(10000u, malloc_usable_size(array.GetData()) / sizeof(void*));
}

TEST(PtrArrayRoom, ABlockMayOutliveTheHooksThatMadeIt) {
  for (int size : {1, 5, 700, 5000}) {
    SCOPED_TRACE(size);
    TFilledArray filled;
    ASSERT_NO_FATAL_FAILURE(filled.SetSize(size, 0));
    for (int i = 1; i < 8; ++i) {
      if (i % 2 != 0) {
        TestAllocator allocator;
        ASSERT_NO_FATAL_FAILURE(filled.SetSize(size + 100 * i, 0));
        ASSERT_NO_FATAL_FAILURE(filled.FreeExtra());
      } else {
        for (int more = 1; more < 40; ++more) {
          ASSERT_NO_FATAL_FAILURE(filled.SetSize(size + 100 * i + more, 0));
        }
      }
    }
  }
}

}  // namespace
