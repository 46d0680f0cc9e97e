#include <gtest/gtest.h>
#include <limits.h>

#include <algorithm>
#include <random>
#include <type_traits>
#include <vector>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/test_allocator.h"

using KEST::TPtrArray;
using kest_test::Element;
using kest_test::Elements;
using kest_test::kNegatives;
using kest_test::Numbers;
using kest_test::TestAllocator;

namespace {

// More elements than this do not fit a 32-bit number of bytes.
constexpr int kLimit = static_cast<int>(UINT_MAX / sizeof(void*));

void* const a = Element(0xA0);
void* const b = Element(0xB0);
void* const c = Element(0xC0);
void* const p = Element(0x1000);

Elements Of(const TPtrArray& array) {
  Elements elements;
  for (int i = 0; i < array.GetSize(); ++i) elements.push_back(array.GetAt(i));
  return elements;
}

void Fill(TPtrArray& array, const Elements& elements) {
  array.RemoveAll();
  for (void* element : elements) array.Add(element);
}

TEST(PtrArray, StartsEmptyWithoutStorage) {
  TestAllocator allocator;
  {
    TPtrArray array;
    EXPECT_EQ(0, array.GetSize());
    EXPECT_EQ(0, array.GetMaxSize());
    EXPECT_EQ(nullptr, array.GetData());
    EXPECT_TRUE(array.IsEmpty());
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(PtrArray, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TPtrArray> && !std::is_copy_assignable_v<TPtrArray>);
}

TEST(PtrArray, AFirstAllocationIsExact) {
  TPtrArray array;
  array.SetAtGrow(0, p);
  EXPECT_EQ(1, array.GetSize());
  EXPECT_EQ(1, array.GetMaxSize());
  array.SetAtGrow(1, a);
  EXPECT_EQ(5, array.GetMaxSize()) << "a step of 4";
  EXPECT_EQ((Elements{p, a}), Of(array));
}

TEST(PtrArray, GrowsByAStepOrToWhatIsNeeded) {
  // Columns: size of the first allocation, growBy, size asked for, capacity then.
  struct Row {
    int first, growBy, newSize, capacity;
  };
  constexpr Row kRows[] = {
      // an eighth of the size, at least 4, at most 1024
      {1, 0, 2, 5},
      {8, 0, 9, 12},
      {39, 0, 40, 43},
      {40, 0, 41, 45},
      {47, 0, 48, 52},
      {48, 0, 49, 54},
      {100, 0, 101, 112},
      {8191, 0, 8192, 9214},
      {8192, 0, 8193, 9216},
      {8200, 0, 8201, 9224},
      {10000, 0, 10001, 11024},
      {100000, 0, 100001, 101024},
      // the step falls short
      {100, 0, 112, 112},
      {100, 0, 113, 113},
      {100, 0, 1000, 1000},
      // a fixed step
      {50, 10, 51, 60},
      {50, 10, 60, 60},
      {50, 10, 61, 61},
      {50, 1, 51, 51},
      {50, 5000, 51, 5050},
      // no step
      {50, -2, 51, 51},
      {50, -1000, 51, 51},
      {50, INT_MIN, 51, 51},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.first << " by " << row.growBy << " to " << row.newSize);
    TestAllocator allocator;
    TPtrArray array;
    array.SetSize(row.first, row.growBy);
    EXPECT_EQ(row.first, array.GetMaxSize());
    allocator.Reset();
    array.SetSize(row.newSize);
    EXPECT_EQ(row.newSize, array.GetSize());
    EXPECT_EQ(row.capacity, array.GetMaxSize());
    EXPECT_EQ(1, allocator.Requests());
    EXPECT_EQ(static_cast<unsigned int>(row.capacity) * sizeof(void*), allocator.LastSize());
  }
}

TEST(PtrArray, GrowsByAnEighthOfItsSize) {
  // Sizes at which one more element makes the array grow, worked by hand; each is also the capacity
  // that the growth before it gave.
  constexpr int kFull[] = {1,  5,  9,  13, 17, 21, 25, 29,  33,  37,  41,
                           46, 51, 57, 64, 72, 81, 91, 102, 114, 128, 144};
  TPtrArray array;
  array.Add(p);
  for (size_t i = 0; i + 1 < std::size(kFull); ++i) {
    while (array.GetSize() < kFull[i]) array.Add(p);
    EXPECT_EQ(kFull[i], array.GetMaxSize());
    array.Add(p);
    EXPECT_EQ(kFull[i + 1], array.GetMaxSize());
  }
}

TEST(PtrArray, TheAutomaticStepComesFromTheSizeNotTheCapacity) {
  TPtrArray array;
  array.SetSize(800);
  array.SetSize(16);
  array.SetSize(801);
  EXPECT_EQ(804, array.GetMaxSize());
}

TEST(PtrArray, GrowByIsKeptUntilAnotherIsGiven) {
  TPtrArray array;
  array.SetSize(50, 10);
  array.SetSize(51);
  EXPECT_EQ(60, array.GetMaxSize());
  array.SetSize(61, 100);
  EXPECT_EQ(160, array.GetMaxSize());
  array.SetSize(0);
  array.SetSize(10);
  array.SetSize(11);
  EXPECT_EQ(110, array.GetMaxSize()) << "kept through an empty array";
  array.SetSize(5, 0);
  array.SetSize(111);
  EXPECT_EQ(114, array.GetMaxSize()) << "set by a call that did not grow";
  array.SetSize(0, 7);
  array.SetSize(1);
  array.SetSize(2);
  EXPECT_EQ(8, array.GetMaxSize()) << "set by a call that freed the storage";
}

TEST(PtrArray, NewElementsAreNull) {
  TPtrArray array;
  array.SetSize(3);
  EXPECT_EQ((Elements{nullptr, nullptr, nullptr}), Of(array));
  Fill(array, {a, b, c});
  array.SetSize(1);
  array.SetSize(3);
  EXPECT_EQ((Elements{a, nullptr, nullptr}), Of(array)) << "within the capacity";
  Fill(array, {a, b, c});
  array.SetSize(200);
  Elements expected(200, nullptr);
  std::copy_n(Elements{a, b, c}.begin(), 3, expected.begin());
  EXPECT_EQ(expected, Of(array)) << "beyond the capacity";
}

TEST(PtrArray, ShrinkingKeepsTheStorageSizeZeroFreesIt) {
  TestAllocator allocator;
  TPtrArray array;
  array.SetSize(100);
  void** storage = array.GetData();
  for (int size : {99, 50, 1, 100, 2}) {
    array.SetSize(size);
    EXPECT_EQ(size, array.GetSize());
    EXPECT_EQ(100, array.GetMaxSize());
    EXPECT_EQ(storage, array.GetData());
  }
  EXPECT_EQ(1, allocator.Requests());
  array.SetSize(0);
  EXPECT_EQ(0, array.GetSize());
  EXPECT_EQ(0, array.GetMaxSize());
  EXPECT_EQ(nullptr, array.GetData());
  EXPECT_EQ(0, allocator.Live());
  array.SetSize(0);
  array.SetSize(7);
  array.RemoveAll();
  EXPECT_EQ(0, array.GetMaxSize());
  EXPECT_EQ(0, allocator.Live());
}

TEST(PtrArray, FreeExtraMakesTheCapacityTheSize) {
  TestAllocator allocator;
  TPtrArray array;
  array.FreeExtra();
  EXPECT_EQ(0, allocator.Requests());
  array.SetSize(100);
  allocator.Reset();
  array.FreeExtra();
  EXPECT_EQ(0, allocator.Requests()) << "nothing to free";
  Fill(array, {a, b, c});
  EXPECT_EQ(5, array.GetMaxSize());
  array.FreeExtra();
  EXPECT_EQ(3 * sizeof(void*), allocator.LastSize());
  EXPECT_EQ(3, array.GetMaxSize());
  EXPECT_EQ((Elements{a, b, c}), Of(array));
}

TEST(PtrArray, FreeExtraOfAnEmptyArrayFreesTheStorage) {
  TestAllocator allocator;
  TPtrArray array;
  Fill(array, {a, b});
  array.RemoveAt(0, 2);
  EXPECT_EQ(5, array.GetMaxSize());
  allocator.Reset();
  array.FreeExtra();
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_EQ(0, array.GetMaxSize());
  EXPECT_EQ(nullptr, array.GetData());
  array.SetSize(6);
  EXPECT_EQ(6, array.GetMaxSize()) << "a first allocation again";
}

TEST(PtrArray, SetAtGrowFillsTheGapWithNull) {
  TPtrArray array;
  array.SetAtGrow(3, p);
  EXPECT_EQ((Elements{nullptr, nullptr, nullptr, p}), Of(array));
  EXPECT_EQ(4, array.GetMaxSize());
  array.SetAtGrow(1, a);
  array.SetAtGrow(3, b);
  EXPECT_EQ((Elements{nullptr, a, nullptr, b}), Of(array));
  array.SetAtGrow(5, c);
  EXPECT_EQ((Elements{nullptr, a, nullptr, b, nullptr, c}), Of(array));
}

TEST(PtrArray, InsertAtPastTheEndExtendsTheArray) {
  TPtrArray array;
  Fill(array, {a, b, c});
  array.InsertAt(5, p, 2);
  EXPECT_EQ((Elements{a, b, c, nullptr, nullptr, p, p}), Of(array));
  array.InsertAt(7, a);
  EXPECT_EQ((Elements{a, b, c, nullptr, nullptr, p, p, a}), Of(array));
}

TEST(PtrArray, InsertAtMovesTheElementsBehind) {
  for (int index = 0; index <= 4; ++index) {
    for (int count = 0; count <= 9; ++count) {
      SCOPED_TRACE(testing::Message() << count << " at " << index);
      Elements model = Numbers(4);
      TPtrArray array;
      Fill(array, model);
      array.InsertAt(index, p, count);
      model.insert(model.begin() + index, static_cast<size_t>(count), p);
      EXPECT_EQ(model, Of(array));
    }
  }
}

TEST(PtrArray, InsertAtOfNoneStillReachesItsIndex) {
  TPtrArray array;
  Fill(array, {a, b, c});
  array.InsertAt(1, p, 0);
  array.InsertAt(3, p, 0);
  EXPECT_EQ((Elements{a, b, c}), Of(array));
  array.InsertAt(5, p, 0);
  EXPECT_EQ((Elements{a, b, c, nullptr, nullptr}), Of(array));
  array.RemoveAt(0, 5);
  array.InsertAt(0, p, 0);
  EXPECT_EQ(nullptr, array.GetData()) << "size 0 frees the storage";
}

TEST(PtrArray, InsertAtTakesAnArray) {
  TPtrArray source, none;
  Fill(source, {p, nullptr, c});
  for (int index = 0; index <= 5; ++index) {
    SCOPED_TRACE(index);
    TPtrArray array;
    Fill(array, {a, b, c});
    Elements model(static_cast<size_t>(std::max(3, index)), nullptr);
    std::copy_n(Elements{a, b, c}.begin(), 3, model.begin());
    const Elements inserted = {p, nullptr, c};
    model.insert(model.begin() + index, inserted.begin(), inserted.end());
    array.InsertAt(index, &source);
    EXPECT_EQ(model, Of(array));
    EXPECT_EQ((Elements{p, nullptr, c}), Of(source));
    array.InsertAt(index, &none);
    array.InsertAt(100, &none);
    array.InsertAt(index, static_cast<TPtrArray*>(nullptr));
    EXPECT_EQ(model, Of(array));
  }
}

TEST(PtrArray, RemoveAtMovesTheRestDown) {
  TestAllocator allocator;
  TPtrArray array;
  Fill(array, {a, b, c});
  const int capacity = array.GetMaxSize();
  allocator.Reset();
  array.RemoveAt(0, 2);
  EXPECT_EQ((Elements{c}), Of(array));
  EXPECT_EQ(capacity, array.GetMaxSize());
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_EQ((Elements{c, b, c}), Elements(array.GetData(), array.GetData() + 3))
      << "slots past the size are not cleared";
  array.RemoveAt(0);
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(capacity, array.GetMaxSize());
  EXPECT_NE(nullptr, array.GetData());
}

TEST(PtrArray, RemoveAtCutsTheCountToTheRest) {
  for (int index = 0; index <= 6; ++index) {
    for (int count : {0, 1, 2, 3, 4, 5, 6, INT_MAX - 1, INT_MAX}) {
      SCOPED_TRACE(testing::Message() << count << " at " << index);
      Elements model = Numbers(4);
      TPtrArray array;
      Fill(array, model);
      array.RemoveAt(index, count);
      if (index < 4) {
        model.erase(model.begin() + index, model.begin() + index + std::min(count, 4 - index));
      }
      EXPECT_EQ(model, Of(array));
    }
  }
  TPtrArray array;
  array.RemoveAt(0, 1);
  array.RemoveAt(INT_MAX, INT_MAX);
  EXPECT_EQ(0, array.GetSize());
}

TEST(PtrArray, AppendReturnsTheIndexOfTheFirst) {
  TestAllocator allocator;
  TPtrArray array, source, none;
  EXPECT_EQ(0, array.Append(none));
  EXPECT_EQ(0, allocator.Requests());
  Fill(source, {a, b});
  EXPECT_EQ(0, array.Append(source));
  EXPECT_EQ(2, array.GetMaxSize());
  EXPECT_EQ(2, array.Append(source));
  EXPECT_EQ((Elements{a, b, a, b}), Of(array));
  EXPECT_EQ(4, array.Append(none));
  EXPECT_EQ((Elements{a, b, a, b}), Of(array));
  const int capacity = array.GetMaxSize();
  array.RemoveAt(0, 4);
  EXPECT_EQ(0, array.Append(none));
  EXPECT_EQ(capacity, array.GetMaxSize()) << "nothing to append: the storage stays";
}

TEST(PtrArray, CopyTakesSizeAndElements) {
  TPtrArray array, source, none;
  Fill(source, {a, b, c});
  array.Copy(source);
  EXPECT_EQ((Elements{a, b, c}), Of(array));
  EXPECT_EQ(3, array.GetMaxSize());
  EXPECT_NE(source.GetData(), array.GetData());
  Fill(array, Numbers(10));
  const int capacity = array.GetMaxSize();
  array.Copy(source);
  EXPECT_EQ((Elements{a, b, c}), Of(array));
  EXPECT_EQ(capacity, array.GetMaxSize()) << "shrinking keeps the storage";
  array.Copy(none);
  EXPECT_EQ(0, array.GetSize());
  EXPECT_EQ(nullptr, array.GetData());
}

TEST(PtrArray, MayBeAddedToItself) {
  for (int extra : {0, 20}) {  // without and with room for the result
    for (int size = 0; size <= 5; ++size) {
      const Elements before = Numbers(size);
      const auto make = [&](TPtrArray& array) {
        array.SetSize(std::max(size + extra, 1));
        for (int i = 0; i < size; ++i) array.SetAt(i, before[static_cast<size_t>(i)]);
        array.RemoveAt(size, INT_MAX);
      };
      SCOPED_TRACE(testing::Message() << size << " elements, room for " << extra << " more");
      Elements twice = before;
      twice.insert(twice.end(), before.begin(), before.end());

      TPtrArray appended;
      make(appended);
      EXPECT_EQ(size, appended.Append(appended));
      EXPECT_EQ(twice, Of(appended));

      TPtrArray copied;
      make(copied);
      copied.Copy(copied);
      EXPECT_EQ(before, Of(copied));

      for (int index = 0; index <= size + 3; ++index) {
        SCOPED_TRACE(index);
        TPtrArray inserted;
        make(inserted);
        inserted.InsertAt(index, &inserted);
        Elements model = before;
        if (size != 0) {
          model.resize(static_cast<size_t>(std::max(size, index)), nullptr);
          model.insert(model.begin() + index, before.begin(), before.end());
        }
        EXPECT_EQ(model, Of(inserted));
      }
    }
  }
}

TEST(PtrArray, ElementAccess) {
  TPtrArray array;
  const TPtrArray& constant = array;
  EXPECT_EQ(0, array.Add(a));
  EXPECT_EQ(1, array.Add(b));
  EXPECT_FALSE(array.IsEmpty());
  array.SetAt(0, c);
  EXPECT_EQ(c, constant.GetAt(0));
  array.ElementAt(0) = a;
  EXPECT_EQ(a, constant[0]);
  array[1] = p;
  EXPECT_EQ(p, constant[1]);
  EXPECT_EQ(&array[1], array.GetData() + 1);
}

TEST(PtrArray, NegativeArgumentsChangeNothing) {
  TPtrArray source;
  Fill(source, {p});
  TPtrArray array;
  array.SetSize(3, 10);
  std::copy_n(Elements{a, b, c}.begin(), 3, array.GetData());
  void** storage = array.GetData();
  for (int n : kNegatives) {
    SCOPED_TRACE(n);
    array.SetSize(n);
    array.SetSize(n, 99);
    array.SetAtGrow(n, p);
    array.InsertAt(n, p);
    array.InsertAt(n, p, 0);
    array.InsertAt(n, p, n);
    array.InsertAt(0, p, n);
    array.InsertAt(10, p, n);
    array.InsertAt(n, &source);
    array.RemoveAt(n);
    array.RemoveAt(n, INT_MAX);
    array.RemoveAt(n, n);
    array.RemoveAt(0, n);
    EXPECT_EQ((Elements{a, b, c}), Of(array));
    EXPECT_EQ(3, array.GetMaxSize());
    EXPECT_EQ(storage, array.GetData());
  }
  array.Add(p);
  EXPECT_EQ(13, array.GetMaxSize()) << "the step is the old one";
}

TEST(PtrArray, SizesThatDoNotFit32BitsFailWithoutARequest) {
  TestAllocator allocator;
  TPtrArray source;
  Fill(source, {p, p});
  for (int size : {0, 3}) {
    SCOPED_TRACE(size);
    TPtrArray array;
    array.SetSize(size);
    allocator.Reset();
    for (int n : {INT_MAX, INT_MAX - 1, kLimit + 1}) {
      SCOPED_TRACE(n);
      array.SetSize(n);
      array.SetSize(n, 1);
      array.SetAtGrow(n, p);
      array.InsertAt(n, p);
      array.InsertAt(n, p, n);
      array.InsertAt(n, p, INT_MAX);
      array.InsertAt(0, p, n);
      array.InsertAt(n, &source);
      EXPECT_EQ(size, array.GetSize());
      EXPECT_EQ(size, array.GetMaxSize());
      EXPECT_EQ(0, allocator.Requests());
    }
  }
}

TEST(PtrArray, AStepThatDoesNotFitFails) {
  TestAllocator allocator;
  TPtrArray array;
  array.SetSize(3, INT_MAX);
  allocator.Reset();
  EXPECT_EQ(-1, array.Add(p));
  EXPECT_EQ(0, allocator.Requests());
  array.SetSize(3, 0);
  EXPECT_EQ(3, array.Add(p));
}

TEST(PtrArray, TheLargestSizeIsAsked) {
  TestAllocator allocator;
  TPtrArray array;
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  array.SetSize(kLimit);
  EXPECT_EQ(1, allocator.Refused());
  EXPECT_EQ(UINT_MAX - UINT_MAX % sizeof(void*), allocator.LastSize());
  EXPECT_EQ(0, array.GetSize());
}

TEST(PtrArray, AFailedAllocationLeavesItAsItWas) {
  TPtrArray source;
  Fill(source, Numbers(7));
  using Operation = void (*)(TPtrArray&, TPtrArray&);
  constexpr Operation kOperations[] = {
      [](TPtrArray& array, TPtrArray&) { array.SetSize(50); },
      [](TPtrArray& array, TPtrArray&) { array.SetSize(50, 99); },
      [](TPtrArray& array, TPtrArray&) { array.FreeExtra(); },
      [](TPtrArray& array, TPtrArray&) { array.SetAtGrow(50, p); },
      [](TPtrArray& array, TPtrArray&) { array.InsertAt(0, p, 50); },
      [](TPtrArray& array, TPtrArray&) { array.InsertAt(50, p, 2); },
      [](TPtrArray& array, TPtrArray&) { array.InsertAt(50, p, 0); },
      [](TPtrArray& array, TPtrArray& other) { array.InsertAt(1, &other); },
      [](TPtrArray& array, TPtrArray& other) { array.InsertAt(50, &other); },
      [](TPtrArray& array, TPtrArray& other) { EXPECT_EQ(3, array.Append(other)); },
      [](TPtrArray& array, TPtrArray& other) { array.Copy(other); },
      [](TPtrArray& array, TPtrArray&) { array.InsertAt(1, &array); },
      [](TPtrArray& array, TPtrArray&) { array.Append(array); },
  };
  for (size_t i = 0; i < std::size(kOperations); ++i) {
    SCOPED_TRACE(i);
    TestAllocator allocator;
    {
      TPtrArray array;
      array.SetSize(4, 10);
      std::copy_n(Elements{a, b, c, p}.begin(), 4, array.GetData());
      array.RemoveAt(3);
      void** storage = array.GetData();
      allocator.Refuse(1, TestAllocator::kFromThereOn);
      kOperations[i](array, source);
      EXPECT_EQ(1, allocator.Refused());
      EXPECT_EQ((Elements{a, b, c}), Of(array));
      EXPECT_EQ(4, array.GetMaxSize());
      EXPECT_EQ(storage, array.GetData());
      allocator.RefuseNone();
      array.SetSize(5);
      EXPECT_EQ(14, array.GetMaxSize()) << "the step is the old one";
    }
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(PtrArray, AddReportsAFailedAllocation) {
  TestAllocator allocator;
  TPtrArray array;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(-1, array.Add(a));
  EXPECT_EQ(0, array.Add(a));
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(-1, array.Add(b));
  EXPECT_EQ((Elements{a}), Of(array));
}

TEST(PtrArray, EachRefusedRequestIsSurvived) {
  kest_test::ForEachRefusedRequest([](TestAllocator&) {
    TPtrArray array, other;
    Elements model;
    for (int i = 0; i < 30; ++i) {
      if (array.Add(p) >= 0) model.push_back(p);
    }
    other.Copy(array);
    EXPECT_EQ(other.GetSize() != 0 ? model : Elements{}, Of(other));
    const int size = array.Append(other);
    if (array.GetSize() > size) model.insert(model.end(), model.begin(), model.end());
    array.FreeExtra();
    EXPECT_EQ(model.size(), static_cast<size_t>(array.GetSize()));
  });
}

// The rules of growth once more, over a vector.
struct Model {
  Elements elements;
  int capacity = 0;
  int growBy = 0;

  int Size() const { return static_cast<int>(elements.size()); }
  void Resize(int newSize) {
    const int step = growBy != 0         ? growBy
                     : Size() / 8 < 4    ? 4
                     : Size() / 8 > 1024 ? 1024
                                         : Size() / 8;
    if (newSize == 0 || capacity == 0) {
      capacity = newSize;
    } else if (newSize > capacity) {
      capacity = newSize < capacity + step ? capacity + step : newSize;
    }
    elements.resize(static_cast<size_t>(newSize), nullptr);
  }
  void Insert(int index, const Elements& inserted) {
    const Elements old = elements;
    const int count = static_cast<int>(inserted.size());
    Resize(index >= Size() ? index + count : Size() + count);
    elements = old;
    elements.resize(static_cast<size_t>(std::max(index, Size())), nullptr);
    elements.insert(elements.begin() + index, inserted.begin(), inserted.end());
  }
};

TEST(PtrArray, AgreesWithAVector) {
  std::mt19937 random(4101);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  TPtrArray array;
  Model model;
  for (int step = 0; step < 20000; ++step) {
    void* element = Element(random() | 1u);
    const int index = below(model.Size() + 10);
    const int count = below(12);
    TPtrArray other;
    Fill(other, Numbers(count));
    switch (below(9)) {
      case 0:
        array.SetSize(index);
        model.Resize(index);
        break;
      case 1:
        model.growBy = count;
        array.SetSize(index, count);
        model.Resize(index);
        break;
      case 2:
        array.FreeExtra();
        model.capacity = model.Size();
        break;
      case 3:
        array.SetAtGrow(index, element);
        if (index >= model.Size()) model.Resize(index + 1);
        model.elements[static_cast<size_t>(index)] = element;
        break;
      case 4:
        array.InsertAt(index, element, count);
        model.Insert(index, Elements(static_cast<size_t>(count), element));
        break;
      case 5:
        array.InsertAt(index, &other);
        if (count != 0) model.Insert(index, Numbers(count));
        break;
      case 6:
        array.RemoveAt(index, count);
        if (index < model.Size()) {
          const auto at = model.elements.begin() + index;
          model.elements.erase(at, at + std::min(count, model.Size() - index));
        }
        break;
      case 7:
        ASSERT_EQ(model.Size(), array.Append(other));
        if (count != 0) model.Insert(model.Size(), Numbers(count));
        break;
      default:
        if (below(20) != 0) break;
        array.Copy(other);
        model.Resize(count);
        model.elements = Numbers(count);
    }
    ASSERT_EQ(model.elements, Of(array)) << "step " << step;
    ASSERT_EQ(model.capacity, array.GetMaxSize()) << "step " << step;
  }
}

}  // namespace
